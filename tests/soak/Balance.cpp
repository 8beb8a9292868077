// SPDX-License-Identifier: MIT
#include "Balance.h"

#include "GLFunctions.h"

#include "BufferObject.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "Texture.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"

#include <QStringList>

#include <iterator>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

struct Counter
{
    int Balance::*member;
    const char* name;
};

constexpr Counter kCounters[] = {
    {&Balance::textures, "Texture"},
    {&Balance::buffers, "BufferObject"},
    {&Balance::managedBuffers, "BufferObject managed"},
    {&Balance::uniformBuffers, "UniformBufferObject"},
    {&Balance::vertexArrays, "VertexArrayObject"},
    {&Balance::drawBuffers, "DrawBuffers"},
    {&Balance::framebuffers, "FramebufferObject"},
    {&Balance::attachments, "attachments"},
    {&Balance::takenUnits, "texture units taken"},
};

int takenUnits()
{
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
    int taken = 0;
    for (GLint unit = 0; unit < units; ++unit)
        taken += Texture::isTextureUnitFree(unsigned(unit)) ? 0 : 1;
    return taken;
}

/// A line for every number that is not zero.
QString listed(const Balance& balance)
{
    QStringList parts;
    for (const Counter& counter : kCounters)
        if (const int value = balance.*counter.member)
            parts.append(QStringLiteral("%1 %2").arg(QLatin1String(counter.name)).arg(value));
    for (std::size_t kind = 0; kind < balance.names.size(); ++kind)
        if (const int value = balance.names[kind])
            parts.append(QStringLiteral("%1 names %2").arg(QLatin1String(kNameKinds[kind])).arg(value));
    return parts.isEmpty() ? QStringLiteral("nothing") : parts.join(QStringLiteral(", "));
}

} // namespace

Balance Balance::now()
{
    Balance balance;
    balance.textures = Texture::NumAlive();
    balance.buffers = BufferObject::NumAlive();
    balance.managedBuffers = BufferObject::NumAliveManaged();
    balance.uniformBuffers = UniformBufferObject::NumAlive();
    balance.vertexArrays = VertexArrayObject::NumAlive();
    balance.drawBuffers = DrawBuffers::NumAlive();
    balance.framebuffers = FramebufferObject::NumAlive();
    balance.attachments = FramebufferObject::NumActiveFBOTextures();
    balance.takenUnits = vrksoak::takenUnits();
    balance.names = LiveNames::counts();
    return balance;
}

QString Balance::text() const
{
    return listed(*this);
}

QString Balance::differenceTo(const Balance& before) const
{
    Balance difference = *this;
    for (const Counter& counter : kCounters)
        difference.*counter.member -= before.*counter.member;
    for (std::size_t kind = 0; kind < names.size(); ++kind)
        difference.names[kind] -= before.names[kind];
    return listed(difference);
}

} // namespace vrksoak
