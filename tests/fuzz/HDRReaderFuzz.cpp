// SPDX-License-Identifier: MIT
// The reader of Radiance pictures over made-up bytes: all its answers, its rows by themselves, and the texture.
#include "HDRReader.h"

#include "FuzzDriver.h"
#include "Texture.h"
#include "TextureFuzz.h"

#include <VrkCore/RawMemory.h>

using namespace Harrow::Vrk;
using namespace Harrow::Vrk::Test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzDriver& driver = FuzzDriver::instance();
    const FuzzInput input(data, size);
    driver.refuseUploads(input.has(FuzzInput::eRefuse));
    {
        HDRReader reader(new RawMemory(input.begin(), input.size()), QStringLiteral("a"));
        askAll(reader);
        TextureFileInfo info = input.info();
        info.srgb = info.srgb && input.has(FuzzInput::eProcess); // it is a pass on the GPU here
        if (isLoadable(input))
            const std::unique_ptr<Texture> texture(reader.load(info));
    }
    driver.expectNothingLeft();
    return 0;
}
