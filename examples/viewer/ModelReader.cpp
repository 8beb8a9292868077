// SPDX-License-Identifier: MIT
#include "ModelReader.h"

#include "Gltf1Nodes.h"
#include "GltfEmission.h"
#include "MemoryLimit.h"
#include "ModelImages.h"
#include "ModelMaterials.h"
#include "Terminal.h"

#include <QFileInfo>

#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/MemoryIOWrapper.h>
#include <assimp/ProgressHandler.hpp>
#include <assimp/camera.h>
#include <assimp/config.h>
#include <assimp/light.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <assimp/version.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrkview
{

namespace
{

constexpr unsigned int kSteps =
    aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices;

// Generated normals are shared across edges flatter than this, so that a cube keeps its corners.
constexpr float kSmoothingDegrees = 50.0f;

// What reading may take: enough for any model with all its data in other files, and room for text to unfold.
constexpr quint64 kMemoryBase = quint64(4) << 30;
constexpr quint64 kMemoryPerByte = 64;

class ReadProgress : public Assimp::ProgressHandler
{
public:
    bool Update(float fraction) override
    {
        _line.show(QStringLiteral("reading the model"), fraction);
        return true; // false would cancel
    }

private:
    ProgressLine _line;
};

// Shows the importer other bytes in place of those of one file.
class RewrittenFile : public Assimp::DefaultIOSystem
{
public:
    RewrittenFile(const QString& path, const QByteArray& contents) : _path(path), _contents(contents) {}

    Assimp::IOStream* Open(const char* file, const char* mode) override
    {
        if (QFileInfo(QString::fromUtf8(file)) == QFileInfo(_path))
            return new Assimp::MemoryIOStream(reinterpret_cast<const uint8_t*>(_contents.constData()),
                                              std::size_t(_contents.size()));
        return DefaultIOSystem::Open(file, mode);
    }

private:
    const QString _path;
    const QByteArray _contents;
};

// Why a path cannot be a model file at all, or an empty string.
QString pathFault(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("there is no such file");
    if (info.isDir())
        return QStringLiteral("it is a directory");
    if (!info.isFile())
        return QStringLiteral("it is not a regular file");
    if (!info.isReadable())
        return QStringLiteral("it may not be read");
    return {};
}

// What in a file would lead the importer's own steps out of their arrays, or an empty string. The importer's validation
// would find it too, but it also turns down whole files for one part that is merely empty.
QString meshFault(const aiMesh& mesh)
{
    if (mesh.mNumVertices > 0 && !mesh.mVertices)
        return QStringLiteral("a mesh has no positions");
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
    {
        const aiFace& face = mesh.mFaces[i];
        for (unsigned int corner = 0; corner < face.mNumIndices; ++corner)
            if (face.mIndices[corner] >= mesh.mNumVertices)
                return QStringLiteral("a face names a vertex that is not there");
    }
    for (unsigned int i = 0; i < mesh.mNumBones; ++i)
        for (unsigned int weight = 0; weight < mesh.mBones[i]->mNumWeights; ++weight)
            if (mesh.mBones[i]->mWeights[weight].mVertexId >= mesh.mNumVertices)
                return QStringLiteral("a bone names a vertex that is not there");
    for (unsigned int i = 0; i < mesh.mNumAnimMeshes; ++i)
        if (mesh.mAnimMeshes[i]->mNumVertices != mesh.mNumVertices)
            return QStringLiteral("a morph target has another number of vertices than its mesh");
    return {};
}

QString sceneFault(const aiScene& scene)
{
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        QString fault = meshFault(*scene.mMeshes[i]);
        if (!fault.isEmpty())
            return fault;
    }
    std::vector<const aiNode*> open = {scene.mRootNode};
    while (!open.empty())
    {
        const aiNode* node = open.back();
        open.pop_back();
        if (!node)
            return QStringLiteral("its node tree is broken");
        for (unsigned int i = 0; i < node->mNumMeshes; ++i)
            if (node->mMeshes[i] >= scene.mNumMeshes)
                return QStringLiteral("a node names a mesh that is not there");
        open.insert(open.end(), node->mChildren, node->mChildren + node->mNumChildren);
    }
    return {};
}

// The factor, a power of two and so without rounding, that brings the scene's largest coordinate to about 65536. The
// importer's steps compare coordinates with fixed tolerances and square them in single precision: there they neither
// join what is apart nor overflow, whatever unit the file was made in.
float workingScale(const aiScene& scene)
{
    float largest = 0.0f;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        for (unsigned int vertex = 0; vertex < scene.mMeshes[i]->mNumVertices; ++vertex)
            for (unsigned int axis = 0; axis < 3; ++axis)
                largest = std::max(largest, std::abs(scene.mMeshes[i]->mVertices[vertex][axis]));
    if (!(largest > std::numeric_limits<float>::min()) || !std::isfinite(largest))
        return 1.0f;
    return std::ldexp(1.0f, std::clamp(16 - std::ilogb(largest), -100, 100));
}

void scaleVertices(const aiScene& scene, float factor)
{
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        for (unsigned int vertex = 0; vertex < scene.mMeshes[i]->mNumVertices; ++vertex)
            scene.mMeshes[i]->mVertices[vertex] *= factor;
}

QString importFault(const Assimp::Importer& importer)
{
    QString text = QString::fromUtf8(importer.GetErrorString()).simplified();
    if (text.isEmpty() || text.startsWith(QLatin1String("No suitable reader")))
        return QStringLiteral("it is not a model of a known kind");
    if (text.contains(QLatin1String("bad_alloc")))
        return QStringLiteral("it asks for more memory than a file of its size should");
    return text;
}

QMatrix4x4 toMatrix(const aiMatrix4x4& m)
{
    return {m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4};
}

QVector3D toVector(const aiVector3D& v)
{
    return {v.x, v.y, v.z};
}

QVector3D unitOrZero(const QVector3D& v)
{
    const float length = v.length();
    return std::isfinite(length) && length > 1.0e-6f ? v / length : QVector3D();
}

std::vector<QVector2D> texCoordsOf(const aiMesh& source, const TexCoordSource& wanted)
{
    const aiVector3D* const given = source.mTextureCoords[source.HasTextureCoords(wanted.set) ? wanted.set : 0];
    if (!given)
        return {};
    const QMatrix3x3& matrix = wanted.fromFile;
    const bool isPlain = matrix.isIdentity();
    std::vector<QVector2D> result;
    result.reserve(source.mNumVertices);
    for (unsigned int i = 0; i < source.mNumVertices; ++i)
    {
        const float x = given[i].x;
        const float y = given[i].y;
        if (isPlain)
            result.emplace_back(x, y);
        else
            result.emplace_back(matrix(0, 0) * x + matrix(0, 1) * y + matrix(0, 2),
                                matrix(1, 0) * x + matrix(1, 1) * y + matrix(1, 2));
    }
    return result;
}

// `texCoords` are those that the mesh's material wants.
Mesh toMesh(const aiMesh& source, const std::vector<TexCoordSource>& texCoords)
{
    Mesh mesh;
    mesh.name = QString::fromUtf8(source.mName.C_Str());
    mesh.material = source.mMaterialIndex;
    mesh.positions.reserve(source.mNumVertices);
    mesh.normals.reserve(source.mNumVertices);
    mesh.indices.reserve(std::size_t(source.mNumFaces) * 3);

    for (unsigned int i = 0; i < source.mNumVertices; ++i)
    {
        mesh.positions.push_back(toVector(source.mVertices[i]));
        mesh.normals.push_back(source.HasNormals() ? unitOrZero(toVector(source.mNormals[i])) : QVector3D());
    }
    mesh.texCoords = texCoordsOf(source, texCoords.empty() ? TexCoordSource() : texCoords[0]);
    if (texCoords.size() > 1)
        mesh.moreTexCoords = texCoordsOf(source, texCoords[1]);
    for (unsigned int i = 0; i < source.mNumFaces; ++i)
        if (source.mFaces[i].mNumIndices == 3)
            mesh.indices.insert(mesh.indices.end(), source.mFaces[i].mIndices, source.mFaces[i].mIndices + 3);
    return mesh;
}

// glTF gives the angle from top to bottom, and Assimp up to 5.2 multiplies the angle and not its tangent to get that
// across.
float angleAcross(float told, float aspect)
{
    if (aiGetVersionMajor() > 5 || (aiGetVersionMajor() == 5 && aiGetVersionMinor() > 2))
        return told;
    return 2.0f * std::atan(aspect * std::tan(0.5f * told / aspect));
}

bool isUsable(const FileLight& light)
{
    const float darkest = std::min({light.color.x(), light.color.y(), light.color.z()});
    return darkest >= 0.0f && std::isfinite(QVector3D::dotProduct(light.color, {1.0f, 1.0f, 1.0f})) &&
           light.innerCone >= 0.0f && light.outerCone >= light.innerCone;
}

// Turns the importer's scene into a Model: each mesh that a node uses once, each use an instance.
class SceneConverter
{
public:
    /// `nodeMatrices` holds, by name, matrices to the parent that count in place of the scene's own.
    SceneConverter(const aiScene& scene, const QString& path, const QHash<QString, QMatrix4x4>& nodeMatrices)
        : _scene(scene),
          _isGltf(isGltf(path)),
          _nodeMatrices(nodeMatrices),
          _meshOf(scene.mNumMeshes, kNotYet),
          _images(scene, path)
    {
    }

    Model convert(const QMatrix4x4& worldFromFile)
    {
        for (unsigned int i = 0; i < _scene.mNumMaterials; ++i)
            addMaterial(*_scene.mMaterials[i]);
        if (_model.materials.empty())
            _model.materials.emplace_back();

        _model.nodes.push_back({QString(), -1, worldFromFile});
        // A stack of our own: a file can nest nodes deeper than the call stack goes.
        std::vector<Visit> open;
        if (_scene.mRootNode)
            open.push_back({_scene.mRootNode, worldFromFile, 0});
        while (!open.empty())
        {
            const Visit visit = open.back();
            open.pop_back();
            const int node = addNode(*visit.node, visit.parent);
            const QMatrix4x4 worldFromNode = visit.worldFromParent * _model.nodes.back().parentFromNode;
            for (unsigned int i = 0; i < visit.node->mNumMeshes; ++i)
                place(visit.node->mMeshes[i], worldFromNode, node);
            for (unsigned int i = visit.node->mNumChildren; i-- > 0;) // so that the first child comes next
                open.push_back({visit.node->mChildren[i], worldFromNode, node});
        }
        addCameras();
        addLights();
        _model.images = _images.take();
        _model.measure();
        return std::move(_model);
    }

    QString note() const
    {
        QStringList notes;
        if (_lines > 0 || _points > 0)
            notes << QStringLiteral("only triangles are drawn; left out: %1 lines, %2 points").arg(_lines).arg(_points);
        if (_misplaced > 0)
            notes << QStringLiteral("a material's pictures can lie in two ways; wrong places: %1 pictures")
                         .arg(_misplaced);
        if (_oddLights > 0)
            notes << QStringLiteral("lights without usable numbers: %1").arg(_oddLights);
        return notes.join(QStringLiteral("; "));
    }

private:
    struct Visit
    {
        const aiNode* node;
        QMatrix4x4 worldFromParent;
        int parent;
    };

    static constexpr std::size_t kNotYet = ~std::size_t(0);

    void addMaterial(const aiMaterial& source)
    {
        ReadMaterial read = readMaterial(source, _images);
        _model.materials.push_back(std::move(read.material));
        _texCoords.push_back(std::move(read.texCoords));
        _misplaced += read.misplaced;
    }

    QMatrix4x4 parentFromNode(const aiNode& node) const
    {
        const QMatrix4x4 read = toMatrix(node.mTransformation);
        return _nodeMatrices.isEmpty() ? read : _nodeMatrices.value(QString::fromUtf8(node.mName.C_Str()), read);
    }

    // Returns the node's number.
    int addNode(const aiNode& source, int parent)
    {
        const auto index = int(_model.nodes.size());
        const QString name = QString::fromUtf8(source.mName.C_Str());
        if (!name.isEmpty())
            _nodeOf.insert(name, index);
        _model.nodes.push_back({name, parent, parentFromNode(source)});
        return index;
    }

    // A node for something that looks along `direction` from `position`, below the node of its name.
    int addLookingNode(const aiString& name, const aiVector3D& position, const aiVector3D& direction,
                       const aiVector3D& up)
    {
        const int parent = _nodeOf.value(QString::fromUtf8(name.C_Str()), 0);
        QMatrix4x4 nodeFromEye;
        QVector3D from = toVector(position);
        // The importer of glTF says the place of a camera's node a second time.
        if (from == _model.nodes[std::size_t(parent)].parentFromNode.column(3).toVector3D())
            from = QVector3D();
        const QVector3D along = direction == aiVector3D() ? QVector3D(0, 0, -1) : toVector(direction);
        QVector3D upwards = toVector(up);
        if (QVector3D::crossProduct(along, upwards).isNull())
            upwards = std::abs(along.y()) > std::abs(along.x()) ? QVector3D(1, 0, 0) : QVector3D(0, 1, 0);
        nodeFromEye.lookAt(from, from + along, upwards);
        _model.nodes.push_back({QString(), parent, nodeFromEye.inverted()});
        return int(_model.nodes.size()) - 1;
    }

    void addCameras()
    {
        for (unsigned int i = 0; i < _scene.mNumCameras; ++i)
        {
            const aiCamera& source = *_scene.mCameras[i];
            FileCamera camera;
            camera.name = QString::fromUtf8(source.mName.C_Str());
            camera.node = addLookingNode(source.mName, source.mPosition, source.mLookAt, source.mUp);
            if (source.mAspect > 0.01f && source.mAspect < 100.0f)
                camera.aspect = source.mAspect;
            else if (_isGltf)
                camera.aspect = 1.0f; // the importer's angle is then that of a square film
            const float angle = _isGltf ? angleAcross(source.mHorizontalFOV, camera.aspect) : source.mHorizontalFOV;
            if (angle > 0.01f && angle < 3.1f)
                camera.horizontalFieldOfView = angle;
            if (source.mClipPlaneNear > 0.0f && source.mClipPlaneFar > source.mClipPlaneNear)
            {
                camera.nearClip = source.mClipPlaneNear;
                camera.farClip = source.mClipPlaneFar;
            }
            _model.cameras.push_back(camera);
        }
    }

    void addLights()
    {
        for (unsigned int i = 0; i < _scene.mNumLights; ++i)
        {
            const aiLight& source = *_scene.mLights[i];
            FileLight light;
            light.name = QString::fromUtf8(source.mName.C_Str());
            light.node = addLookingNode(source.mName, source.mPosition, source.mDirection, source.mUp);
            light.color = {source.mColorDiffuse.r, source.mColorDiffuse.g, source.mColorDiffuse.b};
            if (source.mType == aiLightSource_DIRECTIONAL)
                light.kind = FileLight::Kind::Directional;
            else if (source.mType == aiLightSource_POINT)
                light.kind = FileLight::Kind::Point;
            else if (source.mType == aiLightSource_SPOT)
                light.kind = FileLight::Kind::Spot;
            // The importer of glTF passes on that format's halves, where others give the whole angle.
            const float part = _isGltf ? 1.0f : 0.5f;
            light.innerCone = part * source.mAngleInnerCone;
            light.outerCone = part * source.mAngleOuterCone;
            if (!isUsable(light))
            {
                light.kind = FileLight::Kind::Other;
                ++_oddLights;
            }
            _model.lights.push_back(light);
        }
    }

    void place(unsigned int sourceIndex, const QMatrix4x4& worldFromNode, int node)
    {
        const aiMesh& source = *_scene.mMeshes[sourceIndex];
        if (!(source.mPrimitiveTypes & aiPrimitiveType_TRIANGLE))
        {
            ((source.mPrimitiveTypes & aiPrimitiveType_LINE) ? _lines : _points) += source.mNumFaces;
            return;
        }
        std::size_t& index = _meshOf[sourceIndex];
        if (index == kNotYet)
        {
            index = _model.meshes.size();
            _model.meshes.push_back(toMesh(source, source.mMaterialIndex < _texCoords.size()
                                                       ? _texCoords[source.mMaterialIndex]
                                                       : std::vector<TexCoordSource>()));
            if (_model.meshes.back().material >= _model.materials.size())
                _model.meshes.back().material = 0;
        }
        _model.instances.push_back({index, worldFromNode, node});
    }

    const aiScene& _scene;
    const bool _isGltf;
    const QHash<QString, QMatrix4x4> _nodeMatrices;
    QHash<QString, int> _nodeOf;      // by name
    std::vector<std::size_t> _meshOf; // by the importer's mesh index
    ImageTable _images;
    std::vector<std::vector<TexCoordSource>> _texCoords; // by the importer's material index
    Model _model;
    quint64 _lines = 0;
    quint64 _points = 0;
    int _misplaced = 0;
    int _oddLights = 0;
};

QMatrix4x4 worldFromFile(UpAxis upAxis)
{
    QMatrix4x4 matrix;
    if (upAxis == UpAxis::Z)
        matrix = QMatrix4x4(1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1);
    return matrix;
}

// The importer keeps the scene. Null with `error` told if there is none, or none that is safe to use.
const aiScene* import(Assimp::Importer& importer, const QString& path, QString& error)
{
    const MemoryLimit limit(kMemoryBase + kMemoryPerByte * quint64(QFileInfo(path).size()));
    importer.SetProgressHandler(new ReadProgress); // the importer owns it
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, kSmoothingDegrees);
    const QByteArray rewritten = withStrongEmission(path);
    if (!rewritten.isEmpty())
        importer.SetIOHandler(new RewrittenFile(path, rewritten)); // the importer owns it
    const aiScene* scene = importer.ReadFile(path.toUtf8().constData(), 0);
    if (scene)
    {
        error = sceneFault(*scene);
        if (!error.isEmpty())
            return nullptr;
        const float scale = workingScale(*scene);
        scaleVertices(*scene, scale);
        scene = importer.ApplyPostProcessing(kSteps);
        if (scene)
            scaleVertices(*scene, 1.0f / scale);
    }
    if (!scene)
        error = importFault(importer);
    return scene;
}

} // namespace

ReadResult readModel(const QString& path, UpAxis upAxis)
{
    ReadResult result;
    result.error = pathFault(path);
    if (!result.error.isEmpty())
        return result;

    Assimp::Importer importer;
    const aiScene* scene = import(importer, path, result.error);
    if (!scene)
        return result;

    SceneConverter converter(*scene, path, gltf1NodeMatrices(path));
    Model model = converter.convert(worldFromFile(upAxis));
    model.name = QFileInfo(path).fileName();
    result.note = converter.note();
    result.error = model.fault();
    if (result.error.isEmpty())
        result.model = std::move(model);
    return result;
}

} // namespace vrkview
