// SPDX-License-Identifier: MIT
#include "BindlessHandles.h"

#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLPlatform.h"
#include "GLUtilities.h"
#include "Texture.h"

#include <utility>

namespace Harrow::Vrk
{
namespace
{

constexpr const char* kArbExtension = "GL_ARB_bindless_texture";
constexpr const char* kNvExtension = "GL_NV_bindless_texture";

} // namespace

bool BindlessHandles::isSupported()
{
    return hasGLExtension(kArbExtension) || hasGLExtension(kNvExtension);
}

BindlessHandles::BindlessHandles()
{
    _arbBindless = hasGLExtension(kArbExtension);
    _nvBindless = !_arbBindless && hasGLExtension(kNvExtension);
    if (_arbBindless)
        _functions.resolve("ARB");
    else if (_nvBindless)
        _functions.resolve("NV");
    else
        VRK_ASSERT(false, "No known bindless texture support detected. You should not be using this TextureManager");
}

bool BindlessHandles::isArb() const
{
    return _arbBindless;
}

bool BindlessHandles::isNv() const
{
    return _nvBindless;
}

void BindlessHandles::reportMissing(const char* name) const
{
    Detail::reportMissingGLFunction((QByteArray(name) + (_nvBindless ? "NV" : "ARB")).constData());
}

quint64 BindlessHandles::handleOf(unsigned textureID) const
{
    if (_functions.getTextureHandle)
        return _functions.getTextureHandle(textureID);
    reportMissing("glGetTextureHandle");
    return 0;
}

/// Without the driver's word the books are all there is.
bool BindlessHandles::isResident(quint64 handle) const
{
    if (_functions.isTextureHandleResident)
        return _functions.isTextureHandleResident(handle) != GL_FALSE;
    reportMissing("glIsTextureHandleResident");
    return _residencies.contains(handle);
}

void BindlessHandles::makeResident(quint64 handle, Texture* texture)
{
    if (isResident(handle))
        return;
    if (!_functions.makeTextureHandleResident)
        return reportMissing("glMakeTextureHandleResident");
    _functions.makeTextureHandleResident(handle);
    _residencies.insert(handle, {texture, GLContextTracker::currentContext()});
}

void BindlessHandles::makeNonResident(quint64 handle)
{
    if (!isResident(handle))
        return;
    if (!_functions.makeTextureHandleNonResident)
        return reportMissing("glMakeTextureHandleNonResident");
    _functions.makeTextureHandleNonResident(handle);
    _residencies.remove(handle);
}

void BindlessHandles::textureEnds(quint64 handle)
{
    const auto found = _residencies.constFind(handle);
    if (found == _residencies.constEnd())
        return;
    end(handle, *found);
    _residencies.erase(found);
}

void BindlessHandles::allTexturesEnd()
{
    const QHash<quint64, Residency> ended = std::exchange(_residencies, {});
    for (auto it = ended.cbegin(); it != ended.cend(); ++it)
        end(it.key(), *it);
}

/// A wrapped texture stays with its owner, and so does what its handle is.
void BindlessHandles::end(quint64 handle, const Residency& residency) const
{
    if (GLPlatform::isProcessEnding() || !residency.texture || !residency.texture->isManaged() ||
        residency.context != GLContextTracker::currentContext())
        return;
    if (!_functions.makeTextureHandleNonResident)
        return reportMissing("glMakeTextureHandleNonResident");
    _functions.makeTextureHandleNonResident(handle);
}

} // namespace Harrow::Vrk
