// SPDX-License-Identifier: MIT
#include "Records.h"

#include "GPUModel.h"
#include "InstanceData.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"

#include <algorithm>
#include <cmath>

namespace vrksoak
{

using namespace Harrow::Vrk;
using vrkview::RecordCarrier;

namespace
{

const QString kTint = QStringLiteral("Tint");
const QString kColorMap = QStringLiteral("ColorMap");
const QString kMaterial = QStringLiteral("Material");

// Small lists, so that there are many to come and go.
constexpr std::size_t kWanted = 12;

constexpr InstanceDataPlan::MechanismType kMechanisms[] = {
    InstanceDataPlan::eUniformBufferMechanism, InstanceDataPlan::eUniformMechanism,
    InstanceDataPlan::eBufferTextureMechanism, InstanceDataPlan::eTextureMechanism,
    InstanceDataPlan::eStorageBufferMechanism};

InstanceDataPlan* newPlan(const QString& name, RecordCarrier carrier)
{
    auto* const plan = new InstanceDataPlan(name);
    plan->setMechanism(kMechanisms[int(carrier)]);
    plan->setArraySize(kWanted);
    return plan;
}

void fillTint(int index, float (&tint)[4])
{
    for (int channel = 0; channel < 3; ++channel)
        tint[channel] = 0.7f + 0.3f * std::sin(1.7f * float(index) + 2.1f * float(channel));
    tint[3] = 1.0f;
}

} // namespace

Records::~Records()
{
    InstanceDataRegistry::Instance().clear();
}

bool Records::create(RecordCarrier carrier, QString& error)
{
    if (carrier == RecordCarrier::StorageBuffer && !InstanceDataPlan::supportsStorageMechanism())
    {
        error = QStringLiteral("this driver has no storage blocks");
        return false;
    }
    _fillsBlocks = carrier == RecordCarrier::UniformBuffer;
    _objects = newPlan(QStringLiteral("Object"), carrier);
    for (const QString& matrix : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix, kModelNormalMatrix})
        _objects->addMember(InstanceDataPlan::eMat4, matrix);
    _materials = newPlan(kMaterial, carrier);
    _materials->addMember(InstanceDataPlan::eVec4, kTint);
    _materials->addMember(InstanceDataPlan::eTexture, kColorMap);
    InstanceDataRegistry::Instance().registerPlan(_objects);
    InstanceDataRegistry::Instance().registerPlan(_materials);
    _capacity = int(std::min({_objects->arraySize(), _materials->arraySize(), kWanted}));
    return true;
}

/// OpenGL wants a block's buffer to be as large as the block that the shader declares.
int Records::recordsOf(int count) const
{
    return _fillsBlocks ? int(_materials->arraySize()) : count;
}

InstanceDataCollection* Records::newObjects(int count) const
{
    return new InstanceDataCollection(_objects, _fillsBlocks ? _objects->arraySize() : std::size_t(count));
}

InstanceDataCollection* Records::newMaterials(int count, const QList<TextureToken>& tokens) const
{
    QList<InstanceData> records;
    for (int i = 0; i < recordsOf(count); ++i)
    {
        InstanceData record(kMaterial);
        float tint[4];
        fillTint(i, tint);
        record.set(kTint, tint, sizeof tint);
        record.setTextureToken(_materials->offset(kColorMap), tokens[i % tokens.size()]);
        records.append(record);
    }
    return new InstanceDataCollection(kMaterial, records);
}

void Records::setTokens(InstanceDataCollection& materials, const QList<TextureToken>& tokens) const
{
    for (int i = 0; i < materials.size(); ++i)
    {
        const TextureToken& token = tokens[i % tokens.size()];
        materials.set(i, kColorMap, &token.token, sizeof token.token);
    }
    const QByteArray bytes = materials.dataArray();
    materials.update(bytes.constData(), std::size_t(bytes.size())); // which looks for tokens anew
}

QString Records::objectUnit() const
{
    return _objects->glslc();
}

QString Records::materialUnit() const
{
    return _materials->glslc();
}

} // namespace vrksoak
