// SPDX-License-Identifier: MIT
// Five balls of metal, from a mirror to dull, and one of plaster, lit by nothing but a picture of a sky.
#include "Guide.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/PrefilteredEnvMap.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureFormat.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/VertexArrayObject.h>

#include <QVariant>

#include <cmath>
#include <memory>

using namespace Harrow::Vrk;

constexpr int kBall = 100; // pixels
constexpr int kBalls = 6;
constexpr int kMapWidth = 128, kMapHeight = 64;

constexpr char kFragmentShader[] = R"(#version 150
#include "VrkUtilities.glslh"
uniform sampler2D u_Specular;   // a level for each roughness
uniform sampler2D u_Diffuse;    // what a white surface scatters that faces this way
uniform sampler2D u_Table;      // red and green: what is mirrored; blue: the level for a roughness
in vec2 vo_TexCoord;
out vec4 o_Color;

vec3 mirrored(vec3 normal, float roughness, vec3 reflectance)
{
    vec3 toEye = vec3(0.0, 0.0, 1.0);
    vec3 table = textureLod(u_Table, vec2(max(dot(normal, toEye), 0.0), roughness), 0.0).rgb;
    vec3 light = textureLod(u_Specular, directionToLatLong(reflect(-toEye, normal)), table.b).rgb;
    return light * (reflectance * table.r + table.g);
}

void main()
{
    float ball = floor(vo_TexCoord.x * 6.0);
    vec2 place = 2.2 * (vec2(fract(vo_TexCoord.x * 6.0), vo_TexCoord.y) - 0.5);
    if (dot(place, place) > 1.0)
        discard;
    vec3 normal = vec3(place, sqrt(1.0 - dot(place, place)));
    vec3 color = ball < 5.0 ? mirrored(normal, ball / 4.0, vec3(0.9, 0.85, 0.8))
                            : 0.8 * textureLod(u_Diffuse, directionToLatLong(normal), 0.0).rgb;
    o_Color = vec4(gammaCorrect(color, 2.2), 1.0);
})";

/// A Radiance picture in memory, as a file would be: a sky with a sun over a brown ground. Each pixel has three
/// mantissas and the exponent that they share: m / 256 * 2^(e - 128).
static std::unique_ptr<Texture> newSky()
{
    QByteArray file = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 64 +X 128\n";
    for (int row = 0; row < kMapHeight; ++row)
        for (int column = 0; column < kMapWidth; ++column)
        {
            const bool isSun = row / 4 == 4 && column / 4 == 27; // 16 pixels of 8,192, each some forty times as bright
            file += isSun ? "\xA0\x90\x70\x86" : row < kMapHeight / 2 ? "\x4D\x66\x80\x81" : "\x80\x5C\x3D\x7F";
        }
    std::unique_ptr<Texture> sky(
        LoadTextureFromMemory(reinterpret_cast<uchar*>(file.data()), size_t(file.size()), TextureFileInfo(), "sky"));
    if (sky)
    {
        const AutoBinder bound(sky.get());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT); // once around
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glGenerateMipmap(GL_TEXTURE_2D); // the filters read from them
    }
    return sky;
}

static void draw(Guide& guide)
{
    const std::unique_ptr<Texture> sky = newSky();
    guide.expect(bool(sky), "the picture is read");
    const ShadingModel metal = SHADING_PHYSICALLY_BASED;
    const auto levels = unsigned(MaxLODLevel(kMapWidth, kMapHeight));
    std::unique_ptr<Texture> specular(
        CreatePrefilteredLatLongEnvMap(sky.get(), kMapWidth, kMapHeight, 64, metal, RGBA16F));
    std::unique_ptr<Texture> diffuse(
        CreatePrefilteredLatLongEnvMap(sky.get(), 32, 16, 1, SHADING_LAMBERTIAN_DIFFUSE, RGBA16F));
    std::unique_ptr<Texture> table(CreatePreintegratedBRDFTable(64, 64, levels - 1, metal, RGBA16F));
    guide.expect(specular && diffuse && table, "the maps are made");

    ShaderProgram program;
    program.addShaderFromFile(GL_VERTEX_SHADER, "passthroughVS.glslc");
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    program.addShaderFromFile(GL_FRAGMENT_SHADER, "VrkUtilities.glslc");
    guide.expect(program.link(), "the program links");

    guide.begin(QColor(26, 28, 33));
    glDisable(GL_DEPTH_TEST); // which the filters leave on
    const auto quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder boundProgram(&program), boundQuad(quad);
    const AutoBinder boundSpecular(specular.get()), boundDiffuse(diffuse.get()), boundTable(table.get());
    program.setUniform("u_Specular", QVariant(specular->unit()));
    program.setUniform("u_Diffuse", QVariant(diffuse->unit()));
    program.setUniform("u_Table", QVariant(table->unit()));
    quad->VAO()->enableShaderProgramArrays(&program);
    quad->draw(&program);

    const auto shown = [](float r, float g, float b)
    {
        const auto encoded = [](float value) { return std::pow(value, 1.0f / 2.2f); };
        return QColor::fromRgbF(encoded(r), encoded(g), encoded(b));
    };
    const int middle = kBall / 2, plaster = 5 * kBall + middle;
    guide.expectColor(guide.pixel(middle, 80), shown(0.6f * 0.9f, 0.8f * 0.85f, 1.0f * 0.8f), "a mirror shows the sky");
    guide.expectColor(guide.pixel(middle, 30), shown(0.25f * 0.9f, 0.18f * 0.85f, 0.12f * 0.8f), "and the ground");
    guide.expectColor(guide.pixel(37, 66), Qt::white, "and the sun");
    guide.expectColor(guide.pixel(plaster, 6), shown(0.8f * 0.25f, 0.8f * 0.18f, 0.8f * 0.12f),
                      "plaster that faces straight down scatters what comes from the ground, and nothing else");
    guide.expectColor(guide.pixel(plaster + 41, middle), shown(0.8f * 0.425f, 0.8f * 0.49f, 0.8f * 0.56f),
                      "where it faces to the right, away from the sun, half comes from either");
    const QColor glint = guide.pixel(237, 66), dull = guide.pixel(437, 66);
    guide.expect(glint.red() > dull.red() + 20, "the rougher the metal, the softer the sun");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kBalls * kBall, kBall);
    if (!guide.isReady())
        return 1;
    draw(guide);
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
