// SPDX-License-Identifier: MIT
// One frame of the scene, step by step, at 1,000, 10,000 and 100,000 commands: the culling passes beside vectorised
// loops over flat arrays, the sort of drawables beside a sort of flat records, a pass beside the same OpenGL calls
// written bare, also with its commands sorted by distance. At the end: the calls of one frame, and what it allocates.
#include "GLBench.h"
#include "GPUModelFrameFloors.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "DrawBuffers.h"
#include "GLLoader.h"
#include "GLSLMacroProcessor.h"
#include "GPUModel.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "OpenGLDeviceContext.h"
#include "SamplerTextureManager.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/HeapCount.h"
#include "support/RecordingPlatform.h"

#include <QVector3D>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace Harrow::Vrk;

namespace
{

constexpr int kSizes[] = {1'000, 10'000, 100'000};
constexpr int kCommandsPerList = 100;
constexpr int kIndices = 36;
constexpr quint64 kSortByDistance = quint64(1) << 62;

/// What all scenes draw with.
struct Device
{
    Device()
    {
        manager = std::make_unique<SamplerTextureManager>();
        TextureManager::setInstance(manager.get());
        objectPlan = new InstanceDataPlan(QStringLiteral("Object"));
        for (const QString& matrix : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix})
            objectPlan->addMember(InstanceDataPlan::eMat4, matrix);
        materialPlan = new InstanceDataPlan(QStringLiteral("Material"));
        materialPlan->addMember(InstanceDataPlan::eTexture, QStringLiteral("ColorMap"));
        for (InstanceDataPlan* const plan : {objectPlan, materialPlan})
        {
            plan->setArraySize(kCommandsPerList);
            InstanceDataRegistry::Instance().registerPlan(plan);
        }
        GLSLMacroProcessor processor;
        program.setMacroProcessor(&processor);
        program.addShader(GL_VERTEX_SHADER,
                          QStringLiteral("#version 150\n"
                                         "#include \"VrkUtilities.glslh\"\n"
                                         "#instancedata \"Object\"\n"
                                         "in vec3 va_Vertex;\n"
                                         "void main() { gl_Position = getModelMatrix() * vec4(va_Vertex, 1.0); }\n"));
        program.addShader(GL_VERTEX_SHADER, objectPlan->glslc());
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program.addShader(GL_FRAGMENT_SHADER,
                          QStringLiteral("#version 150\nout vec4 o_Color; void main() { o_Color = vec4(1.0); }\n"));
        isReady = program.link() && program.bind();
        program.setMacroProcessor(nullptr);
        material = std::make_unique<InstanceDataCollection>(materialPlan, kCommandsPerList);
        object = std::make_unique<InstanceDataCollection>(objectPlan, kCommandsPerList);
        const TextureToken token = manager->tokenForColor(Qt::red);
        for (int i = 0; i < kCommandsPerList; ++i)
            material->set(i, QStringLiteral("ColorMap"), &token.token, sizeof token.token);
    }

    ~Device()
    {
        program.unbind();
        TextureManager::setInstance(nullptr);
    }

    bool isReady = false;
    std::unique_ptr<SamplerTextureManager> manager;
    InstanceDataPlan* objectPlan = nullptr;
    InstanceDataPlan* materialPlan = nullptr;
    ShaderProgram program;
    std::unique_ptr<InstanceDataCollection> material;
    std::unique_ptr<InstanceDataCollection> object;
};

Device* device = nullptr;

std::unique_ptr<DrawBuffers> newList()
{
    const auto context = OpenGLDeviceContext::current();
    const auto vertices = context->newBuffer();
    vertices->setTarget(GL_ARRAY_BUFFER);
    const auto indices = context->newBuffer();
    indices->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    const GLushort numbers[kIndices] = {};
    {
        const AutoBinder binder(indices.data());
        indices->uploadGLushortData(numbers, kIndices, GL_STATIC_DRAW);
    }
    auto list = std::make_unique<DrawBuffers>(nullptr);
    list->setVAO(context->newVAO());
    list->setPrimitiveType(GL_TRIANGLES);
    list->setIndexedDraw(indices, kIndices, GL_UNSIGNED_SHORT);
    list->VAO()->upload(QStringLiteral("va_Vertex"), vertices, QList<float>(24), 3, GL_STATIC_DRAW);
    const QList<DrawElementsIndirectCommand> commands(kCommandsPerList, {kIndices, 1, 0, 0, 0});
    list->setDrawElementsIndirectCommands(commands.constData(), kCommandsPerList);
    return list;
}

/// Lists of 100 commands, each command with a transform and a box of its own, placed by lot: about half of them are in
/// view, and neighbours have nothing to do with each other. With `shuffledRefs` the transforms and boxes lie in another
/// order than the commands.
struct Scene
{
    Scene(int commands, bool shuffledRefs) : size(commands)
    {
        std::mt19937 engine(4711);
        const auto number = [&engine](float low, float high)
        { return std::uniform_real_distribution<float>(low, high)(engine); };
        model.setDeleteOnClear(false);
        model.setFeatureFlags(15);
        QList<GPUModel::BoundingBox> boxes;
        for (int i = 0; i < size; ++i)
        {
            QMatrix4x4 world;
            world.translate(number(-20, 20), number(-20, 20), number(-50, 10));
            world.rotate(number(0, 360), 1, number(-1, 1), number(-1, 1));
            world.scale(number(0.5f, 2));
            model.addTransform(-1, world);
            boxes.append({-1, -0.5f, -1, number(0.5f, 1), 0.5f, 1});
        }
        model.loadBoundingBoxes(boxes.constData(), size);
        refs.resize(std::size_t(size));
        std::iota(refs.begin(), refs.end(), 0);
        if (shuffledRefs)
            std::shuffle(refs.begin(), refs.end(), engine);
        model.updateTransforms(); // before there are users: their records are filled by no one
        for (int first = 0; first < size; first += kCommandsPerList)
        {
            lists.push_back(newList());
            const int handle = model.add(lists.back().get(), 0, device->material.get(), device->object.get(), 0);
            for (int command = 0; command < kCommandsPerList; ++command)
            {
                const int ref = refs[std::size_t(first + command)];
                model.useTransform(handle, command, ref);
                model.useBoundingBox(handle, command, ref);
            }
        }
        clipFromWorld.perspective(70, 1.5f, 0.1f, 100);
        flat.reset(new Bench::FlatScene);
        for (int i = 0; i < size; ++i)
            flat->add(model.worldTransform(i), &boxes[i].minX);
        draw(GPUModel::WindingUnchanged); // so that all there is has its names
    }

    bool draw(GPUModel::WindingType winding, quint64 value = 0, const QMatrix4x4* matrix = nullptr)
    {
        return model.draw(&device->program, device->manager.get(), value, 0, winding, matrix, false);
    }

    void cull()
    {
        model.resetCulling();
        model.visibilityCull();
        model.frustumCull(clipFromWorld);
    }

    int size;
    GPUModel model;
    std::vector<std::unique_ptr<DrawBuffers>> lists;
    std::vector<int> refs;
    QMatrix4x4 clipFromWorld;
    std::unique_ptr<Bench::FlatScene> flat;
};

// ---- culling -------------------------------------------------------------------------------------------------------

void frustumCull(benchmark::State& state, Scene& scene)
{
    for (auto _ : state)
    {
        scene.model.resetCulling();
        benchmark::DoNotOptimize(scene.model.frustumCull(scene.clipFromWorld));
    }
}

void frustumFloor(benchmark::State& state, Scene& scene)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(scene.flat->cullByFrustum(scene.clipFromWorld));
}

void frustumFloorByRefs(benchmark::State& state, Scene& scene)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(scene.flat->cullByFrustum(scene.clipFromWorld, scene.refs));
}

void visibilityCull(benchmark::State& state, Scene& scene)
{
    for (auto _ : state)
    {
        scene.model.resetCulling();
        benchmark::DoNotOptimize(scene.model.visibilityCull());
    }
}

void visibilityFloor(benchmark::State& state, Scene& scene)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(scene.flat->cullByVisibility());
}

// ---- sorting of drawables ------------------------------------------------------------------------------------------

/// As many drawables as there are commands elsewhere: without commands, in an order by lot.
struct Shuffled
{
    explicit Shuffled(int drawables) : size(drawables)
    {
        std::mt19937_64 engine(99);
        for (int i = 0; i < size; ++i)
        {
            flags.push_back(engine() >> 1);
            model.add(nullptr, 0, nullptr, nullptr, flags.back());
        }
        model.add(nullptr, 0, nullptr, nullptr, 0); // below the last: there is something to sort
        flags.push_back(0);
    }

    int size;
    GPUModel model;
    std::vector<quint64> flags;
};

void sortDrawables(benchmark::State& state, Shuffled& shuffled)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        GPUModel model = shuffled.model;
        model.setFlags(0, shuffled.flags[0] ^ 1, 1); // takes lists of its own
        state.ResumeTiming();
        model.sortDrawablesByFlags();
        state.PauseTiming();
        model.clear();
        state.ResumeTiming();
    }
}

void sortFloor(benchmark::State& state, Shuffled& shuffled)
{
    std::vector<std::pair<quint64, int>> order(shuffled.flags.size());
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = {shuffled.flags[i], int(i)};
        std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        benchmark::DoNotOptimize(order.data());
    }
}

void sortSorted(benchmark::State& state, Shuffled& shuffled)
{
    GPUModel model = shuffled.model;
    model.sortDrawablesByFlags();
    for (auto _ : state)
        model.sortDrawablesByFlags();
}

// ---- passes --------------------------------------------------------------------------------------------------------

void pass(benchmark::State& state, Scene& scene)
{
    scene.cull();
    for (auto _ : state)
        scene.draw(GPUModel::WindingCCW);
}

void sortedPass(benchmark::State& state, Scene& scene)
{
    scene.cull();
    QMatrix4x4 matrix;
    matrix.translate(1, 2, 3);
    for (auto _ : state)
        scene.draw(GPUModel::WindingCCW, kSortByDistance, &matrix);
}

/// The calls of a pass, with all that they need in flat arrays. `order` brings the commands of one list into their
/// order before they are drawn.
template <typename Order> void barePass(benchmark::State& state, Scene& scene, Order order)
{
    scene.cull();
    scene.flat->cullByFrustum(scene.clipFromWorld, scene.refs);
    std::vector<std::vector<int>> shown(scene.lists.size());
    std::vector<GLuint> arrays;
    std::vector<GLuint> buffers;
    for (std::size_t list = 0; list < shown.size(); ++list)
    {
        arrays.push_back(scene.lists[list]->VAO()->getVAO());
        buffers.push_back(scene.lists[list]->indexBO()->getBO());
        for (int command = 0; command < kCommandsPerList; ++command)
            if (!scene.flat->isCulled(int(list) * kCommandsPerList + command))
                shown[list].push_back(command);
    }
    const int location = device->program.getUniformLocationNameID();
    std::vector<int> commands;
    for (auto _ : state)
    {
        ::_ptrc_glEnable(GL_CULL_FACE);
        ::_ptrc_glFrontFace(GL_CCW);
        device->material->bind(device->manager.get());
        device->object->bind(device->manager.get());
        device->manager->bind(&device->program);
        for (std::size_t list = 0; list < shown.size(); ++list)
        {
            ::_ptrc_glBindVertexArray(arrays[list]);
            ::_ptrc_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[list]);
            commands = shown[list];
            order(int(list), commands);
            for (const int command : commands)
            {
                ::_ptrc_glUniform1ui(location, GLuint(command));
                ::_ptrc_glDrawElementsBaseVertex(GL_TRIANGLES, kIndices, GL_UNSIGNED_SHORT, nullptr, 0);
            }
        }
        device->manager->unbind(&device->program);
        device->material->unbind(device->manager.get());
        device->object->unbind(device->manager.get());
        ::_ptrc_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        ::_ptrc_glBindVertexArray(0);
        ::_ptrc_glDisable(GL_CULL_FACE);
    }
}

void passFloor(benchmark::State& state, Scene& scene)
{
    barePass(state, scene, [](int, std::vector<int>&) {});
}

void sortedPassFloor(benchmark::State& state, Scene& scene)
{
    const QVector3D point(1, 2, 3);
    barePass(state, scene,
             [&](int list, std::vector<int>& commands)
             { scene.flat->sort(point, scene.refs.data() + list * kCommandsPerList, commands); });
}

// ---- one frame -----------------------------------------------------------------------------------------------------

/// With `moving` transforms of a hundred that move.
void frame(GPUModel& model, TextureManager* manager, const QMatrix4x4& clipFromWorld, int moving, int number)
{
    for (int i = 0; model.isValidTransform(i + 99); i += 100)
    {
        for (int j = 0; j < moving; ++j)
        {
            QMatrix4x4 local = model.localTransform(i + j);
            local(0, 3) += number % 2 ? 0.01f : -0.01f;
            model.setLocalTransform(i + j, local, false);
        }
    }
    model.updateTransforms();
    model.resetCulling();
    model.visibilityCull();
    model.frustumCull(clipFromWorld);
    model.sortDrawablesByFlags();
    QMatrix4x4 matrix;
    matrix.translate(1, 2, 3);
    model.draw(&device->program, manager, kSortByDistance, 0, GPUModel::WindingCCW, &matrix, false);
    static const QList<int> excluded = {7, 3};
    model.drawExclude(&device->program, manager, 0, 0, GPUModel::WindingNone, nullptr, excluded);
    model.updatePreviousMatrices();
}

/// By the library and the driver, in one frame of two passes.
long long allocationsOf(GPUModel& model, TextureManager* manager, const QMatrix4x4& clipFromWorld, int moving)
{
    for (int number = 0; number < 4; ++number)
        frame(model, manager, clipFromWorld, moving, number);
    const Test::HeapCount count;
    frame(model, manager, clipFromWorld, moving, 4);
    return count.soFar();
}

void printAllocations(Scene& scene, int moving)
{
    GPUModel alone = scene.model;
    for (int handle = 0; handle < alone.numDrawables(); ++handle)
        alone.set(handle, scene.lists[std::size_t(handle)].get(), nullptr, nullptr, 0, 0);
    std::printf("a warm frame of two passes, %6d commands, %d of 100 move: %lld allocations, with records and textures "
                "%lld\n",
                scene.size, moving, allocationsOf(alone, nullptr, scene.clipFromWorld, moving),
                allocationsOf(scene.model, device->manager.get(), scene.clipFromWorld, moving));
    alone.clear();
}

/// Behind all times: from here on each call is written down.
void printCalls(Scene& scene)
{
    Test::RecordingPlatform::instance();
    ogl_LoadFunctions();
    scene.cull();
    scene.draw(GPUModel::WindingCCW);
    Test::CallLog calls;
    scene.draw(GPUModel::WindingCCW);
    const int draws = calls.count(QStringLiteral("glDrawElementsBaseVertex"));
    const int ids = calls.count(QStringLiteral("glUniform1ui"));
    const int geometry = calls.count(QStringLiteral("glBindVertexArray")) + calls.count(QStringLiteral("glBindBuffer"));
    std::printf("a pass of %d commands in %d lists of one material: %d draws, %d draw identifiers, %d bindings of "
                "geometry, %d others\n",
                scene.size, int(scene.lists.size()), draws, ids, geometry,
                int(calls.list().size()) - draws - ids - geometry);
}

// ---- the program ---------------------------------------------------------------------------------------------------

std::string named(const char* what, int size)
{
    return std::string(what) + "/" + std::to_string(size);
}

struct Row
{
    const char* what;
    const char* name;
    void (*ours)(benchmark::State&, Scene&);
    const char* floorName;
    void (*floor)(benchmark::State&, Scene&);
    bool shuffledRefs;
};

constexpr Row kRows[] = {
    {"frustumCull : flat vectorised loop", "frustumCull", frustumCull, "frustumFloor", frustumFloor, false},
    {"frustumCull, refs shuffled : loop by refs", "frustumCullByRefs", frustumCull, "frustumFloorByRefs",
     frustumFloorByRefs, true},
    {"visibilityCull : flat loop", "visibilityCull", visibilityCull, "visibilityFloor", visibilityFloor, false},
    {"draw : the same calls bare", "pass", pass, "passFloor", passFloor, false},
    {"draw by distance : flat sort, calls bare", "sortedPass", sortedPass, "sortedPassFloor", sortedPassFloor, false},
};

void registerScene(const char* name, int size, Scene* scene, void (*run)(benchmark::State&, Scene&))
{
    benchmark::RegisterBenchmark(named(name, size).c_str(), [=](benchmark::State& state) { run(state, *scene); })
        ->Apply(Bench::repeat);
}

void registerSort(const char* name, int size, Shuffled* drawables, void (*run)(benchmark::State&, Shuffled&))
{
    benchmark::RegisterBenchmark(named(name, size).c_str(), [=](benchmark::State& state) { run(state, *drawables); })
        ->Apply(Bench::repeat);
}

void printRatios(const Bench::BestTimes& times, int size)
{
    std::printf("-- %d --\n", size);
    for (const Row& row : kRows)
        times.printRatio(row.what, named(row.name, size), named(row.floorName, size), size);
    times.printRatio("sortDrawablesByFlags : sort of flags and numbers", named("sortDrawables", size),
                     named("sortFloor", size), size);
    times.printRatio("the same when they are in order", named("sortSorted", size), named("sortFloor", size), size);
}

} // namespace

int main(int argc, char** argv)
{
    Bench::NoOperationContext context;
    if (!Bench::start(argc, argv, context))
        return 1;
    Device made;
    device = &made;
    if (!made.isReady)
        return 1;

    std::vector<std::unique_ptr<Scene>> scenes;
    std::vector<std::unique_ptr<Shuffled>> drawables;
    for (const int size : kSizes)
    {
        scenes.push_back(std::make_unique<Scene>(size, false));
        Scene* const ordered = scenes.back().get();
        scenes.push_back(std::make_unique<Scene>(size, true));
        Scene* const shuffled = scenes.back().get();
        for (const Row& row : kRows)
        {
            Scene* const scene = row.shuffledRefs ? shuffled : ordered;
            registerScene(row.name, size, scene, row.ours);
            registerScene(row.floorName, size, scene, row.floor);
        }
        drawables.push_back(std::make_unique<Shuffled>(size));
        registerSort("sortDrawables", size, drawables.back().get(), sortDrawables);
        registerSort("sortFloor", size, drawables.back().get(), sortFloor);
        registerSort("sortSorted", size, drawables.back().get(), sortSorted);
    }

    Bench::BestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    for (const int size : kSizes)
        printRatios(times, size);
    for (const auto& scene : scenes)
        for (const int moving : {0, 1, 100})
            printAllocations(*scene, moving);
    printCalls(*scenes.front());
    for (const auto& scene : scenes)
        scene->model.clear();
    return 0;
}
