// SPDX-License-Identifier: MIT
// A frame's projections for 1, 8 and 32 lights, fitted to a camera and a scene and not, each beside the bare matrix
// work of as many projections.
//
// The floor makes each projection's matrix by the same products and inverses of QMatrix4x4 and the same scalings,
// translations and perspectives, from numbers that are known beforehand, and hands it to `RenderData::setTransform`,
// which compares it with the last one. So it does what must be done once it is known where the receivers and casters
// lie; what it leaves out is finding that: frusta, cascades, clipping and boxes, also for sides and cascades that turn
// out to show nothing and get no projection.
//
// All matrices are the same in each frame, as they are while nothing moves: 16 comparisons each.
#include "GLBench.h"

#include "ShadowMapFitting.h"
#include "ShadowMapManager.h"
#include "support/HeapCount.h"

#include <QMatrix4x4>
#include <QVariant>
#include <QVector3D>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

using Light = ShadowMapManager::Light;
using RenderData = ShadowMapManager::RenderData;

constexpr int kCascades = 4;
constexpr int kAllSides = 6;
constexpr float kBlur = 0.0005f;

/// A wide ground with things on it, and an eye among them.
struct View
{
    View()
    {
        projection.perspective(60.0f, 1.6f, 0.1f, 80.0f);
        view.lookAt(eye, eye + QVector3D(0.6f, -0.1f, -0.8f), QVector3D(0.0f, 1.0f, 0.0f));
    }

    QVector3D eye = {1.0f, 1.5f, 2.0f};
    QMatrix4x4 projection;
    QMatrix4x4 view;
    std::pair<QVector3D, QVector3D> scene = {{-30.0f, -2.0f, -25.0f}, {25.0f, 6.0f, 30.0f}};
};

/// Each somewhere else, and turned another way.
QMatrix4x4 placeOf(int light, const QVector3D& around)
{
    QMatrix4x4 transform;
    transform.translate(around + QVector3D(float(light % 5) - 2.0f, 2.0f + float(light % 3), float(light % 7) - 3.0f));
    transform.rotate(20.0f + 7.0f * float(light), 0.3f, 1.0f, 0.1f);
    transform.rotate(70.0f, 1.0f, 0.0f, 0.0f);
    return transform;
}

/// Lights of one kind, and what they are made into.
struct Case
{
    const char* name;
    const char* what;
    int lights;
    Light::Type type;
    int levels;
    bool isFitted;
};

constexpr Case kCases[] = {
    {"sun", "1 directional light, 4 cascades", 1, Light::eDirectional, kCascades, true},
    {"suns8", "8 directional lights, 4 cascades", 8, Light::eDirectional, kCascades, true},
    {"suns32", "32 of them, of which 8 have room", 32, Light::eDirectional, kCascades, true},
    {"plainSuns32", "32 directional lights, no cascades", 32, Light::eDirectional, 0, true},
    {"lamp", "1 point light, no cascades", 1, Light::ePoint, 0, true},
    {"lampCascades", "1 point light, 4 cascades", 1, Light::ePoint, kCascades, true},
    {"lamps5", "5 point lights, no cascades", 5, Light::ePoint, 0, true},
    {"fixedSuns32", "32 directional lights, no scene", 32, Light::eDirectional, 0, false},
    {"fixedLamps5", "5 point lights, no scene", 5, Light::ePoint, 0, false},
    {"spots32", "32 spots", 32, Light::eSpot, 0, false},
};

class Lights
{
public:
    explicit Lights(const Case& row) : _row(row)
    {
        for (int i = 0; i < row.lights; ++i)
        {
            auto light = std::make_unique<Light>();
            light->setType(row.type);
            light->setCSMLevels(row.levels);
            light->setSpotCutoff(row.type == Light::eSpot ? 0.5f : -1.0f);
            light->setTransform(placeOf(i, _view.eye));
            _list.append(QVariant::fromValue<QObject*>(light.get()));
            _lights.push_back(std::move(light));
        }
        process();
    }

    bool process()
    {
        return ShadowMapManager::processLights(_list, data, _row.isFitted ? &_view.projection : nullptr,
                                               _row.isFitted ? &_view.view : nullptr,
                                               _row.isFitted ? &_view.scene : nullptr);
    }

    /// As many matrices by bare arithmetic, light by light.
    bool processBare()
    {
        bool changed = false;
        for (int i = 0; i < _row.lights; ++i)
        {
            const RenderData::ProjectorInfo info = data.projectorInfos.at(i);
            if (info.count == 0)
                continue;
            const QMatrix4x4 transform = _lights[std::size_t(i)]->transform();
            if (_row.type == Light::ePoint)
                changed |= sides(transform, info);
            else
                changed |= beams(transform, info);
        }
        return changed;
    }

    /// The floor's numbers are its own, so that it needs a place of its own to compare them with.
    RenderData data;
    RenderData bare;

private:
    /// Of a spot or a directional light, all with one inverse and one product.
    bool beams(const QMatrix4x4& transform, const RenderData::ProjectorInfo& info)
    {
        bool changed = false;
        for (int k = 0; k < info.count; ++k)
        {
            const QMatrix4x4 toLight = transform.inverted();
            QMatrix4x4 s;
            if (_row.type == Light::eSpot)
            {
                s.lookAt(QVector3D(), QVector3D(0.0f, 0.0f, -1.0f), QVector3D(0.0f, 1.0f, 0.0f));
                s.perspective(60.0f, 1.0f, 0.1f, 100.0f);
            }
            else if (!_row.isFitted)
            {
                s.scale(0.25f, 0.25f, 1.0f);
                s.scale(1.0f, 1.0f, 1.0f / 12.0f);
                s.translate(0.0f, 0.0f, 6.0f);
            }
            else
            {
                if (transform.determinant() > 0.0)
                    s.scale(1.0f, -1.0f, 1.0f);
                s.scale(2.0f / 30.0f, 2.0f / 20.0f, 1.0f);
                s.translate(-3.0f, -4.0f, 0.0f);
                s.scale(0.99f, 0.99f, 1.0f / 40.0f);
                s.translate(0.0f, 0.0f, 5.0f);
            }
            changed |= bare.setTransform(info.index + k, s * toLight, kBlur);
        }
        return changed;
    }

    /// Of a point light: what belongs to a side once for all its cascades.
    bool sides(const QMatrix4x4& transform, const RenderData::ProjectorInfo& info)
    {
        bool changed = false;
        const int levels = std::max(1, _row.levels);
        QMatrix4x4 inverse;
        double determinant = 0.0;
        for (int k = 0; k < info.count; ++k)
        {
            if (!_row.isFitted && k == 0)
                inverse = transform.inverted();
            if (_row.isFitted && k % levels == 0)
            {
                const QMatrix4x4 lightWorld = transform * pointLightSide(k / levels % kAllSides);
                inverse = lightWorld.inverted();
                const QMatrix4x4 flip(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);
                benchmark::DoNotOptimize(flip * inverse);
                determinant = lightWorld.determinant();
            }
            if (!_row.isFitted)
            {
                changed |= bare.setTransform(info.index + k, _anySide * inverse, kBlur);
                continue;
            }
            QMatrix4x4 p;
            p.perspective(91.0f, 1.0f, 0.1f, 40.0f);
            if (determinant > 0.0)
                p.scale(1.0f, -1.0f, 1.0f);
            const QMatrix4x4 m = p * inverse;
            QMatrix4x4 s;
            s.scale(1.98f / 1.5f, 1.98f / 1.25f, 1.0f);
            s.translate(-0.25f, 0.125f, 0.0f);
            changed |= bare.setTransform(info.index + k, s * m, 0.0f);
        }
        return changed;
    }

    const Case& _row;
    View _view;
    QMatrix4x4 _anySide = _view.projection * _view.view;
    std::vector<std::unique_ptr<Light>> _lights;
    QVariantList _list;
};

void ours(benchmark::State& state, Lights& lights)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(lights.process());
}

void floor(benchmark::State& state, Lights& lights)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(lights.processBare());
}

/// In ten frames after two that bring what is kept to its size.
void printAllocations(const Case& row, Lights& lights)
{
    lights.process();
    lights.process();
    const Test::HeapCount count;
    for (int i = 0; i < 10; ++i)
        lights.process();
    std::printf("%-36s %2d projections, %6.1f heap allocations a frame, %5.1f a projection\n", row.what,
                lights.data.transformCount, double(count.soFar()) / 10.0,
                double(count.soFar()) / 10.0 / lights.data.transformCount);
}

} // namespace

int main(int argc, char** argv)
{
    if (!Bench::readArguments(argc, argv))
        return 1;
    std::vector<std::unique_ptr<Lights>> all;
    for (const Case& row : kCases)
    {
        all.push_back(std::make_unique<Lights>(row));
        Lights* const lights = all.back().get();
        benchmark::RegisterBenchmark(row.name, [lights](benchmark::State& state) { ours(state, *lights); })
            ->Apply(Bench::repeat);
        benchmark::RegisterBenchmark((std::string(row.name) + "Bare").c_str(),
                                     [lights](benchmark::State& state) { floor(state, *lights); })
            ->Apply(Bench::repeat);
    }
    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    for (std::size_t i = 0; i < all.size(); ++i)
        times.printRatio(kCases[i].what, kCases[i].name, std::string(kCases[i].name) + "Bare",
                         all[i]->data.transformCount);
    for (std::size_t i = 0; i < all.size(); ++i)
        printAllocations(kCases[i], *all[i]);
    return 0;
}
