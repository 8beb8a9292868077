// SPDX-License-Identifier: MIT
#include "TextureStreamer.h"

namespace Harrow::Vrk
{

TextureStreamer::TextureStreamer(unsigned textureID, QObject* parent) : Texture(textureID, parent) {}

TextureStreamer::TextureStreamer(QObject* parent) : Texture(parent) {}

TextureStreamer::~TextureStreamer() = default;

} // namespace Harrow::Vrk
