// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Lets a scope believe that the process is ending, when no OpenGL call may be made any more.

#include "GLPlatform.h"

namespace Harrow::Vrk::Test
{

class ProcessEnding
{
public:
    ProcessEnding()
    {
        GLPlatform::markProcessEnding();
    }
    ~ProcessEnding()
    {
        GLPlatform::markProcessEnding(false);
    }
    ProcessEnding(const ProcessEnding&) = delete;
    ProcessEnding& operator=(const ProcessEnding&) = delete;
};

} // namespace Harrow::Vrk::Test
