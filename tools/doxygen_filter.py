#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Doxygen's view of a header: a comment tells about all declarations down to the next blank line or comment.

The headers are written that way (`width` and `height` share one), and Doxygen calls it a group. Lines keep their numbers.
Usage: doxygen_filter.py <header>; docs/Doxyfile names it as INPUT_FILTER.
"""
import re
import sys
from pathlib import Path

COMMENT = re.compile(r"\s*///(?!<|\s*@[{}]|\s*\\name)")
# Where a body or another section begins or ends no group can go on.
BREAK = re.compile(r"\s*((public|protected|private|signals|Q_SIGNALS)[\w ]*:|}|#|//(?!/<))")
SCOPE = re.compile(r"\s*(template\s*<[^;]*>\s*)?(class|struct|enum|union|namespace)\b[^;]*$")


def end_of_run(lines, at):
    """The line behind the declarations that begin at `at`, and how many these are."""
    depth = count = 0
    while at < len(lines):
        line = lines[at]
        if depth == 0 and (not line.strip() or COMMENT.match(line) or BREAK.match(line)):
            break
        code = line.split("//")[0].rstrip()
        depth += len(re.findall(r"[{(]", code)) - len(re.findall(r"[})]", code))
        count += depth == 0 and code.endswith((";", "}"))
        at += 1
    return at, count


def grouped(lines):
    opened, closed = set(), set()
    at = 0
    while at < len(lines):
        first = at
        while at < len(lines) and COMMENT.match(lines[at]):
            at += 1
        if at == first:
            at += 1
            continue
        if "\\file" in lines[first] or SCOPE.match(lines[at]):
            continue
        end, count = end_of_run(lines, at)
        if count > 1:
            opened.add(first)
            closed.add(end)
        at = max(end, at)
    return ["/** @} */ " * (at in closed) + "/** @{ */ " * (at in opened) + line for at, line in enumerate(lines)]


if __name__ == "__main__":
    print("\n".join(grouped(Path(sys.argv[1]).read_text(encoding="utf-8").split("\n"))), end="")
