#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Puts source files into the documents that show them, word for word.

A document names the file in a comment in front of the block:

    <!-- examples/minimal/main.cpp -->
    ```cpp

With --check nothing is written; the exit code is 1 when a document shows something else than the file.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BLOCK = re.compile(r"(<!-- (\S+) -->\n```(\w+)\n)(.*?)(```)", re.S)


def main():
    stale = []
    shown = set()
    for path in [ROOT / "README.md", *sorted((ROOT / "docs").rglob("*.md"))]:
        text = path.read_text(encoding="utf-8")

        def current(match):
            shown.add(match.group(2))
            return match.group(1) + (ROOT / match.group(2)).read_text(encoding="utf-8") + match.group(5)

        updated = BLOCK.sub(current, text)
        if updated != text:
            stale.append(path)
            if "--check" not in sys.argv:
                path.write_text(updated, encoding="utf-8")
    if "--check" not in sys.argv:
        return 0
    for path in stale:
        print(f"{path.relative_to(ROOT)} shows an example as it no longer is: run tools/update_doc_examples.py")
    guides = {f"examples/guides/{path.name}" for path in (ROOT / "examples/guides").glob("*.cpp")}
    wanted = {"examples/minimal/main.cpp", "examples/viewer/Farbfeld.cpp"} | guides - {"examples/guides/Guide.cpp"}
    for name in sorted(wanted - shown):
        print(f"no document shows {name}")
        stale.append(name)
    if (ROOT / "examples/minimal/main.cpp").read_text(encoding="utf-8").count("\n") >= 100:
        print("examples/minimal/main.cpp has 100 lines or more")
        stale.append("minimal")
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
