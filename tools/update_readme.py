#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Puts examples/minimal/main.cpp into README.md word for word, in the place of the first C++ block."""
import re
from pathlib import Path

root = Path(__file__).resolve().parent.parent
example = (root / "examples" / "minimal" / "main.cpp").read_text(encoding="utf-8")
path = root / "README.md"
text = path.read_text(encoding="utf-8")
path.write_text(re.sub(r"```cpp\n.*?```", lambda _: f"```cpp\n{example}```", text, count=1, flags=re.S), encoding="utf-8")
