// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One OpenGL texture: its name, its target, the size that it was made with, and the texture image unit that it holds
/// while it is bound. Whoever samples a texture binds it and gives the sampler what `unit` says; nobody chooses units.

#include "Bindable.h"
#include "Export.h"

#include <QObject>

namespace Harrow::Vrk
{

/// Either the owner of a name that it generated, or a wrapper around a name that somebody else made and deletes.
/// Everything but the plain queries needs the texture's context current, or one that shares with it, on the calling
/// thread.
///
/// **Units.** Each context has a pool of `GL_MAX_TEXTURE_IMAGE_UNITS` units, at most 1024 of them. The first bind of a
/// name in a context takes the highest free unit, further binds are counted, and the unit is free again after as many
/// unbinds. The books are kept for each pair of context and name: two objects that wrap one name share unit and count.
/// A texture that is destroyed while bound leaves its unit taken, and its name bound in the books: if OpenGL gives that
/// name out again, the new texture counts as bound already, and its bind binds nothing.
///
///     const AutoBinder binder(texture);
///     program->setUniform(samplerLocation, texture->unit());
///
/// The first `bind`, `unbind`, `isBound`, `unit` or level query in a context opens its books with one query of that
/// limit; what fails for want of a name or target opens none. The books outlive the context: another one that comes to
/// the same address goes on with them, so unbind everything before a context goes.
///
/// **Recorded and real size.** The size and internal format that `setSize`, the full constructor, `create2D` and
/// `create3D` record serve the library alone, and can be set once. `width` and its kin ask OpenGL. The multisample
/// forms record nothing.
///
/// Every precondition is an assertion. Where a function has a result a broken one gives false or -1 and changes
/// nothing; the others report and go on, so that also a read-only texture is changed by whoever ignores the report.
class VRKGL_EXPORT Texture : public QObject, public Bindable
{
    Q_OBJECT

public:
    /// Generates a name. No target yet, no size.
    explicit Texture(QObject* parent);

    /// Generates a name and records what the caller makes of it with image calls of its own; there is no storage yet.
    /// Sizes in texels of the base level.
    Texture(unsigned target, int internalFormat, int width, int height, int depth, QObject* parent);

    /// Wraps `textureID`, which somebody else owns. No target yet, no size. 0 is reported.
    Texture(unsigned textureID, QObject* parent);

    /// Deletes the name if this object generated it; at process exit no OpenGL call is made. Gives no unit back. An
    /// object without a name is reported.
    ~Texture() override;

    /// Make undefined storage for the base level, with nearest filtering, and record its size: `create2D` for
    /// `GL_TEXTURE_2D`, `create3D` for `GL_TEXTURE_2D_ARRAY` and `GL_TEXTURE_3D`. Another target is reported and
    /// used. The transfer format and type are those of `formatFromInternalFormat` and `typeFromInternalFormat`; where
    /// these know none, they say so and OpenGL refuses the call. Bind for their own length only. When that bind fails,
    /// which it reports, they go on, and change what the active unit holds. Return this object.
    Texture& create2D(unsigned target, int internalFormat, int width, int height);
    Texture& create3D(unsigned target, int internalFormat, int width, int height, int depth);

    /// The same with `samples` samples for each texel at fixed locations, for `GL_TEXTURE_2D_MULTISAMPLE` and
    /// `GL_TEXTURE_2D_MULTISAMPLE_ARRAY`. Record neither size nor internal format, which stay 0, and set no filter.
    Texture& create2DMultisample(unsigned target, int internalFormat, int width, int height, int samples);
    Texture& create3DMultisample(unsigned target, int internalFormat, int width, int height, int depth, int samples);

    /// Binds to the target on the texture's unit and leaves that unit active. A texture that has a unit already is not
    /// bound again. False without name or target, and with the warning "There is no available texture units" (guarded)
    /// when all are taken.
    bool bind() override;

    /// Takes one bind back and leaves the texture's unit active. The last one empties the target on that unit and frees
    /// the unit. The target is that of now: after a `setTarget` in between, the name stays where it was bound. Without
    /// name or target, or unbound in this context, it is reported and false.
    bool unbind() override;

    /// Target of later binds, unbinds and level queries, `GL_TEXTURE_2D` and its kin. Set it while unbound.
    void setTarget(unsigned target);

    /// Records size and internal format of the base level, once; a second time is reported and overwrites. Any `level`
    /// but 0 is reported and records nothing. Makes no storage.
    void setSize(int level, int internalFormat, int width, int height, int depth);

    /// Forbids every further change, for good.
    void setReadOnly();

    /// What the object holds, without a call of OpenGL. The target is 0 until it is set.
    unsigned target() const;
    unsigned textureID() const;
    bool isReadOnly() const;

    /// Whether this object generated its name and deletes it.
    bool isManaged() const;

    /// Whether the texture's name holds a unit in the current context. Unbound is no failure; without name or target it
    /// is reported, in the words of `unbind`, and false.
    bool isBound() const;

    /// The unit that its name holds in the current context, for a sampler uniform. If it holds none, or without name or
    /// target, that is reported and -1.
    int unit() const;

    /// What OpenGL says of a level, in texels; of a cube map's, what it says of the positive X face. The texture must
    /// be bound, and on the active unit, where its own `bind` leaves it until another one is bound. -1 on failure.
    int width(int level) const;
    int height(int level) const;
    int depth(int level) const;
    int internalFormat(int level) const;

    /// Whether `unit` is free in the current context. False also while this context has no books yet: it opens none,
    /// and takes no lock.
    static bool isTextureUnitFree(unsigned unit);

    /// Number of living objects. A plain counter: exact only if one thread, or one at a time, makes and destroys
    /// textures.
    static int NumAlive();

private:
    friend struct TextureTestAccess;

    bool create();
    bool destroy();

    void setNearestFilters() const;
    int getTexLevelParameteriv(int level, unsigned pname) const;
    int maxTextureUnits() const;
    int dimensionLevelSize(int dimension, int level);

    unsigned _target = 0;
    unsigned _textureID = 0;
    int _width = 0;
    int _height = 0;
    int _depth = 0;
    int _internalFormat = 0;
    int _maxLevel = 0;
    bool _managed = false;
    bool _readonly = false;
};

/// A texture of one texel in `GL_RGBA`, repeating and with nearest filtering. Each component is brought to a byte by
/// truncation of its 255-fold, neither rounded nor clamped: beyond 0 to 1 it wraps around. No parent: the caller owns
/// it. Records no size. Leaves the unpack alignment as it was. When no unit is free, that is reported and the texel
/// goes to what the active unit holds; the texture that is returned has no storage then.
VRKGL_EXPORT Texture* SolidColorTexture(float r, float g, float b, float a);

} // namespace Harrow::Vrk
