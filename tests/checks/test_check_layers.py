#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The layer check finds each kind of fault, and nothing else."""
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

root = Path(sys.argv[1])


def problems_with(edit):
    """Exit code and messages of the check on a copy of the tree that `edit` has changed."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder)
        for part in ("src", "cmake", "tools"):
            shutil.copytree(root / part, copy / part)
        edit(copy)
        run = subprocess.run([sys.executable, copy / "tools" / "check_layers.py"], capture_output=True, text=True)
        return run.returncode, run.stderr.splitlines()


def appended(name, text):
    """Adds text at the end of a file, which is made when it is not there."""

    def edit(copy):
        path = copy / name
        path.write_text((path.read_text() if path.exists() else "") + text)

    return edit


def listed(variable, entry):
    """Adds an entry at the end of a list of cmake/layers.cmake."""

    def edit(copy):
        path = copy / "cmake" / "layers.cmake"
        text, count = re.subn(rf"(set\({variable}\s[^)]*)\)", rf"\1 {entry})", path.read_text())
        assert count == 1, variable
        path.write_text(text)

    return edit


def expect(edit, words):
    """One message, which ends in these words."""
    code, lines = problems_with(edit)
    if code == 0 or len(lines) != 1 or not lines[0].endswith(words):
        sys.exit(f"'{words}' should be the one complaint, but: {code} {lines}")


def expect_none(what, edit):
    code, lines = problems_with(edit)
    if code != 0 or lines:
        sys.exit(f"{what} is allowed, but: {code} {lines}")


expect_none("the tree as it is", lambda copy: None)

# Includes
expect(appended("src/GL/GLUtilities.cpp", '#include "BufferObject.h"\n'), "GLUtilities includes BufferObject of a higher layer")
expect(appended("src/GL/BufferObject.h", '#include "GLPlatform.h"\n'), "a public header includes the private GLPlatform.h")
expect_none("an include that goes down", appended("src/GL/BufferObject.cpp", '#include "GLUtilities.h"\n'))
expect_none("an include from VrkCore", appended("src/GL/GLUtilities.cpp", "#include <VrkCore/ResourcesPath.h>\n"))
for header in ("GLUtilities.h", "Texture.h", "Export.h"):
    expect(appended("src/Core/ResourcesPath.cpp", f"#include <VrkGL/{header}>\n"), f"VrkCore includes {header} of VrkGL")
expect(appended("src/Core/ResourcesPath.cpp", '#include "GLUtilities.h"\n'), "ResourcesPath includes GLUtilities of a higher layer")

# The lists of units
expect(appended("src/GL/Stray.cpp", "\n"), "src/GL/Stray.cpp: stands in no layer of cmake/layers.cmake")
expect(listed("VRK_LAYER_OBJECTS", "BufferObject"), "BufferObject is listed twice")
expect(listed("VRK_LAYER_TEXTURES", "BufferOffset"), "BufferOffset is listed twice")
expect(listed("VRK_LAYER_CORE", "ResourcesPath"), "ResourcesPath is listed twice")

# The list of private headers
expect(listed("VRK_PRIVATE_HEADERS", "Nowhere.h"), "the private header Nowhere.h does not exist")
for text in ("/// For tests. Not installed.\n", "/// For tests. Not\n/// installed.\n"):
    expect(appended("src/GL/BufferObject.h", text), "BufferObject.h: says 'Not installed' but is no private header")
expect(appended("src/Core/Memory.h", "/// Not installed.\n"), "Memory.h: says 'Not installed' but is no private header")
expect_none("a private header that says so", appended("src/GL/GLPlatform.h", "/// Not installed.\n"))
