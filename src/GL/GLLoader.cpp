// SPDX-License-Identifier: MIT
#include "GLLoader.h"

#include "Diagnostics.h"
#include "GLFunctionTable.h"
#include "GLFunctions.h"
#include "GLPlatform.h"
#include "GLRequirements.h"
#include "GLRuntimeTestAccess.h"

#include <array>
#include <cstring>

using namespace Harrow::Vrk;

namespace
{

std::array<int, 6> extensionFlags = {};
int majorVersion = 0;
int minorVersion = 0;

void* lookUp(const char* name)
{
    void* const address = GLPlatform::active().procAddress(name);
    return GLPlatform::isMissing(address) ? GLPlatform::active().moduleSymbol(name) : address;
}

bool load(const GLTableEntry& entry)
{
    void* const address = lookUp(entry.name);
    entry.store(entry.slot, address);
    return address != nullptr;
}

int loadAll(std::span<const GLTableEntry> entries)
{
    int failures = 0;
    for (const GLTableEntry& entry : entries)
        failures += load(entry) ? 0 : 1;
    return failures;
}

/// The first two pointers, which the loader itself needs. Both or none: a table that cannot be loaded stays as it was.
bool loadQueries()
{
    void* const getIntegerv = lookUp("glGetIntegerv");
    void* const getStringi = lookUp("glGetStringi");
    if (!getIntegerv || !getStringi)
        return false;
    _ptrc_glGetIntegerv = reinterpret_cast<decltype(_ptrc_glGetIntegerv)>(getIntegerv);
    _ptrc_glGetStringi = reinterpret_cast<decltype(_ptrc_glGetStringi)>(getStringi);
    return true;
}

void loadExtension(const char* name)
{
    const auto extensions = glTableExtensions();
    for (std::size_t row = 0; row < extensions.size(); ++row)
    {
        const GLTableExtension& extension = extensions[row];
        if (std::strcmp(extension.name, name) != 0)
            continue;
        const auto functions = glExtensionEntries().subspan(static_cast<std::size_t>(extension.first),
                                                            static_cast<std::size_t>(extension.count));
        extensionFlags[row] = loadAll(functions) + 1;
        return;
    }
}

void loadExtensions()
{
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i)
        if (const GLubyte* const name = glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)))
            loadExtension(reinterpret_cast<const char*>(name));
}

void fillVersionCache()
{
    if (majorVersion != 0)
        return;
    glGetIntegerv(GL_MAJOR_VERSION, &majorVersion);
    glGetIntegerv(GL_MINOR_VERSION, &minorVersion);
}

} // namespace

int ogl_LoadFunctions(void)
{
    extensionFlags.fill(0);
    if (!loadQueries())
        return 0;
    loadExtensions();
    return 1 + loadAll(glCoreEntries());
}

int ogl_GetMajorVersion(void)
{
    fillVersionCache();
    return majorVersion;
}

int ogl_GetMinorVersion(void)
{
    fillVersionCache();
    return minorVersion;
}

int ogl_IsVersionGEQ(int major, int minor)
{
    fillVersionCache();
    if (major != majorVersion)
        return major > majorVersion ? 1 : 0;
    return minor >= minorVersion ? 1 : 0;
}

namespace Harrow::Vrk
{

void Detail::reportMissingGLFunction(const char* name)
{
    VRK_LOG_CRITICAL("OpenGL function '%s' is not available", name);
}

void GLRuntimeTestAccess::resetVersionCache()
{
    majorVersion = 0;
    minorVersion = 0;
}

int GLRuntimeTestAccess::extensionFlag(int row)
{
    return extensionFlags.at(static_cast<std::size_t>(row));
}

int GLRuntimeTestAccess::coreEntryCount()
{
    return static_cast<int>(glCoreEntries().size());
}

const char* GLRuntimeTestAccess::coreEntryName(int index)
{
    return glCoreEntries()[static_cast<std::size_t>(index)].name;
}

int GLRuntimeTestAccess::extensionEntryCount()
{
    return static_cast<int>(glExtensionEntries().size());
}

const char* GLRuntimeTestAccess::extensionEntryName(int index)
{
    return glExtensionEntries()[static_cast<std::size_t>(index)].name;
}

void GLRuntimeTestAccess::clearTable()
{
    for (const GLTableEntry& entry : glCoreEntries())
        entry.store(entry.slot, nullptr);
    for (const GLTableEntry& entry : glExtensionEntries())
        entry.store(entry.slot, nullptr);
}

int GLRuntimeTestAccess::requiredVersion(const char* name)
{
    const GLRequirementRow* const row = findGLRequirement(name);
    return row ? row->version : -1;
}

} // namespace Harrow::Vrk
