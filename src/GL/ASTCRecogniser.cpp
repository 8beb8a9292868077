// SPDX-License-Identifier: MIT
#include "ASTCRecogniser.h"

#include "ASTCReader.h"
#include "Diagnostics.h"

#include <VrkCore/Memory.h>

#include <cstring>

namespace Harrow::Vrk
{

ASTCRecogniser::~ASTCRecogniser() = default;

TextureLoader* ASTCRecogniser::recognise(Memory* memory, const QString& name) const
{
    VRK_ASSERT_RETURN(nullptr != memory, nullptr, "Memory is NULL on ASTCRecogniser::recognise");
    void* const start = memory->get(0, sizeof ASTCReader::kMagic);
    if (!start)
        return nullptr;
    const bool isASTC = std::memcmp(start, ASTCReader::kMagic, sizeof ASTCReader::kMagic) == 0;
    memory->release(start);
    return isASTC ? new ASTCReader(memory, name) : nullptr;
}

} // namespace Harrow::Vrk
