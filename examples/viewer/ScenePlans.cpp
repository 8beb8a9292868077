// SPDX-License-Identifier: MIT
#include "ScenePlans.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GPUModel.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>

#include <algorithm>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

// Some drivers allow blocks of gigabytes, which no shader compiler likes to see declared.
constexpr std::size_t kLargestBlock = std::size_t(64) * 1024;
constexpr std::size_t kTexelBytes = 16;

const QString kBaseColor = QStringLiteral("BaseColor");
const QString kSurface = QStringLiteral("Surface");
const QString kPicture = QStringLiteral("Picture");
const QString kDetail = QStringLiteral("Detail");
const QString kEmission = QStringLiteral("Emission");
const QString kMaps = QStringLiteral("Maps");
const QString kColorMap = QStringLiteral("ColorMap");

/// One for each number of kMaps.
struct MapRow
{
    QString name;
    MaterialMap PicturedMaterial::*map;
};
const MapRow kMapRows[] = {{QStringLiteral("NormalMap"), &PicturedMaterial::normal},
                           {QStringLiteral("SurfaceMap"), &PicturedMaterial::surface},
                           {QStringLiteral("OcclusionMap"), &PicturedMaterial::occlusion},
                           {QStringLiteral("EmissionMap"), &PicturedMaterial::emission}};

constexpr InstanceDataPlan::MechanismType kMechanisms[] = {
    InstanceDataPlan::eUniformBufferMechanism, InstanceDataPlan::eUniformMechanism,
    InstanceDataPlan::eBufferTextureMechanism, InstanceDataPlan::eTextureMechanism,
    InstanceDataPlan::eStorageBufferMechanism};

bool isBlock(RecordCarrier carrier)
{
    return carrier == RecordCarrier::UniformBuffer;
}

constexpr quint32 kLargestTile = 0xFFFF; // in texels, each way

/// How a picture is looked up, as Maps.glslh takes it apart. 0: there is none.
quint32 packed(const MaterialMap& map)
{
    if (!map.use)
        return 0;
    return quint32(map.use->wrapS) | quint32(map.use->wrapT) << 2 | quint32(map.picture.kind) << 4 |
           (map.use->more ? 1u << 8 : 0u) | 1u << 9 | std::min(map.picture.tileWidth, kLargestTile) << 16;
}

/// What one collection of a plan can hold.
std::size_t capacityOf(const InstanceDataPlan& plan)
{
    if (plan.mechanism() != InstanceDataPlan::eTextureMechanism)
        return plan.arraySize();
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    return std::min(plan.arraySize(), std::size_t(std::max(side, 0)) * kTexelBytes / plan.totalDataSize());
}

} // namespace

std::vector<TextureToken> PicturedMaterial::tokens() const
{
    std::vector<TextureToken> result{baseColor.token};
    for (const MapRow& row : kMapRows)
        if ((this->*row.map).use)
            result.push_back((this->*row.map).picture.token);
    return result;
}

ScenePlans::~ScenePlans()
{
    InstanceDataRegistry::Instance().clear();
}

bool ScenePlans::create(RecordCarrier carrier, std::size_t wantedRecords, QString& error)
{
    if (carrier == RecordCarrier::StorageBuffer && !InstanceDataPlan::supportsStorageMechanism())
    {
        error = QStringLiteral("this driver has no storage blocks");
        return false;
    }
    _fillsBlocks = isBlock(carrier);
    _objects = newPlan("Object", carrier, wantedRecords);
    for (const QString& matrix : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix, kModelNormalMatrix})
        _objects->addMember(InstanceDataPlan::eMat4, matrix);
    _materials = newPlan("Material", carrier, wantedRecords);
    _materials->addMember(InstanceDataPlan::eVec4, kBaseColor);
    _materials->addMember(InstanceDataPlan::eVec4, kSurface);
    _materials->addMember(InstanceDataPlan::eVec4, kDetail);
    _materials->addMember(InstanceDataPlan::eVec4, kEmission);
    _materials->addMember(InstanceDataPlan::eUVec4, kPicture);
    _materials->addMember(InstanceDataPlan::eUVec4, kMaps);
    _materials->addMember(InstanceDataPlan::eTexture, kColorMap);
    for (const MapRow& row : kMapRows)
        _materials->addMember(InstanceDataPlan::eTexture, row.name);
    if (_fillsBlocks)
        for (InstanceDataPlan* const plan : {_objects, _materials})
            plan->setArraySize(std::min(wantedRecords, kLargestBlock / plan->totalDataSize()));
    InstanceDataRegistry::Instance().registerPlan(_objects);
    InstanceDataRegistry::Instance().registerPlan(_materials);

    _capacity = std::min(capacityOf(*_objects), capacityOf(*_materials));
    if (_capacity > 0)
        return true;
    error = QStringLiteral("this driver has no room for the records of one object");
    return false;
}

InstanceDataPlan* ScenePlans::newPlan(const char* name, RecordCarrier carrier, std::size_t records) const
{
    auto* const plan = new InstanceDataPlan(QLatin1String(name));
    plan->setMechanism(kMechanisms[int(carrier)]);
    plan->setArraySize(records);
    return plan;
}

/// OpenGL wants a block's buffer to be as large as the block that the shader declares.
InstanceDataCollection* ScenePlans::newRecords(InstanceDataPlan* plan, std::size_t count) const
{
    return new InstanceDataCollection(plan, _fillsBlocks ? plan->arraySize() : count);
}

InstanceDataCollection* ScenePlans::newObjects(std::size_t count) const
{
    return newRecords(_objects, count);
}

InstanceDataCollection* ScenePlans::newMaterials(const std::vector<PicturedMaterial>& materials) const
{
    InstanceDataCollection* const records = newRecords(_materials, materials.size());
    for (int i = 0; i < records->size(); ++i)
    {
        // Those behind the last one too, so that they name a token that there is.
        const PicturedMaterial& pictured = materials[std::min(std::size_t(i), materials.size() - 1)];
        fillMaterial(*records, i, pictured);
    }
    return records;
}

void ScenePlans::fillMaterial(InstanceDataCollection& records, int index, const PicturedMaterial& pictured) const
{
    const Material& material = *pictured.material;
    const float baseColor[] = {material.baseColor.x(), material.baseColor.y(), material.baseColor.z(),
                               material.opacity};
    const float surface[] = {material.roughness, material.metallic, material.alphaCutoff,
                             material.transparent ? 1.0f : 0.0f};
    const float detail[] = {material.normalScale, material.occlusionStrength, material.unlit ? 1.0f : 0.0f, 0.0f};
    const float emission[] = {material.emission.x(), material.emission.y(), material.emission.z(), 0.0f};
    const quint32 picture[] = {quint32(material.wrapS), quint32(material.wrapT), quint32(pictured.baseColor.kind),
                               std::min(pictured.baseColor.tileWidth, kLargestTile) |
                                   std::min(pictured.baseColor.tileHeight, kLargestTile) << 16};
    records.set(index, kBaseColor, baseColor, sizeof baseColor);
    records.set(index, kSurface, surface, sizeof surface);
    records.set(index, kDetail, detail, sizeof detail);
    records.set(index, kEmission, emission, sizeof emission);
    records.set(index, kPicture, picture, sizeof picture);
    records.set(index, kColorMap, &pictured.baseColor.token.token, sizeof pictured.baseColor.token.token);
    quint32 maps[std::size(kMapRows)];
    for (std::size_t row = 0; row < std::size(kMapRows); ++row)
    {
        const MaterialMap& map = pictured.*kMapRows[row].map;
        maps[row] = packed(map);
        // What there is not takes no slot of its own.
        const TextureToken& token = map.use ? map.picture.token : pictured.baseColor.token;
        records.set(index, kMapRows[row].name, &token.token, sizeof token.token);
    }
    records.set(index, kMaps, maps, sizeof maps);
}

QString ScenePlans::objectUnit() const
{
    return _objects->glslc();
}

QString ScenePlans::materialUnit() const
{
    return _materials->glslc();
}

} // namespace vrkview
