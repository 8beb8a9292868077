// SPDX-License-Identifier: MIT
// The crowd as a GPUModel: lists of a few instances of one mesh each, which come and go, move, and change what they
// carry.
#pragma once

#include "Model.h"
#include "Records.h"

#include "GPUModel.h"

#include <QMatrix4x4>
#include <QSharedPointer>

#include <cstddef>
#include <vector>

namespace Harrow::Vrk
{
class BufferObject;
class DrawBuffers;
class ShaderProgram;
class TextureManager;
class VertexArrayObject;
} // namespace Harrow::Vrk

namespace vrksoak
{

class Random;

class CrowdModel
{
public:
    /// `model` is one of `makeCrowd`, and is kept, as are `records` and `manager`. By base instance each list is one
    /// instanced draw without commands. `white` is the token that everything begins with.
    CrowdModel(const vrkview::Model& model, const Records& records, Harrow::Vrk::TextureManager& manager,
               bool byBaseInstance, Harrow::Vrk::TextureToken white);
    ~CrowdModel();

    /// As it was at the start.
    void reset();

    /// \name What comes and goes
    ///@{
    /// One more list. Where there are many already all begin anew.
    void addPart(Random& random);
    void hideOrShow(Random& random);
    void replaceRecords(Random& random);
    void replaceGeometry(Random& random);
    /// Some instances of a list carry this token from now on.
    void giveToken(Random& random, Harrow::Vrk::TextureToken token);
    /// Who carries it carries white from now on.
    void forgetToken(Harrow::Vrk::TextureToken token);
    ///@}

    /// \name A frame
    ///@{
    void animate(double seconds);
    void update();
    void cull(const QMatrix4x4& clipFromWorld);
    void draw(Harrow::Vrk::ShaderProgram& program);
    void finish();
    ///@}

private:
    struct MeshOnGpu
    {
        QSharedPointer<Harrow::Vrk::VertexArrayObject> vertexArray;
        QSharedPointer<Harrow::Vrk::BufferObject> indices;
        int indexCount = 0;
    };

    struct Part
    {
        int handle = 0;
        std::size_t mesh = 0;
        std::vector<int> transforms; ///< one for each instance
        QList<Harrow::Vrk::TextureToken> palette;
        bool isHidden = false;
    };

    MeshOnGpu upload(const vrkview::Mesh& mesh) const;
    void fill();
    void addPart(std::size_t mesh, const std::vector<int>& transforms);
    Harrow::Vrk::DrawBuffers* newBuffers(std::size_t mesh, int instances) const;
    void follow(const Part& part);
    void moveFollowers();
    Part& some(Random& random);

    const vrkview::Model& _model;
    const Records& _records;
    Harrow::Vrk::TextureManager& _manager;
    bool _byBaseInstance;
    Harrow::Vrk::TextureToken _white;
    Harrow::Vrk::GPUModel _gpuModel;
    std::vector<MeshOnGpu> _meshes;
    std::vector<Part> _parts;
    std::size_t _partsAtStart = 0;
};

} // namespace vrksoak
