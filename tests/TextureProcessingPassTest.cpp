// SPDX-License-Identifier: MIT
//
// Texture processing on the fake driver: one pass, call by call.
#include "TextureProcessing.h"

#include "TextureProcessingTestTools.h"

#include <QVariant>

namespace Harrow::Vrk::Test
{

class TextureProcessingPassTest : public TextureProcessingFixture
{
};

TEST_F(TextureProcessingPassTest, ProcessTextureMakesItsCallsInOrder)
{
    script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}};
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {{line("u_other"), 0.5f}}, source.get(), destination.get());
    EXPECT_EQ(shown(calls.list()), shown(pass({uniformQuery(1, "u_other"), CallLog::call("glUniform1f", 8, 0.5)})));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_FALSE(source->isBound());
    EXPECT_FALSE(destination->isBound());
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(TextureProcessingPassTest, ProcessTextureEnablesBothAttributesOfTheQuad)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    QStringList pointers = calls.named({line("glVertexAttribPointer")});
    pointers.sort();
    EXPECT_EQ(pointers, QStringList({CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
                                     CallLog::call("glVertexAttribPointer", 1, 2, GL_FLOAT, 0, 0, nullptr)}));
}

TEST_F(TextureProcessingPassTest, ProcessTextureSetsEveryUniformAndTheSourceLast)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const CallLog calls;
    ProcessTexture(program.get(), {{line("u_Src"), 77}, {line("u_other"), 0.5f}, {line("u_lowValue"), 2.0f}},
                   source.get(), destination.get());
    QStringList settings = calls.named({line("glUniform1i"), line("glUniform1f")});
    ASSERT_EQ(settings.size(), 4);
    EXPECT_EQ(settings.takeLast(), CallLog::call("glUniform1i", 5, 3)) << "whatever the caller said";
    settings.sort();
    EXPECT_EQ(settings, QStringList({CallLog::call("glUniform1f", 6, 2.0), CallLog::call("glUniform1f", 8, 0.5),
                                     CallLog::call("glUniform1i", 5, 77)}));
}

TEST_F(TextureProcessingPassTest, ProcessTextureSkipsUniformsThatTheProgramLacks)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    script.attributes = {{"va_Vertex", 0, 1, GL_FLOAT_VEC3}};
    const auto program = newProgram();
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {{line("u_missing"), 0.5f}}, source.get(), destination.get());
    EXPECT_EQ(shown(calls.list()), shown(pass({uniformQuery(1, "u_missing")})));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TextureProcessingPassTest, ProcessTextureMakesANewQuadEachTime)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const auto shared = OpenGLDeviceContext::current()->fullscreenQuad();
    const CallLog calls;
    for (int time = 1; time <= 2; ++time)
    {
        ProcessTexture(program.get(), {}, source.get(), destination.get());
        EXPECT_EQ(calls.count(line("glGenVertexArrays")), time);
        EXPECT_EQ(calls.count(line("glGenBuffers")), 2 * time);
        EXPECT_EQ(calls.count(line("glDeleteVertexArrays")), time);
        EXPECT_EQ(calls.count(line("glDeleteBuffers")), 2 * time);
    }
    EXPECT_EQ(OpenGLDeviceContext::current()->fullscreenQuad(), shared);
}

TEST_F(TextureProcessingPassTest, ProcessTextureOfABoundSourceUsesItsUnitAndLeavesItBound)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const auto holders = takeUnits(1);
    ASSERT_TRUE(source->bind());
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(calls.named({line("glUniform1i")}), QStringList(CallLog::call("glUniform1i", 5, 2)));
    EXPECT_EQ(source->unit(), 2);
    EXPECT_TRUE(source->unbind());
    EXPECT_FALSE(source->isBound());
    holders[0]->unbind();
}

TEST_F(TextureProcessingPassTest, ProcessTextureOfNullIsReportedAndCallsNothing)
{
    const auto texture = newTexture();
    const auto program = newProgram();
    const auto words = failure("nullptr != source && nullptr != destination", "Texture is NULL on ProcessTexture");
    const struct
    {
        ShaderProgram* program;
        Texture* source;
        Texture* destination;
        QStringList expected;
    } rows[] = {
        {nullptr, texture.get(), texture.get(),
         failure("nullptr != program", "Shader Program is NULL on ProcessTexture")},
        {program.get(), nullptr, texture.get(), words},
        {program.get(), texture.get(), nullptr, words},
    };
    for (const auto& row : rows)
    {
        const LogCapture log;
        const CallLog calls;
        ProcessTexture(row.program, {}, row.source, row.destination);
        EXPECT_EQ(calls.list(), QStringList());
        EXPECT_EQ(log.messages(QtCriticalMsg), row.expected);
    }
}

TEST_F(TextureProcessingPassTest, ProcessTextureThroughAProgramThatIsNotLinkedDoesNothing)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    ShaderProgram program(nullptr);
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(&program, {}, source.get(), destination.get());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.messages(), QStringList(line("Shader program is not linked")));
}

TEST_F(TextureProcessingPassTest, ProcessTextureWithoutAUnitForTheSourceDrawsNothing)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    const auto holders = takeUnits(kUnits);
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(calls.list(), QStringList({CallLog::call("glUseProgram", 1), CallLog::call("glUseProgram", 0)}));
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
    for (const auto& holder : holders)
        holder->unbind();
}

TEST_F(TextureProcessingPassTest, ProcessTextureWithoutAUnitForTheDestinationMakesNoMipmaps)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    ASSERT_TRUE(source->bind()); // so that it keeps its unit
    const auto holders = takeUnits(kUnits - 1);
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(calls.count(line("glDrawArrays")), 1);
    EXPECT_EQ(calls.count(line("glGenerateMipmap")), 0) << "it would be made for another texture";
    EXPECT_EQ(log.messages(), QStringList(line("There is no available texture units")));
    for (const auto& holder : holders)
        holder->unbind();
    source->unbind();
}

TEST_F(TextureProcessingPassTest, ProcessTextureIntoAnArrayTextureReportsAndGoesOn)
{
    const auto source = newTexture();
    const auto destination = newTexture(GL_TEXTURE_2D_ARRAY);
    const auto program = newProgram();
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 2) << "of attaching and of detaching";
    EXPECT_EQ(calls.count(line("glFramebufferTexture2D")), 0);
    EXPECT_EQ(calls.count(line("glDrawArrays")), 1);
    EXPECT_EQ(calls.named({line("glGenerateMipmap")}),
              QStringList(CallLog::call("glGenerateMipmap", GL_TEXTURE_2D_ARRAY)));
    EXPECT_EQ(calls.count(line("glDeleteFramebuffers")), 1);
}

TEST_F(TextureProcessingPassTest, ProcessTextureWithoutAQuadIsReportedAndDrawsNothing)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    useFactory<WithoutVertexArrays>();
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("!vao.isNull()", "Vertex Array Object is NULL on newFullscreenQuad") +
                  failure("!quad.isNull()", "Fullscreen quad is NULL on ProcessTexture"));
    EXPECT_EQ(calls.named({line("glDisable"), line("glClear"), line("glViewport"), line("glDrawArrays"),
                           line("glGenerateMipmap"), line("glUniform1i")}),
              QStringList());
    EXPECT_EQ(calls.named({line("glUseProgram"), line("glBindFramebuffer")}),
              QStringList({CallLog::call("glUseProgram", 1), CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 1),
                           CallLog::call("glBindFramebuffer", GL_FRAMEBUFFER, 0), CallLog::call("glUseProgram", 0)}));
    EXPECT_FALSE(source->isBound());
}

TEST_F(TextureProcessingPassTest, ProcessTextureWithABareQuadIsReportedAndDrawsNothing)
{
    const auto source = newTexture();
    const auto destination = newTexture();
    const auto program = newProgram();
    useFactory<WithBareQuads>();
    const LogCapture log;
    const CallLog calls;
    ProcessTexture(program.get(), {}, source.get(), destination.get());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              failure("!quad->VAO().isNull()", "Vertex Array Object is NULL on ProcessTexture"));
    EXPECT_EQ(calls.named({line("glDisable"), line("glClear"), line("glDrawArrays"), line("glGenerateMipmap")}),
              QStringList());
    EXPECT_FALSE(source->isBound());
}

} // namespace Harrow::Vrk::Test
