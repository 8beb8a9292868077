// SPDX-License-Identifier: MIT
#include "KTXReader.h"

#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "GLFunctions.h"
#include "KTXLayout.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureProcessing.h"
#include "TextureUpload.h"

#include <VrkCore/Memory.h>

#include <QList>
#include <QMessageLogger>
#include <QThread>
#include <QVariant>

#include <algorithm>
#include <cstring>

namespace Harrow::Vrk
{

using Shape = KTXHeader::Shape;

// ---- the record ----------------------------------------------------------------------------------------------------

struct KTXReader::Record
{
    Record(Memory* source, const QString& sourceName);

    /// As it now stands, at whatever address; all zero without one.
    KTXHeader fields() const
    {
        return KTXHeader::read(header);
    }

    /// The bytes from the metadata on that may be read: up to the end of the memory where that goes on behind the
    /// metadata, as a mapping or a buffer does.
    quint64 countReadable(quint32 metadataBytes);
    /// The position if a zero byte follows that may be read, else null: whoever gets it reads up to there.
    const char* ifTerminated(const char* position) const;
    const char* keyAt(unsigned index) const;
    const char* valueAt(unsigned index) const;
    QString textAt(const char* position) const;

    const std::unique_ptr<Memory> memory;
    const QString name;
    bool valid = true;
    unsigned char* header = nullptr;
    unsigned char* keyValueData = nullptr;
    QList<const char*> keys;
    QList<quint32> sizes;
    /// Behind the last byte that a key or value may have.
    const char* textEnd = nullptr;
};

KTXReader::Record::Record(Memory* source, const QString& sourceName) : memory(source), name(sourceName)
{
    header = memory ? static_cast<unsigned char*>(memory->get(0, kKTXHeaderBytes)) : nullptr;
    valid = header && isKTXIdentifier(header);
    if (valid && fields().isForeignOrder())
    {
        swapKTXHeader(header);
        valid = !fields().isForeignOrder();
    }
    const quint32 count = fields().bytesOfKeyValueData;
    if (!valid || count == 0)
        return;
    keyValueData = static_cast<unsigned char*>(memory->get(kKTXHeaderBytes, count));
    if (!keyValueData)
    {
        valid = false;
        return;
    }
    const quint64 readable = countReadable(count);
    textEnd = reinterpret_cast<const char*>(keyValueData) + readable;
    const KTXMetadata metadata = walkKTXMetadata(keyValueData, count, readable);
    keys = metadata.keys;
    sizes = metadata.sizes;
    // Not the other way round: files whose entries end with the block are refused, on purpose.
    valid = !metadata.endsWithBlock;
}

quint64 KTXReader::Record::countReadable(quint32 metadataBytes)
{
    const quint64 all = memory->size() - kKTXHeaderBytes;
    void* const rest = memory->get(kKTXHeaderBytes, all);
    if (rest == keyValueData)
        return all;
    memory->release(rest);
    return metadataBytes;
}

const char* KTXReader::Record::ifTerminated(const char* position) const
{
    const auto room = static_cast<size_t>(textEnd - position);
    return std::memchr(position, 0, room) ? position : nullptr;
}

const char* KTXReader::Record::keyAt(unsigned index) const
{
    return qsizetype(index) < keys.size() ? keys[index] : nullptr;
}

const char* KTXReader::Record::valueAt(unsigned index) const
{
    const char* position = keyAt(index);
    if (!position)
        return nullptr;
    const auto bytes = std::min<qint64>(sizes[index], textEnd - position);
    const char* const last = position + std::max<qint64>(bytes - 1, 0);
    while (position < last && *position != 0)
        ++position;
    return position;
}

QString KTXReader::Record::textAt(const char* position) const
{
    if (!position)
        return QString();
    const QByteArrayView rest(position, textEnd);
    const qsizetype length = rest.indexOf('\0');
    return QString::fromUtf8(length < 0 ? rest : rest.first(length));
}

namespace
{

// ---- loading -------------------------------------------------------------------------------------------------------

/// What all levels have in common.
struct Upload
{
    const KTXHeader& header;
    GLenum internalFormat;
};

/// A level's size, and the level number.
struct Extent
{
    GLint level;
    quint32 width;
    quint32 height;
    quint32 depth;
};

/// Lets a thread that loads in the background yield while its property asks for that.
void waitWhilePaused()
{
    static constexpr unsigned long kInterval = 32; // ms
    while (QThread::currentThread()->property("threadPauseRequested").toBool())
        QThread::msleep(kInterval);
}

GLenum targetOf(Shape shape)
{
    switch (shape)
    {
    case Shape::e1D:
        return GL_TEXTURE_1D;
    case Shape::e2D:
        return GL_TEXTURE_2D;
    case Shape::e3D:
        return GL_TEXTURE_3D;
    case Shape::eCube:
        return GL_TEXTURE_CUBE_MAP;
    case Shape::eNone:
        break;
    }
    return 0;
}

/// The header's, or its sRGB twin, which follows it.
GLenum internalFormatOf(const KTXHeader& header, bool srgb)
{
    static constexpr GLenum kWithTwin[] = {GL_COMPRESSED_RGB8_ETC2, GL_COMPRESSED_RGB8_PUNCHTHROUGH_ALPHA1_ETC2,
                                           GL_COMPRESSED_RGBA8_ETC2_EAC};
    const GLenum format = header.glInternalFormat;
    const bool hasTwin = std::find(std::begin(kWithTwin), std::end(kWithTwin), format) != std::end(kWithTwin);
    return srgb && hasTwin ? format + 1 : format;
}

void setParameters(GLenum target, const KTXHeader& header, const TextureFileInfo& info)
{
    if (header.numberOfMipmapLevels == 0)
    {
        glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        return;
    }
    glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(header.numberOfMipmapLevels - 1));
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    setTextureAnisotropy(target, info.anisotropy);
}

void upload1D(const Upload& upload, const Extent& size, quint32 imageSize, const unsigned char* pixels)
{
    const auto& [header, internalFormat] = upload;
    const auto width = static_cast<GLsizei>(size.width);
    if (header.isCompressed())
        glCompressedTexImage1D(GL_TEXTURE_1D, size.level, internalFormat, width, 0, static_cast<GLsizei>(imageSize),
                               pixels);
    else
        glTexImage1D(GL_TEXTURE_1D, size.level, static_cast<GLint>(internalFormat), width, 0, header.glFormat,
                     header.glType, pixels);
}

void upload2D(GLenum target, const Upload& upload, const Extent& size, quint32 imageSize, const unsigned char* pixels)
{
    const auto& [header, internalFormat] = upload;
    const auto width = static_cast<GLsizei>(size.width);
    const auto height = static_cast<GLsizei>(size.height);
    if (header.isCompressed())
        glCompressedTexImage2D(target, size.level, internalFormat, width, height, 0, static_cast<GLsizei>(imageSize),
                               pixels);
    else
        glTexImage2D(target, size.level, static_cast<GLint>(internalFormat), width, height, 0, header.glFormat,
                     header.glType, pixels);
}

void upload3D(const Upload& upload, const Extent& size, quint32 imageSize, const unsigned char* pixels)
{
    const auto& [header, internalFormat] = upload;
    const auto width = static_cast<GLsizei>(size.width);
    const auto height = static_cast<GLsizei>(size.height);
    const auto depth = static_cast<GLsizei>(size.depth);
    if (header.isCompressed())
        glCompressedTexImage3D(GL_TEXTURE_3D, size.level, internalFormat, width, height, depth, 0,
                               static_cast<GLsizei>(imageSize), pixels);
    else
        glTexImage3D(GL_TEXTURE_3D, size.level, static_cast<GLint>(internalFormat), width, height, depth, 0,
                     header.glFormat, header.glType, pixels);
}

void uploadLevel(const Upload& upload, const Extent& size, const KTXLevel& level, const unsigned char* pixels)
{
    switch (upload.header.shape())
    {
    case Shape::e1D:
        return upload1D(upload, size, level.imageSize, pixels);
    case Shape::e2D:
        return upload2D(GL_TEXTURE_2D, upload, size, level.imageSize, pixels);
    case Shape::e3D:
        return upload3D(upload, size, level.imageSize, pixels);
    case Shape::eCube:
        for (int face = 0; face < kCubemapFaces; ++face)
            upload2D(cubemapFaceTarget(face), upload, size, level.imageSize, pixels + face * level.stride());
        return;
    case Shape::eNone:
        return;
    }
}

/// A valid reader has made its header native, so this is for one that is asked to load all the same.
void swapForeignLevel(const KTXHeader& header, const KTXLevel& level, unsigned char* pixels)
{
    if (!header.isForeignOrder())
        return;
    const quint64 faces = header.shape() == Shape::eCube ? 6 : 1;
    const quint64 count = (faces - 1) * level.stride() + level.imageSize;
    if (header.glTypeSize == 2)
        swapKTXShorts(pixels, count);
    else if (header.glTypeSize == 4)
        swapKTXWords(pixels, count);
}

void uploadLevels(const Upload& upload, const KTXLevels& levels, unsigned char* data)
{
    const KTXHeader& header = upload.header;
    Extent size = {0, header.pixelWidth, header.pixelHeight, header.pixelDepth};
    for (const KTXLevel& level : levels)
    {
        unsigned char* const pixels = data + level.offset;
        waitWhilePaused();
        swapForeignLevel(header, level, pixels);
        waitWhilePaused();
        uploadLevel(upload, size, level, pixels);
        size = {size.level + 1, nextKTXLevelSize(size.width), nextKTXLevelSize(size.height),
                nextKTXLevelSize(size.depth)};
    }
}

/// The new texture, still bound. Null when no texture unit is free: the upload would meet somebody else's texture. One
/// without a shape has no target, so it cannot be bound and OpenGL refuses what follows.
std::unique_ptr<Texture> newBoundTexture(Shape shape)
{
    auto texture = std::make_unique<Texture>(nullptr);
    if (shape != Shape::eNone)
        texture->setTarget(targetOf(shape));
    return texture->bind() || shape == Shape::eNone ? std::move(texture) : nullptr;
}

bool generateMipmaps(GLenum target)
{
    glGenerateMipmap(target);
    const bool ok = glGetError() == GL_NO_ERROR;
    QMessageLogger().warning("Generating Mipmaps. For increased loading performance, include these in the .ktx file.");
    return ok;
}

/// Remaps the range and turns the picture, each of which may put another texture in the place of this one.
void process(std::unique_ptr<Texture>& texture, const TextureFileInfo& info)
{
    Texture* processed = texture.release();
    RemapColorRange(processed, info.lowValue, info.highValue);
    FlipY(processed);
    texture.reset(processed);
}

/// Makes `texture` of the levels; `data` is what follows the metadata. False with no texture, or with one that OpenGL
/// has refused. That goes through all the steps too.
bool loadLevels(const KTXHeader& header, const KTXLevels& levels, unsigned char* data, const TextureFileInfo& info,
                std::unique_ptr<Texture>& texture)
{
    texture = newBoundTexture(header.shape());
    if (!texture)
        return false;
    setParameters(texture->target(), header, info);
    const UnpackAlignment alignment(4);
    const GLenum internalFormat = internalFormatOf(header, info.srgb);
    texture->setSize(0, static_cast<int>(internalFormat), static_cast<int>(header.pixelWidth),
                     static_cast<int>(header.pixelHeight), static_cast<int>(header.pixelDepth));
    uploadLevels({header, internalFormat}, levels, data);
    bool ok = glGetError() == GL_NO_ERROR;
    if (ok && header.numberOfMipmapLevels == 0)
        ok = generateMipmaps(texture->target());
    texture->unbind();
    if (!info.preprocessed)
        process(texture, info);
    return ok;
}

} // namespace

// ---- the reader ----------------------------------------------------------------------------------------------------

KTXReader::KTXReader(Memory* memory, const QString& name) : _record(std::make_unique<Record>(memory, name))
{
    VRK_ASSERT(nullptr != memory, "Memory is NULL on KTXReader");
}

KTXReader::~KTXReader() = default;

bool KTXReader::valid() const
{
    return _record->valid;
}

bool KTXReader::isCompressed() const
{
    return _record->fields().isCompressed();
}

bool KTXReader::isArrayTexture() const
{
    return arraySize() > 0;
}

bool KTXReader::isCubeMapTexture() const
{
    return cubeFaces() == kCubemapFaces;
}

bool KTXReader::is1DTexture() const
{
    return _record->fields().extent() == Shape::e1D;
}

bool KTXReader::is2DTexture() const
{
    return _record->fields().extent() == Shape::e2D;
}

bool KTXReader::is3DTexture() const
{
    return _record->fields().extent() == Shape::e3D;
}

bool KTXReader::hasMipMaps() const
{
    return mipmapLevels() != 1;
}

quint32 KTXReader::width() const
{
    return _record->fields().pixelWidth;
}

quint32 KTXReader::height() const
{
    return _record->fields().pixelHeight;
}

quint32 KTXReader::depth() const
{
    return _record->fields().pixelDepth;
}

quint32 KTXReader::arraySize() const
{
    return _record->fields().numberOfArrayElements;
}

quint32 KTXReader::cubeFaces() const
{
    return _record->fields().numberOfFaces;
}

quint32 KTXReader::mipmapLevels() const
{
    return _record->fields().numberOfMipmapLevels;
}

quint32 KTXReader::numMetadataEntries() const
{
    return static_cast<quint32>(_record->keys.size());
}

QString KTXReader::key(unsigned index) const
{
    return _record->textAt(_record->keyAt(index));
}

QString KTXReader::value(unsigned index) const
{
    return _record->textAt(_record->valueAt(index));
}

const char* KTXReader::rawKey(unsigned index) const
{
    const char* const position = _record->keyAt(index);
    return position ? _record->ifTerminated(position) : nullptr;
}

const char* KTXReader::rawValue(unsigned index) const
{
    const char* const position = _record->valueAt(index);
    return position ? _record->ifTerminated(position) : nullptr;
}

Texture* KTXReader::load(const TextureFileInfo& info)
{
    if (isCubeMapTexture() && isArrayTexture())
    {
        QMessageLogger().warning("Cubemap arrays not supported yet, sorry!");
        return nullptr;
    }
    if (isArrayTexture())
    {
        QMessageLogger().warning("Array textures not supported yet, sorry!");
        return nullptr;
    }
    if (!_record->header)
        return failed();

    const KTXHeader header = _record->fields();
    Memory& memory = *_record->memory;
    const quint64 offset = kKTXHeaderBytes + header.bytesOfKeyValueData;
    const quint64 length = memory.size() > offset ? memory.size() - offset : 0;
    auto* const data = static_cast<unsigned char*>(memory.get(offset, length));
    if (!data)
        return nullptr;
    const std::optional<KTXLevels> levels = findKTXLevels(header, data, length);
    std::unique_ptr<Texture> texture;
    const bool ok = levels && loadLevels(header, *levels, data, info, texture);
    memory.release(data);
    return ok ? texture.release() : failed();
}

Texture* KTXReader::failed() const
{
    QMessageLogger().warning("%s %s failed to load.", isCompressed() ? "Compressed texture" : "Texture",
                             _record->name.isEmpty() ? "<unnamed>" : qPrintable(_record->name));
    return nullptr;
}

} // namespace Harrow::Vrk
