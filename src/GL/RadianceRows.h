// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The rows of a Radiance picture, from the bytes of the file to floats: plain, run-length coded channel by channel, or
/// run-length coded the old way. Knows no OpenGL and logs nothing. Not installed.

#include "Export.h"

#include <QtGlobal>

namespace Harrow::Vrk
{

/// What became of a row.
enum class RadianceRow
{
    eRead,
    /// The row says another width than the picture's. Nothing is read, and the next row begins at the same byte.
    eBadWidth,
    /// A run of equal bytes goes beyond the row; `runStart` and `runEnd` tell of it.
    eOverlongRun,
    /// The bytes end before the row does, or literal bytes or an old run go beyond it.
    eNoData
};

/// Walks through the rows. Never reads outside its bytes, which it does not own, nor writes outside a row.
class VRKGL_EXPORT RadianceRowReader
{
public:
    /// Rows of `width` pixels in [`begin`, `end`).
    RadianceRowReader(const unsigned char* begin, const unsigned char* end, quint32 width);

    /// Reads the next row into 3 * width floats; `eBadWidth` leaves them as they are. `rgbe` is room for 4 * width
    /// bytes that are nobody's before and after. Behind `eOverlongRun` and `eNoData` there is no next row.
    RadianceRow read(float* row, unsigned char* rgbe);

    /// The first byte of the next row.
    const unsigned char* next() const
    {
        return _next;
    }

    /// Of the run that was too long: its first pixel, and the one behind its last.
    quint32 runStart() const
    {
        return _runStart;
    }
    quint32 runEnd() const
    {
        return _runEnd;
    }

    /// The fewest bytes that a whole row of this width takes, however it is coded.
    static quint64 leastBytes(quint32 width);

private:
    RadianceRow readFlat(float* row);
    RadianceRow readRuns(float* row, unsigned char* rgbe);
    RadianceRow readChannel(unsigned char* channel);
    RadianceRow readOldRuns(float* row);
    quint64 bytesLeft() const;

    const unsigned char* _next;
    const unsigned char* _end;
    quint32 _width;
    quint32 _runStart = 0;
    quint32 _runEnd = 0;
};

/// What the bytes of a colour count for beside the exponent byte `exponent`: 2 to the power of it less 136, and for 0
/// nothing.
VRKGL_EXPORT float radianceFactor(unsigned char exponent);

} // namespace Harrow::Vrk
