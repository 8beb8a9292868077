// SPDX-License-Identifier: MIT
#include "ViewerEpisode.h"

#include "Chances.h"
#include "Random.h"

#include "Crowd.h"
#include "OrbitCamera.h"
#include "RenderTarget.h"
#include "SceneRenderer.h"
#include "ScreenWall.h"
#include "TextureWall.h"

#include "OpenGLDeviceContext.h"

#include <QSize>

namespace vrksoak
{

using namespace vrkview;

namespace
{

constexpr QSize kSize = {320, 180};
constexpr char kSky[] = ":/vrkview/sky.hdr";

Model chooseModel(Random& random)
{
    if (random.oneIn(4))
        return makeScreenWall();
    if (random.oneIn(4))
        return makeTextureWall(6);
    return makeCrowd(chooseCrowd(random));
}

RenderSettings chooseSettings(Random& random, std::optional<ManagerKind> manager)
{
    RenderSettings settings;
    settings.manager = chooseManager(random, manager);
    settings.recordCarrier = chooseCarrier(random);
    if (chooseBaseInstance(random))
        settings.drawIdCarrier = DrawIdCarrier::BaseInstance;
    settings.gizmos = random.oneIn(3);
    settings.shadows = random.oneIn(2);
    settings.shadowMaps = random.oneIn(2) ? ShadowMapKind::Variance : ShadowMapKind::Plain;
    settings.lights.set = LightSet(random.below(4));
    settings.lights.cascades = 2;
    settings.antiAliasing = AntiAliasingKind(random.below(3));
    if (random.oneIn(20)) // a filter of some seconds
        settings.environment.path = QLatin1String(kSky);
    return settings;
}

} // namespace

QString playViewer(Random& random, std::optional<ManagerKind> manager, int frames,
                   const std::function<void(int frame)>& afterFrame, QString& error)
{
    const Model model = chooseModel(random);
    const RenderSettings settings = chooseSettings(random, manager);
    {
        RenderTarget target;
        SceneRenderer renderer;
        if (!target.create(kSize, random.oneIn(2) ? 4 : 1, settings.antiAliasing, error) ||
            !renderer.create(model, settings, error))
            return model.name;
        for (int frame = 0; frame < frames; ++frame)
        {
            OrbitCamera camera;
            camera.setAngles(float(frame), 22.0f);
            const float aspect = float(kSize.width()) / float(kSize.height());
            camera.frame(model, aspect);
            target.bind();
            renderer.animate(double(frame) / 60.0);
            renderer.draw(renderer.viewOf(camera, aspect));
            target.resolve();
            afterFrame(frame);
        }
    }
    Harrow::Vrk::OpenGLDeviceContext::resetContext();
    return model.name;
}

} // namespace vrksoak
