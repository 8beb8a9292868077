// SPDX-License-Identifier: MIT
#include "KTXRecogniser.h"

#include "Diagnostics.h"
#include "KTXLayout.h"
#include "KTXReader.h"

#include <VrkCore/Memory.h>

namespace Harrow::Vrk
{

KTXRecogniser::KTXRecogniser() = default;

KTXRecogniser::~KTXRecogniser() = default;

TextureLoader* KTXRecogniser::recognise(Memory* memory, const QString& name) const
{
    VRK_ASSERT_RETURN(nullptr != memory, nullptr, "Memory is NULL on KTXRecogniser::recognise");
    void* const start = memory->get(0, kKTXIdentifierBytes);
    if (!start)
        return nullptr;
    const bool isKTX = isKTXIdentifier(start);
    memory->release(start);
    return isKTX ? new KTXReader(memory, name) : nullptr;
}

} // namespace Harrow::Vrk
