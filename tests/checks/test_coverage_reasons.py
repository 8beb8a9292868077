#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A block that no test reaches needs a reason, and a reason needs its block."""
import json
import subprocess
import sys
import tempfile
from pathlib import Path

root = Path(sys.argv[1])

SOURCE = """int f(int x)
{
    if (x < 0)
        return -1; // never

    return x;
}
"""
REASON = "src/F.cpp\tif (x < 0) return -1;\t1\tNobody asks.\n"


def check(counts, table):
    """Exit code and problems for F.cpp with these counts by line, and this table of reasons."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder)
        (copy / "src").mkdir()
        (copy / "tools").mkdir()
        (copy / "src" / "F.cpp").write_text(SOURCE)
        (copy / "tools" / "coverage_reasons.tsv").write_text("# file\tbegin\tlines\treason\n" + table)
        lines = [{"line_number": number, "count": count, "gcovr/noncode": False} for number, count in counts.items()]
        lines.append({"line_number": 5, "count": 0, "gcovr/noncode": True})
        (copy / "lines.json").write_text(json.dumps({"files": [{"file": "src/F.cpp", "lines": lines}]}))
        tool = [sys.executable, root / "tools" / "coverage_reasons.py", copy, copy / "lines.json"]
        run = subprocess.run(tool, capture_output=True, text=True)
        return run.returncode, run.stdout.splitlines()[:-1]


REACHED = {1: 2, 3: 2, 4: 1, 6: 1}
NOT_REACHED = {1: 1, 3: 1, 4: 0, 6: 1}
BOTH = {1: 1, 3: 1, 4: 0, 6: 0}
KEY = REASON.rsplit("\t", 1)[0]
CASES = [
    ("all reached", REACHED, "", 0, []),
    ("a block with its reason", NOT_REACHED, REASON, 0, []),
    ("a block without one", NOT_REACHED, "", 1, ["no reason: " + KEY]),
    ("a reason without its block", REACHED, REASON, 1, ["reason without a block: " + KEY]),
    ("a reason for what is sometimes reached", REACHED, REASON.replace("Nobody", "sometimes: nobody"), 0, []),
    ("a block that has grown", BOTH, REASON, 1,
     ["no reason: " + KEY[:-1] + "2", "reason without a block: " + KEY]),
]
failed = 0
for name, counts, table, code, problems in CASES:
    found = check(counts, table)
    if found != (code, problems):
        print(f"{name}: {found}, expected {(code, problems)}")
        failed = 1
sys.exit(failed)
