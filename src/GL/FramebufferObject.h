// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One OpenGL framebuffer, and a table of which texture sits on which of its attachment points, so that attachments can
/// be swapped, asked for and taken off without asking OpenGL.

#include "Bindable.h"
#include "Export.h"
#include "GLFunctions.h"

#include <QHash>
#include <QList>
#include <QObject>

namespace Harrow::Vrk
{

class Texture;

/// Bound to `GL_FRAMEBUFFER`, for drawing and reading alike. Everything but the plain queries needs the framebuffer's
/// context current on the calling thread; framebuffers are not shared between contexts. Attachments are changed only
/// while it is bound.
///
/// The textures are not owned, and must live until they are detached or the framebuffer goes.
///
///     FramebufferObject framebuffer(nullptr);
///     framebuffer.bind();
///     framebuffer.attach(&color, GL_COLOR_ATTACHMENT0, 0);
///     framebuffer.setDrawBuffers();
///
/// A broken precondition is an assertion, and false or null with no OpenGL call; `setDrawBuffers` reports and goes on.
class VRKGL_EXPORT FramebufferObject : public QObject, public Bindable
{
    Q_OBJECT

public:
    /// Generates a name.
    explicit FramebufferObject(QObject* parent);

    /// Takes over a name made elsewhere, which is deleted at the end unless `setFBO(0)` has released it.
    FramebufferObject(unsigned int fbo, QObject* parent);

    /// Deletes the name. A bound framebuffer is reported and its name left alive. Textures that are still attached stay
    /// with whoever holds them, and in the count of `NumActiveFBOTextures`.
    ~FramebufferObject() override;

    bool bind() override;
    /// Brings the default framebuffer back, not the one that was bound before.
    bool unbind() override;

    /// Gives the object another name. 0 releases the old one, which is then somebody else's to delete; another name
    /// in the place of an old one forgets that without deleting it.
    void setFBO(GLuint fbo);

    /// \name Attaching
    /// The point must be free, but for `attachUpdate`. `level` is a mip level. Colour points are remembered for
    /// `setDrawBuffers` in the order of their coming.
    ///@{
    /// A texture that is one picture. Fails for `GL_TEXTURE_3D`, `GL_TEXTURE_2D_ARRAY` and their proxies. Other arrays
    /// are handed to OpenGL as they are, and drivers may refuse them.
    bool attach(Texture* texture, GLenum attachmentPoint, int level);
    /// One layer of an array, of a cube map array (whose faces are layers) or of a 3D texture. The layer is not
    /// remembered.
    bool attach3D(Texture* texture, GLenum attachmentPoint, int layer, int level);
    /// All layers at once, for a geometry stage to choose from. Fails for the targets that `attach` takes.
    bool attachLayers(Texture* texture, GLenum attachmentPoint, int level);
    /// `attach`, also in the place of what is there, where a cube map or another array comes with all its layers. No
    /// OpenGL call when the same texture is there at the same level.
    bool attachUpdate(Texture* texture, GLenum attachmentPoint, int level);

    /// Attach a new texture of the given form, made as by `Texture::create2D`. It has no owner until the caller
    /// detaches it; if it cannot be attached it is deleted again.
    void createTexture2D(GLenum attachmentPoint, GLenum target, GLenum internalFormat, int width, int height);
    /// The same as by `Texture::create3D`, with one layer on each of the `depth` points from `attachmentPoint` on.
    void createTexture3D(GLenum attachmentPoint, GLenum target, GLenum internalFormat, int width, int height,
                         int depth);
    ///@}

    /// \name Detaching
    ///@{
    /// Empties the point and returns its texture.
    Texture* detach(GLenum attachmentPoint);
    void detachAll();
    /// Also gives one reference of the texture back to the pool of `TextureManager::Instance()`, so that it may be gone
    /// when the pointer returns. A texture that the pool does not know stays alive. Null for a free point.
    Texture* detachAndRelease(GLenum attachmentPoint);
    void detachAndReleaseAll();
    ///@}

    /// Draws to all attached colour points, in the order of their attaching. With none OpenGL draws to no colour.
    void setDrawBuffers();

    /// The name in OpenGL, 0 if there is none.
    GLuint getFBO() const;

    /// The texture on a point. Null, after an assertion, for a free one.
    Texture* attachment(GLenum attachmentPoint) const;
    bool hasAttachment(GLenum attachmentPoint) const;
    /// The points in use, ascending.
    QList<GLenum> attachmentPoints() const;

    /// Whether OpenGL can draw into it. If not, says in the debug log (guarded) "Framebuffer is incomplete: %s". Binds
    /// and unbinds when it is not bound, and then mostly cannot name the reason.
    bool isComplete();

    /// Number of names held.
    static int NumAlive();
    /// Number of times that a texture was attached or asked to be by `attachUpdate`, since the last reset.
    static int NumFBOTextures();
    /// Number of attachments in force.
    static int NumActiveFBOTextures();
    static void ResetNumFBOTextures();

protected:
    /// Make the name, and give it back. While bound both are reported and false, and so is `create` with a name
    /// already. Without a name `destroy` does nothing and is true.
    bool create();
    bool destroy();

private:
    friend struct FramebufferObjectTestAccess;

    bool isReadyToAttach() const;
    bool canAttachNew(const Texture* texture, GLenum attachmentPoint) const;
    bool recordAttachment(Texture* texture, GLenum attachmentPoint, int level);

    GLuint _fbo = 0;
    bool _fboBound = false;
    QHash<GLenum, Texture*> _attachments;
    QHash<GLenum, int> _attachmentLevels;
    QList<GLenum> _drawBuffers;
};

} // namespace Harrow::Vrk
