// SPDX-License-Identifier: MIT
// What a driver offers of all that the library can use, and what it does without. Run it first on a new machine.
#include "Guide.h"

#include <VrkGL/BindlessTextureManager.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/GLVersions.h>
#include <VrkGL/InstanceDataPlan.h>

#include <cstdio>

using namespace Harrow::Vrk;

struct Extra
{
    const char* name; // an entry point or an extension
    const char* use;
    const char* without;
};

constexpr Extra kFunctions[] = {
    {"glNamedBufferData", "uploads without a bind", "buffers are bound"},
    {"glBufferStorage", "buffers of fixed storage", "useStorageBuffer does nothing"},
    {"glDispatchCompute", "MandelbrotGPUTextureStreamer", "use MandelbrotCPUTextureStreamer"},
    {"glDebugMessageCallbackARB", "the driver's reports", "initializeGLDebugging is false"},
};

constexpr Extra kExtensions[] = {
    {"GL_ARB_get_program_binary", "programs kept as binaries", "isProgramBinariesSupported is false"},
    {"GL_ARB_parallel_shader_compile", "compiling in the background", "linkPreWait returns at once"},
    {"GL_EXT_texture_filter_anisotropic", "sharper textures at a slant", "TextureFileInfo::anisotropy is ignored"},
};

static void tell(const char* use, bool there, const char* without)
{
    std::printf("  %-30s %s%s\n", use, there ? "yes" : "no: ", there ? "" : without);
}

static void tellLimit(Guide& guide, const char* name, GLenum limit, GLint least)
{
    GLint value = 0;
    glGetIntegerv(limit, &value);
    std::printf("  %-30s %d\n", name, value);
    guide.expect(value >= least, "OpenGL 3.2 grants as many");
}

static const char* text(GLenum name)
{
    return reinterpret_cast<const char*>(glGetString(name));
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, 8, 8); // tells why, where there is no context of OpenGL 3.2
    if (!guide.isReady())
        return 1;
    std::printf("VrkGL %s\n%s\n%s\n", qPrintable(GLVersions::getVersion()), text(GL_VERSION), text(GL_RENDERER));
    guide.expect(openGlVersionSupported(3, 2), "there is OpenGL 3.2");

    std::printf("used where it is there:\n");
    for (const Extra& extra : kFunctions)
        tell(extra.use, getGLProcAddress(extra.name, true) != nullptr, extra.without);
    for (const Extra& extra : kExtensions)
        tell(extra.use, hasGLExtension(extra.name), extra.without);
    tell("one draw call for all records", DrawBuffers::isBaseInstanceDrawingSupported(),
         "a uniform and a call for each");
    tell("storage blocks for records", InstanceDataPlan::supportsStorageMechanism(), "four other carriers");
    tell("bindless textures", BindlessTextureManager::isSupported(), "two other managers");

    std::printf("limits:\n");
    tellLimit(guide, "texture units of a stage", GL_MAX_TEXTURE_IMAGE_UNITS, 16);
    tellLimit(guide, "layers of an array texture", GL_MAX_ARRAY_TEXTURE_LAYERS, 256);
    tellLimit(guide, "side of a texture", GL_MAX_TEXTURE_SIZE, 1024);
    tellLimit(guide, "bytes of a uniform block", GL_MAX_UNIFORM_BLOCK_SIZE, 16384);
    tellLimit(guide, "texels of a buffer texture", GL_MAX_TEXTURE_BUFFER_SIZE, 65536);
    return guide.finish();
}
