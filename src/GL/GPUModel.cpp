// SPDX-License-Identifier: MIT
// Drawables, their flags and the names that lead to them. Transforms, cameras, culling and drawing have files of their
// own.
#include "GPUModel.h"

#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "GPUModelCommands.h"
#include "InstanceDataCollection.h"

#include <QSet>

#include <algorithm>
#include <utility>
#include <vector>

namespace Harrow::Vrk
{
namespace
{

constexpr int kTangentSetsShift = 52;
constexpr int kUVSetsShift = 55;

constexpr unsigned threeBits(quint64 flags, int shift)
{
    return static_cast<unsigned>((flags >> shift) & 7);
}

void resizeTo(QList<int>& list, qsizetype size)
{
    const qsizetype before = list.size();
    list.resize(size);
    if (size > before)
        std::fill(list.begin() + before, list.end(), -1);
}

/// Each once, although the model may name one of them twice by mistake.
void deleteEach(const QList<QObject*>& objects)
{
    QSet<const QObject*> gone;
    gone.reserve(objects.size());
    int twice = 0;
    for (QObject* const object : objects)
    {
        const qsizetype before = gone.size();
        gone.insert(object);
        if (gone.size() > before)
            delete object;
        else if (object)
            ++twice;
    }
    VRK_ASSERT(0 == twice, "%d draw lists and records are named more than once by a model that owns them", twice);
}

QList<QObject*> contentsOf(const GPUModel::Drawable& drawable)
{
    return {drawable.drawBuffers, drawable.materialData, drawable.objectData};
}

/// Whether it has contents of the other's.
bool sharesContents(const GPUModel::Drawable& drawable, const QList<QObject*>& others)
{
    const QList<QObject*> own = contentsOf(drawable);
    return std::any_of(own.cbegin(), own.cend(),
                       [&others](QObject* object) { return object && others.contains(object); });
}

} // namespace

const QString kModelMatrix = QStringLiteral("ModelMatrix");
const QString kPreviousModelMatrix = QStringLiteral("PreviousModelMatrix");
const QString kInverseModelMatrix = QStringLiteral("InverseModelMatrix");
const QString kModelNormalMatrix = QStringLiteral("ModelNormalMatrix");
const QString kPlanar = QStringLiteral("[PLANAR]");

GPUModel::GPUModel() = default;
GPUModel::GPUModel(const GPUModel& other) = default;
GPUModel& GPUModel::operator=(const GPUModel& other) = default;

GPUModel::~GPUModel()
{
    clear();
}

// ---- handles -------------------------------------------------------------------------------------------------------

bool GPUModel::isHandle(int handle) const
{
    return handle >= 0 && handle < _drawableIndex.size();
}

const GPUModel::Drawable* GPUModel::find(int handle) const
{
    VRK_ASSERT_RETURN(this->isHandle(handle), nullptr, "There is no drawable %d", handle);
    return &_drawables.at(_drawableIndex.at(handle));
}

GPUModel::Drawable* GPUModel::find(int handle)
{
    VRK_ASSERT_RETURN(this->isHandle(handle), nullptr, "There is no drawable %d", handle);
    return &_drawables[_drawableIndex.at(handle)];
}

DrawBuffers* GPUModel::drawBuffers(int handle)
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->drawBuffers : nullptr;
}

const DrawBuffers* GPUModel::drawBuffers(int handle) const
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->drawBuffers : nullptr;
}

InstanceDataCollection* GPUModel::materialData(int handle)
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->materialData : nullptr;
}

const InstanceDataCollection* GPUModel::materialData(int handle) const
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->materialData : nullptr;
}

InstanceDataCollection* GPUModel::objectData(int handle)
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->objectData : nullptr;
}

const InstanceDataCollection* GPUModel::objectData(int handle) const
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->objectData : nullptr;
}

quint64 GPUModel::getFlags(int handle) const
{
    const Drawable* const drawable = find(handle);
    return drawable ? drawable->flags : 0;
}

int GPUModel::numDrawables() const
{
    return static_cast<int>(_drawables.size());
}

bool GPUModel::isDrawablesEmpty() const
{
    return _drawables.isEmpty();
}

// ---- adding and replacing ------------------------------------------------------------------------------------------

int GPUModel::add(DrawBuffers* buffers, int materialKey, InstanceDataCollection* material,
                  InstanceDataCollection* object, const quint64& flags)
{
    const quint64 lastFlags = _drawables.isEmpty() ? 0 : _drawables.constLast().flags;
    const quint64 newFlags = flags; // may be a flags word of the list that grows
    const int position = addDrawable(buffers, material, object, newFlags);
    Drawable& drawable = _drawables[position];
    const int commands = commandCount(buffers);
    drawable.transformRefs.fill(kInvalidTransformRef, commands);
    drawable.boundingBoxRefs.fill(kInvalidBoundingBoxRef, commands);
    drawable.culled.fill(false, commands);
    _materialDrawables[materialKey].append(position);
    _sceneBoundsDirty = true;
    if (newFlags < lastFlags)
        _drawablesUnsorted = true;
    return drawable.handle;
}

int GPUModel::addSimple(DrawBuffers* buffers, int /*unused*/, InstanceDataCollection* material,
                        InstanceDataCollection* object, const quint64& flags)
{
    const int position = addDrawable(buffers, material, object, quint64(flags));
    _materialDrawables[0].append(position);
    return _drawables.at(position).handle;
}

/// Returns the position.
int GPUModel::addDrawable(DrawBuffers* buffers, InstanceDataCollection* material, InstanceDataCollection* object,
                          quint64 flags)
{
    const auto position = static_cast<int>(_drawables.size());
    Drawable drawable;
    drawable.drawBuffers = buffers;
    drawable.materialData = material;
    drawable.objectData = object;
    drawable.flags = flags;
    drawable.handle = static_cast<int>(_drawableIndex.size());
    _drawables.append(drawable);
    _drawableIndex.append(position);
    return position;
}

void GPUModel::set(int handle, DrawBuffers* buffers, InstanceDataCollection* material, InstanceDataCollection* object,
                   quint64 value, quint64 mask)
{
    Drawable* const drawable = find(handle);
    if (!drawable)
        return;
    if (_deleteOnClear)
    {
        VRK_ASSERT_RETURN(!sharesContents(*drawable, {buffers, material, object}), ,
                          "Drawable %d would delete what it is given: turn setDeleteOnClear off before", handle);
        deleteEach(contentsOf(*drawable));
    }
    drawable->drawBuffers = buffers;
    drawable->materialData = material;
    drawable->objectData = object;

    const qsizetype before = drawable->culled.size();
    const qsizetype commands = commandCount(buffers);
    resizeTo(drawable->transformRefs, commands);
    resizeTo(drawable->boundingBoxRefs, commands);
    drawable->culled.resize(commands); // new entries are false
    if (commands < before)
        drawable->culledCount = static_cast<int>(drawable->culled.count(true));
    _sceneBoundsDirty = true;
    setFlagsOf(*drawable, value, mask);
}

void GPUModel::setDeleteOnClear(bool deleteOnClear)
{
    _deleteOnClear = deleteOnClear;
}

void GPUModel::clear()
{
    if (_deleteOnClear)
        deleteContents();
    _materialDrawables.clear();
    _drawables.clear();
    _drawableIndex.clear();
    _materialInstances.clear();
    _objectInstances.clear();
    _drawablesUnsorted = false;
    clearTransforms();
    _sceneBoundsDirty = true;
}

void GPUModel::deleteContents()
{
    QList<QObject*> contents;
    contents.reserve(3 * _drawables.size());
    for (const Drawable& drawable : std::as_const(_drawables))
        contents += contentsOf(drawable);
    deleteEach(contents);
}

// ---- flags ---------------------------------------------------------------------------------------------------------

void GPUModel::setFlagsOf(Drawable& drawable, quint64 value, quint64 mask)
{
    const quint64 flags = (drawable.flags & ~mask) | (value & mask);
    if (drawable.flags == flags)
        return;
    drawable.flags = flags;
    _drawablesUnsorted = true;
}

void GPUModel::addFlags(int handle, quint64 bits)
{
    setFlags(handle, bits, bits);
}

void GPUModel::addFlags(int first, int last, quint64 bits)
{
    setFlags(first, last, bits, bits);
}

void GPUModel::removeFlags(int handle, quint64 bits)
{
    setFlags(handle, 0, bits);
}

void GPUModel::removeFlags(int first, int last, quint64 bits)
{
    setFlags(first, last, 0, bits);
}

void GPUModel::setFlags(int handle, quint64 value, quint64 mask)
{
    if (Drawable* const drawable = find(handle))
        setFlagsOf(*drawable, value, mask);
}

void GPUModel::setFlags(int first, int last, quint64 value, quint64 mask)
{
    if (first >= last)
        return;
    VRK_ASSERT_RETURN(this->isHandle(first) && this->isHandle(last - 1), , "There are no drawables %d to %d", first,
                      last - 1);
    for (int handle = first; handle < last; ++handle)
        setFlagsOf(_drawables[_drawableIndex.at(handle)], value, mask);
}

bool GPUModel::flagsLessThan(const Drawable& a, const Drawable& b)
{
    return a.flags < b.flags;
}

void GPUModel::sortDrawablesByFlags()
{
    // Stays set until the model is cleared, and positions kept elsewhere are left as they are: both are interface. A
    // list that is in order is only looked at.
    if (!_drawablesUnsorted)
        return;
    if (std::is_sorted(_drawables.cbegin(), _drawables.cend(), flagsLessThan))
        return;
    // By flags, then by position, which keeps the order of equal ones.
    std::vector<std::pair<quint64, int>> order;
    order.reserve(static_cast<size_t>(_drawables.size()));
    for (const Drawable& drawable : std::as_const(_drawables))
        order.emplace_back(drawable.flags, static_cast<int>(order.size()));
    std::sort(order.begin(), order.end());
    // Each drawable goes once to its place: from one that is free to the one that this leaves free, round by round.
    Drawable* const drawables = _drawables.data();
    int* const index = _drawableIndex.data();
    for (size_t start = 0; start < order.size(); ++start)
    {
        Drawable first = std::move(drawables[start]);
        size_t free = start;
        for (size_t from; (from = static_cast<size_t>(order[free].second)) != start; free = from)
        {
            drawables[free] = std::move(drawables[from]);
            order[free].second = static_cast<int>(free);
        }
        drawables[free] = std::move(first);
        order[free].second = static_cast<int>(free);
    }
    for (size_t position = 0; position < order.size(); ++position)
        index[drawables[position].handle] = static_cast<int>(position);
}

void GPUModel::setFeatureFlags(quint64 flags)
{
    _featureFlags = flags;
}

quint64 GPUModel::getFeatureFlags() const
{
    return _featureFlags;
}

bool GPUModel::hasFeatureFlags(quint64 flags) const
{
    return (_featureFlags & flags) == flags;
}

unsigned GPUModel::maxUVSets() const
{
    unsigned sets = 0;
    for (const Drawable& drawable : _drawables)
        sets = std::max(sets, threeBits(drawable.flags, kUVSetsShift));
    return sets;
}

unsigned GPUModel::maxTangentSets() const
{
    unsigned sets = 0;
    for (const Drawable& drawable : _drawables)
        sets = std::max(sets, threeBits(drawable.flags, kTangentSetsShift));
    return sets;
}

// ---- estimates -----------------------------------------------------------------------------------------------------

int GPUModel::getTotalVerts() const
{
    quint32 vertices = 0;
    for (const Drawable& drawable : _drawables)
        if (drawable.drawBuffers)
            vertices += drawable.drawBuffers->numVerts();
    return static_cast<int>(vertices);
}

quint64 GPUModel::memoryEstimateCPU() const
{
    quint64 bytes = sizeof(GPUModel);
    for (const Drawable& drawable : _drawables)
    {
        bytes += sizeof(Drawable);
        bytes += drawable.drawBuffers ? drawable.drawBuffers->memoryEstimateCPU() : 0;
        bytes += drawable.materialData ? drawable.materialData->memoryEstimateCPU() : 0;
        bytes += drawable.objectData ? drawable.objectData->memoryEstimateCPU() : 0;
    }
    bytes += 4 * static_cast<quint64>(_drawableIndex.size());
    for (const auto* const table : {&_materialInstances, &_objectInstances})
        for (auto entry = table->cbegin(); entry != table->cend(); ++entry)
            bytes += static_cast<quint64>(entry.key().size() + 8 * entry->size());
    return bytes + transformBytes();
}

quint64 GPUModel::memoryEstimateGPU() const
{
    quint64 bytes = 0;
    for (const Drawable& drawable : _drawables)
    {
        bytes += drawable.drawBuffers ? drawable.drawBuffers->memoryEstimateGPU() : 0;
        bytes += drawable.materialData ? drawable.materialData->memoryEstimateGPU() : 0;
        bytes += drawable.objectData ? drawable.objectData->memoryEstimateGPU() : 0;
    }
    return bytes;
}

// ---- names ---------------------------------------------------------------------------------------------------------

void GPUModel::addMaterialName(int handle, int instance, const QString& name)
{
    _materialInstances[name].append({handle, instance});
}

void GPUModel::addObjectName(int handle, int instance, const QString& name)
{
    _objectInstances[name].append({handle, instance});
}

QList<GPUModel::InstanceRef> GPUModel::materialInstances(const QString& name) const
{
    return _materialInstances.value(name);
}

QList<GPUModel::InstanceRef> GPUModel::objectInstances(const QString& name) const
{
    return _objectInstances.value(name);
}

QList<QString> GPUModel::materialNames() const
{
    return _materialInstances.keys();
}

QList<QString> GPUModel::objectNames() const
{
    return _objectInstances.keys();
}

void GPUModel::setMaterialProperty(const QString& name, const QString& property, const void* data, size_t size)
{
    setProperty(materialInstances(name), &Drawable::materialData, property, data, size);
}

void GPUModel::setObjectProperty(const QString& name, const QString& property, const void* data, size_t size)
{
    setProperty(objectInstances(name), &Drawable::objectData, property, data, size);
}

} // namespace Harrow::Vrk
