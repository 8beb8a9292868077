// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The header of a Radiance picture: which of its lines count, and what they must say. Knows no OpenGL and logs
/// nothing. Not installed.

#include "Export.h"

#include <QtGlobal>

#include <string_view>

namespace Harrow::Vrk
{

/// What every picture begins with.
inline constexpr std::string_view kRadianceMagic = "#?RADIANCE\n";

struct RadianceHeader
{
    /// Whether all lines are there and were accepted. If not, the rest is what could be read.
    bool valid = false;
    /// 1 for 32-bit_rle_rgbe, 2 for 32-bit_rle_xyze, 0 when no line tells.
    qint32 format = 0;
    /// Product of all exposures that the file tells. Nothing applies it to the pixels.
    float exposure = 1.0f;
    /// The resolution line: direction and name of two different axes. The first one's size is the height even where it
    /// is X.
    char ySign = '-';
    char yAxis = 'Y';
    quint32 height = 0;
    char xSign = '+';
    char xAxis = 'X';
    quint32 width = 0;
    /// The first row, which may be where the bytes end.
    const unsigned char* pixels = nullptr;
};

/// Never looks outside [`begin`, `end`), whose bytes stay the caller's.
VRKGL_EXPORT RadianceHeader readRadianceHeader(const unsigned char* begin, const unsigned char* end);

} // namespace Harrow::Vrk
