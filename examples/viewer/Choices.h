// SPDX-License-Identifier: MIT
// The words of what can be chosen: command lines take them, and the window shows those that it can switch, in the order
// in which it goes through them.
#pragma once

#include "CommandLine.h"
#include "ModelReader.h"
#include "RenderSettings.h"

#include <QString>

#include <cstddef>

namespace vrkview
{

/// How far the exposure can go up and down.
constexpr float kMostStops = 24.0f;

inline constexpr Choice<UpAxis> kUpAxes[] = {
    {"y", UpAxis::Y},
    {"z", UpAxis::Z},
};

inline constexpr Choice<DrawIdCarrier> kDrawIdCarriers[] = {
    {"auto", DrawIdCarrier::Automatic},
    {"uniform", DrawIdCarrier::Uniform},
    {"base-instance", DrawIdCarrier::BaseInstance},
};

inline constexpr Choice<RecordCarrier> kRecordCarriers[] = {
    {"ubo", RecordCarrier::UniformBuffer},
    {"uniform", RecordCarrier::Uniform},
    {"buffer-texture", RecordCarrier::BufferTexture},
    {"texture", RecordCarrier::Texture},
    {"ssbo", RecordCarrier::StorageBuffer},
};

inline constexpr Choice<ManagerKind> kManagers[] = {
    {"sampler", ManagerKind::Sampler},
    {"array2d", ManagerKind::Array2D},
    {"array2d-bindless", ManagerKind::Array2DBindless},
    {"bindless", ManagerKind::Bindless},
};

inline constexpr Choice<DebugView> kDebugViews[] = {
    {"none", DebugView::None},
    {"slots", DebugView::Slots},
    {"shadows", DebugView::Shadows},
};

inline constexpr Choice<ShadowMapKind> kShadowMapKinds[] = {
    {"plain", ShadowMapKind::Plain},
    {"variance", ShadowMapKind::Variance},
};

inline constexpr Choice<AntiAliasingKind> kAntiAliasingKinds[] = {
    {"none", AntiAliasingKind::None},
    {"fxaa", AntiAliasingKind::FXAA},
    {"smaa", AntiAliasingKind::SMAA},
};

inline constexpr Choice<SpecularModel> kSpecularModels[] = {
    {"blinn-phong", SpecularModel::BlinnPhong},
    {"ashikhmin-shirley", SpecularModel::AshikhminShirley},
    {"ggx", SpecularModel::GGX},
};

inline constexpr Choice<DiffuseModel> kDiffuseModels[] = {
    {"lambert", DiffuseModel::Lambert},
    {"oren-nayar", DiffuseModel::OrenNayar},
};

template <typename Value, std::size_t count>
constexpr std::size_t placeOf(const Choice<Value> (&choices)[count], Value value)
{
    std::size_t place = 0;
    while (place + 1 < count && choices[place].value != value)
        ++place;
    return place;
}

template <typename Value, std::size_t count> QString wordOf(const Choice<Value> (&choices)[count], Value value)
{
    return QString::fromLatin1(choices[placeOf(choices, value)].word);
}

/// The next one, behind the last one the first; with a `step` of -1 the other way.
template <typename Value, std::size_t count>
constexpr Value following(const Choice<Value> (&choices)[count], Value value, int step)
{
    return choices[(placeOf(choices, value) + count + std::size_t(step + int(count))) % count].value;
}

/// Whether textures lie in the layers of array textures.
constexpr bool usesArrays(ManagerKind manager)
{
    return manager == ManagerKind::Array2D || manager == ManagerKind::Array2DBindless;
}

} // namespace vrkview
