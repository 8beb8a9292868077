// SPDX-License-Identifier: MIT
//
// What is told to be safe on several threads, used on several threads at once. ThreadSanitizer watches these suites in
// tools/thread_sanitizer.sh; without it they hold the results alone.
#include "ThreadTestTools.h"

#include "Diagnostics.h"
#include "GLContextTracker.h"
#include "GLRuntimeTestAccess.h"
#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"
#include "InstanceDataTestTools.h"
#include "ShaderProgram.h"
#include "ShadowMapManagerCulling.h"
#include "UniformBufferObjectTestTools.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <VrkCore/ResourcesPath.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kThreads = 4;

// ---- without a context ---------------------------------------------------------------------------------------------

TEST(Threads, TheFirstQuestionsForTheLoggingSwitchAgree)
{
    std::array<bool, kThreads> answers = {};
    onThreads(kThreads, [&](int number) { answers[std::size_t(number)] = isLoggingEnabled(); });
    for (const bool answer : answers)
        EXPECT_EQ(answer, isLoggingEnabled());
}

TEST(Threads, LinesThatAreWrittenAtTheSameTimeComeWhole)
{
    constexpr int kLines = 100;
    const LogCapture log;
    onThreads(kThreads,
              [](int number)
              {
                  for (int i = 0; i < kLines; ++i)
                      Detail::logWarning("Threads.cpp", i, "line %d of thread %d", i, number);
              });
    QStringList lines = log.texts(QtWarningMsg);
    ASSERT_EQ(lines.size(), kThreads * kLines);
    for (int number = 0; number < kThreads; ++number)
        for (int i = 0; i < kLines; ++i)
            EXPECT_EQ(lines.count(QString::asprintf("[Threads.cpp:%d] line %d of thread %d", i, i, number)), 1);
}

TEST(Threads, TheFirstQuestionsForTheResourcesAgree)
{
    std::array<QString, kThreads> answers;
    onThreads(kThreads, [&](int number) { answers[std::size_t(number)] = resourcesPath(); });
    for (const QString& answer : answers)
        EXPECT_EQ(answer, resourcesPath());
}

TEST(Threads, WithoutAContextTheSystemsPlatformOffersNothingAnywhere)
{
    std::array<bool, kThreads> offered = {};
    onThreads(kThreads,
              [&](int number)
              {
                  GLPlatform& platform = GLPlatform::native();
                  offered[std::size_t(number)] =
                      platform.currentContext() != nullptr || platform.procAddress("glDrawArrays") != nullptr;
              });
    for (const bool answer : offered)
        EXPECT_FALSE(answer);
}

TEST(Threads, InternalFormatsMeanTheSameEverywhere)
{
    std::array<int, kThreads> sums = {};
    onThreads(kThreads,
              [&](int number)
              {
                  for (int i = 0; i < 1000; ++i)
                      sums[std::size_t(number)] += bytesFromInternalFormat(GL_RGBA16F) +
                                                   (formatFromInternalFormat(GL_RGBA16F) == GL_RGBA) +
                                                   (typeFromInternalFormat(GL_RGBA16F) == GL_HALF_FLOAT);
              });
    for (const int sum : sums)
        EXPECT_EQ(sum, 1000 * (8 + 1 + 1));
}

/// With the standard library, a macro and a define.
QString expansion(GLSLMacroProcessor& processor, int number)
{
    processor.addMacro(QStringLiteral("VALUE"), QString::number(number));
    processor.addDefine(QStringLiteral("NUMBER"), QString::number(number));
    return GLSLMacroProcessor::process(QStringLiteral("#version 150\n#macro VALUE none\n#macro OTHER none\n"
                                                      "#include \"VrkUtilities.glslh\"\n"),
                                       &processor);
}

TEST(Threads, CopiesOfOneProcessorExpandOnTheirOwn)
{
    GLSLMacroProcessor original;
    original.addMacro(QStringLiteral("OTHER"), QStringLiteral("shared"));
    std::array<GLSLMacroProcessor, kThreads> copies;
    copies.fill(original);
    std::array<QString, kThreads> texts;
    onThreads(kThreads,
              [&](int number)
              {
                  for (int i = 0; i < 20; ++i)
                      texts[std::size_t(number)] = expansion(copies[std::size_t(number)], number);
              });
    for (int number = 0; number < kThreads; ++number)
    {
        const QString& text = texts[std::size_t(number)];
        EXPECT_EQ(text, expansion(original, number));
        const QString begin = QStringLiteral("#version 150\n#define NUMBER %1\n\n%1\n\nshared\n\n").arg(number);
        EXPECT_EQ(text.left(begin.size()), begin);
        EXPECT_GT(text.size(), begin.size() + 1000) << "the file that is included";
    }
}

/// The projections of a sun with three cascades and of a lamp, for a camera in the scene.
QList<QMatrix4x4> fittedProjections()
{
    QMatrix4x4 projection;
    projection.perspective(60.0f, 1.5f, 0.1f, 50.0f);
    QMatrix4x4 view;
    view.lookAt({5, 4, 9}, {0, 0, 0}, {0, 1, 0});
    const std::pair scene(QVector3D(-10, -1, -10), QVector3D(10, 5, 10));
    ShadowMapManagerCulling culling;
    if (!culling.setupCameras(&projection, &view) || !culling.setupScene(&scene) || !culling.setupPost())
        return {};

    QMatrix4x4 place;
    place.translate(0, 3, 0);
    place.rotate(50.0f, 1.0f, 0.5f, 0.0f);
    ShadowMapManager::Light sun;
    sun.setType(ShadowMapManager::Light::eDirectional);
    sun.setCSMLevels(3);
    sun.setTransform(place);
    ShadowMapManager::Light lamp;
    lamp.setTransform(place);
    ShadowMapManager::RenderData data;
    ShadowMapManager::RenderData::ProjectorInfo infos[2];
    bool changed = false;
    if (!culling.processLightDirectional(data, infos[0], &sun, changed))
        return {};
    infos[1].index = infos[0].count;
    if (!culling.processLightPoint(data, infos[1], &lamp, changed))
        return {};
    QList<QMatrix4x4> matrices;
    for (int i = 0; i < infos[0].count + infos[1].count; ++i)
        matrices.append(data.transforms.at(i).toMatrix());
    return matrices;
}

TEST(Threads, EachFitsItsOwnShadows)
{
    constexpr int kRounds = 20;
    const QList<QMatrix4x4> expected = fittedProjections();
    ASSERT_GE(expected.size(), 4) << "three cascades, and what the lamp lights of the scene";
    std::array<int, kThreads> right = {};
    onThreads(kThreads,
              [&](int number)
              {
                  for (int i = 0; i < kRounds; ++i)
                      right[std::size_t(number)] += fittedProjections() == expected;
              });
    for (const int count : right)
        EXPECT_EQ(count, kRounds);
}

// ---- each thread in contexts of its own ----------------------------------------------------------------------------

/// The fake driver, and for each thread some contexts that no other thread is in.
class ThreadContexts : public FakeDriverTest
{
protected:
    static constexpr int kContexts = 50;

    void SetUp() override
    {
        // Threads make names at the same time; the driver's own counters are for one thread.
        driver.replace(
            "glCreateProgram", +[] { return ++lastName; });
        driver.replace(
            "glCreateShader", +[](GLenum) { return ++lastName; });
        driver.setExtensions({"GL_ARB_first", "GL_ARB_second"});
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, 4);
        FakeDriverTest::SetUp();
        UniformBufferObjectTestAccess::forgetContexts();
        platform.emplace(driver);
    }

    void TearDown() override
    {
        for (char& place : places)
            GLRuntimeTestAccess::forgetExtensionsOf(&place);
        platform.reset();
        UniformBufferObjectTestAccess::forgetContexts();
    }

    /// Calls `work` in each context of each thread, with the number of the thread.
    template <typename Work> void inAllContexts(Work work)
    {
        onThreads(kThreads,
                  [&](int number)
                  {
                      for (int i = 0; i < kContexts; ++i)
                      {
                          ContextPerThread::context = &places[std::size_t(number * kContexts + i)];
                          work(number);
                      }
                  });
    }

    static inline std::atomic<GLuint> lastName = 0;

    std::array<char, kThreads* kContexts> places = {};
    std::optional<ContextPerThread> platform;
    std::atomic<int> wrong = 0;
};

TEST_F(ThreadContexts, TheCurrentOneIsThatOfTheThread)
{
    inAllContexts(
        [this](int)
        {
            GLContextTracker tracker;
            wrong += GLContextTracker::currentContext() != ContextPerThread::context;
            wrong += tracker.check();
            tracker.trackCurrentContext();
            wrong += tracker.trackedContext() != ContextPerThread::context || !tracker.check();
        });
    EXPECT_EQ(wrong, 0);
}

TEST_F(ThreadContexts, ExtensionsAreToldInEach)
{
    inAllContexts(
        [this](int)
        {
            wrong += !hasGLExtension("GL_ARB_first") || !hasGLExtension("ARB_second");
            wrong += hasGLExtension("GL_ARB_third");
        });
    EXPECT_EQ(wrong, 0);
}

TEST_F(ThreadContexts, ProgramsAreMadeAndBoundInEach)
{
    const ShaderProgram first; // asks what the driver has, which is kept without a lock
    inAllContexts(
        [this](int)
        {
            ShaderProgram program;
            program.addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\n#include \"VrkUtilities.glslh\"\n"));
            wrong += !program.link() || ShaderProgram::currentShaderProgram() != nullptr;
            wrong += !program.bind() || ShaderProgram::currentShaderProgram() != &program;
            ShaderProgram other;
            wrong += !other.link() || !other.bind() || ShaderProgram::currentShaderProgram() != &other;
            wrong += !program.unbind() || ShaderProgram::currentShaderProgram() != nullptr;
            wrong += !other.bind();
        });
    EXPECT_EQ(wrong, 0);
    for (char& place : places)
    {
        ContextPerThread::context = &place;
        EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr) << "it was destroyed while bound";
    }
    ContextPerThread::context = nullptr;
}

TEST_F(ThreadContexts, BlocksAreBoundToPointsInEach)
{
    std::vector<QSharedPointer<UniformBufferObject>> blocks;
    for (int i = 0; i < kThreads; ++i)
        blocks.push_back(newBlock(newBlockBuffer()));
    const QSharedPointer<UniformBufferObject> shared = newBlock(newBlockBuffer());
    ShaderProgram* const none = nullptr;
    inAllContexts(
        [&](int number)
        {
            UniformBufferObject& own = *blocks[std::size_t(number)];
            wrong += !own.bind(none) || !shared->bind(none);
            wrong += own.uniformBlockBinding() == shared->uniformBlockBinding();
            wrong += !own.unbind(none) || !shared->unbind(none);
            UniformBufferObject::bindBatchStart();
            wrong += !shared->bind(none) || !own.bind(none);
            UniformBufferObject::bindBatchFlush();
            wrong += !own.unbind(none) || !shared->unbind(none);
        });
    EXPECT_EQ(wrong, 0);
}

TEST_F(ThreadContexts, TexturesHaveTheirUnitsInEach)
{
    std::vector<std::unique_ptr<Texture>> textures;
    for (int i = 0; i < kThreads; ++i)
    {
        textures.push_back(std::make_unique<Texture>(7u + unsigned(i), nullptr));
        textures.back()->setTarget(GL_TEXTURE_2D);
    }
    inAllContexts(
        [&](int number)
        {
            Texture& texture = *textures[std::size_t(number)];
            wrong += texture.isBound() || !texture.bind() || !texture.isBound() || texture.unit() < 0;
            wrong += !texture.unbind() || texture.isBound();
        });
    EXPECT_EQ(wrong, 0);
}

// ---- records -------------------------------------------------------------------------------------------------------

using ThreadRecords = RecordsFixture;

TEST_F(ThreadRecords, CollectionsOfOnePlanAreFilledOnTheirThreads)
{
    constexpr int kRounds = 100;
    const int records = plan->arraySize();
    std::vector<std::unique_ptr<InstanceDataCollection>> collections;
    for (int i = 0; i < kThreads; ++i)
        collections.push_back(std::make_unique<InstanceDataCollection>(plan, std::size_t(records)));
    onThreads(kThreads,
              [&](int number)
              {
                  InstanceDataCollection& collection = *collections[std::size_t(number)];
                  for (int round = 1; round <= kRounds; ++round)
                      for (int i = 0; i < records; ++i)
                      {
                          const QByteArray matrix = ramp(64, number + i * round);
                          collection.set(i, QStringLiteral("matrix"), matrix.constData(), std::size_t(matrix.size()));
                      }
              });
    for (int number = 0; number < kThreads; ++number)
        for (int i = 0; i < records; ++i)
            EXPECT_EQ(collections[std::size_t(number)]->dataArray().mid(i * kRecordBytes, 64),
                      ramp(64, number + i * kRounds));
}

} // namespace
} // namespace Harrow::Vrk::Test
