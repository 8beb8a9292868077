// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Textures that a shader reaches through an array of samplers: which slot has which texture unit, and a texture of one
/// row that tells the slot of each token. Shared by the managers that draw in this way. Not installed.

#include "Export.h"
#include "TextureToken.h"

#include <QList>

#include <memory>

namespace Harrow::Vrk
{

class ShaderProgram;
class Texture;
struct TextureUnits;

/// The uniforms are `u_ManagedTextureSlots`, the samplers, and `u_TextureTokenManagedTextureSlotMap`, the row. What the
/// row holds is the manager's own matter. Everything happens on the thread of the current context.
class VRKGL_EXPORT SamplerSlots
{
public:
    /// How the row of tokens is kept and given to OpenGL.
    struct MapFormat
    {
        int internalFormat;
        unsigned format;
        unsigned type;
    };

    /// One texel for each token, up to the highest one.
    struct MapTexels
    {
        int width;
        const void* data;
    };

    /// Makes no OpenGL call.
    explicit SamplerSlots(const MapFormat& mapFormat);
    /// The context must be current.
    ~SamplerSlots();

    /// Forgets all slots. Row and default texture stay.
    void clear();
    /// The row has got another width: it is made anew.
    void discardMap();
    /// The row is uploaded at the next bind.
    void setMapDirty();

    /// Binds the texture and returns its slot: the one that has its unit already, or the first that no bind in force
    /// holds, or a new one. A texture for which no unit is free takes the slot of unit -1. `units` is null for the
    /// first texture of a list and is kept for the others.
    int bind(Texture& texture, const TextureUnits*& units);
    /// Undoes it. Without a slot that is reported; `token` is named in the report.
    void unbind(const TextureToken& token, Texture& texture, const TextureUnits*& units);

    /// Binds the row, uploads it if it is dirty, and sets both uniforms of `program`, or of the program in use if null.
    /// Slots that nobody holds get a texture of their own. More than `maxSlots` in use: "Requesting %d texture slots
    /// but only %d available. Rendering will be incorrect!" (warning, guarded).
    void bind(const ShaderProgram* program, int maxSlots, const MapTexels& texels);
    /// Undoes it. Reported where there is no row.
    void unbind();

private:
    friend struct SamplerSlotsTestAccess;

    void reserve();
    int takeSlot(int unit);
    void makeDefaultTexture();
    void makeMapTexture(int width);
    void uploadMap(const MapTexels& texels);
    int uploadableSlots(int maxSlots) const;
    void fillUnused();
    void bindDefaultTexture();

    const MapFormat _mapFormat;
    bool _slotMapDirty = true;
    std::unique_ptr<Texture> _slotMapTexture;
    QList<int> _slotUnits;
    QList<int> _slotRefCounts;
    std::unique_ptr<Texture> _defaultTexture;
    Texture* _boundDefaultTexture = nullptr;
};

} // namespace Harrow::Vrk
