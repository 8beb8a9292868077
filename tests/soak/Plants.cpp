// SPDX-License-Identifier: MIT
#include "Plants.h"

#include "GLFunctions.h"
#include "Texture.h"
#include "TextureManager.h"

#include <QColor>

#include <cstdlib>
#include <cstring>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

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
        break;
    }
}

} // namespace vrksoak
