// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The renderers behind the cube map conversions: each draws a quad over every face of a new cube map, or cube map
/// array, with a fragment stage that looks a direction up in the source. Not installed.

#include "Export.h"

#include <memory>

class QString;
class QVariant;

namespace Harrow::Vrk
{

class DrawBuffers;
class ShaderProgram;
class Texture;

/// What all renderers share: the quad, the passes over faces and cubes, and the new texture.
///
/// A cube map array is drawn in batches: one draw fills the same face of `_batchSize` cubes, each on a colour
/// attachment of its own. A renderer serves one conversion, and goes with it in the same context.
class VRKGL_EXPORT ZelRenderCubemapBase
{
public:
    /// Makes the quad. "Failed to upload buffers." in the debug log (guarded) when that fails.
    ZelRenderCubemapBase();
    virtual ~ZelRenderCubemapBase();
    ZelRenderCubemapBase(const ZelRenderCubemapBase&) = delete;
    ZelRenderCubemapBase& operator=(const ZelRenderCubemapBase&) = delete;

    /// Makes the program. Whether there is one, compiled or not.
    virtual bool createProgram();
    /// Before the draw of a face, 0 to 5, with the framebuffer ready and the program in use. The face is drawn when
    /// this is true; it is false, with uniforms left alone, when the program is not linked.
    virtual bool setupFace(int face);
    virtual void finishFace() = 0;
    /// Around `createProgram`.
    virtual void beginProgram();
    virtual void endProgram();

    /// Cubes of a new array texture, 1 at first.
    void setArrayCubes(int cubes);

    /// A new texture of `target` (`GL_TEXTURE_CUBE_MAP` or `GL_TEXTURE_CUBE_MAP_ARRAY`) with all faces drawn, `size`
    /// texels wide and high, and mipmaps. It belongs to the caller. Null for another target, after "[ !! ] Unhandled
    /// Texture Type 0x%X", without a program or a texture unit, and for an array where the context has none.
    Texture* renderToNewTexture(unsigned target, int internalFormat, int size);

protected:
    /// Whether there is a program that can be used.
    bool hasLinkedProgram() const;
    /// Nothing without such a program.
    void setUniform(const QString& name, const QVariant& value);

    int _arrayCubes = 1;
    int _layerCount = 1; ///< Cubes of the texture that is drawn into.
    int _layer = 0;      ///< First cube of the running batch.
    int _face = 0;
    int _batchSize = 1;
    int _activeBatch = 1; ///< Cubes in the running batch.
    std::unique_ptr<ShaderProgram> _program;
    std::unique_ptr<DrawBuffers> _quad;

private:
    void allocate(unsigned target, int internalFormat, int size) const;
    bool render(const Texture& texture, int internalFormat, int size);
    bool enableQuadArrays();
    bool renderBatch(const Texture& texture, int size);
    bool attachFace(const Texture& texture) const;
    void setDrawBuffers() const;
    void clearFace() const;
    void drawQuad();
};

/// A renderer with a source texture, which is not owned and outlives it.
class VRKGL_EXPORT ZelRenderCubemapBaseTexture : public ZelRenderCubemapBase
{
public:
    /// `colorSpace` is kept; nothing reads it.
    ZelRenderCubemapBaseTexture(Texture* source, int colorSpace, int minFilter, int magFilter);

    /// Binds the source and gives it the filters, for good.
    bool setupFace(int face) override;
    /// Unbinds the source.
    void finishFace() override;

protected:
    /// The common vertex stage, `fragmentShader` and "Func_ColorSpace.glslc".
    bool createLayoutProgram(const QString& fragmentShader);
    /// Picks the batch size, and builds the common vertex stage and `fragmentShader` for it.
    bool createFilterProgram(const QString& fragmentShader);

    Texture* _source;
    int _colorSpace;
    int _minFilter;
    int _magFilter;
};

// ---- from the layouts of an image ----------------------------------------------------------------------------------
// The source is a 2D texture, read with nearest filtering.

class VRKGL_EXPORT ZelRenderCubemap_Cross : public ZelRenderCubemapBaseTexture
{
public:
    ZelRenderCubemap_Cross(Texture* source, int colorSpace, bool portrait);

    bool createProgram() override;
    bool setupFace(int face) override;

private:
    bool _portrait;
};

class VRKGL_EXPORT ZelRenderCubemap_LatLongSphere : public ZelRenderCubemapBaseTexture
{
public:
    ZelRenderCubemap_LatLongSphere(Texture* source, int colorSpace);

    bool createProgram() override;
};

class VRKGL_EXPORT ZelRenderCubemap_Sphere : public ZelRenderCubemapBaseTexture
{
public:
    ZelRenderCubemap_Sphere(Texture* source, int colorSpace);

    bool createProgram() override;
};

class VRKGL_EXPORT ZelRenderCubemap_Linear : public ZelRenderCubemapBaseTexture
{
public:
    ZelRenderCubemap_Linear(Texture* source, int colorSpace);

    bool createProgram() override;
    bool setupFace(int face) override;
};

// ---- from a cube map -----------------------------------------------------------------------------------------------
// The source is a cube map, read with trilinear filtering across its edges.

/// Its fragment stage never compiles: the number of the batch is defined under the other filter's name. So the faces
/// keep their clear colours.
class VRKGL_EXPORT ZelRenderCubemap_Blur : public ZelRenderCubemapBaseTexture
{
public:
    explicit ZelRenderCubemap_Blur(Texture* source);

    bool createProgram() override;
    bool setupFace(int face) override;
    void finishFace() override;
};

class VRKGL_EXPORT ZelRenderCubemap_NDotL : public ZelRenderCubemapBaseTexture
{
public:
    /// The cubes of an array go from the plain cosine to nearly a mirror by the root of order `power`.
    ZelRenderCubemap_NDotL(Texture* source, float power);

    bool createProgram() override;
    bool setupFace(int face) override;
    void finishFace() override;

private:
    float _power;
};

} // namespace Harrow::Vrk
