// SPDX-License-Identifier: MIT
#include "ModelMaterials.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace vrkview
{

namespace
{

constexpr std::size_t kMostTexCoords = 2;

// A number between 0 and 1, whatever the file says.
float unitRange(float value)
{
    return value >= 0.0f ? std::min(value, 1.0f) : 0.0f; // NaN compares false
}

// Light has no upper end, but a number must it be.
float lightRange(float value)
{
    return value > 0.0f && std::isfinite(value) ? value : 0.0f;
}

float decodeGamma(float value)
{
    return std::pow(unitRange(value), 2.2f);
}

// Whether the importer made the material up because the file has none. Our own grey does better than its white.
bool isMadeUp(const QString& name, const aiColor3D& color)
{
    return name == QLatin1String(AI_DEFAULT_MATERIAL_NAME) || (name.isEmpty() && color == aiColor3D(1.0f, 1.0f, 1.0f));
}

// Only the importer of glTF 2 tells how alpha is meant.
bool isGltf(const aiMaterial& material)
{
    aiString alphaMode;
    return material.Get(AI_MATKEY_GLTF_ALPHAMODE, alphaMode) == aiReturn_SUCCESS;
}

Wrap toWrap(aiTextureMapMode mode)
{
    switch (mode)
    {
    case aiTextureMapMode_Mirror:
        return Wrap::Mirror;
    case aiTextureMapMode_Clamp:
    case aiTextureMapMode_Decal:
        return Wrap::Clamp;
    default:
        return Wrap::Repeat;
    }
}

QMatrix3x3 affine(float xx, float xy, float x0, float yx, float yy, float y0)
{
    const float rows[] = {xx, xy, x0, yx, yy, y0, 0.0f, 0.0f, 1.0f};
    return QMatrix3x3(rows);
}

// What glTF's transform does where y goes upwards. The importer turns it around the middle of the picture, and gives
// another place for that; here the file's own place is found again, where y goes downwards.
QMatrix3x3 toMatrix(const aiUVTransform& transform)
{
    const float angle = -transform.mRotation;
    const float cosine = std::cos(angle);
    const float sine = std::sin(angle);
    const float width = transform.mScaling.x;
    const float height = transform.mScaling.y;
    const float x = transform.mTranslation.x - 0.5f * width * (sine - cosine + 1.0f);
    const float y = 0.5f * height * (sine + cosine - 1.0f) + 1.0f - height - transform.mTranslation.y;
    const QMatrix3x3 turned = affine(1, 0, 0, 0, -1, 1);
    const QMatrix3x3 matrix =
        turned * affine(cosine * width, sine * height, x, -sine * width, cosine * height, y) * turned;
    const float* const numbers = matrix.constData();
    return std::all_of(numbers, numbers + 9, [](float number) { return std::isfinite(number); }) ? matrix
                                                                                                 : QMatrix3x3();
}

// Reads one material. A property has its picture in a slot of the importer's.
class MaterialReader
{
public:
    MaterialReader(const aiMaterial& source, ImageTable& images)
        : _source(source), _images(images), _isGltf(isGltf(source))
    {
    }

    ReadMaterial read()
    {
        Material& material = _result.material;
        material.name = QString::fromUtf8(_source.GetName().C_Str());
        readBaseColorImage();
        readCoverage();
        readColor();
        readSurfaceImage();
        readNormals();
        readOcclusion();
        readEmission();
        int shading = 0;
        material.unlit = _isGltf && _source.Get(AI_MATKEY_SHADING_MODEL, shading) == aiReturn_SUCCESS &&
                         shading == aiShadingMode_NoShading;
        return std::move(_result);
    }

private:
    std::optional<aiString> pathOf(aiTextureType slot) const
    {
        aiString path;
        if (_source.GetTexture(slot, 0, &path) != aiReturn_SUCCESS || path.length == 0)
            return std::nullopt;
        return path;
    }

    // The first of the slots that has a picture.
    std::optional<aiTextureType> filledSlot(std::initializer_list<aiTextureType> candidates) const
    {
        for (const aiTextureType slot : candidates)
            if (pathOf(slot))
                return slot;
        return std::nullopt;
    }

    Wrap wrapOf(const char* key, aiTextureType slot) const
    {
        int mode = aiTextureMapMode_Wrap;
        return _source.Get(key, slot, 0, mode) == aiReturn_SUCCESS ? toWrap(aiTextureMapMode(mode)) : Wrap::Repeat;
    }

    TexCoordSource texCoordsOf(aiTextureType slot) const
    {
        int set = 0;
        _source.Get(AI_MATKEY_UVWSRC(slot, 0), set);
        TexCoordSource result{set > 0 && set < AI_MAX_NUMBER_OF_TEXTURECOORDS ? unsigned(set) : 0, {}};
        aiUVTransform transform;
        if (_isGltf && _source.Get(AI_MATKEY_UVTRANSFORM(slot, 0), transform) == aiReturn_SUCCESS)
            result.fromFile = toMatrix(transform);
        return result;
    }

    // Whether the picture of a slot lies by the second kind of coordinates.
    bool liesByMore(aiTextureType slot)
    {
        const TexCoordSource wanted = texCoordsOf(slot);
        auto& known = _result.texCoords;
        const auto found = std::find(known.begin(), known.end(), wanted);
        if (found != known.end())
            return found != known.begin();
        if (known.size() < kMostTexCoords)
            known.push_back(wanted);
        else
            ++_result.misplaced;
        return known.back() == wanted && known.size() > 1;
    }

    MaterialImage imageOf(aiTextureType slot, std::size_t image)
    {
        return {image, wrapOf(_AI_MATKEY_MAPPINGMODE_U_BASE, slot), wrapOf(_AI_MATKEY_MAPPINGMODE_V_BASE, slot),
                liesByMore(slot)};
    }

    std::optional<MaterialImage> imageOf(std::initializer_list<aiTextureType> candidates)
    {
        const std::optional<aiTextureType> slot = filledSlot(candidates);
        if (!slot)
            return std::nullopt;
        return imageOf(*slot, _images.indexOf(*pathOf(*slot)));
    }

    // Newer formats have a slot of their own for it. It comes first, and so lies by the first kind of coordinates.
    void readBaseColorImage()
    {
        const std::optional<MaterialImage> image = imageOf({aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE});
        if (!image)
            return;
        _result.material.baseColorImage = image->image;
        _result.material.wrapS = image->wrapS;
        _result.material.wrapT = image->wrapT;
    }

    // Holes, blending and sides.
    void readCoverage()
    {
        Material& material = _result.material;
        _source.Get(AI_MATKEY_OPACITY, material.opacity);
        material.opacity = unitRange(material.opacity);
        aiString alphaMode;
        bool hasHoles = false;
        if (_source.Get(AI_MATKEY_GLTF_ALPHAMODE, alphaMode) == aiReturn_SUCCESS)
        {
            material.transparent = alphaMode == aiString("BLEND");
            hasHoles = alphaMode == aiString("MASK");
            if (hasHoles)
            {
                material.alphaCutoff = 0.5f;
                _source.Get(AI_MATKEY_GLTF_ALPHACUTOFF, material.alphaCutoff);
            }
        }
        else
            // A model of which nothing can be seen was not meant so: some formats name transparency the other way
            // around.
            material.transparent = material.opacity > 0.0f && material.opacity < 1.0f;
        if (!material.transparent && !hasHoles)
            material.opacity = 1.0f;
        // Where the file does not say, both sides: the winding of many files is not to be trusted.
        bool twoSided = true;
        if (_source.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS)
            material.twoSided = twoSided;
    }

    void readColor()
    {
        Material& material = _result.material;
        if (material.baseColorImage)
            material.baseColor = {1.0f, 1.0f, 1.0f}; // the picture alone counts where the file names no colour
        aiColor3D color;
        if (_source.Get(AI_MATKEY_BASE_COLOR, color) == aiReturn_SUCCESS) // glTF gives linear factors
        {
            material.baseColor = {unitRange(color.r), unitRange(color.g), unitRange(color.b)};
            material.roughness = 1.0f;
            material.metallic = 1.0f;
        }
        else if (_source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == aiReturn_SUCCESS && !isMadeUp(material.name, color))
        {
            // Other formats give what a screen shows.
            float shininess = 0.0f;
            material.baseColor = {decodeGamma(color.r), decodeGamma(color.g), decodeGamma(color.b)};
            if (_source.Get(AI_MATKEY_SHININESS, shininess) == aiReturn_SUCCESS && shininess > 0.0f)
                material.roughness = std::sqrt(2.0f / (shininess + 2.0f)); // the lobe's usual equivalent
        }
        _source.Get(AI_MATKEY_ROUGHNESS_FACTOR, material.roughness);
        _source.Get(AI_MATKEY_METALLIC_FACTOR, material.metallic);
        material.roughness = unitRange(material.roughness);
        material.metallic = unitRange(material.metallic);
    }

    // glTF has roughness and metal in one picture. Of formats with a picture for each one is made; without a factor
    // beside it the picture alone counts.
    void readSurfaceImage()
    {
        Material& material = _result.material;
        if (_isGltf)
        {
            material.surfaceImage = imageOf({aiTextureType_DIFFUSE_ROUGHNESS, aiTextureType_METALNESS});
            return;
        }
        const std::optional<aiString> rough = pathOf(aiTextureType_DIFFUSE_ROUGHNESS);
        const std::optional<aiString> metal = pathOf(aiTextureType_METALNESS);
        if (!rough && !metal)
            return;
        material.surfaceImage = imageOf(rough ? aiTextureType_DIFFUSE_ROUGHNESS : aiTextureType_METALNESS,
                                        _images.indexOfSurface(rough ? &*rough : nullptr, metal ? &*metal : nullptr));
        float factor = 0.0f;
        if (rough && _source.Get(AI_MATKEY_ROUGHNESS_FACTOR, factor) != aiReturn_SUCCESS)
            material.roughness = 1.0f;
        if (metal && _source.Get(AI_MATKEY_METALLIC_FACTOR, factor) != aiReturn_SUCCESS)
            material.metallic = 1.0f;
    }

    // Where there is a slot of heights alone, many files have normals in it.
    void readNormals()
    {
        Material& material = _result.material;
        const std::optional<aiString> heights = pathOf(aiTextureType_HEIGHT);
        material.normalImage = imageOf({aiTextureType_NORMALS});
        if (!material.normalImage && heights && _images.holdsNormals(*heights))
            material.normalImage = imageOf({aiTextureType_HEIGHT});
        if (material.normalImage)
            _source.Get(AI_MATKEY_GLTF_TEXTURE_SCALE(aiTextureType_NORMALS, 0), material.normalScale);
        constexpr float kSteepest = 1000.0f; // beyond that normals lie in the surface
        material.normalScale =
            std::isfinite(material.normalScale) ? std::clamp(material.normalScale, -kSteepest, kSteepest) : 1.0f;
    }

    // Of other formats the slot of glTF's has light, painted into the model.
    void readOcclusion()
    {
        Material& material = _result.material;
        const aiTextureType slot = _isGltf ? aiTextureType_LIGHTMAP : aiTextureType_AMBIENT_OCCLUSION;
        material.occlusionImage = imageOf({slot});
        if (material.occlusionImage)
            _source.Get(AI_MATKEY_GLTF_TEXTURE_STRENGTH(slot, 0), material.occlusionStrength);
        material.occlusionStrength = unitRange(material.occlusionStrength);
    }

    void readEmission()
    {
        Material& material = _result.material;
        aiColor3D color(0.0f, 0.0f, 0.0f);
        _source.Get(AI_MATKEY_COLOR_EMISSIVE, color);
        material.emissionImage = imageOf({aiTextureType_EMISSIVE});
        if (_isGltf)
        {
            material.emission = {lightRange(color.r), lightRange(color.g), lightRange(color.b)};
            return;
        }
        // Other formats give what a screen shows, and leave the colour black where the picture alone counts.
        if (material.emissionImage && color.IsBlack())
            color = aiColor3D(1.0f, 1.0f, 1.0f);
        material.emission = {decodeGamma(color.r), decodeGamma(color.g), decodeGamma(color.b)};
    }

    const aiMaterial& _source;
    ImageTable& _images;
    const bool _isGltf;
    ReadMaterial _result;
};

} // namespace

ReadMaterial readMaterial(const aiMaterial& source, ImageTable& images)
{
    return MaterialReader(source, images).read();
}

} // namespace vrkview
