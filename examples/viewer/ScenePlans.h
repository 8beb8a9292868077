// SPDX-License-Identifier: MIT
// What each instance carries: the plans of the object and the material records. Shaders read them through
// #instancedata "Object" and #instancedata "Material".
#pragma once

#include "Model.h"
#include "RenderSettings.h"

#include <VrkGL/TextureToken.h>

#include <QString>

#include <vector>

namespace Harrow::Vrk
{
class InstanceDataCollection;
class InstanceDataPlan;
} // namespace Harrow::Vrk

namespace vrkview
{

/// A picture as the shader reaches it.
struct Picture
{
    Harrow::Vrk::TextureToken token;
    ImageKind kind = ImageKind::Flat;
    std::uint32_t tileWidth = 0; ///< of tiles, in texels
    std::uint32_t tileHeight = 0;
};

/// A picture of a property, if the property has one.
struct MaterialMap
{
    const MaterialImage* use = nullptr;
    Picture picture;
};

/// A material with its pictures.
struct PicturedMaterial
{
    const Material* material = nullptr;
    Picture baseColor;
    MaterialMap normal;
    MaterialMap surface;
    MaterialMap occlusion;
    MaterialMap emission;

    /// Of all its pictures; a token may come more than once.
    std::vector<Harrow::Vrk::TextureToken> tokens() const;
};

/// Registers both plans, and takes all plans away at its end; collections must be gone by then. Wants the context
/// current: a plan asks the driver for its limits.
class ScenePlans
{
public:
    /// `wantedRecords` is how many records of one list would be of use. False, with `error` in one line, when the
    /// driver lacks the carrier.
    bool create(RecordCarrier carrier, std::size_t wantedRecords, QString& error);
    ~ScenePlans();

    /// Records that one list of drawables can have.
    std::size_t capacity() const
    {
        return _capacity;
    }

    /// Zeroed records for `count` instances, and filled ones. The caller owns them.
    Harrow::Vrk::InstanceDataCollection* newObjects(std::size_t count) const;
    Harrow::Vrk::InstanceDataCollection* newMaterials(const std::vector<PicturedMaterial>& materials) const;

    /// The units with the accessors, for the stage that uses them.
    QString objectUnit() const;
    QString materialUnit() const;

private:
    Harrow::Vrk::InstanceDataPlan* newPlan(const char* name, RecordCarrier carrier, std::size_t records) const;
    Harrow::Vrk::InstanceDataCollection* newRecords(Harrow::Vrk::InstanceDataPlan* plan, std::size_t count) const;
    void fillMaterial(Harrow::Vrk::InstanceDataCollection& records, int index, const PicturedMaterial& pictured) const;

    // The registry owns them.
    Harrow::Vrk::InstanceDataPlan* _objects = nullptr;
    Harrow::Vrk::InstanceDataPlan* _materials = nullptr;
    std::size_t _capacity = 0;
    bool _fillsBlocks = false;
};

} // namespace vrkview
