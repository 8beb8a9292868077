#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the OpenGL function table of VrkGL from the Khronos XML registry.

Usage: generate_gl_loader.py [--registry gl.xml] [--output DIR]

Six files come out under DIR, the root of the repository; they are committed, and a test runs this script again
and compares:

  src/GL/GLConstants.h          the GL_ constants (public)
  src/GL/GLFunctions.h          types, the 325 pointers, inline callers (public)
  src/GL/GLFunctionTable.cpp    the pointers' definitions and the tables that the loader walks
  src/GL/GLOptionalFunctions.h  types of entry points outside the table (private)
  src/GL/GLRequirements.cpp     which version or extension introduces each entry point (private)
  tests/support/GLCommandNames.inc   every entry point that the library can reach, for the tests' recorder
"""
import argparse
import re
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

CORE_VERSION = (3, 2)

# The six rows of the extension table, in the order in which the loader compares them.
TABLE_EXTENSIONS = [
    ("GL_ARB_draw_indirect", ["glDrawArraysIndirect", "glDrawElementsIndirect"]),
    ("GL_ARB_multi_draw_indirect", ["glMultiDrawArraysIndirect", "glMultiDrawElementsIndirect"]),
    ("GL_ARB_tessellation_shader", ["glPatchParameteri", "glPatchParameterfv"]),
    ("GL_ARB_texture_cube_map_array", []),
    ("GL_ARB_shader_atomic_counters", ["glGetActiveAtomicCounterBufferiv"]),
    ("GL_ARB_shader_image_load_store", ["glBindImageTexture", "glMemoryBarrier"]),
]

# Looked up one by one by the unit that uses them, each with a fallback for null.
OPTIONAL_FUNCTIONS = [
    "glBindBuffersBase",
    "glBindFragDataLocationIndexed",
    "glBufferStorage",
    "glDebugMessageCallbackARB",
    "glDebugMessageControlARB",
    "glDispatchCompute",
    "glDrawArraysInstancedBaseInstance",
    "glDrawElementsInstancedBaseVertexBaseInstance",
    "glGetProgramBinary",
    "glGetProgramBinaryOES",
    "glGetProgramInterfaceiv",
    "glGetProgramResourceIndex",
    "glGetProgramResourceName",
    "glGetTextureHandleARB",
    "glGetTextureHandleNV",
    "glIsTextureHandleResidentARB",
    "glIsTextureHandleResidentNV",
    "glMakeTextureHandleNonResidentARB",
    "glMakeTextureHandleNonResidentNV",
    "glMakeTextureHandleResidentARB",
    "glMakeTextureHandleResidentNV",
    "glNamedBufferData",
    "glNamedBufferStorage",
    "glNamedBufferSubData",
    "glProgramBinary",
    "glProgramBinaryOES",
    "glProgramParameteri",
    "glShaderStorageBlockBinding",
    "glUniformHandleui64vARB",
    "glUniformHandleui64vNV",
]

# Constants come from these API sources: all desktop versions, and extensions that the library names.
CONSTANT_EXTENSIONS = [
    "GL_ARB_bindless_texture",
    "GL_ARB_debug_output",
    "GL_ARB_parallel_shader_compile",
    "GL_EXT_texture_compression_s3tc",
    "GL_EXT_texture_filter_anisotropic",
    "GL_EXT_texture_sRGB",
    "GL_KHR_texture_compression_astc_ldr",
    "GL_OES_compressed_ETC1_RGB8_texture",
]

FILE_HEAD = """// SPDX-License-Identifier: MIT
// Written by tools/generate_gl_loader.py from the Khronos XML registry. Do not edit.
"""


class Command:
    """One entry point: its C return type and parameters."""

    def __init__(self, element):
        proto = element.find("proto")
        self.name = proto.find("name").text
        self.result = text_before_name(proto)
        self.parameters = [(text_before_name(p), p.find("name").text) for p in element.findall("param")]

    def types(self):
        return ", ".join(t for t, _ in self.parameters) or "void"

    def signature(self):
        return ", ".join(f"{t} {safe(n)}" for t, n in self.parameters)

    def arguments(self):
        return ", ".join(safe(n) for _, n in self.parameters)

    def uses_sync(self):
        return any("GLsync" in t for t, _ in self.parameters)


def safe(name):
    """Parameter names that system headers define as macros get an underscore."""
    return name + "_" if name in ("near", "far") else name


def text_before_name(element):
    text = "".join(part for part in element.itertext())
    name = element.find("name").text
    text = text.strip()
    text = text[: text.rindex(name)].strip()
    return re.sub(r"\s*\*\s*", "* ", re.sub(r"\s+", " ", text)).strip()


class Registry:
    def __init__(self, path):
        self.root = ElementTree.parse(path).getroot()
        self.commands = {}
        for element in self.root.find("commands").findall("command"):
            command = Command(element)
            self.commands[command.name] = command
        self.enums = {}
        for element in self.root.findall("enums/enum"):
            if element.get("api") in (None, "gl"):
                self.enums.setdefault(element.get("name"), element.get("value"))
        self.features = [f for f in self.root.findall("feature") if f.get("api") == "gl"]
        self.extensions = {
            e.get("name"): e
            for e in self.root.findall("extensions/extension")
        }

    @staticmethod
    def version(feature):
        return tuple(int(part) for part in feature.get("number").split("."))

    def core_commands(self):
        """Commands of the 3.2 core profile: by version, and by name within a version."""
        found = {}
        for feature in self.features:
            if self.version(feature) > CORE_VERSION:
                continue
            for block in feature.findall("require"):
                if block.get("profile") in (None, "core"):
                    for command in block.findall("command"):
                        found.setdefault(command.get("name"), self.version(feature))
            for block in feature.findall("remove"):
                if block.get("profile") == "core":
                    for command in block.findall("command"):
                        found.pop(command.get("name"), None)
        return sorted(found, key=lambda name: (found[name], name))

    def requirements(self):
        """For each entry point: the first desktop version (or None) and the extensions that bring it.

        Extensions of every API count: what matters is whether the context at hand offers them.
        """
        versions, extensions = {}, {}
        for feature in self.features:
            for command in feature.findall("require/command"):
                name, version = command.get("name"), self.version(feature)
                versions[name] = min(versions.get(name, version), version)
        for extension in self.extensions.values():
            for block in extension.findall("require"):
                for command in block.findall("command"):
                    extensions.setdefault(command.get("name"), set()).add(extension.get("name"))
        return {
            name: (versions.get(name), sorted(extensions.get(name, ())))
            for name in sorted(set(versions) | set(extensions))
        }

    def constants(self):
        names = set()
        for feature in self.features:
            names |= {e.get("name") for e in feature.findall("require/enum")}
        for name in CONSTANT_EXTENSIONS:
            names |= {e.get("name") for e in self.extensions[name].findall("require/enum")}
        return sorted((n for n in names if n in self.enums), key=lambda n: (int(self.enums[n], 0), n))


TYPES = """#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define VRK_GLAPIENTRY __stdcall
#else
#define VRK_GLAPIENTRY
#endif

/// The same type as in the system's headers: C++ allows a typedef to be repeated when it agrees.
typedef unsigned int GLenum;
typedef unsigned char GLboolean;
typedef unsigned int GLbitfield;
typedef void GLvoid;
typedef signed char GLbyte;
typedef unsigned char GLubyte;
typedef short GLshort;
typedef unsigned short GLushort;
typedef int GLint;
typedef unsigned int GLuint;
typedef int GLsizei;
typedef float GLfloat;
typedef double GLdouble;
typedef char GLchar;
typedef unsigned short GLhalf;
typedef std::ptrdiff_t GLintptr;
typedef std::ptrdiff_t GLsizeiptr;
typedef std::int64_t GLint64;
typedef std::uint64_t GLuint64;
typedef struct __GLsync* GLsync;
"""


MISSING = """namespace Detail
{
/// Reports a call of an entry point that the driver lacks or that was not loaded yet.
VRKGL_EXPORT void reportMissingGLFunction(const char* name);

/// The same, and gives what the caller returns then: 0.
template <typename Result> Result missing(const char* name)
{
    reportMissingGLFunction(name);
    return Result();
}
} // namespace Detail
"""


def constants_header(registry):
    out = [FILE_HEAD.rstrip(), "#pragma once", "", """/// \\file
/// The constants of all desktop OpenGL versions and of the extensions that the library names. They are macros, as in the
/// system's headers, so that either may come first.
"""]
    for name in registry.constants():
        out += [f"#ifndef {name}", f"#define {name} {registry.enums[name]}", "#endif"]
    return "\n".join(out) + "\n"


def functions_header(registry, table):
    out = [FILE_HEAD.rstrip(), "#pragma once", "", """/// \\file
/// The OpenGL function table: one exported pointer `_ptrc_gl…` per entry point, null until `ogl_LoadFunctions`
/// (through `initializeGLFunctions`) fills it. The table holds the 316 functions of the 3.2 core profile and 9 of
/// six extensions, and is shared by all contexts of the process.
///
/// Inside `namespace Harrow::Vrk` the OpenGL names are inline functions that call through the pointers, so code in
/// that namespace writes `glBindBuffer(…)`. They are functions, not macros: the header can stand before or after
/// `<GL/gl.h>` and Qt's OpenGL headers, whose own declarations and members of the same names stay usable.
/// A caller whose pointer is null reports "OpenGL function '%s' is not available" through the critical log, does
/// nothing and returns 0; calling through the bare pointer crashes then.
""", '#include "Export.h"', '#include "GLConstants.h"', "", TYPES, ""]
    out += ['extern "C" {', "/// The entry point in the driver; null until it is loaded."]
    for name in table:
        c = registry.commands[name]
        out.append(f"extern VRKGL_EXPORT {c.result} (VRK_GLAPIENTRY* _ptrc_{name})({c.types()});")
    out += ["}", "", "namespace Harrow::Vrk", "{", "", MISSING]
    out.append("/// OpenGL's function of that name, through its pointer.")
    for name in table:
        c = registry.commands[name]
        call = f"return ::_ptrc_{name} ? ::_ptrc_{name}({c.arguments()}) : Detail::missing<{c.result}>(\"{name}\");"
        if c.uses_sync():
            # A function object: argument-dependent look-up through GLsync would also find a system prototype.
            out.append(f"/** Type of the object that is called as `{name}`. */ struct Call_{name} {{ "
                       f"/** The call, through the pointer. */ {c.result} operator()({c.signature()}) const {{ {call} }} }};")
            out.append(f"inline constexpr Call_{name} {name}{{}};")
        else:
            out.append(f"inline {c.result} {name}({c.signature()}) {{ {call} }}")
    out += ["", "} // namespace Harrow::Vrk"]
    return "\n".join(out) + "\n"


def function_table_source(registry, core):
    out = [FILE_HEAD.rstrip(), '#include "GLFunctionTable.h"', "", '#include "GLFunctions.h"', "", 'extern "C" {']
    extension_functions = [name for _, names in TABLE_EXTENSIONS for name in names]
    for name in core + extension_functions:
        c = registry.commands[name]
        out.append(f"{c.result} (VRK_GLAPIENTRY* _ptrc_{name})({c.types()}) = nullptr;")
    out += ["}", "", "namespace Harrow::Vrk", "{", "namespace", "{", ""]
    out += ["template <typename Function>", "void store(void* slot, void* address)", "{",
            "    *static_cast<Function*>(slot) = reinterpret_cast<Function>(address);", "}", ""]

    def row(name):
        return f'    {{"{name}", &_ptrc_{name}, &store<decltype(_ptrc_{name})>}},'

    out.append("const GLTableEntry kCoreEntries[] = {")
    out += [row(name) for name in core]
    out.append("};")
    out.append("")
    out.append("const GLTableEntry kExtensionEntries[] = {")
    out += [row(name) for name in extension_functions]
    out.append("};")
    out.append("")
    out.append("const GLTableExtension kExtensions[] = {")
    first = 0
    for name, functions in TABLE_EXTENSIONS:
        out.append(f'    {{"{name}", {first}, {len(functions)}}},')
        first += len(functions)
    out.append("};")
    out += ["", "} // namespace", "",
            "std::span<const GLTableEntry> glCoreEntries()", "{", "    return kCoreEntries;", "}", "",
            "std::span<const GLTableEntry> glExtensionEntries()", "{", "    return kExtensionEntries;", "}", "",
            "std::span<const GLTableExtension> glTableExtensions()", "{", "    return kExtensions;", "}", "",
            "} // namespace Harrow::Vrk"]
    return "\n".join(out) + "\n"


def optional_header(registry):
    out = [FILE_HEAD.rstrip(), "#pragma once", "", """/// \\file
/// Types of the entry points outside the function table, each looked up with `getGLProcAddress` by the unit that
/// uses it. Not installed.
""", '#include "GLFunctions.h"', "", "namespace Harrow::Vrk", "{", ""]
    debug = "GLDEBUGPROCARB"
    out.append(f"using {debug} = void(VRK_GLAPIENTRY*)(GLenum source, GLenum type, GLuint id, GLenum severity, "
               "GLsizei length, const GLchar* message, const void* userParam);")
    out.append("")
    for name in OPTIONAL_FUNCTIONS:
        c = registry.commands[name]
        out.append(f"using PFN_{name} = {c.result}(VRK_GLAPIENTRY*)({c.signature()});")
    out += ["", "} // namespace Harrow::Vrk"]
    return "\n".join(out) + "\n"


def requirements_source(registry):
    requirements = registry.requirements()
    extension_names = sorted({e for _, names in requirements.values() for e in names})
    index = {name: i for i, name in enumerate(extension_names)}
    lists, flat = {(): 0}, []
    for _, names in requirements.values():
        key = tuple(index[n] for n in names)
        if key and key not in lists:
            lists[key] = len(flat)
            flat += key
    out = [FILE_HEAD.rstrip(), '#include "GLRequirements.h"', "", "namespace Harrow::Vrk", "{", "namespace", "{", ""]
    out.append("constexpr const char* kExtensionNames[] = {")
    out += [f'    "{name}",' for name in extension_names]
    out += ["};", "", "// Runs of indices into kExtensionNames, shared between entry points.",
            "constexpr unsigned short kExtensionRuns[] = {"]
    for i in range(0, len(flat), 20):
        out.append("    " + ", ".join(str(v) for v in flat[i : i + 20]) + ",")
    out += ["};", "", "// Sorted by name: {name, first core version as 10 * major + minor or 0, first run index, run length}.",
            "constexpr GLRequirementRow kRows[] = {"]
    for name, (version, names) in requirements.items():
        key = tuple(index[n] for n in names)
        number = version[0] * 10 + version[1] if version else 0
        out.append(f'    {{"{name}", {number}, {lists[key]}, {len(key)}}},')
    out += ["};", "", "} // namespace", "",
            "std::span<const GLRequirementRow> glRequirementRows()", "{", "    return kRows;", "}", "",
            "std::span<const char* const> glRequirementExtensionNames()", "{", "    return kExtensionNames;", "}", "",
            "std::span<const unsigned short> glRequirementExtensionRuns()", "{", "    return kExtensionRuns;", "}", "",
            "} // namespace Harrow::Vrk"]
    return "\n".join(out) + "\n"


def command_names(table):
    out = [FILE_HEAD.rstrip()]
    out += [f"VRK_GL_TABLE_COMMAND({name})" for name in table]
    out += [f"VRK_GL_OPTIONAL_COMMAND({name})" for name in OPTIONAL_FUNCTIONS]
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--registry", default="/usr/share/khronos-api/gl.xml")
    parser.add_argument("--output", default=str(Path(__file__).resolve().parent.parent))
    options = parser.parse_args()

    registry = Registry(options.registry)
    core = registry.core_commands()
    table = core + [name for _, names in TABLE_EXTENSIONS for name in names]
    if (len(core), len(table)) != (316, 325) or core[0] != "glBlendFunc" or core[-1] != "glWaitSync":
        sys.exit(f"the registry gives {len(core)} core and {len(table)} table functions, 316 and 325 are expected")
    files = {
        "src/GL/GLConstants.h": constants_header(registry),
        "src/GL/GLFunctions.h": functions_header(registry, table),
        "src/GL/GLFunctionTable.cpp": function_table_source(registry, core),
        "src/GL/GLOptionalFunctions.h": optional_header(registry),
        "src/GL/GLRequirements.cpp": requirements_source(registry),
        "tests/support/GLCommandNames.inc": command_names(table),
    }
    for name, text in files.items():
        path = Path(options.output) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
