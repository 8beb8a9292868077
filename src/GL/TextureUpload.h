// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the units share that specify images of textures: the unpack alignment for the length of a scope, lists of
/// parameters, anisotropy. Not installed.

#include "GLFunctions.h"

namespace Harrow::Vrk
{

/// Sets the alignment of the rows that OpenGL reads; at the end of the scope it is again what it was before.
class UnpackAlignment
{
public:
    explicit UnpackAlignment(GLint bytes);
    ~UnpackAlignment();

    UnpackAlignment(const UnpackAlignment&) = delete;
    UnpackAlignment& operator=(const UnpackAlignment&) = delete;

private:
    GLint _before = 0;
};

struct TextureParameter
{
    GLenum name;
    GLint value;
};

/// Gives the bound texture all of them, in their order.
template <typename Parameters> void setTextureParameters(GLenum target, const Parameters& parameters)
{
    for (const TextureParameter& parameter : parameters)
        glTexParameteri(target, parameter.name, parameter.value);
}

/// Gives the bound texture as much anisotropy as is asked for and as the driver has. Calls nothing for 0 or less, or
/// where the driver has none.
void setTextureAnisotropy(GLenum target, int requested);

} // namespace Harrow::Vrk
