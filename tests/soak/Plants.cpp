// SPDX-License-Identifier: MIT
#include "Plants.h"

#include "GLFunctions.h"
#include "Texture.h"
#include "TextureManager.h"

#include <QColor>

#include <cstdlib>
#include <cstring>
#include <iterator>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr const char* kNames[] = {"none", "texture", "buffer", "token", "unit", "memory", "error", "message"};
static_assert(std::size(kNames) == std::size_t(Plant::Count), "one name for each plant");

constexpr std::size_t kLostBytes = 128 * 1024;

void* volatile lost = nullptr; // so that the compiler keeps what nobody reads

Texture* newBareTexture()
{
    auto* const texture = new Texture(nullptr);
    texture->create2D(GL_TEXTURE_2D, GL_RGBA8, 4, 4);
    return texture;
}

void loseMemory()
{
    lost = std::malloc(kLostBytes);
    std::memset(lost, 1, kLostBytes);
}

void loseBuffer()
{
    GLuint name = 0;
    glGenBuffers(1, &name);
}

/// A new one each time.
void loseToken(TextureManager& manager)
{
    static int number = 0;
    ++number;
    manager.textureForToken(manager.tokenForColor(QColor(number % 256, number / 256 % 256, 1)));
}

/// Its name is gone, its unit is not.
void loseUnit()
{
    Texture* const texture = newBareTexture();
    texture->bind();
    delete texture;
}

} // namespace

QStringList plantNames()
{
    QStringList names;
    for (const char* const name : kNames)
        names.append(QLatin1String(name));
    return names;
}

std::optional<Plant> plantOf(const QString& name)
{
    const qsizetype index = plantNames().indexOf(name);
    return index < 0 ? std::nullopt : std::optional(Plant(index));
}

void makeFault(Plant plant, TextureManager& manager)
{
    switch (plant)
    {
    case Plant::Texture:
        lost = newBareTexture();
        break;
    case Plant::Buffer:
        loseBuffer();
        break;
    case Plant::Token:
        loseToken(manager);
        break;
    case Plant::Unit:
        loseUnit();
        break;
    case Plant::Memory:
        loseMemory();
        break;
    case Plant::Error:
        glEnable(GL_INVALID_ENUM);
        break;
    case Plant::Message:
        Texture(0u, nullptr).isBound();
        break;
    case Plant::None:
    case Plant::Count:
        break;
    }
}

} // namespace vrksoak
