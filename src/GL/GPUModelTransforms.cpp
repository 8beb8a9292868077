// SPDX-License-Identifier: MIT
// The hierarchy of transforms: what is set and asked. Updates are in GPUModelUpdate.cpp.
#include "GPUModel.h"

#include "Diagnostics.h"

namespace Harrow::Vrk
{

int GPUModel::addTransform(int parent, const QMatrix4x4& local)
{
    const auto index = static_cast<int>(_localTransforms.size());
    _localTransforms.append(local);
    _keepParentPositionOnly.append(false);
    _worldTransforms.append(QMatrix4x4());
    _normalTransforms.append(QGenericMatrix<3, 3, float>());
    _transformParents.append(parent);
    _transformNegative.append(false);
    _transformDirty.append(true);
    _transformVisibility.append(kVisible);
    _transformUsers.append(QList<InstanceRef>());
    _anyTransformDirty = true;
    _marked.append(index);
    _childrenKnown = false;
    return index;
}

void GPUModel::clearTransforms()
{
    _localTransforms.clear();
    _keepParentPositionOnly.clear();
    _worldTransforms.clear();
    _normalTransforms.clear();
    _transformParents.clear();
    _transformNegative.clear();
    _transformDirty.clear();
    _transformVisibility.clear();
    _transformNames.clear();
    _transformUsers.clear();
    _anyTransformDirty = false;
    _hiddenTrees = 0;
    _marked.clear();
    _childrenKnown = false;
    _inverseKnown.clear();
}

quint64 GPUModel::transformBytes() const
{
    constexpr quint64 kMatrixBytes = 68;
    constexpr quint64 kNormalBytes = 36;
    quint64 bytes = kMatrixBytes * static_cast<quint64>(_localTransforms.size() + _worldTransforms.size()) +
                    kNormalBytes * static_cast<quint64>(_normalTransforms.size()) +
                    4 * static_cast<quint64>(_transformParents.size()) + static_cast<quint64>(_transformDirty.size());
    for (auto name = _transformNames.cbegin(); name != _transformNames.cend(); ++name)
        bytes += static_cast<quint64>(28 + name.key().size());
    for (const QList<InstanceRef>& users : _transformUsers)
        bytes += static_cast<quint64>(24 + 8 * users.size());
    return bytes;
}

// ---- setters -------------------------------------------------------------------------------------------------------

void GPUModel::setLocalTransform(int index, const QMatrix4x4& local, bool keepParentPositionOnly)
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), , "There is no transform %d", index);
    if (!(_localTransforms.at(index) != local))
        return;
    _localTransforms[index] = local;
    if (!_transformDirty.at(index))
    {
        _transformDirty[index] = true;
        _marked.append(index);
    }
    _anyTransformDirty = true;
    _keepParentPositionOnly[index] = keepParentPositionOnly;
}

void GPUModel::setWorldTransform(int index, const QMatrix4x4& world)
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), , "There is no transform %d", index);
    const int parent = _transformParents.at(index);
    if (parent < 0)
    {
        setLocalTransform(index, world, false);
        return;
    }
    VRK_ASSERT_RETURN(this->isValidTransform(parent), , "There is no transform %d", parent);
    setLocalTransform(index, _worldTransforms.at(parent).inverted() * world, false);
}

void GPUModel::setTransformParent(int index, int parent)
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), , "There is no transform %d", index);
    _transformParents[index] = parent;
    _childrenKnown = false;
}

void GPUModel::setVisibility(int index, int visibility)
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), , "There is no transform %d", index);
    const auto hidesBelow = [](int state) { return state == kHiddenWithDescendants ? 1 : 0; };
    _hiddenTrees += hidesBelow(visibility) - hidesBelow(_transformVisibility.at(index));
    _transformVisibility[index] = visibility;
}

void GPUModel::setTransformName(int index, const QString& name)
{
    _transformNames.insert(name, index);
}

void GPUModel::useTransform(int handle, int command, int transform)
{
    Drawable* const drawable = find(handle);
    if (!drawable)
        return;
    VRK_ASSERT_RETURN(this->isValidTransform(transform), , "There is no transform %d", transform);
    VRK_ASSERT_RETURN(command >= 0 && command < drawable->transformRefs.size(), ,
                      "There is no command %d in drawable %d", command, handle);
    _transformUsers[transform].append({handle, command});
    drawable->transformRefs[command] = transform;
}

// ---- queries -------------------------------------------------------------------------------------------------------

bool GPUModel::isValidTransform(int index) const
{
    return 0 <= index && index < _localTransforms.size();
}

int GPUModel::transformParent(int index) const
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), -1, "There is no transform %d", index);
    return _transformParents.at(index);
}

int GPUModel::findTransform(const QString& name) const
{
    return _transformNames.value(name, -1);
}

QList<QString> GPUModel::transformNames() const
{
    return _transformNames.keys();
}

QMatrix4x4 GPUModel::localTransform(int index) const
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), QMatrix4x4(), "There is no transform %d", index);
    return _localTransforms.at(index);
}

QMatrix4x4 GPUModel::worldTransform(int index) const
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), QMatrix4x4(), "There is no transform %d", index);
    return _worldTransforms.at(index);
}

QGenericMatrix<3, 3, float> GPUModel::normalTransform(int index) const
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), (QGenericMatrix<3, 3, float>()), "There is no transform %d",
                      index);
    return _normalTransforms.at(index);
}

bool GPUModel::isVisible(int index) const
{
    VRK_ASSERT_RETURN(this->isValidTransform(index), false, "There is no transform %d", index);
    return isShown(index);
}

/// `isVisible` of a transform that there is.
bool GPUModel::isShown(int index) const
{
    const int state = _transformVisibility.at(index);
    return state != kHidden && state != kHiddenWithDescendants &&
           (_hiddenTrees == 0 || !isParentHidden(_transformParents.at(index)));
}

/// Whether the predicate holds for a transform or one above it; false below 0. Parents in a circle are noticed by
/// coming back to a transform that is remembered for twice as many steps each time.
template <typename Predicate> bool GPUModel::anyAbove(int index, Predicate predicate) const
{
    int remembered = -1;
    for (qsizetype step = 1, next = 1; index >= 0; index = _transformParents.at(index), ++step)
    {
        VRK_ASSERT_RETURN(this->isValidTransform(index), false, "There is no transform %d", index);
        VRK_ASSERT_RETURN(index != remembered, false, "Transform %d is above itself", index);
        if (predicate(index))
            return true;
        if (step == next)
        {
            remembered = index;
            next *= 2;
        }
    }
    return false;
}

bool GPUModel::isParentHidden(int index) const
{
    return anyAbove(index, [this](int above) { return _transformVisibility.at(above) == kHiddenWithDescendants; });
}

bool GPUModel::isTransformDirty(int index) const
{
    return anyAbove(index, [this](int above) { return _transformDirty.at(above); });
}

bool GPUModel::isDescendant(int ancestor, int node) const
{
    return anyAbove(node, [ancestor](int above) { return above == ancestor; });
}

} // namespace Harrow::Vrk
