// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The entry points of bindless textures, which are alike in the two extensions that have them. Not installed.

#include "GLOptionalFunctions.h"
#include "GLUtilities.h"

#include <QByteArray>

namespace Harrow::Vrk
{

/// Null until resolved, and where the driver names an extension without having its functions.
struct BindlessTextureFunctions
{
    /// `suffix` is "ARB" or "NV". A context must be current.
    void resolve(const char* suffix)
    {
        const auto find = [suffix](auto& function, const char* name) {
            function =
                reinterpret_cast<std::decay_t<decltype(function)>>(getGLProcAddress(QByteArray(name) + suffix, false));
        };
        find(getTextureHandle, "glGetTextureHandle");
        find(makeTextureHandleResident, "glMakeTextureHandleResident");
        find(makeTextureHandleNonResident, "glMakeTextureHandleNonResident");
        find(uniformHandleui64v, "glUniformHandleui64v");
        find(isTextureHandleResident, "glIsTextureHandleResident");
    }

    PFN_glGetTextureHandleARB getTextureHandle = nullptr;
    PFN_glMakeTextureHandleResidentARB makeTextureHandleResident = nullptr;
    PFN_glMakeTextureHandleNonResidentARB makeTextureHandleNonResident = nullptr;
    PFN_glUniformHandleui64vARB uniformHandleui64v = nullptr;
    PFN_glIsTextureHandleResidentARB isTextureHandleResident = nullptr;
};

} // namespace Harrow::Vrk
