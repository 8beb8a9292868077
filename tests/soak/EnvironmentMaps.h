// SPDX-License-Identifier: MIT
// Environments that come and go: filtered maps, tables of BRDFs and cube maps. Each filter builds its program, renders
// and forgets.
#pragma once

#include <QString>

#include <memory>

namespace Harrow::Vrk
{
class Texture;
}

namespace vrksoak
{

class Random;

/// A small latitude-longitude map, filtered for one of the shading models; its table is made and dropped beside it.
/// Null, with `error` in one line, when something cannot be made. Leaves the state as a stage wants it.
std::unique_ptr<Harrow::Vrk::Texture> makeEnvironment(Random& random, QString& error);

/// A cube map from a picture, the same filtered, and a strip of that, all dropped again.
void filterCubeMap(Random& random, QString& error);

} // namespace vrksoak
