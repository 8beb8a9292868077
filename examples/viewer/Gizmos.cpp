// SPDX-License-Identifier: MIT
#include "Gizmos.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayBuilder.h>
#include <VrkGL/VertexArrayObject.h>

#include <cmath>
#include <numbers>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kGridLines = 21; // each way, over one and a half times the scene
constexpr int kCircleSteps = 32;
constexpr unsigned kReserve = 1024;

const QVector3D kGridColor(0.34f, 0.36f, 0.40f);

/// Lines with a colour at each end, written one after the other.
class LineWriter
{
public:
    LineWriter()
    {
        _builder.setVertexSpec(3, kReserve);
        _builder.setColorSpec(3, kReserve);
    }

    void line(const QVector3D& from, const QVector3D& to, const QVector3D& color)
    {
        for (const QVector3D& end : {from, to})
        {
            _builder.glColor3f(color.x(), color.y(), color.z());
            _builder.glVertex3f(end.x(), end.y(), end.z());
        }
    }

    void circle(const QVector3D& center, const QVector3D& x, const QVector3D& y, const QVector3D& color)
    {
        const auto at = [&](int step)
        {
            const float angle = 2.0f * std::numbers::pi_v<float> * float(step) / float(kCircleSteps);
            return center + std::cos(angle) * x + std::sin(angle) * y;
        };
        for (int step = 0; step < kCircleSteps; ++step)
            line(at(step), at(step + 1), color);
    }

    const VertexArrayBuilder& lines() const
    {
        return _builder;
    }

private:
    VertexArrayBuilder _builder;
};

void writeGrid(LineWriter& writer, const Bounds& bounds)
{
    const float reach = 1.1f * bounds.radius();
    const QVector3D middle(bounds.center().x(), bounds.minimum.y(), bounds.center().z());
    for (int i = 0; i < kGridLines; ++i)
    {
        const float place = reach * (2.0f * float(i) / float(kGridLines - 1) - 1.0f);
        writer.line(middle + QVector3D(place, 0, -reach), middle + QVector3D(place, 0, reach), kGridColor);
        writer.line(middle + QVector3D(-reach, 0, place), middle + QVector3D(reach, 0, place), kGridColor);
    }
}

/// x red, y green, z blue.
void writeAxes(LineWriter& writer, const Bounds& bounds)
{
    const float reach = 0.6f * bounds.radius();
    const QVector3D axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (const QVector3D& axis : axes)
        writer.line(QVector3D(), reach * axis, 0.1f * QVector3D(1, 1, 1) + 0.8f * axis);
}

/// A sun is an arrow with a disc, a spot a cone, a point three circles.
void writeLight(LineWriter& writer, const SceneLight& light, const Bounds& bounds)
{
    const float size = 0.08f * bounds.radius();
    const QVector3D beside = std::abs(light.along.y()) < 0.9f ? QVector3D(0, 1, 0) : QVector3D(1, 0, 0);
    const QVector3D x = QVector3D::crossProduct(light.along, beside).normalized();
    const QVector3D y = QVector3D::crossProduct(light.along, x);
    const QVector3D color = light.color / std::max({light.color.x(), light.color.y(), light.color.z(), 1.0e-6f});
    if (light.kind == SceneLight::Kind::Point)
    {
        writer.circle(light.place, size * QVector3D(1, 0, 0), size * QVector3D(0, 1, 0), color);
        writer.circle(light.place, size * QVector3D(0, 1, 0), size * QVector3D(0, 0, 1), color);
        writer.circle(light.place, size * QVector3D(0, 0, 1), size * QVector3D(1, 0, 0), color);
        return;
    }
    const bool isSun = light.kind == SceneLight::Kind::Sun;
    const QVector3D place = isSun ? light.place - bounds.radius() * light.along : light.place;
    const float depth = 2.5f * size;
    const float radius = isSun ? size : depth * std::tan(std::min(light.cutoff, 1.2f));
    const QVector3D base = place + (isSun ? 0.0f : depth) * light.along;
    writer.circle(base, radius * x, radius * y, color);
    if (isSun)
        writer.line(place, place + depth * light.along, color);
    else
        for (const QVector3D& edge : {radius * x, -radius * x, radius * y, -radius * y})
            writer.line(place, base + edge, color);
}

} // namespace

Gizmos::Gizmos() = default;

Gizmos::~Gizmos() = default;

bool Gizmos::create(const Bounds& bounds, const std::vector<SceneLight>& lights, GLSLMacroProcessor& processor,
                    QString& error)
{
    LineWriter writer;
    writeGrid(writer, bounds);
    writeAxes(writer, bounds);
    for (const SceneLight& light : lights)
        writeLight(writer, light, bounds);

    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    const QSharedPointer<VertexArrayObject> vertexArray = context->newVAO();
    const auto upload = [&](const char* name, const QList<float>& values)
    {
        const QSharedPointer<BufferObject> buffer = context->newBuffer();
        buffer->setTarget(GL_ARRAY_BUFFER);
        return vertexArray->upload(QLatin1String(name), buffer, values, 3, GL_STATIC_DRAW);
    };
    upload("va_Vertex", writer.lines().getVertexData());
    upload("va_Color", writer.lines().getColorData());
    _lines = std::make_unique<DrawBuffers>(nullptr);
    _lines->setVAO(vertexArray);
    _lines->setPrimitiveType(GL_LINES);
    _lines->setVertexCount(writer.lines().getVertexCount());

    _program = std::make_unique<ShaderProgram>(nullptr);
    _program->setMacroProcessor(&processor);
    _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/gizmo.vert"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/gizmo.frag"));
    if (_program->link())
        return true;
    error = QStringLiteral("the driver rejects the gizmo shaders");
    return false;
}

void Gizmos::draw(UniformBufferObject& frame)
{
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    const AutoBinder programBound(_program.get());
    frame.bind(_program.get());
    {
        const AutoBinder linesBound(_lines.get());
        _lines->VAO()->enableShaderProgramArrays(_program.get());
        _lines->draw(_program.get());
    }
    frame.unbind(_program.get());
}

} // namespace vrkview
