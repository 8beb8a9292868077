// SPDX-License-Identifier: MIT
#include "GLPlatform.h"

#include <cstdint>

namespace Harrow::Vrk
{
namespace
{

GLPlatform* installedPlatform = nullptr;
bool processEnding = false;

} // namespace

GLPlatform::~GLPlatform() = default;

bool GLPlatform::isMissing(void* address)
{
    const auto value = reinterpret_cast<std::intptr_t>(address);
    return value == 0 || value == 1 || value == 2 || value == 3 || value == -1;
}

GLPlatform& GLPlatform::active()
{
    return installedPlatform ? *installedPlatform : native();
}

void GLPlatform::install(GLPlatform* platform)
{
    installedPlatform = platform;
}

bool GLPlatform::isProcessEnding()
{
    return processEnding;
}

void GLPlatform::markProcessEnding(bool ending)
{
    processEnding = ending;
}

} // namespace Harrow::Vrk
