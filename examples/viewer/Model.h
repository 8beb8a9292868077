// SPDX-License-Identifier: MIT
// A model as plain data: meshes, materials and the instances that place meshes in the world.
// It knows neither the file that it came from nor OpenGL, so reading, generating and drawing stay apart.
#pragma once

#include <QImage>
#include <QMatrix4x4>
#include <QPoint>
#include <QString>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace vrkview
{

/// An axis-aligned box in world space. Starts empty; an empty box has no centre and no radius worth using.
struct Bounds
{
    static constexpr float kHuge = std::numeric_limits<float>::infinity();

    QVector3D minimum{kHuge, kHuge, kHuge};
    QVector3D maximum{-kHuge, -kHuge, -kHuge};

    void add(const QVector3D& point);
    bool isEmpty() const;
    QVector3D center() const;

    /// Half the diagonal: the radius of the sphere around the box.
    float radius() const;
};

struct Mesh
{
    QString name;
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals;     ///< one a position; unit length, or zero where the file gave nothing usable
    std::vector<QVector2D> texCoords;   ///< one a position, or none at all; y upwards
    std::vector<std::uint32_t> indices; ///< three a triangle
    std::size_t material = 0;
    std::vector<QVector2D> moreTexCoords{}; ///< for pictures that lie in another way; as many as `texCoords`, or none
};

/// How a picture is looked up. The numbers are those of Picture.glslh.
enum class ImageKind : std::uint32_t
{
    Flat = 0,
    Cube = 1,   ///< six parts in OpenGL's order of faces, all of one size; the texture coordinate is a place on a globe
    Layers = 2, ///< parts of one size, of which the first is seen
    Tiles = 3,  ///< each part stands on one square of the plane of texture coordinates
};

/// One of the pictures that make one.
struct ImagePart
{
    QString path;
    QImage pixels;
    QPoint tile{}; ///< of `ImageKind::Tiles`
};

/// What a picture shows that changes from frame to frame.
enum class StreamerKind
{
    Colors,
    Images,
    MandelbrotCPU,
    MandelbrotGPU,
};

/// A picture that materials name, not loaded yet unless it came inside the model's file.
struct Image
{
    QString path;  ///< as found beside the model, or as the model names it if there is no such file
    QImage pixels; ///< top row first; null for a picture in a file of its own
    ImageKind kind = ImageKind::Flat;
    std::vector<ImagePart> parts{}; ///< of all but `ImageKind::Flat`
    std::optional<StreamerKind> streamer{};
};

/// How a picture goes on beyond its edges. The numbers are those of Picture.glslh.
enum class Wrap : std::uint32_t
{
    Repeat = 0,
    Mirror = 1,
    Clamp = 2
};

/// A picture of how a property goes over the surface.
struct MaterialImage
{
    std::size_t image = 0;
    Wrap wrapS = Wrap::Repeat;
    Wrap wrapT = Wrap::Repeat;
    bool more = false; ///< it lies by `Mesh::moreTexCoords`

    bool operator==(const MaterialImage&) const = default;
};

struct Material
{
    QString name;
    QVector3D baseColor{0.8f, 0.8f, 0.8f};       ///< linear, not gamma encoded
    float roughness = 0.6f;                      ///< 0 mirror, 1 chalk
    float metallic = 0.0f;                       ///< 0 dielectric, 1 metal
    std::optional<std::size_t> baseColorImage{}; ///< multiplies the colour; gamma encoded
    Wrap wrapS = Wrap::Repeat;
    Wrap wrapT = Wrap::Repeat;
    float alphaCutoff = 0.0f; ///< texels of less alpha are holes
    float opacity = 1.0f;
    bool transparent = false; ///< blended: what is behind shows through
    bool twoSided = true;
    QVector3D emission{};                          ///< light that it gives by itself, linear
    float normalScale = 1.0f;                      ///< how much of the normals' slope counts
    float occlusionStrength = 1.0f;                ///< how much of the occlusion counts, 0 to 1
    std::optional<MaterialImage> normalImage{};    ///< red to the right, green upwards in the picture, blue outwards
    std::optional<MaterialImage> surfaceImage{};   ///< green multiplies the roughness, blue the metal
    std::optional<MaterialImage> occlusionImage{}; ///< red: the share of the light from all around that arrives
    std::optional<MaterialImage> emissionImage{};  ///< multiplies the emission; gamma encoded
    bool unlit = false;                            ///< shown in its colour, whatever the light
};

/// A place in a tree of places. Parents come before their children.
struct Node
{
    QString name;
    int parent = -1;
    QMatrix4x4 parentFromNode;
};

/// One mesh standing somewhere. The matrix may mirror.
struct Instance
{
    std::size_t mesh = 0;
    QMatrix4x4 worldFromModel;
    int node = -1; ///< the node that gives the matrix, or -1 for none

    /// In place of that of the mesh, from which it differs in colour and picture alone.
    std::optional<std::size_t> material{};
};

/// A camera that the file names. It looks along -z of its node.
struct FileCamera
{
    QString name;
    int node = -1;
    float horizontalFieldOfView = 0.8f; ///< radians, the whole angle
    float aspect = 1.5f;                ///< width by height of its film
    float nearClip = 0.0f;              ///< 0 if the file does not say
    float farClip = 0.0f;
};

/// A light that the file names; it shines along -z of its node. A point and a spot fade with the square of the
/// distance.
struct FileLight
{
    enum class Kind
    {
        Directional,
        Point,
        Spot,
        Other
    };

    QString name;
    int node = -1;
    Kind kind = Kind::Other;
    QVector3D color;         ///< linear, times intensity; of point and spot at a distance of 1
    float innerCone = 0.0f;  ///< of a spot: half the angle of full strength, radians
    float outerCone = 0.78f; ///< of a spot: half the angle beyond which there is nothing
};

/// How one node of a crowd moves: it circles around a place.
struct Motion
{
    int node = -1;
    QVector3D center;
    float radius = 0.0f;
    float turnsPerSecond = 0.0f;
    float phase = 0.0f; ///< turns
};

struct Model
{
    QString name;
    std::vector<Mesh> meshes;
    std::vector<Material> materials; ///< never empty once a model is complete
    std::vector<Image> images;
    std::vector<Node> nodes;
    std::vector<Instance> instances;
    std::vector<FileCamera> cameras;
    std::vector<FileLight> lights;
    std::vector<Motion> motions; ///< of a crowd; none otherwise
    Bounds bounds;               ///< of all instances, in world space

    /// Outermost vertices in many directions, in world space: they stand for the whole when a view is fitted around it.
    std::vector<QVector3D> extremes;

    /// Triangles drawn, so a mesh counts once for each of its instances.
    std::size_t triangleCount() const;

    /// Measures `bounds` and `extremes` over every vertex of every instance.
    void measure();

    /// What keeps this model from being drawn, as one line, or an empty string if nothing does: no triangle, or
    /// coordinates that are no numbers or too large to frame.
    QString fault() const;
};

} // namespace vrkview
