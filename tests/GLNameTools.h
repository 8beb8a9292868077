// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Whether calls leave OpenGL objects behind.

#include "support/CallLog.h"

#include <QLatin1String>
#include <QString>

namespace Harrow::Vrk::Test
{

/// How many more OpenGL objects were made than deleted.
inline int namesLeft(const CallLog& calls)
{
    int left = 0;
    for (const char* const kind : {"Textures", "Framebuffers", "Buffers", "VertexArrays"})
        left += calls.count(QStringLiteral("glGen") + QLatin1String(kind)) -
                calls.count(QStringLiteral("glDelete") + QLatin1String(kind));
    for (const char* const kind : {"Shader", "Program"})
        left += calls.count(QStringLiteral("glCreate") + QLatin1String(kind)) -
                calls.count(QStringLiteral("glDelete") + QLatin1String(kind));
    return left;
}

} // namespace Harrow::Vrk::Test
