// SPDX-License-Identifier: MIT
#include "HDRRecogniser.h"

#include "Diagnostics.h"
#include "HDRReader.h"
#include "RadianceHeader.h"

#include <VrkCore/Memory.h>

#include <cstring>

namespace Harrow::Vrk
{

HDRRecogniser::~HDRRecogniser() = default;

TextureLoader* HDRRecogniser::recognise(Memory* memory, const QString& name) const
{
    VRK_ASSERT_RETURN(nullptr != memory, nullptr, "Memory is NULL on HDRRecogniser::recognise");
    void* const start = memory->get(0, kRadianceMagic.size());
    if (!start)
        return nullptr;
    const bool isRadiance = std::memcmp(start, kRadianceMagic.data(), kRadianceMagic.size()) == 0;
    memory->release(start);
    return isRadiance ? new HDRReader(memory, name) : nullptr;
}

} // namespace Harrow::Vrk
