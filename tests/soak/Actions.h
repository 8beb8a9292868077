// SPDX-License-Identifier: MIT
// What comes and goes on a stage, by chance: a table of actions with weights.
#pragma once

#include <QString>

#include <cstddef>

namespace Harrow::Vrk::Test
{
class HeadlessContext;
}

namespace vrksoak
{

class Random;
class Stage;

struct ActionScope
{
    Stage& stage;
    Random& random;
    Harrow::Vrk::Test::HeadlessContext& context; ///< current, and so again after the action
    QString error;                               ///< why the action failed
};

struct Action
{
    const char* name;
    int weight; ///< how often, among all
    void (*perform)(ActionScope& scope);
};

std::size_t actionCount();
const Action& action(std::size_t index);

/// The index of one, by its weight.
std::size_t chooseAction(Random& random);

} // namespace vrksoak
