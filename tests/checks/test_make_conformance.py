#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The page of rules is found stale by every change of a test, and no suite is left out of it."""
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

root = Path(sys.argv[1])


def check(edit):
    """Exit code and messages of the check on a copy of the tree whose page is written anew and that `edit` then changes."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder)
        for part in ("src", "cmake", "tools", "tests"):
            shutil.copytree(root / part, copy / part)
        (copy / "docs").mkdir()
        tool = [sys.executable, copy / "tools" / "make_conformance.py"]
        subprocess.run(tool, check=True)
        edit(copy)
        run = subprocess.run([*tool, "--check"], capture_output=True, text=True)
        return run.returncode, run.stderr.splitlines()


def appended(text):
    def edit(copy):
        path = copy / "tests" / "MemoryTest.cpp"
        path.write_text(path.read_text(encoding="utf-8") + text, encoding="utf-8")

    return edit


def added_unit(copy):
    path = copy / "cmake" / "layers.cmake"
    path.write_text(re.sub(r"(set\(VRK_LAYER_CORE\s)", r"\1 Memories ", path.read_text()))
    (copy / "src" / "Core" / "Memories.h").write_text("")


STALE = "docs/conformance.md is not what the tests are: run tools/make_conformance.py"
CASES = [
    ("nothing", lambda copy: None, 0, []),
    ("a new test", appended("TEST(RawMemoryTest, HoldsOneMoreRule)\n{\n}\n"), 1, [STALE]),
    ("a new unit", added_unit, 1, [STALE]),
    ("an edited page", lambda copy: (copy / "docs" / "conformance.md").write_text("other"), 1, [STALE]),
]
failed = 0
for name, edit, code, messages in CASES:
    found = check(edit)
    if found != (code, messages):
        print(f"{name}: {found}, expected {(code, messages)}")
        failed = 1


def unplaced(copy):
    (copy / "tests" / "OddTest.cpp").write_text("TEST(Odd, HasNoUnit)\n{\n}\n")


code, messages = check(unplaced)
if code != 1 or "tests/OddTest.cpp: the suite Odd has no unit; name it in SUBJECTS" not in messages:
    print(f"a suite without a unit: {(code, messages)}")
    failed = 1
sys.exit(failed)
