// SPDX-License-Identifier: MIT
//
// Radiance pictures on the fake driver: the exact calls of a load, the colours that they are given, and what becomes of
// files that cannot be loaded.
#include "HDRReader.h"

#include "HDRTestTools.h"
#include "OpenGLDeviceContext.h"
#include "TextureCallTools.h"
#include "TextureFileInfo.h"
#include "TextureReaderTestTools.h"
#include "TextureTestTools.h"

#include <QScopeGuard>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

/// Where the colours lie is theirs too.
QStringList withoutColors(const QStringList& calls)
{
    QStringList result = withoutAddresses(calls);
    for (QString& call : result)
    {
        if (call.startsWith(QStringLiteral("glTexImage2D(")))
            call = call.left(call.lastIndexOf(QLatin1Char(','))) + QStringLiteral(", ...)");
    }
    return result;
}

/// The calls that bring a picture of this size to the driver, from the name to the alignment of before.
QStringList uploadCalls(int width, int height, GLuint name = 1)
{
    return {kGen,
            activate(3),
            bindName(name),
            query(GL_UNPACK_ALIGNMENT),
            alignment(4),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, 0x2601), // GL_LINEAR
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, 0x2601),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, 0x812F), // GL_CLAMP_TO_EDGE
            parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, 0x812F),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0),
            parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 100),
            opened(CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x881B, width, height, 0, 0x1907, GL_FLOAT)),
            CallLog::call("glGetError"),
            activate(3),
            bindName(0),
            alignment(8)};
}

Floats uploaded;

class HDRReaderDriverTest : public TextureReaderFixture
{
protected:
    void SetUp() override
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, 8);
        uploaded.clear();
        driver.replace(
            "glTexImage2D",
            +[](GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint, GLenum format, GLenum type,
                const void* pixels)
            {
                if (format != 0x1907 || type != GL_FLOAT || !pixels) // GL_RGB
                    return;
                const auto* const floats = static_cast<const float*>(pixels);
                uploaded.assign(floats, floats + width * height * 3);
            });
        TextureReaderFixture::SetUp();
    }

    /// The calls of one load. Whatever it gives is kept in `texture`.
    QStringList callsOf(const QByteArray& file, const TextureFileInfo& info = {})
    {
        texture.reset();
        HDRReader reader(new TracedMemory(trace, file), QStringLiteral("a/sky.hdr"));
        const CallLog calls;
        texture.reset(reader.load(info));
        return withoutColors(calls.list());
    }

    /// The load fails, says so, and makes these calls alone.
    void expectFailure(const QByteArray& file, const QStringList& expectedCalls = {})
    {
        const LogCapture log;
        EXPECT_EQ(callsOf(file), expectedCalls);
        EXPECT_EQ(texture, nullptr);
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Texture a/sky.hdr failed to load.")));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
    }
};

constexpr Rgbe kA = {200, 10, 20, 130};
constexpr Rgbe kB = {5, 60, 250, 120};
constexpr Rgbe kC = {128, 128, 128, 128};
constexpr Rgbe kD = {7, 8, 9, 140};

const Rgbes kTop = {kA, kB};
const Rgbes kBottom = {kC, kD};

QByteArray twoRows()
{
    return plainRow(kTop) + plainRow(kBottom);
}

QString badWidth()
{
    return QStringLiteral("HDR format error: bad scanline width");
}

} // namespace

// ---- the calls -----------------------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, TheCallsOfALoad)
{
    const LogCapture log;
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 3", plainRow({kA, kB, kC}))), uploadCalls(3, 1));
    ASSERT_TRUE(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(texture->textureID(), 1u);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{GL_RGB16F, 3, 1, 1}));
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isBound());
    EXPECT_EQ(uploaded, colorsOf({kA, kB, kC}));
}

TEST_F(HDRReaderDriverTest, TheUnpackAlignmentIsWhatItWasBefore)
{
    for (const int before : {1, 2, 4, 8})
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, before);
        const QStringList calls = callsOf(hdrFile("-Y 1 +X 1", plainRow({kA})));
        EXPECT_EQ(calls.filter(QStringLiteral("glPixelStorei")), QStringList({alignment(4), alignment(before)}));
        EXPECT_EQ(calls.last(), alignment(before));
    }
}

TEST_F(HDRReaderDriverTest, ARangeOtherThanTheDefaultIsMappedAfterTheUpload)
{
    const auto forget = qScopeGuard([] { OpenGLDeviceContext::resetContext(); });
    OpenGLDeviceContext::resetContext();
    TextureFileInfo info;
    info.lowValue = 0.25f;
    info.remapColorRange = false; // asked of plain images alone
    const QStringList calls = callsOf(hdrFile("-Y 2 +X 2", twoRows()), info);
    ASSERT_TRUE(texture);
    const QStringList upload = uploadCalls(2, 2);
    EXPECT_EQ(calls.mid(0, upload.size()), upload);
    EXPECT_EQ(calls.filter(kGen).size(), 2) << "the result is not the texture that was uploaded";
    EXPECT_EQ(calls.filter(kDelete).size(), 1);
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")).size(), 1);
    EXPECT_EQ(Texture::NumAlive(), aliveBefore + 1);
}

TEST_F(HDRReaderDriverTest, AnSrgbPictureIsMadeLinearAndThenBroughtToItsRange)
{
    const auto forget = qScopeGuard([] { OpenGLDeviceContext::resetContext(); });
    OpenGLDeviceContext::resetContext();
    static QStringList sources;
    sources.clear();
    driver.replace(
        "glShaderSource",
        +[](GLuint, GLsizei count, const GLchar* const* texts, const GLint*)
        {
            for (GLsizei i = 0; i < count; ++i)
                sources.append(QString::fromUtf8(texts[i]));
        });
    driver.load();
    TextureFileInfo info;
    info.srgb = true;
    QStringList calls = callsOf(hdrFile("-Y 2 +X 2", twoRows()), info);
    ASSERT_TRUE(texture);
    EXPECT_EQ(calls.mid(0, 16), uploadCalls(2, 2)) << "the format is the same";
    EXPECT_EQ(sources.filter(QStringLiteral("vec4(2.4)")).size(), 1);
    EXPECT_EQ(sources.filter(QStringLiteral("u_highValue")).size(), 0);
    EXPECT_EQ(calls.filter(kGen).size(), 2);

    sources.clear();
    info.highValue = 0.5f;
    callsOf(hdrFile("-Y 2 +X 2", twoRows()), info);
    ASSERT_TRUE(texture);
    const QStringList fragments = sources.filter(QStringLiteral("u_Src"));
    ASSERT_EQ(fragments.size(), 2);
    EXPECT_TRUE(fragments[0].contains(QStringLiteral("vec4(2.4)")));
    EXPECT_TRUE(fragments[1].contains(QStringLiteral("u_highValue")));
}

// ---- the order of rows ---------------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, WithAMinusTheRowsAreStoredBottomUp)
{
    callsOf(hdrFile("-Y 2 +X 2", twoRows()));
    EXPECT_EQ(uploaded, colorsOf({kC, kD, kA, kB}));
}

TEST_F(HDRReaderDriverTest, WithAPlusTheRowsKeepTheirOrder)
{
    callsOf(hdrFile("+Y 2 +X 2", twoRows()));
    EXPECT_EQ(uploaded, colorsOf({kA, kB, kC, kD}));
}

TEST_F(HDRReaderDriverTest, OnlyTheFirstSignCountsAndNoAxis)
{
    callsOf(hdrFile("-X 2 +Y 1", plainRow({kA}) + plainRow({kB})));
    EXPECT_EQ(uploaded, colorsOf({kB, kA}));
    callsOf(hdrFile("+X 2 -Y 1", plainRow({kA}) + plainRow({kB})));
    EXPECT_EQ(uploaded, colorsOf({kA, kB}));
    callsOf(hdrFile("+Y 1 -X 2", plainRow({kA, kB})));
    EXPECT_EQ(uploaded, colorsOf({kA, kB})) << "a row keeps its order";
}

// ---- what is in the image ------------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, EachRowMayBeCodedInItsOwnWay)
{
    const Rgbes rows[] = {kTop, kBottom, {kA, kA}};
    callsOf(hdrFile("+Y 3 +X 2", plainRow(rows[0]) + literalRow(rows[1]) + oldMarker(2) + plainRow({kA})));
    EXPECT_EQ(uploaded, colorsOf({kA, kB, kC, kD, kA, kA}));
}

TEST_F(HDRReaderDriverTest, ExposuresAreNotApplied)
{
    callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop), "EXPOSURE=4\nEXPOSURE=0.125\n" + kFormatLine));
    EXPECT_EQ(uploaded, colorsOf(kTop));
}

TEST_F(HDRReaderDriverTest, TheNumbersOfTheOtherFormatAreTakenAsColours)
{
    callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop), "FORMAT=32-bit_rle_xyze\n"));
    EXPECT_EQ(uploaded, colorsOf(kTop));
}

TEST_F(HDRReaderDriverTest, BytesBehindThePictureAreLeftAlone)
{
    callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop) + "and more"));
    EXPECT_EQ(uploaded, colorsOf(kTop));
}

TEST_F(HDRReaderDriverTest, RowsOfAnotherWidthAreReportedAndStayBlack)
{
    const LogCapture log;
    const QStringList calls = callsOf(hdrFile("-Y 4 +X 2", plainRow(kTop) + runsRowStart(3) + QByteArray(100, '\x01')));
    EXPECT_EQ(calls, uploadCalls(2, 4));
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList({badWidth(), badWidth(), badWidth()}))
        << "reading does not go on behind the first of them";
    EXPECT_EQ(log.texts().size(), 3);
    Floats expected(3 * 2 * 3, 0.0f);
    const Floats top = colorsOf(kTop);
    expected.insert(expected.end(), top.begin(), top.end());
    EXPECT_EQ(uploaded, expected);
}

TEST_F(HDRReaderDriverTest, TheLastRowMayBeNothingButAnotherWidth)
{
    const LogCapture log;
    callsOf(hdrFile("+Y 2 +X 2", plainRow(kTop) + runsRowStart(3)));
    ASSERT_TRUE(texture);
    EXPECT_EQ(log.messages(), QStringList(badWidth()));
    Floats expected = colorsOf(kTop);
    expected.resize(12, 0.0f);
    EXPECT_EQ(uploaded, expected);
}

TEST_F(HDRReaderDriverTest, APictureIsLoadedAsOftenAsItIsAskedFor)
{
    HDRReader reader(new TracedMemory(trace, hdrFile("-Y 1 +X 2", plainRow(kTop))), QString());
    texture.reset(reader.load({}));
    uploaded.clear();
    texture.reset(reader.load({}));
    EXPECT_TRUE(texture);
    EXPECT_EQ(uploaded, colorsOf(kTop));
}

// ---- what OpenGL refuses -------------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, AnErrorOfOpenGLIsAFailure)
{
    driver.pushError(GL_OUT_OF_MEMORY);
    expectFailure(hdrFile("-Y 1 +X 2", plainRow(kTop)), uploadCalls(2, 1) + QStringList(kDelete));
    // The next one is asked anew.
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop))), uploadCalls(2, 1, 2));
    EXPECT_TRUE(texture);
}

TEST_F(HDRReaderDriverTest, AFailedPictureIsNotProcessed)
{
    driver.pushError(GL_INVALID_VALUE);
    TextureFileInfo info;
    info.srgb = true;
    info.highValue = 0.5f;
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop)), info), uploadCalls(2, 1) + QStringList(kDelete));
    EXPECT_EQ(texture, nullptr);
}

TEST_F(HDRReaderDriverTest, OpenGLIsAskedOnce)
{
    driver.pushError(GL_INVALID_ENUM);
    driver.pushError(GL_INVALID_VALUE);
    callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop)));
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_VALUE)) << "the rest is the caller's";
}

TEST_F(HDRReaderDriverTest, WithoutAFreeUnitThereIsNoTexture)
{
    std::vector<std::unique_ptr<Texture>> bound;
    for (int i = 0; i < kUnits; ++i)
    {
        bound.push_back(newTexture());
        ASSERT_TRUE(bound.back()->bind());
    }
    const LogCapture log;
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 2", plainRow(kTop))), QStringList({kGen, kDelete}));
    EXPECT_EQ(texture, nullptr);
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("There is no available texture units"),
                                           QStringLiteral("Texture a/sky.hdr failed to load.")}));
    for (const auto& other : bound)
        EXPECT_TRUE(other->unbind());
}

// ---- what the bytes do not give ------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, BytesThatEndBeforeThePictureDoes)
{
    const QByteArray pictures[] = {twoRows(), literalRow(kTop) + literalRow(kBottom),
                                   plainRow(kTop) + oldMarker(2) + plainRow({kA})};
    for (const QByteArray& pixels : pictures)
        for (qsizetype length = 0; length < pixels.size(); ++length)
            expectFailure(hdrFile("-Y 2 +X 2", pixels.left(length)));
}

TEST_F(HDRReaderDriverTest, OldRunsAndLiteralBytesBeyondTheRow)
{
    expectFailure(hdrFile("-Y 1 +X 2", oldMarker(3) + plainRow({kA, kA, kA})));
    expectFailure(hdrFile("-Y 1 +X 2", runsRowStart(2) + QByteArray(100, '\x03')));
}

TEST_F(HDRReaderDriverTest, APictureWithoutPixels)
{
    for (const char* const size : {"-Y 0 +X 0", "-Y 0 +X 2", "-Y 2 +X 0", "-Y 4294967295 +X 0"})
        expectFailure(hdrFile(size, twoRows()));
}

TEST_F(HDRReaderDriverTest, AReaderThatIsNotValid)
{
    expectFailure(hdrFile("-Y 1 +Y 2", plainRow(kTop)));
    expectFailure("#?RADIANCE\n");
    const LogCapture log;
    HDRReader reader(nullptr, QStringLiteral("none"));
    EXPECT_EQ(reader.load({}), nullptr);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(QStringLiteral("Texture none failed to load.")));
}

TEST_F(HDRReaderDriverTest, NoMemoryIsTakenForSizesThatTheBytesCannotFill)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1 << 30);
    for (const char* const size :
         {"-Y 1000000000 +X 1000000000", "-Y 4294967295 +X 4294967295", "-Y 1 +X 4294967295", "-Y 4294967295 +X 1",
          "-Y 65535 +X 65535", "-Y 2000 +X 16384", "-Y 16385 +X 1", "-Y 1 +X 16385"})
    {
        expectFailure(hdrFile(size, {}));
        expectFailure(hdrFile(size, oldMarker(1)));
        // Rows of another width need no bytes, but at this size they do not count.
        expectFailure(hdrFile(size, runsRowStart(3)));
    }
}

TEST_F(HDRReaderDriverTest, LongSidesThatTheBytesCanFillAreAskedOfTheDriver)
{
    constexpr int kSide = 16385;
    const QByteArray row = oldMarker(kSide % 256) + oldMarker(kSide / 256) + plainRow({kA});
    driver.setInteger(GL_MAX_TEXTURE_SIZE, kSide - 1);
    expectFailure(hdrFile("-Y 1 +X 16385", row), {query(GL_MAX_TEXTURE_SIZE)});
    driver.setInteger(GL_MAX_TEXTURE_SIZE, kSide);
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 16385", row)), QStringList(query(GL_MAX_TEXTURE_SIZE)) + uploadCalls(kSide, 1));
    EXPECT_TRUE(texture);
    EXPECT_EQ(uploaded, colorsOf(Rgbes(kSide, kA)));
    expectFailure(hdrFile("-Y 1 +X 16385", row.left(11)));
    expectFailure(hdrFile("-Y 16385 +X 1", QByteArray(4 * kSide - 1, '\x05')));
    EXPECT_EQ(callsOf(hdrFile("-Y 16385 +X 1", QByteArray(4 * kSide, '\x05'))).first(), query(GL_MAX_TEXTURE_SIZE));
    EXPECT_TRUE(texture);
}

TEST_F(HDRReaderDriverTest, SidesThatEveryDriverHasAreNotAskedOfIt)
{
    driver.setInteger(GL_MAX_TEXTURE_SIZE, 1);
    const QByteArray row = oldMarker(0) + oldMarker(64) + plainRow({kA});
    EXPECT_EQ(callsOf(hdrFile("-Y 1 +X 16384", row)), uploadCalls(16384, 1));
    EXPECT_TRUE(texture);
}

// ---- the one end of the process ------------------------------------------------------------------------------------

using HDRReaderDriverDeathTest = HDRReaderDriverTest;

TEST_F(HDRReaderDriverDeathTest, ARunBeyondTheRowEndsTheProcessWithAWarning)
{
    const struct
    {
        QByteArray pixels;
        const char* message;
    } rows[] = {
        {runsRowStart(2) + bytesOf({131, 9}), "Bad scanline: RLE run starting at 0 ends at 3, but width is only 2"},
        {literalRow(kTop) + runsRowStart(2) + bytesOf({2, 8, 9, 1, 8, 255, 9}),
         "Bad scanline: RLE run starting at 1 ends at 128, but width is only 2"},
    };
    for (const auto& row : rows)
    {
        const QByteArray file = hdrFile("-Y 2 +X 2", row.pixels);
#if defined(_WIN32)
        EXPECT_DEATH(callsOf(file), row.message);
#else
        EXPECT_EXIT(callsOf(file), testing::KilledBySignal(SIGABRT), row.message);
#endif
    }
}

TEST_F(HDRReaderDriverDeathTest, ARunToTheEndOfTheRowDoesNot)
{
    const QByteArray row = runsRowStart(2) + bytesOf({130, 200, 130, 10, 130, 20, 130, 130});
    callsOf(hdrFile("-Y 1 +X 2", row));
    EXPECT_EQ(uploaded, colorsOf({kA, kA}));
}

// ---- the switch ----------------------------------------------------------------------------------------------------

TEST_F(HDRReaderDriverTest, TheWarningsDoNotHangOnTheSwitch)
{
    const LogCapture log;
    callsOf(hdrFile("-Y 1 +X 2", runsRowStart(3)));
    EXPECT_TRUE(texture);
    callsOf(hdrFile("-Y 1 +X 2", {}));
    EXPECT_FALSE(texture);
    const QStringList all = {badWidth(), QStringLiteral("Texture a/sky.hdr failed to load.")};
    EXPECT_EQ(log.texts(QtWarningMsg), all);
#if !defined(_WIN32)
    EXPECT_EXIT(callsOf(hdrFile("-Y 1 +X 2", runsRowStart(2) + bytesOf({131, 9}))), testing::KilledBySignal(SIGABRT),
                "");
#endif
}

TEST_F(HDRReaderDriverTest, TheWarningsAreSaidWithLoggingOffToo)
{
    EXPECT_TRUE(passesWithLoggingOff("HDRReaderDriverTest.TheWarningsDoNotHangOnTheSwitch"));
}

} // namespace Harrow::Vrk::Test
