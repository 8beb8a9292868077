// SPDX-License-Identifier: MIT
#include "TextureUpload.h"

#include "GLUtilities.h"

#include <algorithm>

namespace Harrow::Vrk
{

UnpackAlignment::UnpackAlignment(GLint bytes)
{
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &_before);
    glPixelStorei(GL_UNPACK_ALIGNMENT, bytes);
}

UnpackAlignment::~UnpackAlignment()
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, _before);
}

void setTextureAnisotropy(GLenum target, int requested)
{
    if (!hasGLExtension("GL_EXT_texture_filter_anisotropic") || requested <= 0)
        return;
    GLint most = 0;
    glGetIntegerv(GL_MAX_TEXTURE_MAX_ANISOTROPY, &most);
    glTexParameteri(target, GL_TEXTURE_MAX_ANISOTROPY, std::min<GLint>(requested, most));
}

} // namespace Harrow::Vrk
