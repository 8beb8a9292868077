// SPDX-License-Identifier: MIT
// Made-up bytes before all recognisers of the library: who claims them, what that loader answers, and the texture.
#include "TextureIO.h"

#include "ASTCRecogniser.h"
#include "FuzzDriver.h"
#include "HDRRecogniser.h"
#include "KTXRecogniser.h"
#include "Texture.h"
#include "TextureFuzz.h"
#include "TextureLoader.h"

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    RegisterTextureRecogniser(new KTXRecogniser, QStringLiteral("ktx"));
    RegisterTextureRecogniser(new HDRRecogniser, QStringLiteral("hdr"));
    RegisterTextureRecogniser(new ASTCRecogniser, QStringLiteral("astc"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzDriver& driver = FuzzDriver::instance();
    driver.refuseUploads(false);
    {
        const FuzzInput input(data, size);
        const std::unique_ptr<TextureLoader> loader(
            IdentifyTextureFromMemory(input.begin(), input.size(), QStringLiteral("a")));
        if (loader)
            askAll(*loader);
    }
    {
        const FuzzInput input(data, size); // anew, as a loader may have written to the other
        driver.refuseUploads(input.has(FuzzInput::eRefuse));
        TextureFileInfo info = input.info();
        info.srgb = info.srgb && input.has(FuzzInput::eProcess);
        if (isLoadable(input))
            const std::unique_ptr<Texture> texture(LoadTextureFromMemory(input.begin(), input.size(), info, QString()));
    }
    driver.expectNothingLeft();
    return 0;
}
