// SPDX-License-Identifier: MIT
#include "PbrFiles.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <numbers>
#include <vector>

namespace
{

constexpr double kHalfField = 0.4; // of the camera, in radians
constexpr double kDistance = 3.0;

QByteArray bytesOf(const std::vector<float>& values)
{
    return QByteArray(reinterpret_cast<const char*>(values.data()), qsizetype(values.size() * sizeof(float)));
}

QString dataAddress(const char* kind, const QByteArray& data)
{
    return QString("data:%1;base64,%2").arg(kind, data.toBase64());
}

QString pngAddress(const QImage& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return dataAddress("image/png", bytes);
}

// Positions, normals, both sets of texture coordinates of two triangles.
std::vector<QByteArray> attributesOf(const Square& square)
{
    constexpr float kCorners[][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}};
    std::vector<float> values[4];
    for (const auto& [x, y] : kCorners)
    {
        const float right = 0.5f + 0.5f * x;
        const float down = 0.5f - 0.5f * y;
        values[0].insert(values[0].end(), {x, y, 0});
        values[1].insert(values[1].end(), {0, 0, 1});
        values[2].insert(values[2].end(), {square.mirroredX ? 1 - right : right, square.mirroredY ? 1 - down : down});
        values[3].insert(values[3].end(), {1 - right, down});
    }
    std::vector<QByteArray> result;
    for (const std::vector<float>& some : values)
        result.push_back(bytesOf(some));
    return result;
}

void addGeometry(QJsonObject& root, const Square& square)
{
    QByteArray data;
    QJsonArray views;
    QJsonArray accessors;
    for (const QByteArray& part : attributesOf(square))
    {
        const bool isPlace = accessors.size() >= 2;
        views.append(QJsonObject{{"buffer", 0}, {"byteOffset", data.size()}, {"byteLength", part.size()}});
        QJsonObject accessor{{"bufferView", accessors.size()},
                             {"componentType", 5126},
                             {"count", 6},
                             {"type", isPlace ? "VEC2" : "VEC3"}};
        if (accessors.isEmpty())
        {
            accessor["min"] = QJsonArray{-1, -1, 0};
            accessor["max"] = QJsonArray{1, 1, 0};
        }
        accessors.append(accessor);
        data += part;
    }
    const QJsonObject attributes{{"POSITION", 0}, {"NORMAL", 1}, {"TEXCOORD_0", 2}, {"TEXCOORD_1", 3}};
    root["buffers"] =
        QJsonArray{QJsonObject{{"byteLength", data.size()}, {"uri", dataAddress("application/octet-stream", data)}}};
    root["bufferViews"] = views;
    root["accessors"] = accessors;
    root["meshes"] =
        QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{{"attributes", attributes}, {"material", 0}}}}}};
}

} // namespace

QByteArray gltfFile(const Square& square)
{
    QJsonObject root = square.root;
    root["asset"] = QJsonObject{{"version", "2.0"}};
    addGeometry(root, square);
    root["materials"] = QJsonArray{square.material};
    QJsonArray textures;
    QJsonArray images;
    for (const QImage& picture : square.pictures)
    {
        QJsonObject texture{{"source", images.size()}};
        if (!square.sampler.isEmpty())
            texture["sampler"] = 0;
        textures.append(texture);
        images.append(QJsonObject{{"uri", pngAddress(picture)}});
    }
    if (!images.isEmpty())
    {
        root["textures"] = textures;
        if (!square.sampler.isEmpty())
            root["samplers"] = QJsonArray{square.sampler};
        if (!root.contains("images"))
            root["images"] = images;
    }
    QJsonObject node = square.node;
    node["mesh"] = 0;
    root["cameras"] = QJsonArray{QJsonObject{
        {"type", "perspective"},
        {"perspective", QJsonObject{{"yfov", 2 * kHalfField}, {"aspectRatio", 1.0}, {"znear", 0.1}, {"zfar", 100.0}}}}};
    QJsonArray nodes{node, QJsonObject{{"name", "front"}, {"camera", 0}, {"translation", QJsonArray{0, 0, kDistance}}}};
    for (const QJsonObject& other : square.more)
        nodes.append(other);
    QJsonArray roots;
    for (int i = 0; i < nodes.size(); ++i)
        roots.append(i);
    root["nodes"] = nodes;
    root["scenes"] = QJsonArray{QJsonObject{{"nodes", roots}}};
    root["scene"] = 0;
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

QByteArray glbFile(const Square& square)
{
    QJsonObject root = QJsonDocument::fromJson(gltfFile(square)).object();
    QJsonObject buffer = root["buffers"].toArray()[0].toObject();
    const QByteArray data = QByteArray::fromBase64(buffer.take("uri").toString().section(',', 1).toLatin1());
    root["buffers"] = QJsonArray{buffer};
    QByteArray json = QJsonDocument(root).toJson(QJsonDocument::Compact);
    while (json.size() % 4 != 0)
        json.append(' ');
    const auto wordsOf = [](std::initializer_list<quint32> words)
    {
        QByteArray bytes;
        for (const quint32 word : words)
            for (int shift = 0; shift < 32; shift += 8)
                bytes.append(char(word >> shift & 0xFF));
        return bytes;
    };
    const quint32 size = 28 + quint32(json.size()) + quint32(data.size());
    return wordsOf({0x46546C67, 2, size, quint32(json.size()), 0x4E4F534A}) + json +
           wordsOf({quint32(data.size()), 0x004E4942}) + data;
}

QPoint pixelOf(double x, double y, int side)
{
    const double half = kDistance * std::tan(kHalfField);
    return QPoint(int(0.5 * side * (1 + x / half)), int(0.5 * side * (1 - y / half)));
}

QImage plainPicture(int red, int green, int blue)
{
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(qRgb(red, green, blue));
    return picture;
}

QImage normalPicture(const QVector3D& normal)
{
    const auto byte = [](float part) { return int(std::lround(127.5f + 127.5f * part)); };
    return plainPicture(byte(normal.x()), byte(normal.y()), byte(normal.z()));
}

QImage quarterPicture()
{
    QImage picture(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            picture.setPixel(x, y,
                             y < 32 ? (x < 32 ? qRgb(255, 0, 0) : qRgb(0, 255, 0))
                                    : (x < 32 ? qRgb(0, 0, 255) : qRgb(255, 255, 255)));
    return picture;
}

QByteArray environmentFile(const std::function<float(const QVector3D& direction)>& light)
{
    constexpr int kWidth = 256;
    constexpr int kHeight = 128;
    QByteArray bytes = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 128 +X 256\n";
    for (int row = 0; row < kHeight; ++row)
        for (int column = 0; column < kWidth; ++column)
        {
            const double phi = 2.0 * std::numbers::pi * ((column + 0.5) / kWidth - 0.5);
            const double theta = std::numbers::pi * (0.5 - (row + 0.5) / kHeight);
            const float grey = light({float(std::cos(phi) * std::cos(theta)), float(std::sin(theta)),
                                      float(std::sin(phi) * std::cos(theta))});
            // Mantissas with the exponent of 1 to 2.
            bytes.append(3, char(std::lround(128.0f * grey)));
            bytes.append(char(129));
        }
    return bytes;
}

double shownLight(int channel)
{
    const double shown = std::pow(channel / 255.0, 2.2);
    const double knee = 0.6;
    return shown < knee ? shown : knee - (1.0 - knee) * std::log(1.0 - (shown - knee) / (1.0 - knee));
}
