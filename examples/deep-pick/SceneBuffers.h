// SPDX-License-Identifier: MIT
// The scene on the GPU, once for drawing and once more as the textures, the block and the records in which
// "VisibilityBuffer.glslc" looks a fragment's triangle up.
#pragma once

#include "PickScene.h"

#include <VrkGL/GLFunctions.h>

#include <QSharedPointer>
#include <QString>

#include <array>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class BufferObject;
class DrawBuffers;
class InstanceDataCollection;
class InstanceDataPlan;
class ShaderProgram;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace deeppick
{

/// Wants its context current, from `create` to the destructor.
class SceneBuffers
{
public:
    SceneBuffers();
    ~SceneBuffers();
    SceneBuffers(const SceneBuffers&) = delete;
    SceneBuffers& operator=(const SceneBuffers&) = delete;

    /// Registers the plan "InstanceInfo" too. On false `error` says in one line why the driver can't hold the scene.
    bool create(const PickScene& scene, QString& error);

    /// The unit with the accessors of the plan, for the stage that uses them.
    QString recordUnit() const;

    /// Draws all, with `program` bound, and waits for each draw to tell how far it is.
    void draw(Harrow::Vrk::ShaderProgram& program);

    /// Bring everything that queries read to `program`, which is bound, and take it away again. Texture units from
    /// `firstUnit` on get what they look up.
    void bindForQueries(Harrow::Vrk::ShaderProgram& program, int firstUnit);
    void unbindFromQueries(Harrow::Vrk::ShaderProgram& program, int firstUnit);

private:
    struct Lookup
    {
        const char* sampler = nullptr;
        QSharedPointer<Harrow::Vrk::BufferObject> buffer;
        GLuint texture = 0;
    };

    void addLookup(const char* sampler, GLenum format, const QSharedPointer<Harrow::Vrk::BufferObject>& buffer);
    void createRecords(const PickScene& scene);
    void createDraws(const PickScene& scene, const QSharedPointer<Harrow::Vrk::BufferObject>& indices);

    Harrow::Vrk::InstanceDataPlan* _plan = nullptr; // the registry owns it
    std::unique_ptr<Harrow::Vrk::InstanceDataCollection> _records;
    std::unique_ptr<Harrow::Vrk::DrawBuffers> _draws;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _commands;
    std::vector<Lookup> _lookups;
    int _drawCount = 0;
};

} // namespace deeppick
