#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What Doxygen is shown of a header: a comment over several declarations becomes a group, and nothing else changes."""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(sys.argv[1]) / "tools"))
from doxygen_filter import grouped  # noqa: E402

OPEN, CLOSE = "/** @{ */ ", "/** @} */ "
CASES = [
    ("two share a comment", ["/// Texels.", "int width();", "int height();", ""],
     [OPEN + "/// Texels.", "int width();", "int height();", CLOSE]),
    ("one needs no group", ["/// Texels.", "int width();", "", "int height();", ""], None),
    ("a comment ends a group and begins one", ["/// A.", "int a();", "int b();", "/// C.", "int c();", "int d();", "};"],
     [OPEN + "/// A.", "int a();", "int b();", CLOSE + OPEN + "/// C.", "int c();", "int d();", CLOSE + "};"]),
    ("a declaration on two lines is one", ["/// A.", "int a(int b,", "      int c);", ""], None),
    ("a body may have blank lines", ["/// A.", "int a()", "{", "", "}", "int b();", ""],
     [OPEN + "/// A.", "int a()", "{", "", "}", "int b();", CLOSE]),
    ("a comment on a class is of the class alone", ["/// A.", "class A", "{", "int a;", "int b;", "};"], None),
    ("a comment behind a member stays there", ["/// A.", "int a; ///< B.", "int b;", ""],
     [OPEN + "/// A.", "int a; ///< B.", "int b;", CLOSE]),
    ("the comment of a file is left alone", ["/// \\file", "/// A.", "int a;", "int b;", ""], None),
    ("a group of the header's own stays", ["/// \\name A", "///@{", "int a;", "int b;", "///@}"], None),
]
failed = 0
for name, lines, expected in CASES:
    found = grouped(lines)
    if found != (lines if expected is None else expected):
        print(f"{name}: {found}")
        failed = 1
for path in sorted((Path(sys.argv[1]) / "src" / "GL").glob("*.h")):
    lines = path.read_text(encoding="utf-8").split("\n")
    found = grouped(lines)
    if [line.replace(OPEN, "").replace(CLOSE, "") for line in found] != lines:
        print(f"{path.name}: more than markers was changed")
        failed = 1
    marks = "".join(found)
    if marks.count(OPEN) != marks.count(CLOSE):
        print(f"{path.name}: a group stays open")
        failed = 1
sys.exit(failed)
