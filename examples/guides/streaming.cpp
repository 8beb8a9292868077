// SPDX-License-Identifier: MIT
// Two textures that change while they are drawn: a streamer of our own, on the left, and one of the library's beside
// it.
#include "Guide.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/ColorCycleTextureStreamer.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/SamplerTextureManager.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/TextureStreamer.h>
#include <VrkGL/VertexArrayObject.h>

#include <vector>

using namespace Harrow::Vrk;

constexpr int kWidth = 320, kHeight = 160;
constexpr int kBars = 16;

constexpr char kFragmentShader[] = R"(#version 150
#include "TextureManager.glslh"
uniform uint u_Tokens[4]; // two of them, each with its low word first
in vec2 vo_TexCoord;
out vec4 o_Color;
void main()
{
    vec2 texCoord = fract(vo_TexCoord * vec2(2.0, 1.0));
    VrkTextureToken left = uvec2(u_Tokens[0], u_Tokens[1]);
    VrkTextureToken right = uvec2(u_Tokens[2], u_Tokens[3]);
    o_Color = managedTextureLod(vo_TexCoord.x < 0.5 ? left : right, texCoord, 0.0);
})";

/// A row of bars that the application lengthens: new texels are uploaded only when there is something new.
class BarStreamer : public TextureStreamer
{
public:
    BarStreamer() : TextureStreamer(nullptr), _texels(size_t(4) * kBars * kBars)
    {
        create2D(GL_TEXTURE_2D, GL_RGBA8, kBars, kBars); // nearest filtering, and no level but this
    }

    void setLength(int bar, int length)
    {
        for (int y = 0; y < kBars; ++y)
            for (int channel = 0; channel < 4; ++channel)
                _texels[size_t(4) * size_t(y * kBars + bar) + size_t(channel)] = uchar(channel == 3 ? 255
                                                                                       : y < length ? 160 + 5 * bar
                                                                                                    : 40);
        _changed = true;
    }

    bool updateTexture() override
    {
        if (!_changed)
            return false;
        GLint activeUnit = 0; // a streamer leaves OpenGL as it was, this included
        glGetIntegerv(GL_ACTIVE_TEXTURE, &activeUnit);
        {
            const AutoBinder bound(this);
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kBars, kBars, GL_RGBA, GL_UNSIGNED_BYTE, _texels.data());
        }
        glActiveTexture(GLenum(activeUnit));
        _changed = false;
        return true;
    }

private:
    std::vector<uchar> _texels;
    bool _changed = true;
};

static void draw(Guide& guide, ShaderProgram& program, TextureManager& manager, const QList<TextureToken>& tokens)
{
    QList<unsigned> words;
    for (const TextureToken& token : tokens)
        words << unsigned(token.token) << unsigned(token.token >> 32);

    guide.begin(Qt::black);
    const auto quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder boundProgram(&program), boundQuad(quad);
    quad->VAO()->enableShaderProgramArrays(&program);
    program.setUniform("u_Tokens", words, 1);
    manager.bind(tokens);
    manager.bind(&program);
    quad->draw(&program);
    manager.unbind(&program);
    manager.unbind(tokens);
}

static bool build(ShaderProgram& program, TextureManager& manager)
{
    GLSLMacroProcessor processor;
    manager.setup(&processor);
    program.setMacroProcessor(&processor);
    program.addShaderFromFile(GL_VERTEX_SHADER, "passthroughVS.glslc");
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    program.addShaderFromFile(GL_FRAGMENT_SHADER, manager.getShaderFile());
    program.setMacroProcessor(nullptr);
    return program.link();
}

static void stream(Guide& guide, TextureManager& manager)
{
    const QColor colors[] = {QColor(200, 60, 40), QColor(40, 160, 60), QColor(40, 80, 200)};
    ShaderProgram program;
    guide.expect(build(program, manager), "the program links");
    // The manager deletes what has a token: by deleteTexture, or at its end.
    auto* const bars = new BarStreamer;
    auto* const lamp = ColorCycleTextureStreamer::make(colors, 3, 4, 4, 2, nullptr); // a step every second frame
    const QList<TextureToken> tokens{manager.tokenForTexture(bars), manager.tokenForTexture(lamp)};

    int shown = 0; // which colour the lamp is at
    for (int frame = 0; frame < kBars; ++frame)
    {
        bars->setLength(frame, frame + 1);
        lamp->nextFrame();
        shown = (shown + (frame % 2 == 0)) % 3;                                  // the first call is a step already
        guide.expect(manager.updateTextureStreamers(), "something has changed"); // once a frame, before it is drawn
        draw(guide, program, manager, tokens);
        guide.expectColor(guide.pixel(10 * frame + 5, 10 * frame + 5),
                          QColor::fromRgb(160 + 5 * frame, 160 + 5 * frame, 160 + 5 * frame),
                          "the newest bar has its full length");
        guide.expectColor(guide.pixel(240, 80), colors[shown], "the lamp shows its colour");
    }
    guide.expect(!manager.updateTextureStreamers(), "without a word to them nothing changes");

    manager.deleteTexture(bars); // never `delete bars`: the manager would still ask it
    guide.expect(manager.getTextureStreamers().size() == 1, "the lamp is left");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kWidth, kHeight);
    if (!guide.isReady())
        return 1;
    {
        SamplerTextureManager manager;
        TextureManager::setInstance(&manager);
        stream(guide, manager);
        TextureManager::setInstance(nullptr);
    }
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
