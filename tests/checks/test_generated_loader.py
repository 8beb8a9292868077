#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The committed function table is what the generator makes of the registry."""
import subprocess
import sys
import tempfile
from pathlib import Path

root = Path(sys.argv[1])
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.executable, root / "tools" / "generate_gl_loader.py", "--output", folder], check=True)
    made = sorted(p.relative_to(folder) for p in Path(folder).rglob("*") if p.is_file())
    if len(made) != 6:
        sys.exit(f"six files are expected, {len(made)} were written")
    different = [str(name) for name in made if (Path(folder) / name).read_bytes() != (root / name).read_bytes()]
if different:
    sys.exit("run tools/generate_gl_loader.py; these differ: " + ", ".join(different))
