// SPDX-License-Identifier: MIT
// A model on the GPU: its meshes as DrawBuffers, and a record for each instance in uniform blocks that shaders index
// by getDrawID(). Instances of one mesh stand side by side, so that they are drawn together, and meshes with the same
// picture stand side by side, so that few pictures are wanted at a time.
#pragma once

#include "Model.h"

#include <VrkGL/TextureToken.h>

#include <QList>
#include <QSharedPointer>

#include <vector>

namespace Harrow::Vrk
{
class DrawBuffers;
class ShaderProgram;
class TextureManager;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrkview
{

class ModelTextures;

/// Made, used and destroyed with the same context current.
class GpuScene
{
public:
    /// Records that fit into one uniform block of this driver: the value of OBJECT_CAPACITY in the shaders.
    static int objectCapacity();

    /// `textures` holds the tokens of `manager`, which must outlive the scene. `model` need not.
    GpuScene(const Model& model, const ModelTextures& textures, Harrow::Vrk::TextureManager& manager);
    ~GpuScene();

    /// Draws every instance. `program` is bound, and knows the block `u_Objects` and the manager's textures.
    void draw(Harrow::Vrk::ShaderProgram& program);

private:
    using DrawBuffersPointer = QSharedPointer<Harrow::Vrk::DrawBuffers>;

    /// Instances of one mesh whose records follow each other.
    struct Run
    {
        DrawBuffersPointer buffers;
        int first = 0;
        int count = 0;
    };

    /// Runs that want no more pictures than the texture manager reaches in one draw.
    struct Batch
    {
        QList<Harrow::Vrk::TextureToken> tokens;
        std::vector<Run> runs;
    };

    /// The records of one uniform block and what is drawn with them.
    struct Page
    {
        QSharedPointer<Harrow::Vrk::UniformBufferObject> records;
        std::vector<Batch> batches;
    };

    /// An instance that is drawn, and the picture of its mesh.
    struct Drawn
    {
        const Instance* instance = nullptr;
        Harrow::Vrk::TextureToken token;
    };

    void addPage(const Model& model, const Drawn* first, int count, const std::vector<DrawBuffersPointer>& meshes);
    Batch& batchFor(Page& page, const Harrow::Vrk::TextureToken& token) const;
    static void drawRuns(const Batch& batch, Harrow::Vrk::ShaderProgram& program, Harrow::Vrk::DrawBuffers*& bound);

    Harrow::Vrk::TextureManager& _manager;
    std::vector<Page> _pages;
};

} // namespace vrkview
