// SPDX-License-Identifier: MIT
//
// What `bind` and `unbind` ask of OpenGL, and each of their reports.

#include "ShadowMapManager.h"

#include "GLFunctions.h"
#include "ShaderProgram.h"
#include "ShadowMapTestTools.h"
#include "TextureTestTools.h"
#include "support/HeapCount.h"

#include <QRegularExpression>
#include <QSharedPointer>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr const char* kSampler = "u_ShadowMapDepthSampler";
constexpr const char* kClamp = "u_VarianceClamp";
constexpr const char* kInfos = "u_ShadowMapProjectionInfos";
constexpr const char* kTransforms = "u_ShadowMapProjectionTransforms";

/// What the driver was given last.
std::vector<GLint> givenInfos;
std::vector<GLfloat> givenTransforms;
GLsizei givenInfoCount = -1;
GLsizei givenTransformCount = -1;

void VRK_GLAPIENTRY keepInfos(GLint, GLsizei count, const GLint* values)
{
    givenInfoCount = count;
    givenInfos.assign(values, values + count * 2);
}

void VRK_GLAPIENTRY keepTransforms(GLint, GLsizei count, GLboolean, const GLfloat* values)
{
    givenTransformCount = count;
    givenTransforms.assign(values, values + count * 16);
}

class ShadowMapManagerDriverTest : public TextureFixture
{
protected:
    void SetUp() override
    {
        TextureFixture::SetUp();
        driver.setUniformLocation(kSampler, 4);
        driver.setUniformLocation(kClamp, 5);
        driver.setUniformLocation(kInfos, 6);
        driver.setUniformLocation(kTransforms, 7);
        driver.replace("glUniform2iv", &keepInfos);
        driver.replace("glUniformMatrix4fv", &keepTransforms);
        ASSERT_EQ(driver.load(), 1);
        givenInfoCount = givenTransformCount = -1;
        makeRecord();
        texture = newTexture(GL_TEXTURE_2D_ARRAY);
        data.setProjectionTexture(texture.get());
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
    }

    void TearDown() override
    {
        ShadowMapManager::setVarianceClamping(0.1f);
        program.reset();
        texture.reset();
        TextureFixture::TearDown();
    }

    QVariant variant()
    {
        return QVariant::fromValue<QObject*>(&data);
    }

    QStringList bindingTexture() const
    {
        return {activate(kUnits - 1), bindName(texture->textureID(), GL_TEXTURE_2D_ARRAY)};
    }

    QStringList unbindingTexture() const
    {
        return {activate(kUnits - 1), bindName(0, GL_TEXTURE_2D_ARRAY)};
    }

    QStringList settingUniforms(float clamp) const
    {
        return {CallLog::call("glUniform1i", 4, kUnits - 1), CallLog::call("glUniform1f", 5, clamp),
                CallLog::call("glUniform2iv", 6, 32, static_cast<const void*>(data.projectorInfos.constData())),
                CallLog::call("glUniformMatrix4fv", 7, 32, 0, static_cast<const void*>(data.transforms.constData()))};
    }

    /// The calls but for the questions after locations, which are asked once for each program.
    static QStringList withoutQuestions(const CallLog& calls)
    {
        return calls.list().filter(QRegularExpression(QStringLiteral("^(?!glGetUniformLocation)")));
    }

    RenderData data;
    std::unique_ptr<Texture> texture;
    std::unique_ptr<ShaderProgram> program;
};

} // namespace

// ---- bind ----------------------------------------------------------------------------------------------------------

TEST_F(ShadowMapManagerDriverTest, BindIsOneTextureAndTwoArrays)
{
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    texture->unbind();
    const CallLog calls;
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(calls.list(), bindingTexture() + settingUniforms(0.1f));
}

TEST_F(ShadowMapManagerDriverTest, AWarmBindAllocatesNothing)
{
    const QVariant bound = variant();
    const auto bindAndUnbind = [&]
    { return ShadowMapManager::bind(program.get(), bound) && ShadowMapManager::unbind(program.get(), bound); };
    givenInfos.reserve(64);
    givenTransforms.reserve(32 * 16);
    ASSERT_TRUE(bindAndUnbind());
    const HeapCount count;
    const bool done = bindAndUnbind();
    EXPECT_EQ(count.soFar(), 0);
    EXPECT_TRUE(done);
}

TEST_F(ShadowMapManagerDriverTest, LocationsAreAskedForOnceAndInTheirOrder)
{
    const CallLog calls;
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    const GLuint name = program->shaderProgramID();
    EXPECT_EQ(calls.named({QStringLiteral("glGetUniformLocation")}),
              QStringList({CallLog::call("glGetUniformLocation", name, kSampler),
                           CallLog::call("glGetUniformLocation", name, kClamp),
                           CallLog::call("glGetUniformLocation", name, kInfos),
                           CallLog::call("glGetUniformLocation", name, kTransforms)}));
}

TEST_F(ShadowMapManagerDriverTest, BindGivesTheListsAsTheyAre)
{
    const auto first = lightOf(Light::eSpot, placedAt(1, 2, 3), 0, 0.5f);
    const auto second = lightOf(Light::ePoint, placedAt(-1, 0, 0));
    ASSERT_TRUE(ShadowMapManager::processLights(listOf({first.get(), second.get()}), data));
    ASSERT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    ASSERT_EQ(givenInfos.size(), 64u);
    EXPECT_EQ(std::vector<GLint>(givenInfos.begin(), givenInfos.begin() + 6), (std::vector<GLint>{1, 0, 6, 1, 0, 0}))
        << "counts and first projections by turns";
    ASSERT_EQ(givenTransforms.size(), 32u * 16u);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(std::memcmp(&givenTransforms[std::size_t(i) * 16], data.transforms[i].values, 64), 0) << i;
}

TEST_F(ShadowMapManagerDriverTest, TheClampIsThatOfTheLastCall)
{
    ShadowMapManager::setVarianceClamping(0.25f);
    const CallLog calls;
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(withoutQuestions(calls), bindingTexture() + settingUniforms(0.25f));
}

TEST_F(ShadowMapManagerDriverTest, UniformsThatTheProgramLacksAreLeftOut)
{
    driver.setUniformLocation(kSampler, -1);
    driver.setUniformLocation(kClamp, -1);
    driver.setUniformLocation(kInfos, -1);
    driver.setUniformLocation(kTransforms, -1);
    const CallLog calls;
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(withoutQuestions(calls), bindingTexture());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, AVariantOfTheOwnTypeOrASharedPointerWillDo)
{
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), QVariant::fromValue(&data)));
    auto shared = QSharedPointer<RenderData>::create();
    shared->setProjectionTexture(texture.get());
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), QVariant::fromValue(shared)));
    EXPECT_TRUE(ShadowMapManager::unbind(program.get(), QVariant::fromValue(shared)));
    EXPECT_TRUE(ShadowMapManager::unbind(program.get(), QVariant::fromValue(&data)));
    EXPECT_FALSE(texture->isBound());
}

TEST_F(ShadowMapManagerDriverTest, ANullVariantIsReported)
{
    const LogCapture log;
    const CallLog calls;
    for (const QVariant& null : {QVariant(), QVariant::fromValue<QObject*>(nullptr)})
        EXPECT_FALSE(ShadowMapManager::bind(program.get(), null));
    EXPECT_EQ(log.messages(), failure("false == dataVariant.isNull()", "NULL render data variant used") +
                                  failure("false == dataVariant.isNull()", "NULL render data variant used"));
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 2);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, AVariantWithoutAnObjectIsReported)
{
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), QVariant(5)));
    EXPECT_EQ(log.messages(),
              failure("true == dataVariant.canConvert<QObject*>()", "render data is not a 'QObject*' type is 'int'"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, ANullObjectIsReported)
{
    // A variant of a null pointer is null itself; one of an empty shared pointer is not.
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), QVariant::fromValue(QSharedPointer<QObject>())));
    EXPECT_EQ(log.messages(), failure("NULL != dataVariant.value<QObject*>()", "NULL QObject render data"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, AnotherClassIsNamedAndReported)
{
    Light light;
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), QVariant::fromValue<QObject*>(&light)));
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Type 'Harrow::Vrk::ShadowMapManager::Light'\n")) +
                                  failure("NULL != renderData", "NULL render data used"));
    EXPECT_EQ(log.messages(QtDebugMsg).size(), 1);
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, BindWithoutATextureIsReported)
{
    data.setProjectionTexture(nullptr);
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(log.messages(), failure("NULL != texture", "NULL render data texture used"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ShadowMapManagerDriverTest, BindWithoutAProgramBindsTheTexture)
{
    const LogCapture log;
    const CallLog calls;
    EXPECT_FALSE(ShadowMapManager::bind(nullptr, variant()));
    EXPECT_EQ(log.messages(), failure("NULL != program", "NULL program used"));
    EXPECT_EQ(calls.list(), bindingTexture());
    EXPECT_TRUE(texture->isBound());
}

TEST_F(ShadowMapManagerDriverTest, ListsOfAnotherSizeAreReportedAndPassedOn)
{
    data.projectorInfos.resize(5);
    data.transforms.resize(33);
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(log.messages(), failure("kShadowMapInfoArraySizeMax == renderData->projectorInfos.size()",
                                      "Projector Info Array size 5 does not match size required by shader 32") +
                                  failure("kShadowMapTransformArraySizeMax == renderData->transforms.size()",
                                          "Projector Info Array size 33 does not match size required by shader 32"));
    EXPECT_EQ(givenInfoCount, 5);
    EXPECT_EQ(givenTransformCount, 33);
    data.projectorInfos.clear();
    data.transforms.clear();
    EXPECT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    EXPECT_EQ(givenInfoCount, 0);
    EXPECT_EQ(givenTransformCount, 0);
}

TEST_F(ShadowMapManagerDriverTest, BindWithoutAFreeUnitSetsNothing)
{
    std::vector<std::unique_ptr<Texture>> others;
    for (int i = 0; i < kUnits; ++i)
    {
        others.push_back(newTexture());
        others.back()->bind();
    }
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(ShadowMapManager::bind(program.get(), variant()));
        EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
        EXPECT_EQ(calls.list(), QStringList());
    }
    for (const auto& other : others)
        other->unbind();
}

// ---- unbind --------------------------------------------------------------------------------------------------------

TEST_F(ShadowMapManagerDriverTest, UnbindUnbindsTheTextureAlone)
{
    ASSERT_TRUE(ShadowMapManager::bind(program.get(), variant()));
    const LogCapture log;
    const CallLog calls;
    EXPECT_TRUE(ShadowMapManager::unbind(program.get(), variant()));
    EXPECT_EQ(calls.list(), unbindingTexture());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_FALSE(texture->isBound());
}

TEST_F(ShadowMapManagerDriverTest, UnbindNeedsNoProgram)
{
    ASSERT_FALSE(ShadowMapManager::bind(nullptr, variant()));
    EXPECT_TRUE(ShadowMapManager::unbind(nullptr, variant()));
    EXPECT_FALSE(texture->isBound());
}

TEST_F(ShadowMapManagerDriverTest, UnbindIsTrueWhateverTheTextureSays)
{
    const LogCapture log;
    EXPECT_TRUE(ShadowMapManager::unbind(program.get(), variant()));
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 1) << "the texture was not bound";
}

TEST_F(ShadowMapManagerDriverTest, UnbindWithoutRenderDataHasOneReport)
{
    Light light;
    const QVariant kWrong[] = {QVariant(), QVariant(5), QVariant::fromValue<QObject*>(nullptr),
                               QVariant::fromValue<QObject*>(&light), QVariant::fromValue(QSharedPointer<QObject>())};
    for (const QVariant& wrong : kWrong)
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_FALSE(ShadowMapManager::unbind(program.get(), wrong));
        EXPECT_EQ(log.messages(), failure("NULL != renderData", "NULL render data used"));
        EXPECT_EQ(calls.list(), QStringList());
    }
}

TEST_F(ShadowMapManagerDriverTest, UnbindWithoutATextureIsReported)
{
    data.setProjectionTexture(nullptr);
    const LogCapture log;
    EXPECT_FALSE(ShadowMapManager::unbind(program.get(), variant()));
    EXPECT_EQ(log.messages(), failure("NULL != texture", "NULL render data texture used"));
}

// ---- the logging switch --------------------------------------------------------------------------------------------

TEST_F(ShadowMapManagerDriverTest, ReportsObeyTheLoggingSwitch)
{
    if (!isLoggingSwitchedOff())
    {
        EXPECT_TRUE(passesWithLoggingOff("ShadowMapManagerDriverTest.ReportsObeyTheLoggingSwitch"));
        return;
    }
    Light light;
    const LogCapture log;
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), QVariant()));
    EXPECT_FALSE(ShadowMapManager::bind(program.get(), QVariant::fromValue<QObject*>(&light)));
    EXPECT_FALSE(ShadowMapManager::bind(nullptr, variant()));
    EXPECT_FALSE(ShadowMapManager::unbind(program.get(), QVariant()));
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
