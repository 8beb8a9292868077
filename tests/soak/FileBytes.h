// SPDX-License-Identifier: MIT
// Texture files of every kind that the library reads, made up in memory.
#pragma once

#include <QByteArray>
#include <QString>

namespace vrksoak
{

class Random;

struct TextureBytes
{
    QString name;
    QByteArray bytes;
    bool isPlain = false; ///< four channels of bytes, which can be drawn into
};

TextureBytes makeTextureBytes(Random& random);

} // namespace vrksoak
