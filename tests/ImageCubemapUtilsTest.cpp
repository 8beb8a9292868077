// SPDX-License-Identifier: MIT
//
// The cube map conversion without a GPU: names and types, every message and every refusal, and what they leave behind.
#include "ZelImageCubemapUtils.h"

#include "ImageCubemapCallTools.h"
#include "ZelRenderCubemapMatrices.h"

#include <QCoreApplication>
#include <QTranslator>

#include <algorithm>

namespace Harrow::Vrk::Test
{

namespace
{

using Type = ZelImageCubemapSourceType;

struct TypeName
{
    Type type;
    int number;
    const char* name;
};

constexpr TypeName kTypeNames[] = {{Type::None, 0, "None"},     {Type::Cubemap, 1, "Cubemap"},
                                   {Type::Sphere, 2, "Sphere"}, {Type::LatLong, 3, "LatLong"},
                                   {Type::Linear, 4, "Linear"}, {Type::Cross, 5, "Cross"}};

/// Another language: every word of the library backwards.
class Backwards final : public QTranslator
{
public:
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "QObject") != 0)
            return {};
        QString word = line(text);
        std::reverse(word.begin(), word.end());
        return word;
    }
    bool isEmpty() const override
    {
        return false;
    }
};

/// A renderer whose program and faces are as the test wants them.
class Renderer final : public ZelRenderCubemapBase
{
public:
    bool hasProgram = true;
    bool hasFaces = true;
    QStringList order;

    bool createProgram() override
    {
        order.append(line("createProgram"));
        if (!hasProgram)
            return ZelRenderCubemapBase::createProgram(); // there is none
        _program = std::make_unique<ShaderProgram>(nullptr);
        _program->link();
        return ZelRenderCubemapBase::createProgram();
    }
    bool setupFace(int face) override
    {
        order.append(line("setupFace %1").arg(face));
        return hasFaces;
    }
    void finishFace() override
    {
        order.append(line("finishFace"));
    }
    void beginProgram() override
    {
        order.append(line("beginProgram"));
    }
    void endProgram() override
    {
        order.append(line("endProgram"));
    }
};

} // namespace

// ---- names and types -----------------------------------------------------------------------------------------------

TEST(ImageCubemapUtils, OnlyFilesOfOneSuffixMayHoldAWholeCubemap)
{
    const struct
    {
        const char* path;
        bool can;
    } rows[] = {{"sky.dds", true},      {"/a/b.c/SKY.DDS", true}, {"sky.tar.DdS", true}, {".dds", true},
                {"sky.ktx", false},     {"sky", false},           {"", false},           {"dds", false},
                {"sky.dds.png", false}, {"sky.dds/map", false},   {"sky.ddsx", false}};
    for (const auto& row : rows)
        EXPECT_EQ(ZelImageCubemapUtils::canFileSupport3DCubemap(line(row.path)), row.can) << row.path;
}

TEST(ImageCubemapUtils, TheTypesToChooseFromHaveAnOrder)
{
    EXPECT_EQ(ZelImageCubemapUtils::supportedTypes(),
              QList<Type>({Type::None, Type::LatLong, Type::Cross, Type::Linear}));
}

TEST(ImageCubemapUtils, TheListOfTypesIsBuiltOnce)
{
    EXPECT_EQ(ZelImageCubemapUtils::supportedTypes().constData(), ZelImageCubemapUtils::supportedTypes().constData());
}

TEST(ImageCubemapUtils, EachTypeHasItsNumberAndItsName)
{
    for (const auto& row : kTypeNames)
    {
        EXPECT_EQ(static_cast<int>(row.type), row.number);
        EXPECT_EQ(ZelImageCubemapUtils::typeAsString(row.type), line(row.name));
        EXPECT_EQ(ZelImageCubemapUtils::typeFromString(line(row.name)), row.type);
    }
}

TEST(ImageCubemapUtils, ATypeOutsideTheEnumerationIsUnknown)
{
    for (const int number : {99, 6, -1})
        EXPECT_EQ(ZelImageCubemapUtils::typeAsString(static_cast<Type>(number)), line("Unknown")) << number;
}

TEST(ImageCubemapUtils, AnUnknownWordIsNoType)
{
    for (const char* const word : {"Donut", "", "cross", "Cross ", "Unknown"})
        EXPECT_EQ(ZelImageCubemapUtils::typeFromString(line(word)), Type::None) << word;
}

TEST(ImageCubemapUtils, NamesAreInTheLanguageOfTheUser)
{
    Backwards translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    EXPECT_EQ(ZelImageCubemapUtils::typeAsString(Type::Cross), line("ssorC"));
    EXPECT_EQ(ZelImageCubemapUtils::typeFromString(line("ssorC")), Type::Cross);
    EXPECT_EQ(ZelImageCubemapUtils::typeFromString(line("Cross")), Type::None);
    EXPECT_EQ(ZelImageCubemapUtils::typeAsString(static_cast<Type>(99)), line("Unknown"));
    QCoreApplication::removeTranslator(&translator);
}

// ---- messages and refusals -----------------------------------------------------------------------------------------

class ImageCubemapUtilsTest : public ImageCubemapCallFixture
{
};

TEST_F(ImageCubemapUtilsTest, NullIsReportedAndCallsNothing)
{
    const auto texture = newTexture(GL_TEXTURE_CUBE_MAP);
    using namespace ZelImageCubemapUtils;
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(createGLCubemapFromTexture(nullptr, Type::Cross, GL_TEXTURE_CUBE_MAP, ColorSpace::Linear, 0), nullptr);
    EXPECT_EQ(createGLCubemapBlurFromGLCubemap(nullptr, GL_TEXTURE_CUBE_MAP, 4, 1), nullptr);
    EXPECT_EQ(createGLCubemapNDotLFromGLCubemap(nullptr, GL_TEXTURE_CUBE_MAP, 4, 1, 1.0f), nullptr);
    EXPECT_EQ(createGLCubemapStripFromTexture(nullptr, 0), nullptr);
    EXPECT_FALSE(copyCubeMapTextureAsLod(nullptr, texture.get(), 0));
    EXPECT_FALSE(copyCubeMapTextureAsLod(texture.get(), nullptr, 0));
    const char* const one = "nullptr != source";
    const char* const both = "nullptr != source && nullptr != destination";
    EXPECT_EQ(log.messages(QtCriticalMsg), failure(one, "Texture is NULL on createGLCubemapFromTexture") +
                                               failure(one, "Texture is NULL on createGLCubemapBlurFromGLCubemap") +
                                               failure(one, "Texture is NULL on createGLCubemapNDotLFromGLCubemap") +
                                               failure(one, "Texture is NULL on createGLCubemapStripFromTexture") +
                                               failure(both, "Texture is NULL on copyCubeMapTextureAsLod") +
                                               failure(both, "Texture is NULL on copyCubeMapTextureAsLod"));
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(ImageCubemapUtilsTest, OnlyFourLayoutsConvert)
{
    const auto source = newTexture();
    const LogCapture log;
    for (const auto type : {Type::None, Type::Cubemap, static_cast<Type>(99), static_cast<Type>(-1)})
        EXPECT_EQ(converted(*source, type), nullptr) << static_cast<int>(type);
    EXPECT_EQ(log.texts(), QStringList());
    for (const auto type : {Type::Sphere, Type::LatLong, Type::Linear, Type::Cross})
        EXPECT_NE(converted(*source, type), nullptr) << static_cast<int>(type);
    EXPECT_EQ(messagesBeside(log, 4), QStringList());
}

TEST_F(ImageCubemapUtilsTest, ACrossThatIsSquareOrEmptyIsRefused)
{
    const auto source = newTexture();
    const int sizes[][2] = {{64, 64}, {1, 1}, {0, 8}, {8, 0}, {0, 0}};
    for (const auto& size : sizes)
    {
        cubemap.width = size[0];
        cubemap.height = size[1];
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(converted(*source, Type::Cross), nullptr);
        const QString expected = line("[ !! ] Texture(%1,%2) not a 4:3 or 3:4 image. Cannot load cubemap.");
        EXPECT_EQ(log.messages(QtDebugMsg), QStringList(expected.arg(size[0]).arg(size[1])));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(calls.count(line("glGenTextures")), 0);
    }
}

TEST_F(ImageCubemapUtilsTest, FacesHaveTheSizeThatTheLayoutTells)
{
    const struct
    {
        Type type;
        int width, height, maxSize, size;
    } rows[] = {
        {Type::Sphere, 103, 7, 0, 25},    {Type::LatLong, 103, 7, 0, 25},  {Type::Linear, 103, 7, 0, 17},
        {Type::Cross, 400, 300, 0, 100},  {Type::Cross, 300, 400, 0, 100}, {Type::Cross, 500, 300, 0, 125},
        {Type::Cross, 2, 1000, 0, 250},   {Type::Cross, 400, 300, 99, 99}, {Type::Cross, 400, 300, 101, 100},
        {Type::Cross, 400, 300, -1, 100}, {Type::LatLong, 103, 7, 1, 1},   {Type::LatLong, 3, 2, 0, 0},
    };
    const auto source = newTexture();
    for (const auto& row : rows)
    {
        cubemap.width = row.width;
        cubemap.height = row.height;
        const CallLog calls;
        EXPECT_NE(converted(*source, row.type, GL_TEXTURE_CUBE_MAP, row.maxSize), nullptr);
        EXPECT_EQ(calls.named({line("glTexImage2D")}).value(0),
                  CallLog::call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X, 0, GL_RGBA8, row.size, row.size, 0,
                                GL_RGBA, GL_UNSIGNED_BYTE, nullptr))
            << row.width << " by " << row.height;
        EXPECT_EQ(calls.named({line("glViewport")}),
                  QStringList(6, CallLog::call("glViewport", 0, 0, row.size, row.size)));
    }
}

TEST_F(ImageCubemapUtilsTest, ACrossIsUprightWhenItsWidthIsTheSmallerSide)
{
    const auto source = newTexture();
    for (const bool portrait : {false, true})
    {
        cubemap.width = portrait ? 300 : 400;
        cubemap.height = portrait ? 400 : 300;
        cubemap.matrices4x2.clear();
        ASSERT_NE(converted(*source, Type::Cross), nullptr);
        ASSERT_EQ(cubemap.matrices4x2.size(), 6u);
        for (int face = 0; face < 6; ++face)
        {
            const QMatrix4x2 expected = cubemapCrossMatrix(face, portrait);
            for (std::size_t i = 0; i < 8; ++i)
                EXPECT_EQ(cubemap.matrices4x2[std::size_t(face)][i], expected.constData()[i]) << face;
        }
    }
}

TEST_F(ImageCubemapUtilsTest, TheMatricesOfAConversionAreThoseOfTheFacesInOrder)
{
    const auto source = newTexture();
    ASSERT_NE(converted(*source, Type::Linear), nullptr);
    ASSERT_EQ(cubemap.matrices3.size(), 6u);
    ASSERT_EQ(cubemap.matrices4x2.size(), 6u);
    for (int face = 0; face < 6; ++face)
    {
        const QMatrix3x3 normal = cubemapFaceNormalMatrix(face);
        for (std::size_t i = 0; i < 9; ++i)
            EXPECT_EQ(cubemap.matrices3[std::size_t(face)][i], normal.constData()[i]) << face;
        const QMatrix4x2 linear = cubemapLinearMatrix(face);
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_EQ(cubemap.matrices4x2[std::size_t(face)][i], linear.constData()[i]) << face;
    }
    const std::array<float, 16> identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(cubemap.matrices4, std::vector(1, identity));
}

TEST_F(ImageCubemapUtilsTest, AConversionTellsHowLongItTook)
{
    const auto source = newTexture();
    const LogCapture log;
    ASSERT_NE(converted(*source, Type::Linear), nullptr);
    EXPECT_EQ(messagesBeside(log, 1), QStringList());
    EXPECT_EQ(log.lines().value(0).type, QtDebugMsg);
}

TEST_F(ImageCubemapUtilsTest, AnotherTargetIsNamedTwiceAndGivesNothing)
{
    const auto source = newTexture();
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(converted(*source, Type::Linear, GL_TEXTURE_2D_ARRAY), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(2, line("[ !! ] Unhandled Texture Type 0x8C1A")))
        << "without storage and without a face to draw";
    EXPECT_EQ(log.texts().size(), 2);
    EXPECT_EQ(calls.count(line("glDrawArrays")) + calls.count(line("glGenerateMipmap")), 0);
    EXPECT_EQ(calls.count(line("glDeleteTextures")), calls.count(line("glGenTextures")));
}

TEST_F(ImageCubemapUtilsTest, AnArrayIsAnotherTargetWhereThereAreNone)
{
    driver.setVersion(3, 2);
    ASSERT_EQ(driver.load(), 1);
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const QString unhandled = line("[ !! ] Unhandled Texture Type 0x9009");
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 2), nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList({unhandled, line("[ !! ] Unable to create cubemap NDotL from cubemap.")}));
        EXPECT_EQ(calls.count(line("glGenTextures")), 0);
    }
    {
        const LogCapture log;
        EXPECT_EQ(blurred(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 2), nullptr);
        EXPECT_EQ(log.messages(QtDebugMsg),
                  QStringList({unhandled, line("[ !! ] Unable to create cubemap blur from cubemap.")}));
    }
    EXPECT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP, 2), nullptr) << "plain ones are everywhere";
}

TEST_F(ImageCubemapUtilsTest, AnExtensionGivesArraysToAnOlderContext)
{
    driver.setVersion(3, 2);
    driver.setExtensions({"GL_ARB_texture_cube_map_array"});
    ASSERT_EQ(driver.load(), 1);
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    EXPECT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 2), nullptr);
}

TEST_F(ImageCubemapUtilsTest, NoTargetAtAllGivesNothing)
{
    const auto source = newTexture();
    const LogCapture log;
    EXPECT_EQ(converted(*source, Type::Linear, 0), nullptr);
    EXPECT_EQ(log.messages(), failure("0u != this->_target", "Texture Target is not set on bind"));
}

TEST_F(ImageCubemapUtilsTest, ASourceWithoutATargetGivesNothing)
{
    const auto source = newTexture(0);
    EXPECT_EQ(converted(*source, Type::Linear), nullptr);
    EXPECT_EQ(cosine(*source, GL_TEXTURE_CUBE_MAP, 1), nullptr);
    EXPECT_EQ(strip(*source), nullptr);
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), source.get(), 0));
}

TEST_F(ImageCubemapUtilsTest, WithoutAUnitForTheSourceOrTheResultThereIsNone)
{
    const auto flat = newTexture();
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const QString noUnit = line("There is no available texture units");
    for (const int taken : {kUnits, kUnits - 1})
    {
        const auto holders = takeUnits(taken);
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(converted(*flat, Type::Linear), nullptr) << taken;
        EXPECT_EQ(cosine(*cube, GL_TEXTURE_CUBE_MAP, 1), nullptr) << taken;
        EXPECT_EQ(blurred(*cube, GL_TEXTURE_CUBE_MAP, 1), nullptr) << taken;
        EXPECT_EQ(strip(*cube), nullptr) << taken;
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(4, noUnit));
        EXPECT_EQ(calls.count(line("glTexImage2D")), 0) << "nothing goes to what the active unit holds";
        EXPECT_EQ(calls.count(line("glDeleteTextures")), calls.count(line("glGenTextures")));
        for (const auto& holder : holders)
            holder->unbind();
    }
}

TEST_F(ImageCubemapUtilsTest, WithoutAUnitForTheUnusedTextureTheResultIsTheSame)
{
    const auto source = newTexture();
    const auto holders = takeUnits(kUnits - 2);
    const LogCapture log;
    const CallLog calls;
    EXPECT_NE(converted(*source, Type::Linear), nullptr);
    EXPECT_EQ(calls.count(line("glTexImage2D")), 6) << "the faces alone";
    EXPECT_EQ(calls.count(line("glDrawArrays")), 6);
    EXPECT_EQ(messagesBeside(log, 1), QStringList(line("There is no available texture units")));
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_F(ImageCubemapUtilsTest, ACopyWithoutUnitsIsNone)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto destination = newTexture(GL_TEXTURE_CUBE_MAP);
    const auto holders = takeUnits(kUnits);
    const CallLog calls;
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 0));
    EXPECT_EQ(calls.list(), QStringList());
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_F(ImageCubemapUtilsTest, AQuadThatCannotBeUploadedIsReported)
{
    {
        useFactory<WithoutBuffers>();
        const LogCapture log;
        const Renderer renderer;
        EXPECT_EQ(log.messages(), QStringList(line("Failed to upload buffers.")));
        EXPECT_EQ(log.lines().value(0).type, QtDebugMsg);
    }
    useFactory<WithoutVertexArrays>();
    const LogCapture log;
    Renderer renderer;
    EXPECT_EQ(log.messages(), QStringList(line("Failed to upload buffers.")));
    EXPECT_EQ(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 4), nullptr);
    EXPECT_EQ(log.messages().value(1),
              failure("!vao.isNull()", "Vertex Array Object is NULL on rendercubemap").value(0));
}

TEST_F(ImageCubemapUtilsTest, AStripWithoutAQuadIsNothing)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    {
        useFactory<WithBareQuads>();
        const LogCapture log;
        EXPECT_EQ(strip(*source), nullptr);
        EXPECT_EQ(log.messages(),
                  failure("!quad->VAO().isNull()", "Vertex Array Object is NULL on createGLCubemapStripFromTexture"));
    }
    useFactory<WithoutVertexArrays>();
    const LogCapture log;
    EXPECT_EQ(strip(*source), nullptr);
    EXPECT_EQ(log.messages(QtCriticalMsg).last(),
              failure("!quad.isNull()", "Fullscreen quad is NULL on createGLCubemapStripFromTexture").value(0));
}

TEST_F(ImageCubemapUtilsTest, AStripWhoseProgramIsNotBuiltIsNothing)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    script.linkStatus = 0;
    EXPECT_EQ(strip(*source), nullptr);
    script.linkStatus = 1;
    script.brokenMark = "vo_Direction";
    EXPECT_EQ(strip(*source), nullptr);
    EXPECT_EQ(calls.count(line("glGenTextures")) + calls.count(line("glDrawArrays")), 0);
    EXPECT_EQ(calls.count(line("glDeleteProgram")), 1);
}

TEST_F(ImageCubemapUtilsTest, AStripWantsACubemapAndALevelOfIt)
{
    const auto flat = newTexture();
    EXPECT_EQ(strip(*flat), nullptr) << "no cube map";
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    cubemap.levelsShrink = false;
    const struct
    {
        GLint maxLevel;
        int level;
        bool is;
    } rows[] = {{0, 0, true}, {0, 1, false}, {1, 1, true}, {1, 2, false}, {-1, 5, true}, {3, -1, false}};
    for (const auto& row : rows)
    {
        cubemap.maxLevel = row.maxLevel;
        EXPECT_EQ(strip(*source, row.level) != nullptr, row.is) << row.level << " of " << row.maxLevel;
    }
    for (const GLint width : {0, -1, 400000000})
    {
        cubemap.width = width;
        cubemap.maxLevel = 1000;
        EXPECT_EQ(strip(*source), nullptr) << width << " texels";
    }
}

TEST_F(ImageCubemapUtilsTest, ARendererWithoutAProgramSaysSo)
{
    Renderer renderer;
    renderer.hasProgram = false;
    const LogCapture log;
    EXPECT_EQ(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 4), nullptr);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(line("[ !! ] Failed to create Shader")));
    EXPECT_EQ(renderer.order, QStringList({line("beginProgram"), line("createProgram"), line("endProgram")}));
}

TEST_F(ImageCubemapUtilsTest, ARendererGoesThroughItsStepsForEachFace)
{
    for (const bool hasFaces : {true, false})
    {
        Renderer renderer;
        renderer.hasFaces = hasFaces;
        const CallLog calls;
        const std::unique_ptr<Texture> result(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 4));
        EXPECT_NE(result, nullptr) << "a face that is not set up keeps its clear colour";
        QStringList order = {line("beginProgram"), line("createProgram"), line("endProgram")};
        for (int face = 0; face < 6; ++face)
            order << line("setupFace %1").arg(face) << line("finishFace");
        EXPECT_EQ(renderer.order, order);
        EXPECT_EQ(calls.count(line("glDrawArrays")), hasFaces ? 6 : 0);
        EXPECT_EQ(calls.count(line("glFinish")), hasFaces ? 6 : 0);
        EXPECT_EQ(calls.count(line("glClear")), 6);
    }
}

TEST_F(ImageCubemapUtilsTest, FailuresLeaveNoNameBehind)
{
    const auto flat = newTexture();
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const CallLog calls;
    EXPECT_EQ(converted(*flat, Type::Linear, GL_TEXTURE_2D), nullptr);
    EXPECT_EQ(cosine(*cube, GL_TEXTURE_3D, 1), nullptr);
    EXPECT_EQ(blurred(*cube, GL_TEXTURE_3D, 1), nullptr);
    cubemap.framebufferStatus = GL_FRAMEBUFFER_UNSUPPORTED;
    EXPECT_EQ(strip(*cube), nullptr);
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(cube.get(), cube.get(), 0));
    script.brokenMark = "ZEL_CUBERENDER_BLUR_BATCH_SIZE";
    EXPECT_NE(blurred(*cube, GL_TEXTURE_CUBE_MAP, 1), nullptr) << "and forgotten at once";
    for (const char* const kind : {"Textures", "Framebuffers", "Buffers", "VertexArrays"})
    {
        EXPECT_GT(calls.count(line("glGen%1").arg(line(kind))), 0) << kind;
        EXPECT_EQ(calls.count(line("glGen%1").arg(line(kind))), calls.count(line("glDelete%1").arg(line(kind))))
            << kind;
    }
    for (const char* const kind : {"Program", "Shader"})
    {
        EXPECT_GT(calls.count(line("glCreate%1").arg(line(kind))), 0) << kind;
        EXPECT_EQ(calls.count(line("glCreate%1").arg(line(kind))), calls.count(line("glDelete%1").arg(line(kind))))
            << kind;
    }
    EXPECT_FALSE(flat->isBound());
    EXPECT_FALSE(cube->isBound());
}

TEST_F(ImageCubemapUtilsTest, MessagesObeyTheLoggingSwitch)
{
    if (!isLoggingSwitchedOff())
    {
        EXPECT_TRUE(passesWithLoggingOff("ImageCubemapUtilsTest.MessagesObeyTheLoggingSwitch"));
        return;
    }
    const auto source = newTexture();
    const auto cube = newTexture(GL_TEXTURE_CUBE_MAP);
    const LogCapture log;
    EXPECT_NE(converted(*source, Type::Linear), nullptr);
    EXPECT_EQ(converted(*source, Type::Linear, GL_TEXTURE_2D), nullptr);
    EXPECT_EQ(cosine(*cube, GL_TEXTURE_2D, 1), nullptr);
    EXPECT_EQ(blurred(*cube, GL_TEXTURE_2D, 1), nullptr);
    cubemap.width = cubemap.height;
    EXPECT_EQ(converted(*source, Type::Cross), nullptr);
    Renderer renderer;
    renderer.hasProgram = false;
    EXPECT_EQ(renderer.renderToNewTexture(GL_TEXTURE_CUBE_MAP, GL_RGBA8, 4), nullptr);
    EXPECT_EQ(ZelImageCubemapUtils::createGLCubemapStripFromTexture(nullptr, 0), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ImageCubemapUtilsTest, MoreCubesThanCanBeCountedAreNoMoreThanOpenGLCanBeAskedFor)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP);
    driver.replace(
        "glTexImage3D", +[](GLenum, GLint, GLint, GLsizei, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*) {});
    ASSERT_EQ(driver.load(), 1);
    const CallLog calls;
    EXPECT_NE(cosine(*source, GL_TEXTURE_CUBE_MAP_ARRAY, 2147483647), nullptr);
    EXPECT_EQ(calls.named({line("glTexImage3D")}),
              QStringList(CallLog::call("glTexImage3D", GL_TEXTURE_CUBE_MAP_ARRAY, 0, GL_RGBA32F, 4, 4, 2147483647, 0,
                                        GL_RGBA, GL_FLOAT, nullptr)));
    EXPECT_EQ(calls.count(line("glDrawArrays")), 0) << "the driver has made no layers";
}

} // namespace Harrow::Vrk::Test
