// SPDX-License-Identifier: MIT
// What keys and mouse do in the window: one table, from which the window learns what to do, its help what to show, and
// docs/vrkview.md what to tell.
#pragma once

#include <QString>

#include <Qt>

#include <array>
#include <iterator>
#include <optional>

namespace vrkview
{

enum class Action
{
    Help,
    Stats,
    Manager,
    RecordCarrier,
    DrawIdCarrier,
    Specular,
    Diffuse,
    AntiAliasing,
    DebugView,
    Shadows,
    ShadowMaps,
    Environment,
    Brighter,
    Darker,
    Gizmos,
    NextCamera,
    ResetView,
    Pause,
    Picture,
    Fullscreen,
    Close,
};
constexpr int kActions = int(Action::Close) + 1;

/// What the Shift key changes.
enum class WithShift
{
    Nothing,
    Backwards, ///< goes through the choices the other way
    Other,     ///< told by the row's text
};

struct KeyRow
{
    Action action;
    std::array<Qt::Key, 3> keys; ///< unused ones are `Qt::Key_unknown`
    const char* names;           ///< of the keys, as they stand on a keyboard
    const char* text;
    WithShift withShift = WithShift::Nothing;
    bool repeats = false; ///< while the key is held down
};

inline constexpr Qt::Key kNoKey = Qt::Key_unknown;
inline constexpr KeyRow kKeys[] = {
    {Action::Help, {Qt::Key_H, Qt::Key_F1, Qt::Key_Question}, "H, F1 or ?", "show or hide this help"},
    {Action::Stats, {Qt::Key_S, kNoKey, kNoKey}, "S", "show or hide what a frame costs"},
    {Action::Manager,
     {Qt::Key_M, kNoKey, kNoKey},
     "M",
     "texture manager: how textures reach the shader",
     WithShift::Backwards},
    {Action::RecordCarrier,
     {Qt::Key_C, kNoKey, kNoKey},
     "C",
     "record carrier: how records reach the shader",
     WithShift::Backwards},
    {Action::DrawIdCarrier,
     {Qt::Key_I, kNoKey, kNoKey},
     "I",
     "draw-id carrier: how a draw's number reaches it",
     WithShift::Backwards},
    {Action::Specular,
     {Qt::Key_B, kNoKey, kNoKey},
     "B",
     "specular model: how surfaces mirror the environment",
     WithShift::Backwards},
    {Action::Diffuse, {Qt::Key_D, kNoKey, kNoKey}, "D", "diffuse model: how they scatter it", WithShift::Backwards},
    {Action::AntiAliasing,
     {Qt::Key_A, kNoKey, kNoKey},
     "A",
     "anti-aliasing of the finished picture",
     WithShift::Backwards},
    {Action::DebugView, {Qt::Key_V, kNoKey, kNoKey}, "V", "debug view in place of the scene", WithShift::Backwards},
    {Action::Shadows, {Qt::Key_L, kNoKey, kNoKey}, "L", "lights that cast shadows, on or off"},
    {Action::ShadowMaps, {Qt::Key_K, kNoKey, kNoKey}, "K", "kind of the shadow maps", WithShift::Backwards},
    {Action::Environment, {Qt::Key_E, kNoKey, kNoKey}, "E", "environment, on or off"},
    {Action::Brighter,
     {Qt::Key_Plus, Qt::Key_Equal, kNoKey},
     "+",
     "brighten the environment",
     WithShift::Nothing,
     true},
    {Action::Darker, {Qt::Key_Minus, kNoKey, kNoKey}, "-", "darken it", WithShift::Nothing, true},
    {Action::Gizmos, {Qt::Key_G, kNoKey, kNoKey}, "G", "grid, axes and lights, on or off"},
    {Action::NextCamera, {Qt::Key_N, kNoKey, kNoKey}, "N", "next camera of the model's file", WithShift::Backwards},
    {Action::ResetView, {Qt::Key_R, kNoKey, kNoKey}, "R", "back to the view of the start"},
    {Action::Pause, {Qt::Key_Space, kNoKey, kNoKey}, "Space", "stop what moves, or let it go on"},
    {Action::Picture,
     {Qt::Key_P, kNoKey, kNoKey},
     "P",
     "write vrkview-001.png and so on; with Shift the texts too",
     WithShift::Other},
    {Action::Fullscreen, {Qt::Key_F11, kNoKey, kNoKey}, "F11", "the whole screen, or a window"},
    {Action::Close, {Qt::Key_Escape, kNoKey, kNoKey}, "Escape", "close the window"},
};
static_assert(std::size(kKeys) == std::size_t(kActions), "one row for each action");

struct MouseRow
{
    const char* names;
    const char* text;
};

inline constexpr MouseRow kMouse[] = {
    {"Left drag", "orbit"},
    {"Right or middle drag", "move sideways"},
    {"Wheel", "zoom"},
};

/// The row of a key, or null.
const KeyRow* rowOf(int key);

/// Mouse and keys as a table in Markdown.
QString controlsAsMarkdown();

/// What stands below the help.
inline constexpr char kShiftHint[] = "Shift goes through the choices backwards.";

} // namespace vrkview
