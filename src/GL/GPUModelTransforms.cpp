// SPDX-License-Identifier: MIT
// The hierarchy of transforms, and how world matrices reach the object records.
#include "GPUModel.h"

#include "Diagnostics.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "VectorNormalize.h"

#include <QVector3D>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Harrow::Vrk
{
namespace
{

/// Whether three vectors are left-handed.
bool isNegative(const QVector3D& a, const QVector3D& b, const QVector3D& c)
{
    return QVector3D::dotProduct(c, QVector3D::crossProduct(a, b)) < 0.0f;
}

} // namespace

/// Writes the matrices of moved instances into their records, as the collection's own operations would one after the
/// other. Where the members lie is looked up once for each plan; records that have no room for them are left to those
/// operations, which know what may be written and report the rest.
class GPUModel::MatrixWriter
{
public:
    void write(InstanceDataCollection& records, int instance, const QMatrix4x4& world, const QMatrix4x4& inverse,
               const QGenericMatrix<3, 3, float>& normal)
    {
        const Places& places = placesOf(records.plan());
        char* const record = places.fits ? records.writableRecord(instance) : nullptr;
        if (!record)
        {
            writeOneByOne(records, instance, world, inverse, normal);
            return;
        }
        std::memmove(record + places.previous, record + places.model, places.modelBytes);
        std::memcpy(record + places.model, world.constData(), kMatrixBytes);
        std::memcpy(record + places.inverse, inverse.constData(), kMatrixBytes);
        if (places.hasNormal)
            std::memcpy(record + places.normal, normal.constData(), kNormalBytes);
    }

    void makePrevious(InstanceDataCollection& records, int instance)
    {
        const Places& places = placesOf(records.plan());
        char* const record = places.fits ? records.writableRecord(instance) : nullptr;
        if (record)
            std::memmove(record + places.previous, record + places.model, places.modelBytes);
        else
            records.copyInstanceMember(instance, kModelMatrix, kPreviousModelMatrix);
    }

private:
    static constexpr size_t kMatrixBytes = 16 * sizeof(float);
    static constexpr size_t kNormalBytes = 9 * sizeof(float);
    static constexpr size_t kPlans = 16; // remembered at a time; a scene has a few

    /// A member that the plan lacks is at offset 0, like everywhere. Without a plan there is no room.
    struct Places
    {
        const InstanceDataPlan* plan = nullptr;
        size_t model = 0;
        size_t previous = 0;
        size_t inverse = 0;
        size_t normal = 0;
        size_t modelBytes = 0;
        bool hasNormal = false;
        bool fits = false;
    };

    const Places& placesOf(const InstanceDataPlan* plan)
    {
        Places& places = _places[(reinterpret_cast<quintptr>(plan) / alignof(std::max_align_t)) % kPlans];
        if (places.plan != plan)
            places = plan ? lookUp(*plan) : Places();
        return places;
    }

    static Places lookUp(const InstanceDataPlan& plan)
    {
        const auto place = [&plan](const QString& name) { return static_cast<size_t>(plan.offset(name)); };
        Places places;
        places.plan = &plan;
        places.model = place(kModelMatrix);
        places.previous = place(kPreviousModelMatrix);
        places.inverse = place(kInverseModelMatrix);
        places.normal = place(kModelNormalMatrix);
        places.modelBytes = plan.dataSize(kModelMatrix);
        places.hasNormal = plan.contains(kModelNormalMatrix);
        const size_t bytes = plan.totalDataSize();
        places.fits = places.model + std::max(places.modelBytes, kMatrixBytes) <= bytes &&
                      places.previous + places.modelBytes <= bytes && places.inverse + kMatrixBytes <= bytes &&
                      (!places.hasNormal || places.normal + kNormalBytes <= bytes);
        return places;
    }

    static void writeOneByOne(InstanceDataCollection& records, int instance, const QMatrix4x4& world,
                              const QMatrix4x4& inverse, const QGenericMatrix<3, 3, float>& normal)
    {
        records.copyInstanceMember(instance, kModelMatrix, kPreviousModelMatrix);
        records.set(instance, kModelMatrix, world.constData(), kMatrixBytes);
        records.set(instance, kInverseModelMatrix, inverse.constData(), kMatrixBytes);
        if (records.plan() && records.plan()->contains(kModelNormalMatrix))
            records.set(instance, kModelNormalMatrix, normal.constData(), kNormalBytes);
    }

    Places _places[kPlans];
};

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
    _transformDirty[index] = true;
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

// ---- updates -------------------------------------------------------------------------------------------------------

bool GPUModel::updateTransforms()
{
    if (!_anyTransformDirty)
        return false;
    spreadDirtiness();
    MatrixWriter writer;
    for (int index = 0; index < _transformDirty.size(); ++index)
        if (_transformDirty.at(index))
            updateTransform(index, writer);
    _anyTransformDirty = false;
    return true;
}

/// For each transform whether it or one above it waits for an update, in one go: each is looked at twice at most,
/// however deep the hierarchy is.
const QList<quint8>& GPUModel::dirtyWithAncestors()
{
    enum : quint8
    {
        eNo,
        eYes,
        eUnknown,
        eOnTheWay
    };
    const auto count = static_cast<int>(_transformParents.size());
    const int* const parents = _transformParents.constData();
    const auto parentOf = [=](int index) { return parents[index] < count ? parents[index] : -1; };
    _dirtyWithAncestors.fill(eUnknown, count);
    quint8* const known = _dirtyWithAncestors.data();
    for (int index = 0; index < count; ++index)
    {
        int above = index;
        for (; above >= 0 && known[above] == eUnknown; above = parentOf(above))
        {
            if (_transformDirty.at(above))
            {
                known[above] = eYes;
                break;
            }
            known[above] = eOnTheWay;
        }
        // Up to a transform that is known, or that was found to be dirty.
        const quint8 answer = above >= 0 && known[above] == eYes ? eYes : eNo;
        for (int below = index; below >= 0 && known[below] == eOnTheWay; below = parentOf(below))
            known[below] = answer;
    }
    return _dirtyWithAncestors;
}

/// Marks everything below what is marked.
void GPUModel::spreadDirtiness()
{
    if (spreadDirtinessDownwards())
        return;
    const QList<quint8>& dirty = dirtyWithAncestors();
    std::copy(dirty.cbegin(), dirty.cend(), _transformDirty.begin());
}

/// The same in one pass, where all parents come before their children. False where they do not: not all is marked then.
bool GPUModel::spreadDirtinessDownwards()
{
    const int* const parents = _transformParents.constData();
    bool* const dirty = _transformDirty.data();
    bool isComplete = true;
    for (qsizetype index = 0; index < _transformDirty.size(); ++index)
    {
        const int parent = parents[index];
        if (parent >= index)
            isComplete = false;
        else if (parent >= 0 && dirty[parent])
            dirty[index] = true;
    }
    return isComplete;
}

/// Each transform after those above it: what is not up to date is collected upwards and computed downwards, so that the
/// depth of a hierarchy costs no stack. What is collected counts as up to date at once: that ends a circle of parents.
void GPUModel::updateTransform(int index, MatrixWriter& writer)
{
    _chain.clear();
    int parent = index;
    for (; isValidTransform(parent) && _transformDirty.at(parent); parent = _transformParents.at(parent))
    {
        _transformDirty[parent] = false;
        _chain.append(parent);
    }
    parent = parentAboveChain(parent);
    for (qsizetype i = _chain.size() - 1; i >= 0; --i)
    {
        const int next = _chain.at(i);
        computeWorldTransform(next, parent);
        writeMatrices(next, writer);
        parent = next;
    }
}

/// Where a chain ends: at none, also where there is no such transform, or where it is one of the chain itself.
int GPUModel::parentAboveChain(int parent) const
{
    if (parent < 0)
        return -1;
    VRK_ASSERT_RETURN(this->isValidTransform(parent), -1, "There is no transform %d", parent);
    VRK_ASSERT_RETURN(!this->_chain.contains(parent), -1, "Transform %d is above itself", parent);
    return parent;
}

void GPUModel::computeWorldTransform(int index, int above)
{
    const QMatrix4x4 parent = above >= 0 ? _worldTransforms.at(above) : QMatrix4x4();
    QMatrix4x4& world = _worldTransforms[index];
    if (_keepParentPositionOnly.at(index))
        world = worldWithoutRotation(index, parent);
    else
        world = parent * _localTransforms.at(index);
    if (index < _inverseKnown.size())
        _inverseKnown[index] = false;
    _normalTransforms[index] = world.normalMatrix();
    _transformNegative[index] = isNegative(normalize(world.row(0).toVector3D()), normalize(world.row(1).toVector3D()),
                                           normalize(world.row(2).toVector3D()));
}

/// Position and size of the parents without their rotation. The stored matrix takes on their size, at each update anew:
/// that is what is wanted.
QMatrix4x4 GPUModel::worldWithoutRotation(int index, const QMatrix4x4& parent)
{
    QMatrix4x4& local = _localTransforms[index];
    QMatrix4x4 world;
    world.translate((parent * local).column(3).toVector3D());
    const QVector3D columns[3] = {parent.column(0).toVector3D(), parent.column(1).toVector3D(),
                                  parent.column(2).toVector3D()};
    float sx = columns[0].length();
    if (isNegative(columns[0], columns[1], columns[2]))
        sx = -sx;
    local.setColumn(3, QVector4D(0.0f, 0.0f, 0.0f, 1.0f));
    local.scale(sx, columns[1].length(), columns[2].length());
    return world * local;
}

/// The object records of the drawable at a position, or null.
InstanceDataCollection* GPUModel::recordsAt(int position) const
{
    return position >= 0 && position < _drawables.size() ? _drawables.at(position).objectData : nullptr;
}

void GPUModel::writeMatrices(int index, MatrixWriter& writer)
{
    const QList<InstanceRef>& users = _transformUsers.at(index);
    if (users.isEmpty())
        return;
    const QMatrix4x4& world = _worldTransforms.at(index);
    const QMatrix4x4 inverse = world.inverted();
    const QGenericMatrix<3, 3, float>& normal = _normalTransforms.at(index);
    for (const InstanceRef& ref : users)
    {
        // A position, although it was a handle when it was kept: sorting leaves it as it is.
        if (InstanceDataCollection* const records = recordsAt(ref.drawable))
            writer.write(*records, ref.instance, world, inverse, normal);
        _previousMatrixPending.append(ref);
    }
}

void GPUModel::updatePreviousMatrices()
{
    MatrixWriter writer;
    int gone = 0;
    for (const InstanceRef& ref : std::as_const(_previousMatrixPending))
    {
        if (InstanceDataCollection* const records = recordsAt(ref.drawable))
            writer.makePrevious(*records, ref.instance);
        else if (ref.drawable >= _drawables.size())
            ++gone;
    }
    _previousMatrixPending.clear();
    VRK_ASSERT(0 == gone, "%d matrices belonged to drawables that are gone", gone);
}

} // namespace Harrow::Vrk
