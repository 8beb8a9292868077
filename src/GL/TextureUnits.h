// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The texture image units of one context: which bound texture holds which unit, how often it is bound, and which units
/// are free. Book-keeping only, but for the making of a context's record. Not installed.

#include "Export.h"
#include "FreeNumbers.h"

#include <QHash>

class QBasicMutex;

namespace Harrow::Vrk
{

class Texture;

struct VRKGL_EXPORT TextureUnits
{
    /// Units beyond this number are left alone, whatever a driver claims: drivers have 16 to 192 of them, and the books
    /// of a made-up number would fill the memory.
    static constexpr int kMaxUnits = 1024;

    /// The record of the current context, made with all units free on first demand. A record stays where it is to the
    /// end of the process, also when its context is gone, and belongs to the thread of its context: only the finding
    /// and keeping is guarded. A thread that stays in one context takes no lock. While the guard is held no OpenGL call
    /// is made and nothing is logged, so whoever handles a message may bind textures.
    static TextureUnits& ofCurrentContext();

    /// The record of the current context if there is one, else null. Makes none and takes no lock.
    static const TextureUnits* findOfCurrentContext();

    /// Frees the units 0 to `maxUnits` - 1 of a new record; below 0 `maxUnits` counts as 0, above `kMaxUnits` as that.
    /// Reports if the record is not new, and goes on; `context` is named in the report.
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
    FreeNumbers freeTextureUnits;

private:
    friend struct TextureTestAccess;

    /// For tests, whose contexts come again at the same place. No other thread may use a record meanwhile.
    static void forgetAll();

    static QBasicMutex& recordsMutex();
};

/// Whether calls on its target reach this texture. Without a unit, which its bind reports, they would change what the
/// active unit holds.
bool hasUnit(const Texture& texture);

} // namespace Harrow::Vrk
