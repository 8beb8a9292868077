// SPDX-License-Identifier: MIT
// The KTX reader over made-up bytes: all its answers, before and after loading, and the texture.
#include "KTXReader.h"

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
        KTXReader reader(new RawMemory(input.begin(), input.size()), QStringLiteral("a"));
        askAll(reader);
        // Whether the reader is valid makes no difference: nobody has to ask.
        const std::unique_ptr<Texture> texture(reader.load(input.info()));
        askAll(reader);
    }
    driver.expectNothingLeft();
    return 0;
}
