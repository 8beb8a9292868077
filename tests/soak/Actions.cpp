// SPDX-License-Identifier: MIT
#include "Actions.h"

#include "EnvironmentMaps.h"
#include "Random.h"
#include "SecondContext.h"
#include "Stage.h"

#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "Texture.h"

#include <array>
#include <iterator>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

/// Whoever comes is worn by somebody at once.
void wear(ActionScope& scope, TextureToken token)
{
    if (token != INVALID_TOKEN)
        scope.stage.crowd().giveToken(scope.random, token);
}

template <TextureToken (Wardrobe::*Add)(Random&)> void add(ActionScope& scope)
{
    wear(scope, (scope.stage.wardrobe().*Add)(scope.random));
}

template <void (Wardrobe::*Happen)(Random&)> void inWardrobe(ActionScope& scope)
{
    (scope.stage.wardrobe().*Happen)(scope.random);
}

template <void (CrowdModel::*Happen)(Random&)> void inCrowd(ActionScope& scope)
{
    (scope.stage.crowd().*Happen)(scope.random);
}

void give(ActionScope& scope)
{
    wear(scope, scope.stage.wardrobe().some(scope.random));
}

void remove(ActionScope& scope)
{
    const TextureToken token = scope.stage.wardrobe().some(scope.random);
    if (token == INVALID_TOKEN)
        return;
    scope.stage.crowd().forgetToken(token);
    scope.stage.wardrobe().remove(token);
}

void removeAll(ActionScope& scope)
{
    for (const TextureToken& token : scope.stage.wardrobe().tokens())
    {
        scope.stage.crowd().forgetToken(token);
        scope.stage.wardrobe().remove(token);
    }
}

void resetCrowd(ActionScope& scope)
{
    scope.stage.crowd().reset();
}

void changeLights(ActionScope& scope)
{
    scope.stage.changeLights(scope.random, scope.error);
}

void rebuildPrograms(ActionScope& scope)
{
    scope.stage.buildPrograms(scope.random.below(3), scope.error);
}

void resize(ActionScope& scope)
{
    scope.stage.resizeTarget(scope.random, scope.error);
}

void changeEnvironment(ActionScope& scope)
{
    scope.stage.lighting().setEnvironment(scope.random.oneIn(3) ? nullptr : makeEnvironment(scope.random, scope.error));
}

void filterCube(ActionScope& scope)
{
    filterCubeMap(scope.random, scope.error);
}

void secondContext(ActionScope& scope)
{
    useSecondContext(scope.context, scope.random, scope.error);
}

void looseBuffer(ActionScope& scope)
{
    const QSharedPointer<BufferObject> buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    const std::array<float, 256> numbers = {};
    buffer->bind();
    buffer->uploadArbitraryData(numbers.data(), 1 + scope.random.below(256), GL_STREAM_DRAW, sizeof(float));
    buffer->unbind();
}

void resetDeviceContext(ActionScope&)
{
    OpenGLDeviceContext::resetContext();
}

// The heavy ones are rare.
constexpr Action kActions[] = {
    {"texture made", 90, &add<&Wardrobe::addMade>},
    {"texture from an image", 50, &add<&Wardrobe::addFromImage>},
    {"texture of a colour", 40, &add<&Wardrobe::addColor>},
    {"texture from a file", 40, &add<&Wardrobe::addFromFile>},
    {"texture from memory", 60, &add<&Wardrobe::addFromMemory>},
    {"texture wrapped", 30, &add<&Wardrobe::addWrapped>},
    {"streamer started", 30, &add<&Wardrobe::addStreamer>},
    {"tiles added", 20, &add<&Wardrobe::addTiles>},
    {"token given", 120, &give},
    {"texture repainted", 40, &inWardrobe<&Wardrobe::repaint>},
    {"texture, streamer or tiles removed", 260, &remove},
    {"all of them removed", 3, &removeAll},
    {"pool lends", 50, &inWardrobe<&Wardrobe::lend>},
    {"pool takes back", 60, &inWardrobe<&Wardrobe::takeBack>},
    {"list added", 30, static_cast<void (*)(ActionScope&)>(&inCrowd<&CrowdModel::addPart>)},
    {"list hidden or shown", 30, &inCrowd<&CrowdModel::hideOrShow>},
    {"records replaced", 40, &inCrowd<&CrowdModel::replaceRecords>},
    {"list replaced", 40, &inCrowd<&CrowdModel::replaceGeometry>},
    {"crowd cleared and filled", 6, &resetCrowd},
    {"lights changed", 12, &changeLights},
    {"programs rebuilt", 6, &rebuildPrograms},
    {"framebuffer resized", 20, &resize},
    {"environment changed", 3, &changeEnvironment},
    {"cube map made and filtered", 2, &filterCube},
    {"second context", 5, &secondContext},
    {"buffer made", 30, &looseBuffer},
    {"device context reset", 5, &resetDeviceContext},
};

int weightOfAll()
{
    int sum = 0;
    for (const Action& one : kActions)
        sum += one.weight;
    return sum;
}

} // namespace

std::size_t actionCount()
{
    return std::size(kActions);
}

const Action& action(std::size_t index)
{
    return kActions[index];
}

std::size_t chooseAction(Random& random)
{
    static const int all = weightOfAll();
    int rest = random.below(all);
    std::size_t index = 0;
    while (rest >= kActions[index].weight)
        rest -= kActions[index++].weight;
    return index;
}

} // namespace vrksoak
