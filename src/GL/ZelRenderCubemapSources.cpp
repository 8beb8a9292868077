// SPDX-License-Identifier: MIT
// The renderers by what they read: four layouts of an image, and two filters of a cube map.
#include "ZelRenderCubemap.h"

#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "ZelRenderCubemapMatrices.h"

#include <QString>
#include <QVariant>

#include <cmath>

namespace Harrow::Vrk
{
namespace
{

/// How many cubes one draw fills: the largest number that leaves none over.
int batchSizeFor(int cubes)
{
    for (const int size : {8, 4, 2})
        if (cubes % size == 0)
            return size;
    return 1;
}

/// A cube's place among all of them, from 0 to 1.
float blurOf(int cube, int cubes)
{
    return cubes > 1 ? static_cast<float>(cube) / static_cast<float>(cubes - 1) : 0.0f;
}

QString blurUniform(int slot)
{
    return QStringLiteral("s_blur[%1].value").arg(slot);
}

/// How the build went is not looked at: a face that cannot be drawn keeps its clear colour.
void build(ShaderProgram& program)
{
    program.compile();
    program.link();
}

} // namespace

// ---- a source ------------------------------------------------------------------------------------------------------

ZelRenderCubemapBaseTexture::ZelRenderCubemapBaseTexture(Texture* source, int colorSpace, int minFilter, int magFilter)
    : _source(source), _colorSpace(colorSpace), _minFilter(minFilter), _magFilter(magFilter)
{
}

bool ZelRenderCubemapBaseTexture::setupFace(int face)
{
    if (!_source->bind())
        return false;
    glTexParameteri(_source->target(), GL_TEXTURE_MIN_FILTER, _minFilter);
    glTexParameteri(_source->target(), GL_TEXTURE_MAG_FILTER, _magFilter);
    setUniform(QStringLiteral("s_texture"), _source->unit());
    return ZelRenderCubemapBase::setupFace(face);
}

void ZelRenderCubemapBaseTexture::finishFace()
{
    _source->unbind();
}

bool ZelRenderCubemapBaseTexture::createLayoutProgram(const QString& fragmentShader)
{
    _program = std::make_unique<ShaderProgram>(nullptr);
    _program->setFragDataLocations({QStringLiteral("o_ZelFragData")});
    _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("CubeRender.vert"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, fragmentShader);
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("Func_ColorSpace.glslc"));
    build(*_program);
    return ZelRenderCubemapBase::createProgram();
}

bool ZelRenderCubemapBaseTexture::createFilterProgram(const QString& fragmentShader)
{
    _batchSize = batchSizeFor(_layerCount);
    GLSLMacroProcessor macroProcessor;
    // One name for both filters is interface, although the stage of the blur reads another.
    macroProcessor.addDefine(QStringLiteral("ZEL_CUBERENDER_NDOT_BATCH_SIZE"), QString::number(_batchSize));

    _program = std::make_unique<ShaderProgram>(nullptr);
    _program->setMacroProcessor(&macroProcessor);
    _program->setFragDataLocations({QStringLiteral("o_ZelFragData")});
    _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("CubeRender.vert"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, fragmentShader);
    build(*_program);
    _program->setMacroProcessor(nullptr);
    return ZelRenderCubemapBase::createProgram();
}

// ---- layouts -------------------------------------------------------------------------------------------------------

ZelRenderCubemap_Cross::ZelRenderCubemap_Cross(Texture* source, int colorSpace, bool portrait)
    : ZelRenderCubemapBaseTexture(source, colorSpace, GL_NEAREST, GL_NEAREST), _portrait(portrait)
{
}

bool ZelRenderCubemap_Cross::createProgram()
{
    return createLayoutProgram(QStringLiteral("CubeRender_Cross.frag"));
}

bool ZelRenderCubemap_Cross::setupFace(int face)
{
    setUniform(QStringLiteral("u_ZelNormalToUvMatrix"), QVariant::fromValue(cubemapCrossMatrix(face, _portrait)));
    return ZelRenderCubemapBaseTexture::setupFace(face);
}

ZelRenderCubemap_LatLongSphere::ZelRenderCubemap_LatLongSphere(Texture* source, int colorSpace)
    : ZelRenderCubemapBaseTexture(source, colorSpace, GL_NEAREST, GL_NEAREST)
{
}

bool ZelRenderCubemap_LatLongSphere::createProgram()
{
    return createLayoutProgram(QStringLiteral("CubeRender_LatLongSphere.frag"));
}

ZelRenderCubemap_Sphere::ZelRenderCubemap_Sphere(Texture* source, int colorSpace)
    : ZelRenderCubemapBaseTexture(source, colorSpace, GL_NEAREST, GL_NEAREST)
{
}

bool ZelRenderCubemap_Sphere::createProgram()
{
    return createLayoutProgram(QStringLiteral("CubeRender_Sphere.frag"));
}

ZelRenderCubemap_Linear::ZelRenderCubemap_Linear(Texture* source, int colorSpace)
    : ZelRenderCubemapBaseTexture(source, colorSpace, GL_NEAREST, GL_NEAREST)
{
}

bool ZelRenderCubemap_Linear::createProgram()
{
    return createLayoutProgram(QStringLiteral("CubeRender_Linear.frag"));
}

bool ZelRenderCubemap_Linear::setupFace(int face)
{
    setUniform(QStringLiteral("u_ZelNormalToUvMatrix"), QVariant::fromValue(cubemapLinearMatrix(face)));
    return ZelRenderCubemapBaseTexture::setupFace(face);
}

// ---- filters -------------------------------------------------------------------------------------------------------

ZelRenderCubemap_Blur::ZelRenderCubemap_Blur(Texture* source)
    : ZelRenderCubemapBaseTexture(source, 0, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR)
{
}

bool ZelRenderCubemap_Blur::createProgram()
{
    return createFilterProgram(QStringLiteral("CubeRender_Blur.frag"));
}

bool ZelRenderCubemap_Blur::setupFace(int face)
{
    for (int slot = 0; slot < _activeBatch; ++slot)
        setUniform(blurUniform(slot), blurOf(_layer + slot, _layerCount));
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    return ZelRenderCubemapBaseTexture::setupFace(face);
}

void ZelRenderCubemap_Blur::finishFace()
{
    glDisable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    ZelRenderCubemapBaseTexture::finishFace();
}

ZelRenderCubemap_NDotL::ZelRenderCubemap_NDotL(Texture* source, float power)
    : ZelRenderCubemapBaseTexture(source, 0, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR), _power(power)
{
}

bool ZelRenderCubemap_NDotL::createProgram()
{
    return createFilterProgram(QStringLiteral("CubeRender_NDotL.frag"));
}

bool ZelRenderCubemap_NDotL::setupFace(int face)
{
    for (int slot = 0; slot < _activeBatch; ++slot)
        setUniform(blurUniform(slot), std::pow(blurOf(_layer + slot, _layerCount), 1.0f / _power));
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    return ZelRenderCubemapBaseTexture::setupFace(face);
}

void ZelRenderCubemap_NDotL::finishFace()
{
    glDisable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    ZelRenderCubemapBaseTexture::finishFace();
}

} // namespace Harrow::Vrk
