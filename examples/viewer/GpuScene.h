// SPDX-License-Identifier: MIT
// A model on the GPU: its meshes as DrawBuffers, and a record for each instance in uniform blocks that shaders index
// by getDrawID(). Instances of one mesh stand side by side, so that they are drawn together.
#pragma once

#include "Model.h"

#include <QSharedPointer>

#include <vector>

namespace Harrow::Vrk
{
class DrawBuffers;
class ShaderProgram;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrkview
{

/// Made, used and destroyed with the same context current.
class GpuScene
{
public:
    /// Records that fit into one uniform block of this driver: the value of OBJECT_CAPACITY in the shaders.
    static int objectCapacity();

    explicit GpuScene(const Model& model);
    ~GpuScene();

    /// Draws every instance. `program` is bound, and knows the block `u_Objects`.
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

    /// The records of one uniform block and what is drawn with them.
    struct Page
    {
        QSharedPointer<Harrow::Vrk::UniformBufferObject> records;
        std::vector<Run> runs;
    };

    void addPage(const Model& model, const Instance* first, int count, const std::vector<DrawBuffersPointer>& meshes);

    std::vector<Page> _pages;
};

} // namespace vrkview
