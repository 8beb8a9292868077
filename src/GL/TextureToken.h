// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A texture as shaders and instance data know it: a number. What stands behind the number, a texture, an image file, a
/// colour or a set of UDIM patches, is told by the texture manager that issued it.

#include "Export.h"

#include <QList>
#include <QtGlobal>

namespace Harrow::Vrk
{

/// A plain value of 8 bytes, which goes into a record as it is; GLSL sees it as `VrkTextureToken`, a `uvec2` with the
/// low word first. Tokens of a manager are dense: they count from 0 and are reused, so that tables are indexed by them.
struct VRKGL_EXPORT TextureToken
{
    /// The invalid token: all bits set.
    constexpr TextureToken() = default;
    constexpr explicit TextureToken(quint64 value) : token(value) {}

    /// \name A list as a set
    /// A list that is filled by `insert` and `unite` alone holds each token once, in the order of their coming. Each
    /// search is linear.
    ///@{
    /// The first element equal to `token`, or the end.
    static QList<TextureToken>::iterator find(QList<TextureToken>& list, const TextureToken& token);
    /// The element equal to `token`, appended if there is none.
    static QList<TextureToken>::iterator insert(QList<TextureToken>& list, const TextureToken& token);
    /// Inserts each element of `other`, in order, and returns `list`.
    static QList<TextureToken>& unite(QList<TextureToken>& list, const QList<TextureToken>& other);
    ///@}

    /// By the number.
    friend constexpr bool operator==(const TextureToken& a, const TextureToken& b)
    {
        return a.token == b.token;
    }
    friend constexpr bool operator!=(const TextureToken& a, const TextureToken& b)
    {
        return a.token != b.token;
    }

    /// All bits set is the invalid token.
    quint64 token = ~quint64(0);
};

/// The token of nothing. Samples as `VRK_INVALID_TEXEL`.
inline constexpr TextureToken INVALID_TOKEN;

/// Qt's hash of the number with seed 0, its two halves folded into one.
VRKGL_EXPORT unsigned int qHash(const TextureToken& token);

} // namespace Harrow::Vrk

Q_DECLARE_TYPEINFO(Harrow::Vrk::TextureToken, Q_PRIMITIVE_TYPE);
