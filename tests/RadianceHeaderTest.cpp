// SPDX-License-Identifier: MIT
//
// Headers of Radiance pictures: which lines count, what they must say, and where the pixels begin.
#include "RadianceHeader.h"

#include "HDRTestTools.h"

#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <clocale>

namespace Harrow::Vrk::Test
{
namespace
{

/// The header alone; `pixels` is checked here and does not outlive the bytes.
RadianceHeader headerOf(const QByteArray& file)
{
    const ExactBytes bytes(file);
    RadianceHeader header = readRadianceHeader(bytes.begin(), bytes.end());
    EXPECT_EQ(header.pixels != nullptr, header.valid);
    if (header.valid)
    {
        EXPECT_GT(header.pixels, bytes.begin());
        EXPECT_LE(header.pixels, bytes.end());
        EXPECT_EQ(header.pixels[-1], '\n');
    }
    return header;
}

bool isValid(const QByteArray& file)
{
    return headerOf(file).valid;
}

RadianceHeader headerOfLines(const QByteArray& lines)
{
    return headerOf(hdrFile("-Y 3 +X 2", {}, lines));
}

RadianceHeader headerOfResolution(const QByteArray& resolution)
{
    return headerOf(hdrFile(resolution, {}));
}

} // namespace

// ---- the first line -------------------------------------------------------------------------------------------------

TEST(RadianceHeaderTest, BeginsWithTheMagicAndIsLonger)
{
    EXPECT_TRUE(isValid("#?RADIANCE\n\n-Y 1 +X 1\n"));
    EXPECT_FALSE(isValid("#?RADIANCE\n"));
    EXPECT_FALSE(isValid("#?RADIANCE \n\n-Y 1 +X 1\n"));
    EXPECT_FALSE(isValid("#?RGBE\n\n-Y 1 +X 1\n"));
    EXPECT_FALSE(isValid("x?RADIANCE\n\n-Y 1 +X 1\n"));
    EXPECT_FALSE(isValid({}));
}

TEST(RadianceHeaderTest, NoHeaderThatIsCutShortIsValidOrReadBeyondItsEnd)
{
    const QByteArray whole = hdrFile("-Y 480 +X 640", {}, "# by hand\nEXPOSURE=2\nFORMAT=32-bit_rle_rgbe\n");
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(isValid(whole.left(length))) << length;
    EXPECT_TRUE(isValid(whole));
}

TEST(RadianceHeaderTest, WithoutItsEmptyLineItIsInvalid)
{
    EXPECT_FALSE(isValid("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n-Y 480 +X 640\n" + QByteArray(1000, 'x')));
    EXPECT_FALSE(isValid("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n-Y 480 +X 640\n" + QByteArray(1000, '\n').left(1)));
    // A carriage return makes a line that is not empty.
    EXPECT_FALSE(isValid("#?RADIANCE\n\r\n-Y 480 +X 640\n"));
}

// ---- its lines ------------------------------------------------------------------------------------------------------

TEST(RadianceHeaderTest, FormatsByNumber)
{
    EXPECT_EQ(headerOfLines("FORMAT=32-bit_rle_rgbe\n").format, 1);
    EXPECT_EQ(headerOfLines("FORMAT=32-bit_rle_xyze\n").format, 2);
    EXPECT_TRUE(headerOfLines("FORMAT=32-bit_rle_xyze\n").valid);
}

TEST(RadianceHeaderTest, WithoutAFormatItIsUnknownAndValid)
{
    EXPECT_EQ(headerOfLines({}).format, 0);
    EXPECT_TRUE(headerOfLines({}).valid);
}

TEST(RadianceHeaderTest, AnUnknownFormatIsInvalid)
{
    for (const char* const line :
         {"FORMAT=\n", "FORMAT=32-bit_rle_rgb\n", "FORMAT=32-bit_rle_rgbe \n", "FORMAT=32-bit_rle_rgbe\r\n",
          "FORMAT= 32-bit_rle_rgbe\n", "FORMAT=32-BIT_RLE_RGBE\n", "FORMAT=8-bit\n"})
    {
        EXPECT_FALSE(headerOfLines(line).valid) << line;
        EXPECT_EQ(headerOfLines(line).format, 0) << line;
    }
}

TEST(RadianceHeaderTest, NothingBehindARefusedLineMakesItValidAgain)
{
    EXPECT_FALSE(headerOfLines("FORMAT=none\nFORMAT=32-bit_rle_rgbe\n").valid);
    EXPECT_FALSE(headerOfLines("FORMAT=none\nEXPOSURE=1\n").valid);
    EXPECT_FALSE(headerOfLines("EXPOSURE=none\nEXPOSURE=1\n").valid);
    EXPECT_FALSE(headerOfLines("FORMAT=32-bit_rle_rgbe\nFORMAT=none\n").valid);
}

TEST(RadianceHeaderTest, TheLinesBehindARefusedOneAreReadAllTheSame)
{
    for (const QByteArray& line : {QByteArray("FORMAT=none\n"), QByteArray("EXPOSURE=none\n"), QByteArray("\0\n", 2)})
    {
        const RadianceHeader header = headerOfLines(line + "EXPOSURE=2\n");
        EXPECT_FALSE(header.valid);
        EXPECT_EQ(header.exposure, 2.0f);
        EXPECT_EQ(header.height, 3u);
        EXPECT_EQ(header.width, 2u);
    }
}

TEST(RadianceHeaderTest, TheExposureIsOneWithoutALine)
{
    EXPECT_EQ(headerOfLines({}).exposure, 1.0f);
}

TEST(RadianceHeaderTest, TwoExposuresMultiply)
{
    EXPECT_EQ(headerOfLines("EXPOSURE=0.25\n").exposure, 0.25f);
    EXPECT_EQ(headerOfLines("EXPOSURE=0.25\nGAMMA=1\nEXPOSURE=6\n").exposure, 1.5f);
    EXPECT_EQ(headerOfLines("EXPOSURE=2\nEXPOSURE=3\nEXPOSURE=0.5\n").exposure, 3.0f);
}

TEST(RadianceHeaderTest, AnExposureIsWhatScanfTakes)
{
    EXPECT_EQ(headerOfLines("EXPOSURE=  1.625e-01 and more\n").exposure, 0.1625f);
    EXPECT_EQ(headerOfLines("EXPOSURE=+.5\n").exposure, 0.5f);
    EXPECT_EQ(headerOfLines("EXPOSURE=-2\r\n").exposure, -2.0f);
    EXPECT_EQ(headerOfLines("EXPOSURE=0\n").exposure, 0.0f);
    EXPECT_TRUE(headerOfLines("EXPOSURE=0\n").valid);
}

TEST(RadianceHeaderTest, AnExposureWithoutANumberIsInvalid)
{
    for (const char* const line : {"EXPOSURE=\n", "EXPOSURE=   \n", "EXPOSURE=bright\n", "EXPOSURE==1\n"})
        EXPECT_FALSE(headerOfLines(line).valid) << line;
    // The number is not looked for in the next line.
    EXPECT_FALSE(headerOfLines("EXPOSURE=\n2\n").valid);
    EXPECT_EQ(headerOfLines(QByteArray("EXPOSURE=2\0005\n", 13)).exposure, 2.0f);
}

/// While it lives, numbers have a decimal comma in the C library, by a locale that is made for it.
class DecimalComma
{
public:
    DecimalComma()
    {
        const QString where = _folder.filePath(QStringLiteral("de_DE.UTF-8"));
        QProcess::execute(QStringLiteral("localedef"), {QStringLiteral("-i"), QStringLiteral("de_DE"),
                                                        QStringLiteral("-f"), QStringLiteral("UTF-8"), where});
        qputenv("LOCPATH", QFile::encodeName(_folder.path()));
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    }
    ~DecimalComma()
    {
        std::setlocale(LC_NUMERIC, _before.constData());
        qunsetenv("LOCPATH");
    }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;

    static bool isThere()
    {
        return *std::localeconv()->decimal_point == ',';
    }

private:
    const QByteArray _before = std::setlocale(LC_NUMERIC, nullptr);
    QTemporaryDir _folder;
};

TEST(RadianceHeaderTest, AnExposureHasAPointInEveryCountry)
{
    RadianceHeader header;
    {
        const DecimalComma scope;
        ASSERT_TRUE(DecimalComma::isThere()) << "localedef and the sources of de_DE make it";
        header = headerOfLines("EXPOSURE=.5\nEXPOSURE=2.5\n");
    }
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.exposure, 1.25f);
}

TEST(RadianceHeaderTest, OtherLinesAreSkipped)
{
    const QByteArray lines =
        "# a comment\nGAMMA=1\nPRIMARIES=0 0 0 0 0 0 0 0\n FORMAT=none\nformat=none\n\tEXPOSURE=x\n"
        "pfilt -2\nCAPDATE= 2016:03:30 22:46:11\nEXPOSURE\nFORMAT\n \n" +
        QByteArray(100000, 'x') + '\n' + QByteArray("a\0b\n", 4);
    const RadianceHeader header = headerOfLines(lines);
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.format, 0);
    EXPECT_EQ(header.exposure, 1.0f);
    EXPECT_EQ(header.width, 2u);
}

TEST(RadianceHeaderTest, AZeroByteAtTheStartOfALineIsInvalid)
{
    EXPECT_FALSE(headerOfLines(QByteArray("\0\n", 2)).valid);
    EXPECT_FALSE(headerOfLines(QByteArray("GAMMA=1\n\0comment\n", 17)).valid);
    EXPECT_FALSE(isValid("#?RADIANCE\n" + QByteArray(100, '\0')));
}

// ---- the resolution line --------------------------------------------------------------------------------------------

TEST(RadianceHeaderTest, TheFirstSizeIsTheHeight)
{
    const RadianceHeader header = headerOfResolution("-Y 480 +X 640");
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.height, 480u);
    EXPECT_EQ(header.width, 640u);
    EXPECT_EQ(header.ySign, '-');
    EXPECT_EQ(header.yAxis, 'Y');
    EXPECT_EQ(header.xSign, '+');
    EXPECT_EQ(header.xAxis, 'X');
}

TEST(RadianceHeaderTest, ThePlusSignIsKept)
{
    const RadianceHeader header = headerOfResolution("+Y 480 +X 640");
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.ySign, '+');
    EXPECT_EQ(header.height, 480u);
}

TEST(RadianceHeaderTest, TheAxesAreNotInterpreted)
{
    const RadianceHeader header = headerOfResolution("-X 640 +Y 480");
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.height, 640u);
    EXPECT_EQ(header.width, 480u);
    EXPECT_EQ(header.yAxis, 'X');
    EXPECT_EQ(header.xAxis, 'Y');
}

TEST(RadianceHeaderTest, AllPairsOfSignsAndOfDifferentAxesAreAccepted)
{
    for (const char ySign : {'+', '-'})
        for (const char xSign : {'+', '-'})
            for (const char* const axes : {"YX", "XY"})
                EXPECT_TRUE(headerOfResolution(QByteArray() + ySign + axes[0] + " 1 " + xSign + axes[1] + " 1").valid);
}

TEST(RadianceHeaderTest, TheAxesMustDiffer)
{
    EXPECT_FALSE(headerOfResolution("-Y 480 +Y 640").valid);
    EXPECT_FALSE(headerOfResolution("-X 480 +X 640").valid);
}

TEST(RadianceHeaderTest, OtherSignsAndAxesAreInvalid)
{
    for (const char* const line : {"*Y 480 +X 640", "-Y 480 *X 640", "-Z 480 +X 640", "-Y 480 +Z 640", "-y 480 +X 640",
                                   "-Y 480 +x 640", " -Y 480 +X 640", "Y 480 X 640"})
        EXPECT_FALSE(headerOfResolution(line).valid) << line;
}

TEST(RadianceHeaderTest, AllSixValuesMustBeRead)
{
    for (const char* const line : {"", "-", "-Y", "-Y 480", "-Y 480 +", "-Y 480 +X", "-Y 480 +X x", "-Y x +X 640"})
        EXPECT_FALSE(headerOfResolution(line).valid) << line;
    // Nor are they looked for in the next line.
    EXPECT_FALSE(headerOf(hdrFile("-Y 480", "+X 640\n")).valid);
}

TEST(RadianceHeaderTest, SpacesAndTheEndOfTheLineAreAsScanfTakesThem)
{
    for (const char* const line : {"-Y480+X640", "-Y   480\t+X\t 640", "-Y 480 +X 640 and more", "-Y 480 +X 640\r",
                                   "-Y +480 +X +640", "-Y 0480 +X 640.5"})
    {
        const RadianceHeader header = headerOfResolution(line);
        EXPECT_TRUE(header.valid) << line;
        EXPECT_EQ(header.height, 480u) << line;
        EXPECT_EQ(header.width, 640u) << line;
    }
    EXPECT_TRUE(headerOfResolution("-Y 480 +X 640" + QByteArray(100000, ' ')).valid);
}

TEST(RadianceHeaderTest, SizesOf32Bits)
{
    const RadianceHeader header = headerOfResolution("-Y 4294967295 +X 4294967295");
    EXPECT_TRUE(header.valid);
    EXPECT_EQ(header.height, 4294967295u);
    EXPECT_EQ(header.width, 4294967295u);
    EXPECT_EQ(headerOfResolution("-Y -1 +X 7").height, 4294967295u);
}

TEST(RadianceHeaderTest, SizesBeyond32BitsAreInvalid)
{
    for (const char* const size : {"4294967296", "4294967776", "-4294967296", "18446744073709551616",
                                   "18446744073709552096", "99999999999999999999999999999999"})
    {
        EXPECT_FALSE(headerOfResolution(QByteArray("-Y ") + size + " +X 640").valid) << size;
        EXPECT_FALSE(headerOfResolution(QByteArray("-Y 480 +X ") + size).valid) << size;
    }
}

TEST(RadianceHeaderTest, ThePixelsBeginBehindTheResolutionLine)
{
    const ExactBytes bytes(hdrFile("-Y 480 +X 640", "pixels"));
    const RadianceHeader header = readRadianceHeader(bytes.begin(), bytes.end());
    EXPECT_EQ(header.pixels, bytes.end() - 6);
}

} // namespace Harrow::Vrk::Test
