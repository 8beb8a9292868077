// SPDX-License-Identifier: MIT
// Faults made on purpose, to see that they are found.
#pragma once

#include "CommandLine.h"

namespace Harrow::Vrk
{
class TextureManager;
}

namespace vrksoak
{

enum class Plant
{
    None,
    Texture, ///< a texture that nobody deletes
    Buffer,  ///< a name of a buffer, past the library's wrappers
    Token,   ///< a token that nobody gives back
    Unit,    ///< a texture that stays bound
    Memory,  ///< bytes
    Error,   ///< a call that OpenGL refuses
    Message, ///< a broken precondition
};

inline constexpr vrkview::Choice<Plant> kPlants[] = {
    {"none", Plant::None}, {"texture", Plant::Texture}, {"buffer", Plant::Buffer}, {"token", Plant::Token},
    {"unit", Plant::Unit}, {"memory", Plant::Memory},   {"error", Plant::Error},   {"message", Plant::Message},
};

/// Makes the fault once. `manager` is that of the stage.
void makeFault(Plant plant, Harrow::Vrk::TextureManager& manager);

} // namespace vrksoak
