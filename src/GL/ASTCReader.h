// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Reads a file of the ASTC encoder (".astc") into a compressed texture: a header of 16 bytes, then the blocks, which
/// go to the driver as they are. Made by `ASTCRecogniser`.

#include "Export.h"
#include "TextureLoader.h"

#include <memory>

namespace Harrow::Vrk
{

class Memory;

/// Takes files that have exactly the blocks that their header tells of, those of volumes too: they count with all their
/// blocks, and load as if they were pictures. `depth` stays 0 for them.
class VRKGL_EXPORT ASTCReader : public TextureLoader2DHelper
{
public:
    /// What every file begins with.
    static constexpr unsigned char kMagic[4] = {0x13, 0xAB, 0xA1, 0x5C};

    /// Takes `memory` over and reads the header. Null memory is reported, and the reader is not valid.
    ASTCReader(Memory* memory, const QString& name);
    ~ASTCReader() override;

    /// Whether the header is there and the size of the file fits it, to the byte.
    bool valid() const override;
    bool isCompressed() const override;
    /// In texels, as the header has them.
    quint32 width() const override;
    quint32 height() const override;

    /// Makes a `GL_TEXTURE_2D` of one level with nearest filtering. The internal format is that of the block size for
    /// linear colours, or with `info.srgb` for sRGB-encoded ones. `RemapColorRange` gives it the range of `info`
    /// whatever `info.remapColorRange` says, and then it is no longer compressed. The unpack state must be OpenGL's
    /// default.
    ///
    /// Nobody asks OpenGL how it went: a driver without the format, a block size that has none (of volumes, and 4x5),
    /// and blocks that do not fit the size, as those of most invalid files, leave a texture without an image and an
    /// error for `checkGLError`.
    ///
    /// Null, with the warning "Texture %s failed to load." and nothing left behind, when there is no header,
    /// when the blocks cannot be had or are more than 2 GiB, and when no texture unit is free.
    Texture* load(const TextureFileInfo& info) override;

private:
    struct Record;
    std::unique_ptr<Record> _record;
};

} // namespace Harrow::Vrk
