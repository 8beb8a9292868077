// SPDX-License-Identifier: MIT
#include "GLPlatform.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace Harrow::Vrk
{
namespace
{

/// WGL answers per context by itself, so no table of requirements is consulted here.
class WglPlatform final : public GLPlatform
{
public:
    void* procAddress(const char* name) override
    {
        return reinterpret_cast<void*>(wglGetProcAddress(name));
    }

    void* moduleSymbol(const char* name) override
    {
        const HMODULE module = GetModuleHandleA("OpenGL32.dll");
        return module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
    }

    void* currentContext() override
    {
        return wglGetCurrentContext();
    }
};

} // namespace

GLPlatform& GLPlatform::native()
{
    // Never destroyed: objects may ask for the current context while the process ends.
    static WglPlatform* const platform = new WglPlatform;
    return *platform;
}

} // namespace Harrow::Vrk
