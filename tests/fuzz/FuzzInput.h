// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the fuzzer hands over, divided into one byte that chooses how a file is loaded, and the file.

#include "TextureFileInfo.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Harrow::Vrk::Test
{

/// The file in memory of exactly its size, so that the sanitizer sees each byte that is read or written behind its end.
/// It may be written to, as readers do.
class FuzzInput
{
public:
    /// Bits of the options. Passes on the GPU, which cost a hundred times as much as the rest, take three bits so that
    /// only an eighth of random bytes asks for them.
    enum Option : unsigned
    {
        eSRGB = 0x01,
        eRefuse = 0x02,
        eAnisotropy = 0x04,
        eOddAddress = 0x08,
        eRemap = 0x10,
        eProcess = 0xE0
    };

    FuzzInput(const std::uint8_t* data, std::size_t size)
        : _options(size > 0 ? data[0] : 0),
          _size(size > 0 ? size - 1 : 0),
          _offset(has(eOddAddress) ? 1 : 0),
          _bytes(new unsigned char[_offset + _size])
    {
        if (_size > 0)
            std::copy_n(data + 1, _size, begin());
    }

    bool has(Option option) const
    {
        return (_options & option) == option;
    }
    unsigned char* begin() const
    {
        return _bytes.get() + _offset;
    }
    unsigned char* end() const
    {
        return begin() + _size;
    }
    std::size_t size() const
    {
        return _size;
    }

    TextureFileInfo info() const
    {
        TextureFileInfo info;
        info.srgb = has(eSRGB);
        info.anisotropy = has(eAnisotropy) ? 4 : 0;
        info.preprocessed = !has(eProcess);
        info.highValue = has(eProcess) && has(eRemap) ? 2.0f : 1.0f;
        return info;
    }

private:
    unsigned _options;
    std::size_t _size;
    std::size_t _offset;
    std::unique_ptr<unsigned char[]> _bytes;
};

} // namespace Harrow::Vrk::Test
