// SPDX-License-Identifier: MIT
// What is read of a material's pictures and factors, from glTF and from OBJ.
#include "ModelFiles.h"
#include "ModelReader.h"
#include "PbrFiles.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <cmath>

using namespace vrkview;

namespace
{

Model read(const QString& path)
{
    ReadResult result = readModel(path);
    EXPECT_TRUE(result.model.has_value()) << result.error.toStdString();
    EXPECT_TRUE(result.note.isEmpty()) << result.note.toStdString();
    return result.model.value_or(Model());
}

const Material& materialOf(const Model& model)
{
    return model.materials.at(model.meshes.at(0).material);
}

QString png(const ModelFolder& folder, const QString& name, const QImage& picture)
{
    EXPECT_TRUE(picture.save(folder.path(name), "PNG"));
    return name;
}

Model readObj(const ModelFolder& folder, const QByteArray& materialLines)
{
    folder.write("a.mtl", "newmtl paint\nKd 0.5 0.5 0.5\n" + materialLines);
    return read(folder.write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nusemtl paint\n"
                                      "f 1/1 2/2 3/3\n"));
}

} // namespace

TEST(ModelMaterialsTest, GltfGivesEveryPictureWithItsFactors)
{
    const ModelFolder folder;
    const QJsonObject surface{
        {"metallicRoughnessTexture", QJsonObject{{"index", 1}}}, {"roughnessFactor", 0.5}, {"metallicFactor", 0.25}};
    const Square square{.material = {{"pbrMetallicRoughness", surface},
                                     {"normalTexture", QJsonObject{{"index", 0}, {"scale", 0.75}}},
                                     {"occlusionTexture", QJsonObject{{"index", 1}, {"strength", 0.5}}},
                                     {"emissiveTexture", QJsonObject{{"index", 2}, {"texCoord", 1}}},
                                     {"emissiveFactor", QJsonArray{0.5, 0.25, 1.0}}},
                        .pictures = {plainPicture(1, 2, 3), plainPicture(4, 5, 6), plainPicture(7, 8, 9)}};
    const Model model = read(folder.write("a.gltf", gltfFile(square)));
    const Material& material = materialOf(model);
    ASSERT_TRUE(material.normalImage && material.surfaceImage && material.occlusionImage && material.emissionImage);
    EXPECT_FALSE(material.baseColorImage);
    const auto color = [&model](const MaterialImage& use) { return model.images.at(use.image).pixels.pixel(0, 0); };
    EXPECT_EQ(color(*material.normalImage), qRgb(1, 2, 3));
    EXPECT_EQ(color(*material.surfaceImage), qRgb(4, 5, 6));
    EXPECT_EQ(color(*material.emissionImage), qRgb(7, 8, 9));
    EXPECT_EQ(material.occlusionImage->image, material.surfaceImage->image) << "one picture for both";
    EXPECT_FLOAT_EQ(material.normalScale, 0.75f);
    EXPECT_FLOAT_EQ(material.occlusionStrength, 0.5f);
    EXPECT_FLOAT_EQ(material.roughness, 0.5f);
    EXPECT_FLOAT_EQ(material.metallic, 0.25f);
    EXPECT_EQ(material.emission, QVector3D(0.5f, 0.25f, 1.0f));
    EXPECT_FALSE(material.normalImage->more);
    EXPECT_TRUE(material.emissionImage->more);
    ASSERT_EQ(model.meshes[0].moreTexCoords.size(), model.meshes[0].texCoords.size());
    for (std::size_t i = 0; i < model.meshes[0].texCoords.size(); ++i)
        EXPECT_NEAR(model.meshes[0].moreTexCoords[i].x(), 1.0f - model.meshes[0].texCoords[i].x(), 1e-6f);
}

TEST(ModelMaterialsTest, AMaterialWithoutPicturesHasNeitherThemNorMoreCoordinates)
{
    const ModelFolder folder;
    const Model model = read(folder.write("a.gltf", gltfFile(Square{})));
    const Material& material = materialOf(model);
    EXPECT_FALSE(material.normalImage || material.surfaceImage || material.occlusionImage || material.emissionImage);
    EXPECT_EQ(material.emission, QVector3D());
    EXPECT_FALSE(material.unlit);
    EXPECT_TRUE(model.meshes[0].moreTexCoords.empty());
}

TEST(ModelMaterialsTest, AThirdKindOfCoordinatesIsTold)
{
    const ModelFolder folder;
    const auto moved = [](double by)
    {
        return QJsonObject{
            {"index", 0},
            {"extensions", QJsonObject{{"KHR_texture_transform", QJsonObject{{"offset", QJsonArray{by, by}}}}}}};
    };
    const Square square{
        .material = {{"normalTexture", moved(0.1)}, {"occlusionTexture", moved(0.2)}, {"emissiveTexture", moved(0.3)}},
        .pictures = {plainPicture(1, 2, 3)},
        .root = {{"extensionsUsed", QJsonArray{"KHR_texture_transform"}}}};
    const ReadResult result = readModel(folder.write("a.gltf", gltfFile(square)));
    ASSERT_TRUE(result.model.has_value());
    EXPECT_TRUE(result.note.contains("wrong places: 1 pictures")) << result.note.toStdString();
}

TEST(ModelMaterialsTest, ObjGivesRoughnessAndMetalFromTwoPictures)
{
    const ModelFolder folder;
    png(folder, "rough.png", plainPicture(100, 100, 100));
    png(folder, "metal.png", plainPicture(200, 200, 200));
    const Model both = readObj(folder, "map_Pr rough.png\nmap_Pm metal.png\n");
    ASSERT_TRUE(materialOf(both).surfaceImage);
    EXPECT_EQ(both.images.at(materialOf(both).surfaceImage->image).pixels.pixel(3, 3), qRgb(255, 100, 200));
    EXPECT_EQ(materialOf(both).roughness, 1.0f) << "the picture alone counts";
    EXPECT_EQ(materialOf(both).metallic, 1.0f);

    const Model one = readObj(folder, "Pm 0.5\nmap_Pr rough.png\n");
    EXPECT_EQ(one.images.at(materialOf(one).surfaceImage->image).pixels.pixel(3, 3), qRgb(255, 100, 255));
    EXPECT_EQ(materialOf(one).metallic, 0.5f);

    const Model none = readObj(folder, "map_Pm nowhere.png\n");
    EXPECT_EQ(none.images.at(materialOf(none).surfaceImage->image).pixels.pixel(0, 0), qRgb(255, 255, 0)) << "no metal";
}

TEST(ModelMaterialsTest, ObjGivesEmissionAsAScreenShowsIt)
{
    const ModelFolder folder;
    png(folder, "glow.png", plainPicture(1, 2, 3));
    const Model plain = readObj(folder, "Ke 0.5 0 1\n");
    EXPECT_NEAR(materialOf(plain).emission.x(), std::pow(0.5f, 2.2f), 1e-5f);
    EXPECT_FLOAT_EQ(materialOf(plain).emission.z(), 1.0f);
    const Model pictured = readObj(folder, "map_Ke glow.png\n");
    ASSERT_TRUE(materialOf(pictured).emissionImage);
    EXPECT_EQ(materialOf(pictured).emission, QVector3D(1, 1, 1)) << "the picture alone counts";
}

TEST(ModelMaterialsTest, ObjNormalsAreThoseOfNormAndOfBlueBumps)
{
    const ModelFolder folder;
    png(folder, "normals.png", normalPicture({0.2f, 0.1f, 0.97f}));
    png(folder, "heights.png", plainPicture(128, 128, 128));
    EXPECT_TRUE(materialOf(readObj(folder, "norm normals.png\n")).normalImage);
    EXPECT_TRUE(materialOf(readObj(folder, "map_Bump normals.png\n")).normalImage);
    EXPECT_FALSE(materialOf(readObj(folder, "map_Bump heights.png\n")).normalImage) << "heights are no normals";
}
