// SPDX-License-Identifier: MIT
#include "FileBytes.h"

#include "Random.h"

#include "ASTCTestTools.h"
#include "HDRTestTools.h"
#include "KTXTestTools.h"

namespace vrksoak
{

using namespace Harrow::Vrk::Test;

namespace
{

TextureBytes makeKtx(Random& random)
{
    constexpr int kSide = 32;
    KTXFile file;
    file.size(kSide, kSide).level(pattern(4 * kSide * kSide, random.below(100)));
    return {QStringLiteral("soak.ktx"), file.bytes(), true};
}

TextureBytes makeCubeKtx(Random& random)
{
    constexpr int kSide = 8;
    KTXFile file;
    file.faces = 6;
    file.size(kSide, kSide).cubeLevel(4 * kSide * kSide);
    return {QStringLiteral("soak-cube-%1.ktx").arg(random.below(100)), file.bytes()};
}

TextureBytes makeHdr(Random& random)
{
    constexpr int kWidth = 32;
    constexpr int kHeight = 16;
    QByteArray rows;
    for (int y = 0; y < kHeight; ++y)
    {
        Rgbes row;
        for (int x = 0; x < kWidth; ++x)
            row.push_back({random.below(256), random.below(256), random.below(256), 120 + random.below(12)});
        rows += literalRow(row);
    }
    const QByteArray resolution = "-Y " + QByteArray::number(kHeight) + " +X " + QByteArray::number(kWidth);
    return {QStringLiteral("soak.hdr"), hdrFile(resolution, rows)};
}

TextureBytes makeAstc(Random& random)
{
    const int side = 16 << random.below(2);
    return {QStringLiteral("soak.astc"), astcFile({4, 4, 1, side, side, 1}, (side / 4) * (side / 4))};
}

} // namespace

TextureBytes makeTextureBytes(Random& random)
{
    constexpr TextureBytes (*kMakers[])(Random&) = {&makeKtx, &makeCubeKtx, &makeHdr, &makeAstc};
    return random.of(kMakers)(random);
}

} // namespace vrksoak
