// SPDX-License-Identifier: MIT
#include "MandelbrotGPUTextureStreamer.h"

#include "AutoBinder.h"
#include "Diagnostics.h"
#include "GLOptionalFunctions.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "StreamerTools.h"

#include <QVariant>
#include <QVector4D>

namespace Harrow::Vrk
{
namespace
{

constexpr int kGroupSize = 32; // as in the shader

constexpr char kShader[] = R"(#version 430

layout (local_size_x = 32, local_size_y = 32) in;

layout (binding = 0, rgba8) writeonly uniform image2D u_texture;
uniform uint u_textureWidth;
uniform uint u_textureHeight;
// Left edge, step to the right, lower edge, step upwards.
uniform vec4 u_region;

const float kBailoutRadius = 4.0;

float countIterations(float real, float imag, int maxIter)
{
    float r = real;
    float i = imag;
    for (int n = 0; n < maxIter; ++n)
    {
        float r2 = r * r;
        float i2 = i * i;
        if (r2 + i2 > kBailoutRadius)
        {
            float log_zn = log(r2 + i2) / 2.;
            float nu = log(log_zn / log(2.)) / log(2.);
            return float(n + 1) - nu;
        }
        i = 2. * r * i + imag;
        r = r2 - i2 + real;
    }
    return float(maxIter);
}

vec4 computeColor(float iter, int maxIter)
{
    float t = iter / float(maxIter);
    return vec4(9.0 * (1. - t) * t * t * t,
                15.0 * (1. - t) * (1. - t) * t * t,
                8.5 * (1. - t) * (1. - t) * (1. - t) * t,
                1.0);
}

void main()
{
    const int maxIter = 256;
    uvec2 texel = gl_GlobalInvocationID.xy;
    if (texel.x >= u_textureWidth || texel.y >= u_textureHeight)
        return;
    float real = u_region.x + u_region.y * float(texel.x);
    float imag = u_region.z + u_region.w * float(texel.y);
    float fiter = countIterations(real, imag, maxIter);
    float iter = floor(fiter);
    vec4 color = mix(computeColor(iter, maxIter), computeColor(iter + 1., maxIter), fiter - iter);
    imageStore(u_texture, ivec2(texel), color);
}
)";

// Of the context of the streamer that was made last.
PFN_glDispatchCompute dispatchCompute = nullptr;

GLuint groupsFor(int size)
{
    return (static_cast<GLuint>(size) + kGroupSize - 1) / kGroupSize;
}

} // namespace

MandelbrotGPUTextureStreamer::MandelbrotGPUTextureStreamer(int width, int height, QObject* parent)
    : MandelbrotTextureStreamer(width, height, parent), _program(new ShaderProgram(nullptr))
{
    _program->addShader(GL_COMPUTE_SHADER, QString::fromLatin1(kShader));
    _program->compile();
    _program->link();
    dispatchCompute = reinterpret_cast<PFN_glDispatchCompute>(getGLProcAddress("glDispatchCompute", false));
}

MandelbrotGPUTextureStreamer::~MandelbrotGPUTextureStreamer()
{
    delete _program;
}

MandelbrotGPUTextureStreamer* MandelbrotGPUTextureStreamer::make(int width, int height, QObject* parent)
{
    if (!isAtLeastOne(width, "Invalid width") || !isAtLeastOne(height, "Invalid height"))
        return nullptr;
    return new MandelbrotGPUTextureStreamer(width, height, parent);
}

void MandelbrotGPUTextureStreamer::setUniforms(int width, int height)
{
    _program->setUniform(QStringLiteral("u_textureWidth"), static_cast<unsigned int>(width));
    _program->setUniform(QStringLiteral("u_textureHeight"), static_cast<unsigned int>(height));
    const QVector4D region(static_cast<float>(_domainMinX), static_cast<float>((_domainMaxX - _domainMinX) / width),
                           static_cast<float>(_domainMinY), static_cast<float>((_domainMaxY - _domainMinY) / height));
    _program->setUniform(QStringLiteral("u_region"), region);
    _program->setUniform(QStringLiteral("u_texture"), 0);
}

bool MandelbrotGPUTextureStreamer::updateTexture()
{
    if (!_program->isLinked() || !_dirty)
        return false;
    VRK_ASSERT_RETURN(nullptr != dispatchCompute, false, "OpenGL function 'glDispatchCompute' is not available");
    const ActiveUnitGuard activeUnit;
    const AutoBinder programBinder(_program);
    if (!bind())
        return false;
    const int w = width(0);
    const int h = height(0);
    const bool hasTexels = w > 0 && h > 0;
    VRK_ASSERT(hasTexels, "The texture has no texels: %d x %d", w, h);
    if (hasTexels)
    {
        setUniforms(w, h);
        glBindImageTexture(0, textureID(), 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8);
        dispatchCompute(groupsFor(w), groupsFor(h), 1);
        checkGLError(__FILE__, __LINE__);
        glMemoryBarrier(GL_TEXTURE_FETCH_BARRIER_BIT);
        glBindImageTexture(0, 0, 0, GL_FALSE, 0, GL_WRITE_ONLY, GL_RGBA8);
        glFlush();
        _dirty = false;
    }
    unbind();
    return hasTexels;
}

} // namespace Harrow::Vrk
