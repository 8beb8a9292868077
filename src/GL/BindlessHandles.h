// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The handles of bindless textures: the entry points of whichever extension the driver has, under one name, and the
/// books of what was made resident. Not installed.

#include "BindlessTextureFunctions.h"
#include "Export.h"

#include <QHash>
#include <QPointer>

namespace Harrow::Vrk
{

class Texture;

/// A call for which the driver has no entry point is reported as "OpenGL function '%s' is not available" (critical,
/// guarded), and does nothing. Residency belongs to a context, so the books say in which one it was asked for.
class VRKGL_EXPORT BindlessHandles
{
public:
    /// Whether the current context has an extension that brings them.
    static bool isSupported();

    /// Looks the entry points up: of `GL_ARB_bindless_texture` or else of `GL_NV_bindless_texture`. Having neither is
    /// reported.
    BindlessHandles();

    bool isArb() const;
    bool isNv() const;

    /// The handle of a texture, which OpenGL lets nobody change from now on. 0 where OpenGL has none to give.
    quint64 handleOf(unsigned textureID) const;

    /// Makes the handle of `texture` resident unless it is. Nothing is counted.
    void makeResident(quint64 handle, Texture* texture);
    /// Makes it non-resident if it is resident.
    void makeNonResident(quint64 handle);

    /// The texture of the handle is about to be deleted. What was made resident here, and is still so in the current
    /// context, is made non-resident: a driver may keep, or lose, the texture of a resident handle.
    void textureEnds(quint64 handle);
    /// The same for all.
    void allTexturesEnd();

private:
    friend struct BindlessHandlesTestAccess;

    struct Residency
    {
        QPointer<Texture> texture;
        void* context;
    };

    bool isResident(quint64 handle) const;
    void end(quint64 handle, const Residency& residency) const;
    /// `name` has no suffix.
    void reportMissing(const char* name) const;

    bool _arbBindless = false;
    bool _nvBindless = false;
    BindlessTextureFunctions _functions;
    QHash<quint64, Residency> _residencies;
};

} // namespace Harrow::Vrk
