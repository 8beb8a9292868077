#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Every system library that the build links belongs to a package of tools/packages.txt or to one that those need.

A development package that is missing from the list shows only on a fresh machine; here it is found on any.
"""
import re
import shutil
import subprocess
import sys
from pathlib import Path

root, build = Path(sys.argv[1]), Path(sys.argv[2])
if not shutil.which("dpkg-query"):
    sys.exit("this check asks dpkg; it is for Debian")
listed = {
    line.split()[0] for line in (root / "tools/packages.txt").read_text().splitlines() if line and not line.startswith("#")
}


def needed(packages):
    """The packages and, transitively, what they depend on."""
    known, queue = set(), list(packages)
    while queue:
        name = queue.pop()
        if name in known:
            continue
        known.add(name)
        run = subprocess.run(["dpkg-query", "-W", "-f=${Pre-Depends}, ${Depends}, ${Provides}", name], capture_output=True, text=True)
        queue += [re.split(r"[ (:]", part.strip())[0] for part in re.split(r"[,|]", run.stdout) if part.strip()]
    return known


paths = set(re.findall(r"/usr/lib/[\w./+-]*\.(?:so|a)\b[\w.]*", (build / "build.ninja").read_text()))
closure = needed(listed)
problems = []
for path in sorted(paths):
    run = subprocess.run(["dpkg-query", "-S", path], capture_output=True, text=True)
    owners = {line.split(":")[0] for line in run.stdout.splitlines()}
    if not owners & closure:
        problems.append(f"{path} of {', '.join(owners) or 'no package'} is not among tools/packages.txt and what it needs")
if not paths:
    problems.append("no library was found in build.ninja")
sys.exit("\n".join(problems) if problems else 0)
