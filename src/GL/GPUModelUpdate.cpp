// SPDX-License-Identifier: MIT
// How changes reach the records of a frame: world matrices of what has moved, and properties by name.
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

using NormalMatrix = QGenericMatrix<3, 3, float>;

/// Whether three vectors are left-handed.
bool isNegative(const QVector3D& a, const QVector3D& b, const QVector3D& c)
{
    return QVector3D::dotProduct(c, QVector3D::crossProduct(a, b)) < 0.0f;
}

/// Whether the rows of a matrix, each brought to length 1, are left-handed. Where that is far from flat the sign is
/// already that of the rows as they are; only the rest is worth roots and divisions.
bool isMirrored(const QMatrix4x4& world)
{
    constexpr float kNotZero = 4e-10f; // squared, twice the length that counts as zero
    constexpr float kNotFlat = 1e-6f;  // squared, a thousand times what rounding can do
    const float* const m = world.constData();
    const auto square = [m](int row) { return m[row] * m[row] + m[row + 4] * m[row + 4] + m[row + 8] * m[row + 8]; };
    const auto minor = [m](int a, int b) { return m[a] * m[b + 1] - m[b] * m[a + 1]; };
    const float squares[] = {square(0), square(1), square(2)};
    const float determinant = m[10] * minor(0, 4) - m[6] * minor(0, 8) + m[2] * minor(4, 8);
    if (squares[0] > kNotZero && squares[1] > kNotZero && squares[2] > kNotZero &&
        determinant * determinant > kNotFlat * (squares[0] * squares[1] * squares[2]))
        return determinant < 0.0f;
    return isNegative(normalize(world.row(0).toVector3D()), normalize(world.row(1).toVector3D()),
                      normalize(world.row(2).toVector3D()));
}

/// Position and size of the parents without their rotation. The local matrix takes on their size, at each update anew:
/// that is what is wanted.
QMatrix4x4 worldWithoutRotation(QMatrix4x4& local, const QMatrix4x4& parent)
{
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

} // namespace

// ---- into the records ----------------------------------------------------------------------------------------------

/// Records of one collection after another: where its bytes lie is asked once for a run.
class GPUModel::RecordRun
{
public:
    bool isOf(const InstanceDataCollection& records) const
    {
        return &records == _records;
    }

    /// Of records of `recordBytes` bytes. Null, and no run, for a record that there is not.
    char* begin(InstanceDataCollection& records, qsizetype recordBytes, int instance)
    {
        char* const record = records.writableRecord(instance);
        _records = record ? &records : nullptr;
        _first = record ? record - instance * recordBytes : nullptr;
        _last = records._data.size() - recordBytes;
        _recordBytes = recordBytes;
        return record;
    }

    /// Null for a record that there is not.
    char* at(int instance) const
    {
        const qsizetype start = instance * _recordBytes;
        return start >= 0 && start <= _last ? _first + start : nullptr;
    }

    /// Before the collection itself writes, which may move its bytes.
    void end()
    {
        _records = nullptr;
    }

private:
    const InstanceDataCollection* _records = nullptr;
    char* _first = nullptr;
    qsizetype _last = 0; // where the last whole record begins, or behind that
    qsizetype _recordBytes = 0;
};

/// Writes the matrices of moved instances into their records, as the collection's own operations would one after the
/// other. Where the members lie is looked up once for each plan; records that have no room for them are left to those
/// operations, which know what may be written and report the rest.
class GPUModel::MatrixWriter
{
public:
    void write(InstanceDataCollection& records, int instance, const QMatrix4x4& world, const QMatrix4x4& inverse,
               const NormalMatrix& normal)
    {
        char* const record = recordOf(records, instance);
        if (!record)
        {
            writeOneByOne(records, instance, world, inverse, normal);
            return;
        }
        moveToPrevious(record);
        std::memcpy(record + _places->model, world.constData(), kMatrixBytes);
        std::memcpy(record + _places->inverse, inverse.constData(), kMatrixBytes);
        if (_places->hasNormal)
            std::memcpy(record + _places->normal, normal.constData(), kNormalBytes);
    }

    void makePrevious(InstanceDataCollection& records, int instance)
    {
        if (char* const record = recordOf(records, instance))
            moveToPrevious(record);
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
        qsizetype bytes = 0; // of a record
        bool hasNormal = false;
        bool fits = false;
    };

    /// Null where there is no such record, or no room in it.
    char* recordOf(InstanceDataCollection& records, int instance)
    {
        char* record = nullptr;
        if (_run.isOf(records))
        {
            record = _run.at(instance);
        }
        else
        {
            _places = &placesOf(records._plan);
            record = _places->fits ? _run.begin(records, _places->bytes, instance) : nullptr;
        }
        if (!record)
            _run.end();
        return record;
    }

    /// As many bytes as the plan says: those of a matrix, if it knows the member.
    void moveToPrevious(char* record) const
    {
        if (_places->modelBytes != kMatrixBytes)
        {
            std::memmove(record + _places->previous, record + _places->model, _places->modelBytes);
            return;
        }
        char matrix[kMatrixBytes]; // a few registers
        std::memcpy(matrix, record + _places->model, kMatrixBytes);
        std::memcpy(record + _places->previous, matrix, kMatrixBytes);
    }

    const Places& placesOf(const InstanceDataPlan* plan)
    {
        Places& places = _known[(reinterpret_cast<quintptr>(plan) / alignof(std::max_align_t)) % kPlans];
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
        places.bytes = static_cast<qsizetype>(bytes);
        places.fits = places.model + std::max(places.modelBytes, kMatrixBytes) <= bytes &&
                      places.previous + places.modelBytes <= bytes && places.inverse + kMatrixBytes <= bytes &&
                      (!places.hasNormal || places.normal + kNormalBytes <= bytes);
        return places;
    }

    static void writeOneByOne(InstanceDataCollection& records, int instance, const QMatrix4x4& world,
                              const QMatrix4x4& inverse, const NormalMatrix& normal)
    {
        records.copyInstanceMember(instance, kModelMatrix, kPreviousModelMatrix);
        records.set(instance, kModelMatrix, world.constData(), kMatrixBytes);
        records.set(instance, kInverseModelMatrix, inverse.constData(), kMatrixBytes);
        if (records.plan() && records.plan()->contains(kModelNormalMatrix))
            records.set(instance, kModelNormalMatrix, normal.constData(), kNormalBytes);
    }

    RecordRun _run;
    const Places* _places = nullptr; // of the run
    Places _known[kPlans];
};

// ---- what is dirty -------------------------------------------------------------------------------------------------

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

/// Marks everything below what is marked: from there downwards if that is little, else in one pass over all.
void GPUModel::spreadDirtiness()
{
    constexpr qsizetype kLittle = 8;
    if (_marked.size() * kLittle <= _transformDirty.size())
    {
        spreadDirtinessFromMarked();
        return;
    }
    if (spreadDirtinessDownwards())
        return;
    const QList<quint8>& dirty = dirtyWithAncestors();
    std::copy(dirty.cbegin(), dirty.cend(), _transformDirty.begin());
}

/// In one pass, where all parents come before their children. False where they do not: not all is marked then.
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

void GPUModel::spreadDirtinessFromMarked()
{
    knowChildren();
    bool* const dirty = _transformDirty.data();
    _chain.clear();
    _chain.append(_marked); // not shared, which would cost an allocation
    while (!_chain.isEmpty())
    {
        for (int child = _firstChild.at(_chain.takeLast()); child >= 0; child = _nextSibling.at(child))
        {
            if (dirty[child])
                continue; // it is marked too, or has been met
            dirty[child] = true;
            _chain.append(child);
        }
    }
}

/// Who is below whom, until a parent changes.
void GPUModel::knowChildren()
{
    if (_childrenKnown)
        return;
    const auto count = static_cast<int>(_transformParents.size());
    _firstChild.fill(-1, count);
    _nextSibling.fill(-1, count);
    for (int index = 0; index < count; ++index)
    {
        const int parent = _transformParents.at(index);
        if (!isValidTransform(parent))
            continue;
        _nextSibling[index] = _firstChild.at(parent);
        _firstChild[parent] = index;
    }
    _childrenKnown = true;
}

// ---- updates -------------------------------------------------------------------------------------------------------

/// One update over the bare arrays.
class GPUModel::Update
{
public:
    explicit Update(GPUModel& model)
        : _model(model),
          _count(static_cast<int>(model._transformDirty.size())),
          _parents(model._transformParents.constData()),
          _keep(model._keepParentPositionOnly.constData()),
          _locals(model._localTransforms.data()),
          _worlds(model._worldTransforms.data()),
          _normals(model._normalTransforms.data()),
          _negative(model._transformNegative.data()),
          _dirty(model._transformDirty.data()),
          _inverseKnown(model._inverseKnown.data()),
          _inverses(model._inverseKnown.size()),
          _users(model._transformUsers.constData())
    {
    }

    void run()
    {
        int next = 0;
        for (int index = nextDirty(0); index < _count; index = next)
        {
            next = nextDirty(index + 1);
            fetch(next);
            if (!_dirty[index])
                continue; // it was above another one
            const int parent = _parents[index];
            if (parent < 0 || (parent < _count && !_dirty[parent]))
            {
                _dirty[index] = false;
                update(index, parent);
            }
            else
            {
                updateWithAncestors(index);
            }
        }
    }

private:
    int nextDirty(int index) const
    {
        static_assert(sizeof(bool) == 1);
        if (index >= _count)
            return _count;
        const void* const found = std::memchr(_dirty + index, 1, static_cast<size_t>(_count - index));
        return found ? static_cast<int>(static_cast<const bool*>(found) - _dirty) : _count;
    }

    /// Brings what the next transform needs nearer while this one is computed.
    void fetch(int index) const
    {
#if defined(__GNUC__)
        if (index >= _count)
            return;
        __builtin_prefetch(_locals + index);
        __builtin_prefetch(_worlds + index);
        __builtin_prefetch(_users[index].constData());
#else
        Q_UNUSED(index);
#endif
    }

    /// What is not up to date is collected upwards and computed downwards, so that the depth of a hierarchy costs no
    /// stack. What is collected counts as up to date at once: that ends a circle of parents.
    void updateWithAncestors(int index)
    {
        QList<int>& chain = _model._chain;
        chain.clear();
        int parent = index;
        for (; _model.isValidTransform(parent) && _dirty[parent]; parent = _parents[parent])
        {
            _dirty[parent] = false;
            chain.append(parent);
        }
        parent = parentAbove(chain, parent);
        for (qsizetype i = chain.size() - 1; i >= 0; --i)
        {
            update(chain.at(i), parent);
            parent = chain.at(i);
        }
    }

    /// Where a chain ends: at none, also where there is no such transform, or where it is one of the chain itself.
    int parentAbove(const QList<int>& chain, int parent) const
    {
        if (parent < 0)
            return -1;
        VRK_ASSERT_RETURN(_model.isValidTransform(parent), -1, "There is no transform %d", parent);
        VRK_ASSERT_RETURN(!chain.contains(parent), -1, "Transform %d is above itself", parent);
        return parent;
    }

    void update(int index, int above)
    {
        const QMatrix4x4& parent = above >= 0 ? _worlds[above] : _identity;
        QMatrix4x4& world = _worlds[index];
        world = _keep[index] ? worldWithoutRotation(_locals[index], parent) : parent * _locals[index];
        if (index < _inverses)
            _inverseKnown[index] = false;
        _normals[index] = world.normalMatrix();
        _negative[index] = isMirrored(world);
        writeMatrices(index);
    }

    void writeMatrices(int index)
    {
        const QList<InstanceRef>& users = _users[index];
        if (users.isEmpty())
            return;
        const QMatrix4x4 inverse = _worlds[index].inverted();
        for (const InstanceRef& ref : users)
        {
            // A position, although it was a handle when it was kept: sorting leaves it as it is.
            if (InstanceDataCollection* const records = _model.recordsAt(ref.drawable))
                _writer.write(*records, ref.instance, _worlds[index], inverse, _normals[index]);
            _model._previousMatrixPending.append(ref);
        }
    }

    GPUModel& _model;
    const int _count;
    const int* const _parents;
    const bool* const _keep;
    QMatrix4x4* const _locals;
    QMatrix4x4* const _worlds;
    NormalMatrix* const _normals;
    bool* const _negative;
    bool* const _dirty;
    bool* const _inverseKnown;
    const qsizetype _inverses;
    const QList<InstanceRef>* const _users;
    const QMatrix4x4 _identity;
    MatrixWriter _writer;
};

bool GPUModel::updateTransforms()
{
    if (!_anyTransformDirty)
        return false;
    spreadDirtiness();
    Update(*this).run();
    _marked.clear();
    _anyTransformDirty = false;
    return true;
}

/// The object records of the drawable at a position, or null.
InstanceDataCollection* GPUModel::recordsAt(int position) const
{
    return position >= 0 && position < _drawables.size() ? _drawables.at(position).objectData : nullptr;
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

// ---- properties ----------------------------------------------------------------------------------------------------

/// As `InstanceDataCollection::set` would, with the place of the property looked up once for a run of records of one
/// plan. What is not plainly within a record is left to that.
void GPUModel::setProperty(const QList<InstanceRef>& instances, InstanceDataCollection* Drawable::*records,
                           const QString& property, const void* data, size_t size)
{
    RecordRun run;
    const InstanceDataPlan* plan = nullptr;
    qsizetype offset = 0;
    qsizetype bytes = 0;
    bool fits = false;
    for (const InstanceRef& ref : instances)
    {
        const Drawable* const drawable = std::as_const(*this).find(ref.drawable);
        InstanceDataCollection* const collection = drawable ? drawable->*records : nullptr;
        if (!collection)
            continue;
        if (!run.isOf(*collection) && collection->plan() != plan)
        {
            plan = collection->plan();
            offset = plan ? plan->offset(property) : 0;
            bytes = plan ? static_cast<qsizetype>(plan->totalDataSize()) : 0;
            fits = data && offset <= bytes && size <= static_cast<size_t>(bytes - offset);
        }
        char* record = nullptr;
        if (run.isOf(*collection))
            record = run.at(ref.instance);
        else if (fits)
            record = run.begin(*collection, bytes, ref.instance);
        if (record)
        {
            std::memmove(record + offset, data, size); // it may be a part of the records
            continue;
        }
        run.end();
        collection->set(ref.instance, property, data, size);
    }
}

} // namespace Harrow::Vrk
