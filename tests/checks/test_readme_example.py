#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The README shows examples/minimal/main.cpp word for word, and that has under 100 lines."""
import sys
from pathlib import Path

root = Path(sys.argv[1])
example = (root / "examples" / "minimal" / "main.cpp").read_text(encoding="utf-8")
readme = (root / "README.md").read_text(encoding="utf-8")
if f"```cpp\n{example}```" not in readme:
    sys.exit("README.md does not show examples/minimal/main.cpp word for word")
lines = example.count("\n")
if lines >= 100:
    sys.exit(f"examples/minimal/main.cpp has {lines} lines; under 100 are wanted")
