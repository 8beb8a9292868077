#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The layer check finds an include that goes up, a unit without a layer, and a private header in a public one."""
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

root = Path(sys.argv[1])


def problems_with(name, text):
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder)
        for part in ("src", "cmake", "tools"):
            shutil.copytree(root / part, copy / part)
        path = copy / "src" / "GL" / name
        path.write_text((path.read_text() if path.exists() else "") + text)
        run = subprocess.run([sys.executable, copy / "tools" / "check_layers.py"], capture_output=True, text=True)
        return run.returncode, run.stderr


def expect(name, text, words):
    code, output = problems_with(name, text)
    if code == 0 or words not in output:
        sys.exit(f"{name} with {text!r} should be refused with '{words}', but: {code} {output}")


expect("GLUtilities.cpp", '#include "BufferObject.h"\n', "includes BufferObject of a higher layer")
expect("Stray.cpp", "\n", "stands in no layer")
expect("BufferObject.h", '#include "GLPlatform.h"\n', "a public header includes the private GLPlatform.h")
code, output = problems_with("BufferObject.cpp", '#include "GLUtilities.h"\n')
if code != 0:
    sys.exit("an include that goes down is allowed: " + output)
