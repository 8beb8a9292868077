#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The table's core names are those that the system's own core header declares up to version 3.2."""
import re
import sys
from pathlib import Path

root, header = Path(sys.argv[1]), Path(sys.argv[2])
wanted, version = set(), None
for line in header.read_text(encoding="utf-8").splitlines():
    if match := re.match(r"#ifndef GL_VERSION_(\d)_(\d)", line):
        version = (int(match[1]), int(match[2]))
    elif re.match(r"#ifndef GL_(?!VERSION)", line) and line[12:].isupper():
        version = None
    if version and version <= (3, 2) and (match := re.search(r"APIENTRY (gl\w+) \(", line)):
        wanted.add(match[1])
# The header lists it under 1.1; the core profile lost it until 4.3 brought it back.
wanted.discard("glGetPointerv")

text = (root / "src/GL/GLFunctionTable.cpp").read_text(encoding="utf-8")
core = text[text.index("kCoreEntries") : text.index("kExtensionEntries")]
names = re.findall(r'\{"(gl\w+)"', core)
if len(names) != 316 or set(names) != wanted:
    sys.exit(f"{len(names)} names; only here: {sorted(set(names) - wanted)}; only there: {sorted(wanted - set(names))}")
