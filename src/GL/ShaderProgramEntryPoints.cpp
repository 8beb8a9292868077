// SPDX-License-Identifier: MIT
#include "ShaderProgramEntryPoints.h"

#include "GLUtilities.h"

namespace Harrow::Vrk
{
namespace
{

template <typename Function> void lookUp(Function& function, const char* name)
{
    function = reinterpret_cast<Function>(getGLProcAddress(name, false));
}

} // namespace

void ShaderProgramEntryPoints::load()
{
    if (!getProgramBinary)
    {
        if (hasGLExtension("GL_ARB_get_program_binary"))
        {
            lookUp(getProgramBinary, "glGetProgramBinary");
            lookUp(programBinary, "glProgramBinary");
            lookUp(programParameteri, "glProgramParameteri");
        }
        else if (hasGLExtension("GL_OES_get_program_binary"))
        {
            // There is no glProgramParameteri on this road, and so binaries count as unsupported.
            lookUp(getProgramBinary, "glGetProgramBinaryOES");
            lookUp(programBinary, "glProgramBinaryOES");
        }
    }
    if (!getProgramInterfaceiv &&
        (openGlVersionSupported(4, 3) || hasGLExtension("GL_ARB_shader_storage_buffer_object")))
    {
        lookUp(getProgramInterfaceiv, "glGetProgramInterfaceiv");
        lookUp(getProgramResourceName, "glGetProgramResourceName");
        lookUp(getProgramResourceIndex, "glGetProgramResourceIndex");
        lookUp(shaderStorageBlockBinding, "glShaderStorageBlockBinding");
    }
}

ShaderProgramEntryPoints& shaderProgramEntryPoints()
{
    static ShaderProgramEntryPoints entryPoints;
    return entryPoints;
}

} // namespace Harrow::Vrk
