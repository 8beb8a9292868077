// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Decodes ETC1 and ETC2 blocks with EAC alpha, by the published format, so that tests know what OpenGL must make of
/// them. Written to be read, not to be fast.

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Harrow::Vrk::Test::Etc
{

using Color = std::array<int, 3>;
using Texel = std::array<int, 4>;

struct Image
{
    int width = 0;
    int height = 0;
    std::vector<Texel> texels; ///< row by row, in the order of the file
};

inline int clamp(int value)
{
    return std::clamp(value, 0, 255);
}

/// A value of 4 to 7 bits as one of 8, by repeating its high bits.
inline int expand(int value, int bits)
{
    return (value << (8 - bits)) | (value >> (2 * bits - 8));
}

inline Color expand(const Color& color, int bits)
{
    return {expand(color[0], bits), expand(color[1], bits), expand(color[2], bits)};
}

inline Color plus(const Color& color, int amount)
{
    return {clamp(color[0] + amount), clamp(color[1] + amount), clamp(color[2] + amount)};
}

/// The 64 bits of a block, numbered as the format does: 63 is the first byte's highest.
class Bits
{
public:
    explicit Bits(const unsigned char* bytes)
    {
        for (int i = 0; i < 8; ++i)
            _bits = (_bits << 8) | bytes[i];
    }
    int operator()(int high, int low) const
    {
        return static_cast<int>((_bits >> low) & ((1ull << (high - low + 1)) - 1));
    }
    int operator()(int bit) const
    {
        return (*this)(bit, bit);
    }

private:
    unsigned long long _bits = 0;
};

/// The index of a texel, 0 to 3. Texels are counted column by column.
inline int indexAt(const Bits& bits, int x, int y)
{
    const int texel = 4 * x + y;
    return 2 * bits(16 + texel) + bits(texel);
}

inline Color paint(const std::array<Color, 4>& colors, const Bits& bits, int x, int y)
{
    return colors[static_cast<std::size_t>(indexAt(bits, x, y))];
}

/// Two base colours with a table each, for the halves of a block.
inline Color halvesAt(const Bits& bits, const Color& first, const Color& second, int x, int y)
{
    static constexpr int kModifiers[8][2] = {{2, 8},   {5, 17},  {9, 29},   {13, 42},
                                             {18, 60}, {24, 80}, {33, 106}, {47, 183}};
    const bool isFlipped = bits(32) != 0;
    const bool isSecond = (isFlipped ? y : x) >= 2;
    const int table = isSecond ? bits(36, 34) : bits(39, 37);
    const int index = indexAt(bits, x, y);
    const int modifier = kModifiers[table][index & 1];
    return plus(isSecond ? second : first, index & 2 ? -modifier : modifier);
}

inline constexpr int kDistances[8] = {3, 6, 11, 16, 23, 32, 41, 64};

inline Color modeT(const Bits& bits, int x, int y)
{
    const Color first = expand(Color{(bits(60, 59) << 2) | bits(57, 56), bits(55, 52), bits(51, 48)}, 4);
    const Color second = expand(Color{bits(47, 44), bits(43, 40), bits(39, 36)}, 4);
    const int distance = kDistances[(bits(35, 34) << 1) | bits(32)];
    return paint({first, plus(second, distance), second, plus(second, -distance)}, bits, x, y);
}

inline Color modeH(const Bits& bits, int x, int y)
{
    const Color first = {bits(62, 59), (bits(58, 56) << 1) | bits(52), (bits(51) << 3) | bits(49, 47)};
    const Color second = {bits(46, 43), bits(42, 39), bits(38, 35)};
    const int distance = kDistances[(bits(34) << 2) | (bits(32) << 1) | (first >= second ? 1 : 0)];
    const Color one = expand(first, 4);
    const Color two = expand(second, 4);
    return paint({plus(one, distance), plus(one, -distance), plus(two, distance), plus(two, -distance)}, bits, x, y);
}

inline Color modePlanar(const Bits& bits, int x, int y)
{
    const auto color = [](int r, int g, int b) { return Color{expand(r, 6), expand(g, 7), expand(b, 6)}; };
    const Color origin =
        color(bits(62, 57), (bits(56) << 6) | bits(54, 49), (bits(48) << 5) | (bits(44, 43) << 3) | bits(41, 39));
    const Color horizontal = color((bits(38, 34) << 1) | bits(32), bits(31, 25), bits(24, 19));
    const Color vertical = color(bits(18, 13), bits(12, 6), bits(5, 0));
    Color result;
    for (std::size_t c = 0; c < 3; ++c)
        result[c] = clamp((x * (horizontal[c] - origin[c]) + y * (vertical[c] - origin[c]) + 4 * origin[c] + 2) >> 2);
    return result;
}

inline Color colorAt(const unsigned char* block, int x, int y)
{
    const Bits bits(block);
    if (bits(33) == 0)
    {
        const Color first = {bits(63, 60), bits(55, 52), bits(47, 44)};
        const Color second = {bits(59, 56), bits(51, 48), bits(43, 40)};
        return halvesAt(bits, expand(first, 4), expand(second, 4), x, y);
    }
    const auto difference = [&bits](int low) { return bits(low + 2) ? bits(low + 2, low) - 8 : bits(low + 2, low); };
    const Color first = {bits(63, 59), bits(55, 51), bits(47, 43)};
    const Color second = {first[0] + difference(56), first[1] + difference(48), first[2] + difference(40)};
    const auto isBeyond = [](int value) { return value < 0 || value > 31; };
    // A sum that 5 bits cannot hold stands for one of the modes that ETC2 adds.
    if (isBeyond(second[0]))
        return modeT(bits, x, y);
    if (isBeyond(second[1]))
        return modeH(bits, x, y);
    if (isBeyond(second[2]))
        return modePlanar(bits, x, y);
    return halvesAt(bits, expand(first, 5), expand(second, 5), x, y);
}

inline int alphaAt(const unsigned char* block, int x, int y)
{
    static constexpr int kModifiers[16][8] = {
        {-3, -6, -9, -15, 2, 5, 8, 14}, {-3, -7, -10, -13, 2, 6, 9, 12}, {-2, -5, -8, -13, 1, 4, 7, 12},
        {-2, -4, -6, -13, 1, 3, 5, 12}, {-3, -6, -8, -12, 2, 5, 7, 11},  {-3, -7, -9, -11, 2, 6, 8, 10},
        {-4, -7, -8, -11, 3, 6, 7, 10}, {-3, -5, -8, -11, 2, 4, 7, 10},  {-2, -6, -8, -10, 1, 5, 7, 9},
        {-2, -5, -8, -10, 1, 4, 7, 9},  {-2, -4, -8, -10, 1, 3, 7, 9},   {-2, -5, -7, -10, 1, 4, 6, 9},
        {-3, -4, -7, -10, 2, 3, 6, 9},  {-1, -2, -3, -10, 0, 1, 2, 9},   {-4, -6, -8, -9, 3, 5, 7, 8},
        {-3, -5, -7, -9, 2, 4, 6, 8}};
    const Bits bits(block);
    const int texel = 4 * x + y;
    const int index = bits(47 - 3 * texel, 45 - 3 * texel);
    return clamp(bits(63, 56) + kModifiers[bits(51, 48)][index] * bits(55, 52));
}

/// The bytes of an image: whole blocks, also where the image ends within one.
inline std::size_t imageBytes(int width, int height, bool hasAlpha)
{
    return std::size_t((width + 3) / 4) * std::size_t((height + 3) / 4) * (hasAlpha ? 16 : 8);
}

inline Image decode(const unsigned char* bytes, int width, int height, bool hasAlpha)
{
    Image image{width, height, {}};
    const int blocksPerRow = (width + 3) / 4;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const std::size_t number = std::size_t(y / 4) * std::size_t(blocksPerRow) + std::size_t(x / 4);
            const unsigned char* const block = bytes + number * (hasAlpha ? 16 : 8);
            const Color color = colorAt(hasAlpha ? block + 8 : block, x % 4, y % 4);
            const int alpha = hasAlpha ? alphaAt(block, x % 4, y % 4) : 255;
            image.texels.push_back({color[0], color[1], color[2], alpha});
        }
    }
    return image;
}

} // namespace Harrow::Vrk::Test::Etc
