// SPDX-License-Identifier: MIT
// A model on the GPU, as a GPUModel: a drawable for each mesh (several where a mesh has more instances than records fit
// into one list), transforms from the model's node tree, boxes, cameras and lights.
#pragma once

#include "Model.h"
#include "RenderSettings.h"
#include "ScenePlans.h"

#include <VrkGL/GPUModel.h>

#include <QSharedPointer>

#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class BufferObject;
class DrawBuffers;
class ShaderProgram;
class TextureManager;
class VertexArrayObject;
} // namespace Harrow::Vrk

namespace vrkview
{

class ModelTextures;

/// Made, used and destroyed with the same context current.
class Scene
{
public:
    /// How many records of one list would be of use to this model.
    static std::size_t wantedRecords(const Model& model);

    /// `textures` holds tokens of `manager`, which must outlive the scene, as must `plans`. `model` need not. By base
    /// instance each mesh is one instanced draw without commands.
    Scene(const Model& model, const ModelTextures& textures, Harrow::Vrk::TextureManager& manager,
          const ScenePlans& plans, bool byBaseInstance);
    ~Scene();

    /// The scene's space is the model's, brought to a size at which nothing is too small to be told from nothing.
    QMatrix4x4 worldFromScene() const;

    /// Moves the crowd to where it is at this time; does nothing for another model.
    void animate(double seconds);
    bool hasMotion() const
    {
        return !_motions.empty();
    }

    /// \name The phases of a frame, in this order
    ///@{
    /// Matrices of what has moved.
    void update();
    /// Returns the number of commands that are not drawn.
    int cull(const QMatrix4x4& clipFromScene);
    void sort();
    /// Opaque surfaces, then transparent ones by distance. `program` is bound.
    void draw(Harrow::Vrk::ShaderProgram& program, const QMatrix4x4& viewFromScene);
    /// Opaque surfaces alone. `mirrored`: the projection turns left and right around, and so the sides of triangles.
    void drawOpaque(Harrow::Vrk::ShaderProgram& program, bool mirrored);
    void finish();
    ///@}

    int commandCount() const
    {
        return _commandCount;
    }
    const Harrow::Vrk::GPUModel& gpuModel() const
    {
        return _gpuModel;
    }

private:
    /// What all drawables of one mesh share.
    struct MeshOnGpu
    {
        QSharedPointer<Harrow::Vrk::VertexArrayObject> vertexArray;
        QSharedPointer<Harrow::Vrk::BufferObject> indices;
        int indexCount = 0;
        float scale = 1.0f; ///< model's coordinates are this many times those of the buffer
    };

    /// A record that follows a transform though it has no command.
    struct Follower
    {
        int drawable;
        int instance;
        int transform;
    };

    MeshOnGpu upload(const Mesh& mesh) const;
    void addNodes(const Model& model);
    int transformOf(const Instance& instance, const MeshOnGpu& mesh);
    void addDrawables(const Model& model, const ModelTextures& textures, const ScenePlans& plans);
    void addDrawables(const Model& model, const std::vector<const Instance*>& instances, const MeshOnGpu& onGpu,
                      const ModelTextures& textures, quint64 flags, const ScenePlans& plans);
    void addDrawable(const Model& model, const std::vector<const Instance*>& instances, const MeshOnGpu& onGpu,
                     quint64 flags, Harrow::Vrk::InstanceDataCollection* materials,
                     Harrow::Vrk::InstanceDataCollection* objects);
    void drawPass(Harrow::Vrk::ShaderProgram& program, quint64 pass, const QMatrix4x4& viewFromScene, bool mirrored);
    std::unique_ptr<Harrow::Vrk::DrawBuffers> newDrawBuffers(const MeshOnGpu& mesh, int instances) const;
    void addCameras(const Model& model);
    void addLights(const Model& model);
    void moveFollowers();

    Harrow::Vrk::GPUModel _gpuModel;
    Harrow::Vrk::TextureManager& _manager;
    bool _byBaseInstance;
    bool _hasTransparency = false;
    int _commandCount = 0;
    float _sceneScale = 1.0f;
    int _firstNode = 0; // transform of the model's first node; the others follow
    std::vector<Follower> _followers;
    std::vector<Motion> _motions;
};

} // namespace vrkview
