// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Tables of OpenGL enumerants with a word for each, for messages. Not installed.

#include "GLFunctions.h"

#include <algorithm>
#include <span>

namespace Harrow::Vrk
{

struct GLEnumWord
{
    GLenum value;
    const char* word;
};

inline const char* wordFor(std::span<const GLEnumWord> words, GLenum value, const char* otherwise)
{
    const auto found =
        std::find_if(words.begin(), words.end(), [value](const GLEnumWord& row) { return row.value == value; });
    return found != words.end() ? found->word : otherwise;
}

} // namespace Harrow::Vrk
