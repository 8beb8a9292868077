// SPDX-License-Identifier: MIT
#include "ModelReader.h"

#include "MemoryLimit.h"
#include "ModelFiles.h"

#include <gtest/gtest.h>

#include <QDir>

#include <cmath>
#include <limits>

using namespace vrkview;

namespace
{

void expectNear(const QVector3D& actual, const QVector3D& expected, float tolerance = 1.0e-5f)
{
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(actual[axis], expected[axis], tolerance) << "axis " << axis;
}

// Writes the file and reads it back; the model is there or the test has failed.
Model readBack(const QString& name, const QByteArray& contents, UpAxis upAxis = UpAxis::Y)
{
    const ModelFolder folder;
    ReadResult result = readModel(folder.write(name, contents), upAxis);
    EXPECT_TRUE(result.model.has_value()) << result.error.toStdString();
    return result.model.value_or(Model());
}

void expectRejected(const QString& name, const QByteArray& contents, const QString& words)
{
    const ModelFolder folder;
    const ReadResult result = readModel(folder.write(name, contents));
    EXPECT_FALSE(result.model.has_value()) << name.toStdString();
    EXPECT_TRUE(result.error.contains(words)) << name.toStdString() << " gave: " << result.error.toStdString();
    EXPECT_FALSE(result.error.contains(QLatin1Char('\n')));
}

// Of the one triangle with these corners in a PLY file.
QByteArray plyTriangle(const QByteArray& corners)
{
    return "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
           "element face 1\nproperty list uchar int vertex_indices\nend_header\n" +
           corners + "3 0 1 2\n";
}

} // namespace

TEST(ModelReaderTest, ObjTriangleWithoutNormalsGetsThePlanesNormal)
{
    const Model model = readBack("a.obj", "v 0 0 0\nv 2 0 0\nv 0 3 0\nf 1 2 3\n");
    ASSERT_EQ(model.meshes.size(), 1u);
    EXPECT_EQ(model.name, QStringLiteral("a.obj"));
    EXPECT_EQ(model.triangleCount(), 1u);
    for (const QVector3D& normal : model.meshes[0].normals)
        expectNear(normal, {0.0f, 0.0f, 1.0f});
    expectNear(model.bounds.minimum, {0.0f, 0.0f, 0.0f});
    expectNear(model.bounds.maximum, {2.0f, 3.0f, 0.0f});
}

TEST(ModelReaderTest, PolygonsBecomeTriangles)
{
    const Model model = readBack("a.obj", "v 0 0 0\nv 1 0 0\nv 2 1 0\nv 1 2 0\nv 0 2 0\nf 1 2 3 4 5\n");
    EXPECT_EQ(model.triangleCount(), 3u);
}

TEST(ModelReaderTest, IdenticalVerticesAreJoinedAndCubeCornersKeepTheirEdges)
{
    TriangleSoup cube = boxSoup({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    cube.normals.clear();
    const Model model = readBack("cube.obj", objFile(cube));
    ASSERT_EQ(model.meshes.size(), 1u);
    EXPECT_EQ(model.triangleCount(), 12u);
    EXPECT_EQ(model.meshes[0].positions.size(), 24u) << "four corners for each face";
    for (const QVector3D& normal : model.meshes[0].normals)
    {
        EXPECT_NEAR(normal.length(), 1.0f, 1.0e-5f);
        EXPECT_NEAR(std::abs(normal.x()) + std::abs(normal.y()) + std::abs(normal.z()), 1.0f, 1.0e-5f);
    }
}

TEST(ModelReaderTest, GivenNormalsAreKeptAtUnitLength)
{
    const Model model = readBack("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 3 0 4\nf 1//1 2//1 3//1\n");
    for (const QVector3D& normal : model.meshes[0].normals)
        expectNear(normal, {0.6f, 0.0f, 0.8f});
}

TEST(ModelReaderTest, ObjDiffuseIsDecodedToLinearAndShininessBecomesRoughness)
{
    const ModelFolder folder;
    folder.write("a.mtl", "newmtl paint\nKd 0.5 1.0 0.0\nNs 6\n");
    const ReadResult result =
        readModel(folder.write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl paint\nf 1 2 3\n"));
    ASSERT_TRUE(result.model.has_value()) << result.error.toStdString();
    const Material& material = result.model->materials.at(result.model->meshes[0].material);
    EXPECT_EQ(material.name, QStringLiteral("paint"));
    expectNear(material.baseColor, {std::pow(0.5f, 2.2f), 1.0f, 0.0f});
    EXPECT_NEAR(material.roughness, 0.5f, 1.0e-5f);
    EXPECT_EQ(material.metallic, 0.0f);
}

TEST(ModelReaderTest, FilesWithoutMaterialGetTheGreyOfTheViewer)
{
    const Model model = readBack("a.ply", plyTriangle("0 0 0\n1 0 0\n0 1 0\n"));
    expectNear(model.materials.at(model.meshes[0].material).baseColor, Material().baseColor);
}

TEST(ModelReaderTest, PlyIsRead)
{
    const Model model = readBack("a.ply", plyTriangle("0 0 0\n1 0 0\n0 1 0\n"));
    EXPECT_EQ(model.triangleCount(), 1u);
    expectNear(model.bounds.maximum, {1.0f, 1.0f, 0.0f});
}

TEST(ModelReaderTest, StlIsReadWithItsNormals)
{
    const Model model = readBack("a.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 5\nvertex 1 0 5\n"
                                          "vertex 0 1 5\nendloop\nendfacet\nendsolid a\n");
    EXPECT_EQ(model.triangleCount(), 1u);
    expectNear(model.meshes[0].normals[0], {0.0f, 0.0f, 1.0f});
    EXPECT_EQ(model.bounds.minimum.z(), 5.0f);
}

TEST(ModelReaderTest, GltfWithDataInsideIsReadWithLinearColor)
{
    QMatrix4x4 moved;
    moved.translate(10.0f, 0.0f, 0.0f);
    const Model model = readBack("a.gltf", gltfFile(boxSoup({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f}),
                                                    {QMatrix4x4(), moved}, {0.25f, 0.5f, 0.75f}, 0.3f));
    ASSERT_EQ(model.meshes.size(), 1u) << "a mesh that two nodes use is there once";
    ASSERT_EQ(model.instances.size(), 2u);
    EXPECT_EQ(model.triangleCount(), 24u);
    expectNear(model.bounds.minimum, {-1.0f, -1.0f, -1.0f});
    expectNear(model.bounds.maximum, {11.0f, 1.0f, 1.0f});
    const Material& material = model.materials.at(model.meshes[0].material);
    expectNear(material.baseColor, {0.25f, 0.5f, 0.75f});
    EXPECT_NEAR(material.roughness, 0.3f, 1.0e-6f);
    EXPECT_EQ(material.metallic, 0.0f);
}

TEST(ModelReaderTest, MirroredNodeKeepsItsMatrix)
{
    QMatrix4x4 mirrored;
    mirrored.scale(-2.0f, 1.0f, 1.0f);
    const Model model =
        readBack("a.gltf", gltfFile(boxSoup({1.0f, 0.0f, 0.0f}, {2.0f, 1.0f, 1.0f}), {mirrored}, {1, 1, 1}, 1.0f));
    ASSERT_EQ(model.instances.size(), 1u);
    EXPECT_LT(model.instances[0].worldFromModel.determinant(), 0.0);
    expectNear(model.bounds.minimum, {-4.0f, 0.0f, 0.0f});
    expectNear(model.bounds.maximum, {-2.0f, 1.0f, 1.0f});
}

TEST(ModelReaderTest, NodesOfGltf1AreTurnedBeforeTheyAreMoved)
{
    // A quarter turn around z and a step along x: the corner (1, 0, 0) comes to (5, 1, 0).
    const float corners[] = {0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f};
    const QByteArray data(reinterpret_cast<const char*>(corners), sizeof(corners));
    const QByteArray file = R"({
  "asset": {"version": "1.0"}, "scene": "s", "scenes": {"s": {"nodes": ["n"]}},
  "nodes": {"n": {"meshes": ["m"], "translation": [5, 0, 0], "rotation": [0, 0, 0.70710678, 0.70710678],
                  "scale": [1, 1, 1]}},
  "meshes": {"m": {"primitives": [{"attributes": {"POSITION": "a"}, "mode": 4}]}},
  "accessors": {"a": {"bufferView": "v", "byteOffset": 0, "byteStride": 12, "componentType": 5126, "count": 3,
                      "type": "VEC3", "min": [0, 0, 0], "max": [1, 0, 1]}},
  "bufferViews": {"v": {"buffer": "b", "byteOffset": 0, "byteLength": 36, "target": 34962}},
  "buffers": {"b": {"type": "arraybuffer", "byteLength": 36,
                    "uri": "data:application/octet-stream;base64,)" +
                            data.toBase64() + R"("}}})";
    const Model model = readBack("a.gltf", file);
    expectNear(model.bounds.minimum, {5.0f, 0.0f, 0.0f});
    expectNear(model.bounds.maximum, {5.0f, 1.0f, 1.0f});
}

TEST(ModelReaderTest, TheAngleOfAGltfCameraIsThatFromTopToBottom)
{
    const QByteArray square = withCamera(gltfFile(boxSoup({0, 0, 0}, {1, 1, 1}), {QMatrix4x4()}, {1, 1, 1}, 1.0f),
                                         "front", {0.0f, 0.0f, 5.0f});
    QByteArray wide = square;
    wide.replace("\"aspectRatio\":1", "\"aspectRatio\":2");
    QByteArray without = square;
    without.replace("\"aspectRatio\":1,", "");
    for (const auto& [file, aspect] : {std::pair{square, 1.0f}, std::pair{wide, 2.0f}, std::pair{without, 1.0f}})
    {
        const Model model = readBack("a.gltf", file);
        ASSERT_EQ(model.cameras.size(), 1u);
        EXPECT_FLOAT_EQ(model.cameras[0].aspect, aspect);
        EXPECT_NEAR(model.cameras[0].horizontalFieldOfView, 2.0f * std::atan(aspect * std::tan(0.4f)), 1e-5f);
    }
}

TEST(ModelReaderTest, UpAxisZTurnsTheModelUpright)
{
    const Model model = readBack("a.obj", "v 0 0 0\nv 1 0 0\nv 0 2 7\nf 1 2 3\n", UpAxis::Z);
    expectNear(model.bounds.minimum, {0.0f, 0.0f, -2.0f});
    expectNear(model.bounds.maximum, {1.0f, 7.0f, 0.0f});
}

TEST(ModelReaderTest, LinesAndPointsAreLeftOutWithAWord)
{
    const ModelFolder folder;
    const ReadResult result =
        readModel(folder.write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\nl 2 3\np 1\n"));
    ASSERT_TRUE(result.model.has_value()) << result.error.toStdString();
    EXPECT_EQ(result.model->triangleCount(), 1u);
    EXPECT_TRUE(result.note.contains(QStringLiteral("2 lines, 1 points"))) << result.note.toStdString();
}

TEST(ModelReaderTest, ExtremesReachTheBoundsOnEveryAxisNearly)
{
    const Model model = readBack("a.obj", objFile(boxSoup({-1.0f, -2.0f, -3.0f}, {1.0f, 2.0f, 3.0f})));
    Bounds bounds;
    for (const QVector3D& extreme : model.extremes)
        bounds.add(extreme);
    expectNear(bounds.minimum, model.bounds.minimum);
    expectNear(bounds.maximum, model.bounds.maximum);
}

TEST(ModelReaderTest, MissingFileIsRejected)
{
    const ModelFolder folder;
    const ReadResult result = readModel(folder.path("none.obj"));
    EXPECT_FALSE(result.model.has_value());
    EXPECT_EQ(result.error, QStringLiteral("there is no such file"));
}

TEST(ModelReaderTest, DirectoryIsRejected)
{
    const ReadResult result = readModel(QDir::tempPath());
    EXPECT_FALSE(result.model.has_value());
    EXPECT_EQ(result.error, QStringLiteral("it is a directory"));
}

TEST(ModelReaderTest, FilesThatAreNoModelAreRejected)
{
    expectRejected("a.txt", "hello\n", QStringLiteral("not a model of a known kind"));
    expectRejected("a.gltf", "{\"nodes\": 5", QString());
    expectRejected("a.glb", "glTF", QString());
    for (const char* name : {"a.obj", "a.ply", "a.stl", "a.gltf", "a.glb"})
        expectRejected(name, QByteArray(), QString());
}

TEST(ModelReaderTest, ModelsWithoutTrianglesAreRejected)
{
    expectRejected("points.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\np 1 2 3\n", QStringLiteral("it holds no triangles"));
    expectRejected("lines.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n", QStringLiteral("it holds no triangles"));
    expectRejected("empty.ply",
                   "ply\nformat ascii 1.0\nelement vertex 0\nproperty float x\nproperty float y\nproperty float z\n"
                   "element face 0\nproperty list uchar int vertex_indices\nend_header\n",
                   QString());
}

TEST(ModelReaderTest, CoordinatesThatAreNoFiniteNumberAreRejected)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    for (const float bad : {nan, infinite})
    {
        // Binary STL, as text has no agreed way of writing these.
        QByteArray file(80, ' ');
        const std::uint32_t count = 1;
        const float values[] = {0, 0, 1, 0, 0, 0, bad, 0, 0, 0, 1, 0};
        file.append(reinterpret_cast<const char*>(&count), sizeof(count));
        file.append(reinterpret_cast<const char*>(values), sizeof(values));
        file.append(QByteArray(2, '\0'));
        expectRejected("a.stl", file, QStringLiteral("not a finite number"));
    }
}

TEST(ModelReaderTest, CoordinatesTooLargeToFrameAreRejected)
{
    expectRejected("a.ply", plyTriangle("0 0 0\n1e30 0 0\n0 1e30 0\n"), QStringLiteral("too large"));
    expectRejected("a.ply", plyTriangle("1e30 0 0\n1e30 1 0\n1e30 0 1\n"), QStringLiteral("too large"));
    expectRejected("a.ply", plyTriangle("-3e38 0 0\n3e38 0 0\n0 1 0\n"), QStringLiteral("too large"));
}

TEST(ModelReaderTest, CoordinatesTooSmallToSquareAreRejected)
{
    expectRejected("a.ply", plyTriangle("0 0 0\n1e-20 0 0\n0 1e-20 0\n"), QStringLiteral("too small"));
}

TEST(ModelReaderTest, SmallDetailsOfATinyModelAreNotJoined)
{
    const Model model = readBack("a.obj", "v 0 0 0\nv 1e-7 0 0\nv 0 1e-7 0\nv 1e-7 1e-7 0\nf 1 2 3\nf 2 4 3\n");
    EXPECT_EQ(model.meshes[0].positions.size(), 4u);
    EXPECT_NEAR(model.bounds.maximum.x(), 1.0e-7f, 1.0e-13f);
}

TEST(ModelReaderTest, ATransformThatOverflowsIsRejected)
{
    QMatrix4x4 huge;
    huge.scale(1.0e30f);
    const ModelFolder folder;
    const ReadResult result = readModel(folder.write(
        "a.gltf", gltfFile(boxSoup({-1e10f, -1e10f, -1e10f}, {1e10f, 1e10f, 1e10f}), {huge}, {1, 1, 1}, 1.0f)));
    EXPECT_FALSE(result.model.has_value());
    EXPECT_FALSE(result.error.isEmpty());
}

#if !defined(__SANITIZE_ADDRESS__)
// Not in the sanitizer's build: its own memory would count, so that build sets no limit and the file would take it all.
TEST(ModelReaderTest, AFileThatClaimsMoreThanItHoldsIsRejectedBeforeMemoryIsGone)
{
    ASSERT_TRUE(MemoryLimit::isSupported());
    expectRejected("a.ply", plyTriangle("0 0 0\n").replace("vertex 3", "vertex 1000000000"),
                   QStringLiteral("more memory"));
}
#endif

TEST(ModelReaderTest, IndicesOutOfRangeAreRejected)
{
    expectRejected("a.ply", plyTriangle("0 0 0\n1 0 0\n0 1 0\n").replace("3 0 1 2", "3 0 1 77"), QString());
    expectRejected("a.obj", "v 0 0 0\nv 1 0 0\nf 1 2 9\n", QString());
}
