// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture image units of one context: which bound texture holds which unit, how often it is bound, and which units
/// are free. Book-keeping only, but for the making of a context's record. Not installed.

#include "Export.h"

#include <QHash>
#include <QMap>

namespace Harrow::Vrk
{

struct VRKGL_EXPORT TextureUnits
{
    /// The record of the current context, made with all units free on first demand. A record stays where it is to the
    /// end of the process, also when its context is gone, and belongs to the thread of its context: only the finding
    /// and making is guarded.
    static TextureUnits& ofCurrentContext();

    /// The record of the current context if there is one, else null. Makes none and takes no lock.
    static const TextureUnits* findOfCurrentContext();

    /// Forgets all records. For tests, whose contexts come again at the same place.
    static void forgetAll();

    /// Frees the units 0 to `maxUnits` - 1 of a new record. Reports if the record is not new, and goes on; `context` is
    /// named in the report.
    void initilizeFreeTextureUnits(int maxUnits, const void* context);

    /// The unit of a bound texture, or -1.
    int unitOf(unsigned texture) const;

    /// Gives the highest free unit to a texture that has none, with one bind in force, and returns it. There must be
    /// one.
    unsigned take(unsigned texture);

    /// Takes the unit from a texture that has one, whatever its count.
    void release(unsigned texture);

    int maxTextureImageUnits = 0;
    QHash<unsigned, unsigned> textureToUnitMaps;
    QHash<unsigned, int> boundTextureCounts;
    /// Ascending; key and value are the same.
    QMap<unsigned, unsigned> freeTextureUnits;
};

} // namespace Harrow::Vrk
