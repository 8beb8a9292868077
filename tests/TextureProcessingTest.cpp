// SPDX-License-Identifier: MIT
//
// Texture processing on the fake driver: the plain copy, writable copies and the making of shaders.
#include "TextureProcessing.h"

#include "TextureProcessingTestTools.h"

#include <QFile>
#include <QTemporaryDir>

#include <ostream>

namespace Harrow::Vrk::Test
{

class TextureProcessingTest : public TextureProcessingFixture
{
};

// ---- BlitTexture ---------------------------------------------------------------------------------------------------

namespace
{

QStringList blit(GLenum point, GLbitfield mask, GLenum sourceTarget, GLenum destinationTarget)
{
    return {
        writes("glGenFramebuffers", 1),
        writes("glGenFramebuffers", 1),
        CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 1),
        CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 2),
        CallLog::call("glFramebufferTexture2D", GL_READ_FRAMEBUFFER, point, sourceTarget, 1, 0),
        CallLog::call("glFramebufferTexture2D", GL_DRAW_FRAMEBUFFER, point, destinationTarget, 2, 0),
        CallLog::call("glBlitFramebuffer", 0, 0, 40, 30, 0, 0, 40, 30, mask, GL_NEAREST),
        CallLog::call("glFramebufferTexture2D", GL_READ_FRAMEBUFFER, point, sourceTarget, 0, 0),
        CallLog::call("glFramebufferTexture2D", GL_DRAW_FRAMEBUFFER, point, destinationTarget, 0, 0),
        CallLog::call("glBindFramebuffer", GL_READ_FRAMEBUFFER, 0),
        CallLog::call("glBindFramebuffer", GL_DRAW_FRAMEBUFFER, 0),
        writes("glDeleteFramebuffers", 1),
        writes("glDeleteFramebuffers", 1),
    };
}

struct BlitRow
{
    int format;
    GLenum point;
    GLbitfield mask;
};

void PrintTo(const BlitRow& row, std::ostream* stream)
{
    *stream << "format " << row.format;
}

} // namespace

class TextureProcessingBlitTest : public TextureProcessingTest, public testing::WithParamInterface<BlitRow>
{
};

TEST_P(TextureProcessingBlitTest, TheFormatChoosesPointAndMaskAndTheFilterIsNearest)
{
    const auto& [format, point, mask] = GetParam();
    const auto source = newTexture();
    const auto destination = newTexture();
    const LogCapture log;
    const CallLog calls;
    BlitTexture(source.get(), destination.get(), TextureFormat(format), 40, 30);
    EXPECT_EQ(shown(calls.list()), shown(blit(point, mask, GL_TEXTURE_2D, GL_TEXTURE_2D)));
    EXPECT_EQ(log.texts(), QStringList());
}

namespace
{

constexpr BlitRow kColor(int format)
{
    return {format, GL_COLOR_ATTACHMENT0, GL_COLOR_BUFFER_BIT};
}

constexpr GLbitfield kDepthAndStencil = GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;

} // namespace

INSTANTIATE_TEST_SUITE_P(Formats, TextureProcessingBlitTest,
                         testing::Values(kColor(R), kColor(RG), kColor(RGB), kColor(RGBA), kColor(SRGB8A8),
                                         kColor(R16F), kColor(RG16F), kColor(RGB16F), kColor(RGBA16F), kColor(R32F),
                                         kColor(RG32F), kColor(RGB32F), kColor(RGBA32F), kColor(R16I), kColor(RG16I),
                                         kColor(RGB16I), kColor(RGBA16I), kColor(R11FG11FB10F), kColor(RGBA1010102),
                                         kColor(R32I), kColor(RG32I), kColor(RGB32I), kColor(RGBA32I), kColor(-1),
                                         kColor(26), BlitRow{DEPTH32F, GL_DEPTH_ATTACHMENT, GL_DEPTH_BUFFER_BIT},
                                         BlitRow{DEPTH24_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT, kDepthAndStencil},
                                         BlitRow{DEPTH32F_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT, kDepthAndStencil}));

TEST_F(TextureProcessingTest, BlitTextureTakesEachSidesOwnTarget)
{
    const auto source = newTexture(GL_TEXTURE_CUBE_MAP_POSITIVE_X);
    const auto destination = newTexture(GL_TEXTURE_RECTANGLE);
    const CallLog calls;
    BlitTexture(source.get(), destination.get(), RGBA, 40, 30);
    EXPECT_EQ(shown(calls.list()), shown(blit(GL_COLOR_ATTACHMENT0, GL_COLOR_BUFFER_BIT, GL_TEXTURE_CUBE_MAP_POSITIVE_X,
                                              GL_TEXTURE_RECTANGLE)));
}

TEST_F(TextureProcessingTest, BlitTextureCountsNoAttachment)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    FramebufferObject::ResetNumFBOTextures();
    BlitTexture(source.get(), destination.get(), RGBA, 1, 1);
    EXPECT_EQ(FramebufferObject::NumFBOTextures(), 0);
}

TEST_F(TextureProcessingTest, BlitTextureOfANullTextureIsReportedAndCallsNothing)
{
    const auto texture = newTexture();
    const std::pair<Texture*, Texture*> pairs[] = {
        {nullptr, texture.get()}, {texture.get(), nullptr}, {nullptr, nullptr}};
    for (const auto& [source, destination] : pairs)
    {
        const LogCapture log;
        const CallLog calls;
        BlitTexture(source, destination, RGBA, 4, 4);
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  failure("nullptr != source && nullptr != destination", "Texture is NULL on BlitTexture"));
    }
}

// ---- WritableCopyOfTexture -----------------------------------------------------------------------------------------

TEST_F(TextureProcessingTest, WritableCopyOfTheBaseLevelHasTheSourcesFormatAndRecordsItsSize)
{
    const auto source = newTexture();
    const LogCapture log;
    const CallLog calls;
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 0));
    EXPECT_EQ(shown(calls.list()), shown(copying(0, GL_RGBA8, 64, 32, GL_RGBA, GL_UNSIGNED_BYTE, true)));
    ASSERT_TRUE(copy);
    EXPECT_EQ(TextureTestAccess::recorded(*copy), (Recorded{GL_RGBA8, 64, 32, 1}));
    EXPECT_EQ(copy->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(copy->parent(), nullptr);
    EXPECT_TRUE(copy->isManaged());
    EXPECT_FALSE(copy->isBound());
    EXPECT_FALSE(source->isBound());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureProcessingTest, WritableCopyTakesAGivenFormatAndAsksForNone)
{
    ProcessedTextureScript::current().compressed = GL_TRUE;
    const auto source = newTexture();
    const CallLog calls;
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), GL_R16F, 0));
    EXPECT_EQ(shown(calls.list()), shown(copying(0, GL_R16F, 64, 32, GL_RED, GL_HALF_FLOAT, false)));
    EXPECT_EQ(TextureTestAccess::recorded(*copy), (Recorded{GL_R16F, 64, 32, 1}));
}

TEST_F(TextureProcessingTest, WritableCopyOfAnotherLevelHasThatLevelAloneAndRecordsNothing)
{
    const auto source = newTexture();
    const LogCapture log;
    const CallLog calls;
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 1));
    EXPECT_EQ(shown(calls.list()), shown(copying(1, GL_RGBA8, 32, 16, GL_RGBA, GL_UNSIGNED_BYTE, true)));
    EXPECT_EQ(TextureTestAccess::recorded(*copy), kNothing);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureProcessingTest, WritableCopyOfAnotherLevelTakesAGivenFormat)
{
    const auto source = newTexture();
    const CallLog calls;
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), GL_RGBA32F, 1));
    EXPECT_EQ(shown(calls.list()), shown(copying(1, GL_RGBA32F, 32, 16, GL_RGBA, GL_FLOAT, false)));
}

TEST_F(TextureProcessingTest, WritableCopyOfACompressedTextureIsRGBA)
{
    ProcessedTextureScript::current().compressed = GL_TRUE;
    ProcessedTextureScript::current().internalFormat = GL_COMPRESSED_RGBA;
    const auto source = newTexture();
    const CallLog calls;
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 0));
    EXPECT_EQ(shown(calls.list()), shown(copying(0, GL_RGBA, 64, 32, GL_RGBA, GL_UNSIGNED_BYTE, true)));
    EXPECT_EQ(TextureTestAccess::recorded(*copy), (Recorded{GL_RGBA, 64, 32, 1}));
}

TEST_F(TextureProcessingTest, WritableCopyOfABoundTextureLeavesItBound)
{
    const auto source = newTexture();
    ASSERT_TRUE(source->bind());
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 0));
    EXPECT_TRUE(source->isBound());
    EXPECT_FALSE(copy->isBound());
    EXPECT_TRUE(source->unbind());
    EXPECT_FALSE(source->isBound());
}

TEST_F(TextureProcessingTest, WritableCopyOfNullIsReportedAndNull)
{
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(WritableCopyOfTexture(nullptr, 0, 0), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(QtCriticalMsg), failure("nullptr != source", "Texture is NULL on WritableCopyOfTexture"));
}

TEST_F(TextureProcessingTest, WritableCopyIsNullWhenNoUnitIsFreeForTheSource)
{
    const auto source = newTexture();
    const auto holders = takeUnits(kUnits);
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(WritableCopyOfTexture(source.get(), 0, 0), nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_F(TextureProcessingTest, WritableCopyIsNullAndNothingIsLeftWhenNoUnitIsFreeForTheCopy)
{
    const auto source = newTexture();
    ASSERT_TRUE(source->bind()); // so that it keeps its unit
    const auto holders = takeUnits(kUnits - 1);
    const int alive = Texture::NumAlive();
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(WritableCopyOfTexture(source.get(), 0, 0), nullptr);
    EXPECT_EQ(calls.count(line("glGenTextures")), 1);
    EXPECT_EQ(calls.count(line("glDeleteTextures")), 1);
    EXPECT_EQ(calls.named({line("glTexParameteri"), line("glTexImage2D")}), QStringList());
    EXPECT_EQ(Texture::NumAlive(), alive);
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    for (const auto& holder : holders)
        holder->unbind();
    source->unbind();
}

// ---- the shaders ---------------------------------------------------------------------------------------------------

TEST_F(TextureProcessingTest, AShaderFromAStringHasTheTwoStagesAndOneOutput)
{
    const LogCapture log;
    const CallLog calls;
    const std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromString(line("a fragment stage")));
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->isLinked());
    EXPECT_EQ(program->parent(), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(script.sources.size(), 2);
    for (auto source = script.sources.cbegin(); source != script.sources.cend(); ++source)
    {
        if (script.types.value(source.key()) == GL_FRAGMENT_SHADER)
            EXPECT_EQ(source.value(), "a fragment stage");
        else
            EXPECT_EQ(script.types.value(source.key()), GLenum(GL_VERTEX_SHADER));
    }
    EXPECT_EQ(calls.named({line("glBindFragDataLocation"), line("glLinkProgram")}),
              QStringList(
                  {CallLog::call("glBindFragDataLocation", 1, 0, "out_FragColor"), CallLog::call("glLinkProgram", 1)}));
    EXPECT_EQ(calls.count(line("glCompileShader")), 2);
}

TEST_F(TextureProcessingTest, TheVertexStageIsTheEmbeddedOne)
{
    QFile file(line(":/GLSL/src/passthroughVS.glslc"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    for (const char* const part :
         {"in vec3 va_Vertex;", "in vec2 va_TexCoord;", "out vec2 vo_TexCoord;", "gl_Position = vec4(va_Vertex, 1.0);"})
        EXPECT_TRUE(text.contains(part)) << part;
    const auto program = newProgram();
    EXPECT_EQ(script.sources.value(script.types.key(GL_VERTEX_SHADER)).toStdString(),
              QByteArray(text).replace("#version 150\n", "#version 150\n\n").toStdString())
        << "but for the empty line where defines would stand";
}

TEST_F(TextureProcessingTest, AShaderFromAStringThatDoesNotCompileIsNullWithAWarning)
{
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(MakeTextureShaderFromString(line("broken")), nullptr);
    EXPECT_EQ(ownWarnings(log), QStringList(line("shader program failed to compile:\n0:1: it is broken\n")));
    EXPECT_EQ(log.messages().last(), line("shader program failed to compile:\n0:1: it is broken\n"));
    EXPECT_EQ(log.lines().last().type, QtWarningMsg);
    EXPECT_EQ(calls.count(line("glCreateProgram")), 0);
    EXPECT_EQ(calls.count(line("glCreateShader")), calls.count(line("glDeleteShader")));
}

TEST_F(TextureProcessingTest, AVertexStageThatDoesNotCompileFailsInTheSameWay)
{
    script.brokenMark = "gl_Position";
    const LogCapture log;
    EXPECT_EQ(MakeTextureShaderFromString(line("a fragment stage")), nullptr);
    EXPECT_EQ(ownWarnings(log), QStringList(line("shader program failed to compile:\n0:1: it is broken\n")));
}

TEST_F(TextureProcessingTest, AShaderFromAStringThatDoesNotLinkIsNullWithAWarning)
{
    script.linkStatus = 0;
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(MakeTextureShaderFromString(line("a fragment stage")), nullptr);
    EXPECT_EQ(ownWarnings(log), QStringList(line("shader program failed to link:\nnothing fits\n")));
    EXPECT_EQ(log.messages().last(), line("shader program failed to link:\nnothing fits\n"));
    EXPECT_EQ(log.lines().last().type, QtWarningMsg);
    EXPECT_EQ(calls.named({line("glDeleteProgram")}), QStringList(CallLog::call("glDeleteProgram", 1)));
    EXPECT_EQ(calls.count(line("glCreateShader")), calls.count(line("glDeleteShader")));
}

TEST_F(TextureProcessingTest, TheWarningShowsALogAsItIs)
{
    script.shaderLog = "100% \xE4\n%s %n\n";
    const LogCapture log;
    EXPECT_EQ(MakeTextureShaderFromString(line("broken")), nullptr);
    EXPECT_EQ(ownWarnings(log), QStringList(QStringLiteral("shader program failed to compile:\n100% \u00E4\n%s %n\n")));
}

class TextureProcessingFileTest : public TextureProcessingTest
{
protected:
    QString fileOf(const QByteArray& text) const
    {
        QString path = _directory.filePath(line("stage.glslc"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(text), text.size());
        return path;
    }

    QTemporaryDir _directory;
};

TEST_F(TextureProcessingFileTest, AShaderFromAFileHasTheFilesText)
{
    const QString path = fileOf("a stage of its own");
    const LogCapture log;
    const CallLog calls;
    const std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromFile(path));
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->isLinked());
    EXPECT_EQ(program->parent(), nullptr);
    EXPECT_EQ(script.sources.value(script.types.key(GL_FRAGMENT_SHADER)), "a stage of its own");
    EXPECT_TRUE(script.sources.value(script.types.key(GL_VERTEX_SHADER)).contains("va_TexCoord"));
    EXPECT_EQ(calls.named({line("glBindFragDataLocation")}),
              QStringList(CallLog::call("glBindFragDataLocation", 1, 0, "out_FragColor")));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureProcessingFileTest, AShaderFromAFileThatDoesNotCompileIsNullWithoutAWarningOfItsOwn)
{
    const QString path = fileOf("broken");
    const LogCapture fileLog;
    EXPECT_EQ(MakeTextureShaderFromFile(path), nullptr);
    EXPECT_EQ(ownWarnings(fileLog), QStringList());
    // What is left is what the program says of itself: all that the other operation says, but for its last line.
    const LogCapture stringLog;
    EXPECT_EQ(MakeTextureShaderFromString(line("broken")), nullptr);
    QStringList expected = stringLog.messages();
    expected.removeLast();
    EXPECT_EQ(fileLog.messages(), expected);
}

TEST_F(TextureProcessingFileTest, AShaderFromAFileThatDoesNotLinkIsNullWithoutAWarningOfItsOwn)
{
    script.linkStatus = 0;
    const QString path = fileOf("a fragment stage");
    const LogCapture log;
    const CallLog calls;
    EXPECT_EQ(MakeTextureShaderFromFile(path), nullptr);
    EXPECT_EQ(ownWarnings(log), QStringList());
    EXPECT_EQ(calls.count(line("glDeleteProgram")), 1);
    EXPECT_EQ(calls.count(line("glCreateShader")), calls.count(line("glDeleteShader")));
}

TEST_F(TextureProcessingFileTest, AFileThatIsNotThereLeavesTheFragmentStageOut)
{
    const LogCapture log;
    const std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromFile(line("no-such-stage.glslc")));
    EXPECT_TRUE(program) << "the driver links a vertex stage alone";
    EXPECT_EQ(log.messages(), QStringList(line("Couldn't find shader source file 'no-such-stage.glslc'")));
    EXPECT_EQ(script.types.values(), QList<GLenum>({GL_VERTEX_SHADER}));
}

} // namespace Harrow::Vrk::Test
