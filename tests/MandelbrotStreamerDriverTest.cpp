// SPDX-License-Identifier: MIT
//
// The streamers of the Mandelbrot set on the real driver: their texels, the compute shader beside a copy of its
// arithmetic, the 3.2 floor, and pictures that managers sample.
#include "MandelbrotCPUTextureStreamer.h"
#include "MandelbrotGPUTextureStreamer.h"

#include "Array2DTextureManager.h"
#include "MandelbrotPixels.h"
#include "SamplerTextureManager.h"
#include "StreamerTestTools.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

namespace Harrow::Vrk::Test
{
namespace
{

using Texels = std::vector<StreamerPixel>;
using Color = std::array<float, 3>;

Texels processorTexels(const MandelbrotDomain& domain, int width, int height)
{
    Texels texels(std::size_t(width) * std::size_t(height));
    std::vector<quint32> words(texels.size());
    computeMandelbrotPixels(MandelbrotKernel::ePlain, domain, width, height, words.data());
    for (std::size_t i = 0; i < texels.size(); ++i)
        for (std::size_t channel = 0; channel < 4; ++channel)
            texels[i][channel] = static_cast<unsigned char>(words[i] >> (8 * channel));
    return texels;
}

// ---- the shader's arithmetic in C++ --------------------------------------------------------------------------------

template <typename Real> Real countIterations(float real, float imag, int maxIter)
{
    Real r = real;
    Real i = imag;
    for (int n = 0; n < maxIter; ++n)
    {
        const Real r2 = r * r;
        const Real i2 = i * i;
        if (r2 + i2 > Real(4))
            return Real(n + 1) - std::log(std::log(r2 + i2) / 2 / std::log(Real(2))) / std::log(Real(2));
        i = 2 * r * i + Real(imag);
        r = r2 - i2 + Real(real);
    }
    return Real(maxIter);
}

Color computeColor(float iter, int maxIter)
{
    const float t = iter / float(maxIter);
    return {9.0f * (1 - t) * t * t * t, 15.0f * (1 - t) * (1 - t) * t * t, 8.5f * (1 - t) * (1 - t) * (1 - t) * t};
}

/// Red, green and blue, 0 to 255, not rounded. With `Real` as double the point stays the one in single precision.
template <typename Real> Color shaderTexel(const MandelbrotDomain& domain, int width, int height, int x, int y)
{
    const float real = float(domain.minX) + float((domain.maxX - domain.minX) / width) * float(x);
    const float imag = float(domain.minY) + float((domain.maxY - domain.minY) / height) * float(y);
    const auto fiter = float(countIterations<Real>(real, imag, 256));
    const float iter = std::floor(fiter);
    const Color low = computeColor(iter, 256);
    const Color high = computeColor(iter + 1.0f, 256);
    Color mixed;
    for (std::size_t channel = 0; channel < 3; ++channel)
        mixed[channel] = 255.0f * std::clamp(std::lerp(low[channel], high[channel], fiter - iter), 0.0f, 1.0f);
    return mixed;
}

float distance(const Color& a, const Color& b)
{
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

class MandelbrotStreamerGL : public StreamerGLFixture
{
protected:
    template <typename Streamer> static std::unique_ptr<Streamer> make(int width, int height)
    {
        return std::unique_ptr<Streamer>(Streamer::make(width, height, nullptr));
    }
};

/// For what the 3.2 floor has not: there the streamer is inactive, and what it then says is swallowed.
std::unique_ptr<MandelbrotGPUTextureStreamer> makeOnAnyProfile(int width, int height)
{
    const LogCapture quiet;
    std::unique_ptr<MandelbrotGPUTextureStreamer> streamer(MandelbrotGPUTextureStreamer::make(width, height, nullptr));
    if (GLTest::isFloor())
        while (glGetError() != GL_NO_ERROR) // a kind of shader that this OpenGL does not know
        {
        }
    return streamer;
}

/// On the floor nothing can be computed, which is what holds there.
bool isInactiveOnTheFloor()
{
    if (!GLTest::isFloor())
        return false;
    EXPECT_FALSE(makeOnAnyProfile(8, 8)->updateTexture());
    return true;
}

} // namespace

// ---- on the processor ----------------------------------------------------------------------------------------------

TEST_F(MandelbrotStreamerGL, TheTextureHoldsThePictureOfTheProcessor)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>(61, 37);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(streamerTexels(*streamer), processorTexels({-2.5, -1.0, 1.0, 1.0}, 61, 37));
    EXPECT_FALSE(streamer->updateTexture());
    streamer->setDomainExtents(-0.8, 0.05, -0.7, 0.15);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(streamerTexels(*streamer), processorTexels({-0.8, 0.05, -0.7, 0.15}, 61, 37));
}

TEST_F(MandelbrotStreamerGL, OneTexelIsEnough)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>(1, 1);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(streamerTexels(*streamer), processorTexels({-2.5, -1.0, 1.0, 1.0}, 1, 1));
}

TEST_F(MandelbrotStreamerGL, TheProcessorsUpdateLeavesFramebufferAndActiveUnitAlone)
{
    const auto streamer = make<MandelbrotCPUTextureStreamer>(8, 8);
    glActiveTexture(GL_TEXTURE3);
    const CallLog calls;
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(calls.count(QStringLiteral("glBindFramebuffer")), 0);
    EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE3);
    EXPECT_FALSE(streamer->isBound());
}

// ---- by compute shader ---------------------------------------------------------------------------------------------

TEST_F(MandelbrotStreamerGL, TheComputeShaderIsWithinOneStepOfItsArithmetic)
{
    if (isInactiveOnTheFloor())
        return;
    // Near the set's edge many steps amplify the last bit, which the two may round differently, to whole iterations.
    // Such a texel shows in that single and double precision differ too; it is left out. Neither size is a multiple of
    // 32.
    constexpr int width = 75;
    constexpr int height = 50;
    const LogCapture log;
    const auto streamer = make<MandelbrotGPUTextureStreamer>(width, height);
    for (const MandelbrotDomain& domain :
         {MandelbrotDomain{-2.5, -1.0, 1.0, 1.0}, {0.3, 0.35, 0.5, 0.6}, {-40.0, -30.0, 40.0, 30.0}})
    {
        streamer->setDomainExtents(domain.minX, domain.minY, domain.maxX, domain.maxY);
        EXPECT_TRUE(streamer->updateTexture());
        const Texels texels = streamerTexels(*streamer);
        ASSERT_EQ(texels.size(), std::size_t(width * height));
        int leftOut = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
            {
                const StreamerPixel& texel = texels[std::size_t(y * width + x)];
                EXPECT_EQ(texel[3], 255);
                const Color expected = shaderTexel<float>(domain, width, height, x, y);
                if (distance(expected, shaderTexel<double>(domain, width, height, x, y)) > 0.25f)
                    ++leftOut;
                else
                    EXPECT_LE(distance({float(texel[0]), float(texel[1]), float(texel[2])}, expected), 1.0f)
                        << x << ' ' << y << " from " << domain.minX;
            }
        EXPECT_LT(leftOut, width * height / 50) << domain.minX;
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotStreamerGL, TheComputeShaderColoursWhatEscapesAndLeavesTheSetBlack)
{
    if (isInactiveOnTheFloor())
        return;
    const auto streamer = make<MandelbrotGPUTextureStreamer>(64, 64);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_FALSE(streamer->updateTexture());
    streamer->setDomainExtents(-0.1, -0.1, 0.1, 0.1);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(streamerTexels(*streamer), Texels(64 * 64, StreamerPixel{0, 0, 0, 255}));
    // All around 0.455 + 0.455i escapes early: a count that is small beside 256 is blue before all.
    streamer->setDomainExtents(0.45, 0.45, 0.46, 0.46);
    EXPECT_TRUE(streamer->updateTexture());
    for (const StreamerPixel& texel : streamerTexels(*streamer))
    {
        EXPECT_GT(texel[2], texel[1]);
        EXPECT_GE(texel[1], texel[0]);
    }
}

TEST_F(MandelbrotStreamerGL, TheComputeShadersUpdateLeavesNothingBoundAndTheActiveUnitAsItWas)
{
    if (isInactiveOnTheFloor())
        return;
    const auto streamer = make<MandelbrotGPUTextureStreamer>(16, 16);
    glActiveTexture(GL_TEXTURE3);
    EXPECT_TRUE(streamer->updateTexture());
    EXPECT_EQ(integerOf(GL_ACTIVE_TEXTURE), GL_TEXTURE3);
    EXPECT_EQ(integerOf(GL_CURRENT_PROGRAM), 0);
    EXPECT_FALSE(streamer->isBound());
    GLint image = -1;
    glGetIntegeri_v(GL_IMAGE_BINDING_NAME, 0, &image);
    EXPECT_EQ(image, 0);
}

TEST_F(MandelbrotStreamerGL, OnTheFloorTheComputeShadersStreamerIsInactive)
{
    const auto streamer = makeOnAnyProfile(16, 16);
    ASSERT_NE(streamer, nullptr);
    EXPECT_EQ(streamer->updateTexture(), !isFloor());
    if (!isFloor())
        return;
    const LogCapture log;
    const CallLog calls;
    for (int i = 0; i < 3; ++i)
    {
        streamer->zoomDomain(0.5f);
        EXPECT_FALSE(streamer->updateTexture());
    }
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(MandelbrotStreamerGL, OnTheFloorConstructionSaysWhyItIsInactive)
{
    if (!isFloor())
        return;
    const LogCapture log;
    const std::unique_ptr<Texture> streamer(MandelbrotGPUTextureStreamer::make(16, 16, nullptr));
    EXPECT_TRUE(log.messages(QtDebugMsg).contains(QStringLiteral("Failed to obtain 'glDispatchCompute'")));
    EXPECT_FALSE(log.messages(QtWarningMsg).isEmpty()) << "the text of the failed shader";
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM)) << "a kind of shader that this OpenGL does not know";
    while (glGetError() != GL_NO_ERROR)
    {
    }
}

TEST_F(MandelbrotStreamerGL, NoTextureIsLeftBehind)
{
    const CallLog calls;
    make<MandelbrotCPUTextureStreamer>(4, 4).reset();
    makeOnAnyProfile(4, 4).reset();
    EXPECT_EQ(calls.count(QStringLiteral("glGenTextures")), 2);
    EXPECT_EQ(calls.count(QStringLiteral("glDeleteTextures")), 2);
    EXPECT_EQ(calls.count(QStringLiteral("glCreateProgram")), calls.count(QStringLiteral("glDeleteProgram")));
    EXPECT_EQ(calls.count(QStringLiteral("glCreateShader")), calls.count(QStringLiteral("glDeleteShader")));
}

// ---- with the managers ---------------------------------------------------------------------------------------------

namespace
{

QImage pictureOf(Texture& texture, int width, int height)
{
    const Texels texels = streamerTexels(texture);
    QImage image(width, height, QImage::Format_RGBA8888);
    for (int y = 0; y < height; ++y) // the bottom row first
        std::memcpy(image.scanLine(height - 1 - y), texels.data() + std::ptrdiff_t(y) * width, std::size_t(width) * 4);
    return image;
}

} // namespace

class MandelbrotInManagersGL : public MandelbrotStreamerGL
{
protected:
    template <typename Manager> void run()
    {
        constexpr int size = 64;
        const auto manager = std::make_unique<Manager>();
        QList<MandelbrotTextureStreamer*> streamers = {make<MandelbrotCPUTextureStreamer>(size, size).release()};
        if (!isFloor())
            streamers.append(make<MandelbrotGPUTextureStreamer>(size, size).release());
        for (MandelbrotTextureStreamer* const streamer : streamers)
        {
            const TextureToken token = manager->tokenForTexture(streamer);
            QImage last;
            for (int frame = 0; frame < 3; ++frame)
            {
                EXPECT_TRUE(manager->updateTextureStreamers());
                EXPECT_FALSE(manager->updateTextureStreamers());
                const QImage picture = sampled(*manager, token, size, size);
                // Each pixel samples one texel's middle.
                EXPECT_TRUE(picturesAgree(picture, pictureOf(*streamer, size, size), 1, 0.1));
                EXPECT_NE(picture, last) << "the rectangle has moved";
                last = picture;
                streamer->setDomainCenter(-0.745, 0.113);
                streamer->zoomDomain(0.5f);
            }
            manager->deleteTexture(streamer);
        }
        EXPECT_FALSE(manager->updateTextureStreamers());
    }
};

TEST_F(MandelbrotInManagersGL, TheSamplerManagerShowsEachPicture)
{
    run<SamplerTextureManager>();
}

TEST_F(MandelbrotInManagersGL, TheArrayManagerCopiesEachPicture)
{
    run<Array2DTextureManager>();
}

} // namespace Harrow::Vrk::Test
