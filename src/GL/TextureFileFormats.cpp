// SPDX-License-Identifier: MIT
#include "TextureFileFormats.h"

#include "ASTCRecogniser.h"
#include "HDRRecogniser.h"
#include "KTXRecogniser.h"
#include "TextureIO.h"

namespace Harrow::Vrk
{

void registerTextureFileFormats()
{
    RegisterTextureRecogniser(new HDRRecogniser, QStringLiteral("hdr"));
    RegisterTextureRecogniser(new KTXRecogniser, QStringLiteral("ktx"));
    RegisterTextureRecogniser(new ASTCRecogniser, QStringLiteral("astc"));
}

} // namespace Harrow::Vrk
