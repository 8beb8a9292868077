// SPDX-License-Identifier: MIT
// A context that comes and goes beside the one of the stage, and shares with it.
#pragma once

#include <QString>

namespace Harrow::Vrk::Test
{
class HeadlessContext;
}

namespace vrksoak
{

class Random;

/// Makes a context that shares with `first`, draws in it with objects of its own and with a texture of `first`, and
/// destroys all of it. `first` is current afterwards. `error` says what went wrong.
void useSecondContext(Harrow::Vrk::Test::HeadlessContext& first, Random& random, QString& error);

} // namespace vrksoak
