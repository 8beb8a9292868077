// SPDX-License-Identifier: MIT
// Which commands a view does not show.
#include "FrustumTest.h"
#include "GPUModel.h"
#include "GPUModelCommands.h"
#include "GPUModelShownTransforms.h"

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

constexpr quint64 kHiddenDrawable = quint64(1) << 63;
constexpr quint64 kCullingCounts = 1 << 1;
constexpr float kNothing = 1.0e-6f;

/// A matrix whose first three rows are nearly zero, the translation included.
bool isScaledToNothing(const QMatrix4x4& world)
{
    const float* const m = world.constData();
    for (int row = 0; row < 3; ++row)
    {
        const float lengthSquared =
            m[row] * m[row] + m[row + 4] * m[row + 4] + m[row + 8] * m[row + 8] + m[row + 12] * m[row + 12];
        if (!(lengthSquared < kNothing))
            return false;
    }
    return true;
}

} // namespace

/// Marks the commands that are not marked yet and for which `isCulled` holds. Returns their number. A simple drawable
/// has none.
template <typename Test> int GPUModel::cullCommands(Drawable& drawable, Test isCulled)
{
    // The draw list may have got other commands since it was added: what is known of them may be less, or more.
    const qsizetype known = std::min({qsizetype(commandCount(drawable.drawBuffers)), drawable.culled.size(),
                                      drawable.transformRefs.size(), drawable.boundingBoxRefs.size()});
    if (drawable.culledCount >= drawable.culled.size())
        return 0;
    bool* const culled = drawable.culled.data();
    const int* const transforms = drawable.transformRefs.constData();
    const int* const boxes = drawable.boundingBoxRefs.constData();
    int count = 0;
    for (qsizetype command = 0; command < known; ++command)
    {
        if (culled[command])
            continue;
        // Not a branch: what is in view is as good as random, and a wrong guess costs more than a write.
        const bool isNew = isCulled(transforms[command], boxes[command]);
        culled[command] = isNew;
        count += isNew ? 1 : 0;
    }
    drawable.culledCount += count;
    return count;
}

void GPUModel::resetCulling()
{
    if (!hasFeatureFlags(kCullingCounts))
        return;
    for (Drawable& drawable : _drawables)
    {
        if (drawable.culledCount != 0)
            std::fill(drawable.culled.begin(), drawable.culled.end(), false);
        drawable.culledCount = 0;
    }
    _sceneBoundsDirty = true;
}

int GPUModel::visibilityCull()
{
    const quint8* const dirty = _anyTransformDirty ? dirtyWithAncestors().constData() : nullptr;
    const QMatrix4x4* const worlds = _worldTransforms.constData();
    const ShownTransforms transforms(*this);
    int count = 0;
    for (Drawable& drawable : _drawables)
    {
        if (drawable.flags & kHiddenDrawable)
        {
            const auto commands = static_cast<int>(drawable.culled.size());
            count += commands - drawable.culledCount;
            std::fill(drawable.culled.begin(), drawable.culled.end(), true);
            drawable.culledCount = commands;
            continue;
        }
        count += cullCommands(drawable,
                              [&](int transform, int)
                              {
                                  if (!transforms.contains(transform) || !transforms.isShown(transform))
                                      return true;
                                  if (dirty && dirty[transform])
                                      return false; // its matrix is not known yet
                                  return isScaledToNothing(worlds[transform]);
                              });
    }
    _sceneBoundsDirty = true;
    return count;
}

int GPUModel::frustumCull(const QMatrix4x4& viewProjection)
{
    const quint8* const dirty = _anyTransformDirty ? dirtyWithAncestors().constData() : nullptr;
    const QMatrix4x4* const worlds = _worldTransforms.constData();
    const BoundingBox* const boxes = _boundingBoxes.constData();
    const qsizetype boxCount = _boundingBoxes.size();
    const qsizetype transformCount = _worldTransforms.size();
    const FrustumTest frustum(viewProjection);
    int count = 0;
    for (Drawable& drawable : _drawables)
    {
        if (drawable.culledCount >= commandCount(drawable.drawBuffers))
            continue;
        count += cullCommands(drawable,
                              [&](int transform, int box)
                              {
                                  if (box < 0 || box >= boxCount)
                                      return false;
                                  if (transform < 0 || transform >= transformCount)
                                      return true;
                                  if (dirty && dirty[transform])
                                      return false; // its matrix is not known yet
                                  return frustum.isOutside(worlds[transform].constData(), &boxes[box].minX);
                              });
    }
    _sceneBoundsDirty = true;
    return count;
}

bool GPUModel::isDrawAny(quint64 mask) const
{
    return std::any_of(_drawables.cbegin(), _drawables.cend(),
                       [mask](const Drawable& drawable) { return (drawable.flags & mask) != 0; });
}

bool GPUModel::isDrawEmpty(quint64 value, quint64 mask) const
{
    const bool cullingCounts = hasFeatureFlags(kCullingCounts);
    return std::none_of(_drawables.cbegin(), _drawables.cend(),
                        [=](const Drawable& drawable)
                        {
                            return (drawable.flags & mask) == (value & mask) &&
                                   (!cullingCounts || drawable.culledCount < commandCount(drawable.drawBuffers));
                        });
}

} // namespace Harrow::Vrk
