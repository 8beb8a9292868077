// SPDX-License-Identifier: MIT
#include "PrefilteredEnvMap.h"

#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "PrefilteredEnvMapPass.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <QGenericMatrix>
#include <QString>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

namespace Harrow::Vrk
{

using namespace Prefilter;

namespace
{

// ---- settings ------------------------------------------------------------------------------------------------------

int sourceWidthMax = std::numeric_limits<int>::max();
int sourceHeightMax = std::numeric_limits<int>::max();
int tileSizeMax = 1024;
bool diffuseImportanceSampling = false;

// ---- drawing -------------------------------------------------------------------------------------------------------

void beginDrawing()
{
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
}

void endDrawing()
{
    glDepthMask(GL_TRUE);
    glEnable(GL_DEPTH_TEST);
}

void setClearColor()
{
    glClearColor(1.0f, 1.0f, 0.0f, 1.0f);
}

void setFilterUniforms(ShaderProgram& program, int unit, unsigned samples, int levels)
{
    program.setUniform(QStringLiteral("u_SamplerEnvMap"), unit);
    program.setUniform(QStringLiteral("u_NumSamples"), samples);
    program.setUniform(QStringLiteral("u_RoughnessScale"), static_cast<float>(levels));
}

/// 0 / 0, which is not a number, for a single level.
float roughnessOf(int level, int levels)
{
    return static_cast<float>(level) / static_cast<float>(levels - 1);
}

void setIfThere(ShaderProgram& program, int location, const QVariant& value)
{
    if (location >= 0)
        program.setUniform(location, value);
}

// ---- results -------------------------------------------------------------------------------------------------------

void setFilters(GLenum target, GLint minification, GLint magnification)
{
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, minification);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, magnification);
}

void allocate(GLenum target, TextureFormat format, int width, int height)
{
    glTexImage2D(target, 0, InternalFormat(format), width, height, 0, static_cast<GLenum>(ExternalFormat(format)),
                 static_cast<GLenum>(ExternalType(format)), nullptr);
}

std::unique_ptr<Texture> newTexture(GLenum target, TextureFormat format, int width, int height)
{
    return std::make_unique<Texture>(target, InternalFormat(format), width, height, 1, nullptr);
}

/// Makes the result what its readers sample. False when no unit is free: the parameters would go to another texture.
bool finishMap(Texture& result, GLint wrapS, int levels)
{
    const GLenum target = result.target();
    if (!result.bind())
        return false;
    setFilters(target, GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrapS);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(target, GL_TEXTURE_MIN_LOD, 0);
    glTexParameteri(target, GL_TEXTURE_MAX_LOD, levels - 1);
    glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, levels - 1);
    result.setReadOnly();
    result.unbind();
    return true;
}

// ---- cube maps -----------------------------------------------------------------------------------------------------

/// By rows: each is the component of the direction that a place of the quad has, at z = -1.
constexpr float kFaceRows[kCubemapFaces][9] = {
    {0, 0, -1, /**/ 0, -1, 0, /**/ -1, 0, 0}, // +x
    {0, 0, 1, /**/ 0, -1, 0, /**/ 1, 0, 0},   // -x
    {1, 0, 0, /**/ 0, 0, -1, /**/ 0, 1, 0},   // +y
    {1, 0, 0, /**/ 0, 0, 1, /**/ 0, -1, 0},   // -y
    {1, 0, 0, /**/ 0, -1, 0, /**/ 0, 0, -1},  // +z
    {-1, 0, 0, /**/ 0, -1, 0, /**/ 0, 0, 1},  // -z
};

/// With the rows where OpenGL reads columns: the vertex stage has the vector in front of the matrix.
QVariant faceTransform(int face)
{
    QMatrix3x3 transform;
    std::copy(std::begin(kFaceRows[face]), std::end(kFaceRows[face]), transform.data());
    return QVariant::fromValue(transform);
}

std::unique_ptr<Texture> newCubeMap(int size, TextureFormat format)
{
    auto result = newTexture(GL_TEXTURE_CUBE_MAP, format, size, size);
    if (!result->bind())
        return nullptr;
    setFilters(GL_TEXTURE_CUBE_MAP, GL_NEAREST, GL_NEAREST);
    for (int face = 0; face < kCubemapFaces; ++face)
        allocate(cubemapFaceTarget(face), format, size, size);
    glGenerateMipmap(GL_TEXTURE_CUBE_MAP);
    result->unbind();
    return result;
}

void drawCubeMap(Pass& pass, const Texture& result, int size, int levels)
{
    ShaderProgram& program = pass.program();
    const int roughnessLocation = program.getUniformLocation(QStringLiteral("u_Roughness"));
    const int transformLocation = program.getUniformLocation(QStringLiteral("u_Transform"));
    beginDrawing();
    glDepthMask(GL_FALSE);
    setClearColor();
    for (int level = 0; level < levels; ++level)
    {
        glViewport(0, 0, size >> level, size >> level);
        for (int face = 0; face < kCubemapFaces; ++face)
        {
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, cubemapFaceTarget(face), result.textureID(),
                                   level);
            glClear(GL_COLOR_BUFFER_BIT);
            setIfThere(program, transformLocation, faceTransform(face));
            setIfThere(program, roughnessLocation, roughnessOf(level, levels));
            pass.draw();
            glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
        }
    }
    endDrawing();
}

/// False when a quad or a unit cannot be had.
bool renderCubeMap(Pass& pass, Texture& source, Texture& result, int size, unsigned samples)
{
    if (!pass.isReady() || !source.bind())
        return false;
    const int levels = MaxLODLevel(size, size);
    setFilterUniforms(pass.program(), source.unit(), samples, levels);
    drawCubeMap(pass, result, size, levels);
    const bool isDone = finishMap(result, GL_CLAMP_TO_EDGE, levels);
    source.unbind();
    return isDone;
}

// ---- latitude-longitude maps ---------------------------------------------------------------------------------------

struct SourceForm
{
    int width = 0;
    int height = 0;
    int internalFormat = 0;
};

bool readForm(Texture& source, SourceForm& form)
{
    if (!source.bind())
        return false;
    form = {source.width(0), source.height(0), source.internalFormat(0)};
    source.unbind();
    VRK_ASSERT_RETURN(form.width > 0 && form.height > 0, false,
                      "Source has no texels on CreatePrefilteredLatLongEnvMap");
    return true;
}

/// Holds the name of a smaller copy, or none.
class ScaledCopy
{
public:
    ScaledCopy() = default;
    ~ScaledCopy()
    {
        if (_name != 0)
            glDeleteTextures(1, &_name);
    }
    ScaledCopy(const ScaledCopy&) = delete;
    ScaledCopy& operator=(const ScaledCopy&) = delete;

    GLuint name() const
    {
        return _name;
    }

    /// Leaves the default framebuffer bound, and the copy on the active unit.
    void make(const Texture& source, const SourceForm& form, int width, int height)
    {
        glGenTextures(1, &_name);
        glBindTexture(GL_TEXTURE_2D, _name);
        glTexImage2D(GL_TEXTURE_2D, 0, form.internalFormat, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
        setFilters(GL_TEXTURE_2D, GL_LINEAR, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);

        const FramebufferObject reading(nullptr);
        const FramebufferObject drawing(nullptr);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, reading.getFBO());
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawing.getFBO());
        attach(GL_READ_FRAMEBUFFER, source.textureID());
        attach(GL_DRAW_FRAMEBUFFER, _name);
        glBlitFramebuffer(0, 0, form.width, form.height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_LINEAR);
        attach(GL_READ_FRAMEBUFFER, 0);
        attach(GL_DRAW_FRAMEBUFFER, 0);
    }

private:
    static void attach(GLenum framebuffer, GLuint texture)
    {
        glFramebufferTexture2D(framebuffer, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    }

    GLuint _name = 0;
};

/// The map to make, and what it is made from: a texture on unit 0.
struct LatLongJob
{
    GLuint sourceName;
    int width;
    int height;
    unsigned samples;
    TextureFormat format;
};

std::unique_ptr<Texture> newLatLongMap(const LatLongJob& job)
{
    auto result = newTexture(GL_TEXTURE_2D, job.format, job.width, job.height);
    if (!result->bind())
        return nullptr;
    const bool tookUnit0 = result->unit() == 0; // the last free one
    setFilters(GL_TEXTURE_2D, GL_NEAREST, GL_NEAREST);
    allocate(GL_TEXTURE_2D, job.format, job.width, job.height);
    glGenerateMipmap(GL_TEXTURE_2D);
    result->unbind();
    if (tookUnit0)
        glBindTexture(GL_TEXTURE_2D, job.sourceName);
    return result;
}

void drawTiles(Pass& pass, int width, int height)
{
    const qint64 tile = tileSizeMax; // so that a sum with it cannot overflow
    for (qint64 x = 0; x < width; x += tile)
        for (qint64 y = 0; y < height; y += tile)
        {
            glScissor(static_cast<GLint>(x), static_cast<GLint>(y),
                      static_cast<GLsizei>(std::min<qint64>(x + tile, width) - x),
                      static_cast<GLsizei>(std::min<qint64>(y + tile, height) - y));
            pass.draw();
        }
}

void drawLatLongMap(Pass& pass, Texture& result, const LatLongJob& job, int levels)
{
    ShaderProgram& program = pass.program();
    const int roughnessLocation = program.getUniformLocation(QStringLiteral("u_Roughness"));
    beginDrawing();
    glEnable(GL_SCISSOR_TEST);
    glDepthMask(GL_FALSE);
    setClearColor();
    for (int level = 0; level < levels; ++level)
    {
        const int width = job.width >> level;
        const int height = job.height >> level;
        glViewport(0, 0, width, height);
        const float roughness = roughnessOf(level, levels);
        pass.framebuffer().attach(&result, GL_COLOR_ATTACHMENT0, level);
        glClear(GL_COLOR_BUFFER_BIT);
        setIfThere(program, roughnessLocation, roughness);
        drawTiles(pass, width, height);
        pass.framebuffer().detach(GL_COLOR_ATTACHMENT0);
    }
    endDrawing();
    glDisable(GL_SCISSOR_TEST);
}

/// False when a quad or a unit cannot be had.
bool renderLatLongMap(Pass& pass, Texture& result, const LatLongJob& job)
{
    if (!pass.isReady())
        return false;
    const int levels = MaxLODLevel(job.width, job.height);
    setFilterUniforms(pass.program(), 0, job.samples, levels);
    drawLatLongMap(pass, result, job, levels);
    return finishMap(result, GL_REPEAT, levels);
}

/// From the texture on unit 0 to the map, all in all but for what belongs to the caller: viewport, framebuffers and the
/// source. Empties unit 0. Null on failure.
std::unique_ptr<Texture> filterLatLongMap(const LatLongJob& job, ShadingModel model, bool samplesTexels)
{
    const auto emptyUnit0 = []
    {
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
    };
    std::unique_ptr<ShaderProgram> program = buildProgram(ProgramKind::eLatLong, model, job.samples, samplesTexels);
    std::unique_ptr<Texture> result = program ? newLatLongMap(job) : nullptr;
    if (!result)
    {
        if (program)
            program->unbind();
        emptyUnit0();
        return nullptr;
    }
    Pass pass(std::move(program));
    const bool isDone = renderLatLongMap(pass, *result, job);
    pass.unbind();
    emptyUnit0();
    return isDone ? std::move(result) : nullptr;
}

// ---- the table -----------------------------------------------------------------------------------------------------

constexpr int kTableSamples = 1024;

std::unique_ptr<Texture> newTable(int width, int height, TextureFormat format)
{
    auto result = newTexture(GL_TEXTURE_2D, format, width, height);
    if (!result->bind())
        return nullptr;
    setFilters(GL_TEXTURE_2D, GL_LINEAR, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    allocate(GL_TEXTURE_2D, format, width, height);
    result->unbind();
    return result;
}

/// False when a quad or a unit cannot be had.
bool renderTable(Pass& pass, Texture& result, int width, int height, unsigned lodLevels)
{
    if (!pass.isReady())
        return false;
    pass.program().setUniform(QStringLiteral("u_NumSamples"), kTableSamples);
    pass.program().setUniform(QStringLiteral("u_NumLODLevels"), lodLevels);
    beginDrawing();
    glDepthMask(GL_FALSE);
    glViewport(0, 0, width, height);
    pass.framebuffer().attach(&result, GL_COLOR_ATTACHMENT0, 0);
    pass.draw();
    pass.framebuffer().detach(GL_COLOR_ATTACHMENT0);
    endDrawing();
    if (!result.bind())
        return false;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    result.setReadOnly();
    result.unbind();
    return true;
}

} // namespace

// ---- the functions -------------------------------------------------------------------------------------------------

Texture* CreatePrefilteredCubeEnvMap(Texture* source, int size, unsigned samples, ShadingModel model,
                                     TextureFormat format)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on CreatePrefilteredCubeEnvMap");
    const SavedViewport viewport;
    std::unique_ptr<ShaderProgram> program = buildProgram(ProgramKind::eCube, model, samples);
    if (!program)
        return nullptr;
    std::unique_ptr<Texture> result = newCubeMap(size, format);
    if (!result)
    {
        program->unbind();
        return nullptr;
    }
    bool isDone = false;
    {
        Pass pass(std::move(program));
        isDone = renderCubeMap(pass, *source, *result, size, samples);
        pass.unbind();
    }
    viewport.restore();
    return isDone ? result.release() : nullptr;
}

Texture* CreatePrefilteredLatLongEnvMap(Texture* source, int width, int height, unsigned samples, ShadingModel model,
                                        TextureFormat format)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on CreatePrefilteredLatLongEnvMap");
    const SavedViewport viewport;
    const SavedFramebuffers framebuffers;
    SourceForm form;
    if (!readForm(*source, form))
        return nullptr;
    const int sourceWidth = std::min(form.width, sourceWidthMax);
    const int sourceHeight = std::min(form.height, sourceHeightMax);

    glActiveTexture(GL_TEXTURE0);
    ScaledCopy copy;
    if (sourceWidth < form.width || sourceHeight < form.height)
        copy.make(*source, form, sourceWidth, sourceHeight);
    const GLuint sourceName = copy.name() != 0 ? copy.name() : source->textureID();
    glBindTexture(GL_TEXTURE_2D, sourceName);

    const bool samplesTexels = !diffuseImportanceSampling && model >= SHADING_DIFFUSE_START_INDEX;
    if (samplesTexels)
        samples = static_cast<unsigned>(sourceWidth) * static_cast<unsigned>(sourceHeight);
    std::unique_ptr<Texture> result =
        filterLatLongMap({sourceName, width, height, samples, format}, model, samplesTexels);
    viewport.restore();
    framebuffers.restore();
    return result.release();
}

Texture* CreatePreintegratedBRDFTable(int width, int height, unsigned lodLevels, ShadingModel model,
                                      TextureFormat format)
{
    const SavedViewport viewport;
    const SavedFramebuffers framebuffers;
    std::unique_ptr<ShaderProgram> program = buildProgram(ProgramKind::eTable, model, kTableSamples);
    if (!program)
        return nullptr;
    std::unique_ptr<Texture> result = newTable(width, height, format);
    if (!result)
    {
        program->unbind();
        return nullptr;
    }
    bool isDone = false;
    {
        Pass pass(std::move(program));
        isDone = renderTable(pass, *result, width, height, lodLevels);
        pass.unbind();
    }
    viewport.restore();
    framebuffers.restore();
    return isDone ? result.release() : nullptr;
}

int MaxLODLevel(int width, int height)
{
    if (width < 2)
        return 1;
    int levels = 1;
    while (height >= 2)
    {
        ++levels;
        height /= 2;
        if (width / 2 < 2)
            break;
        width /= 2;
    }
    return levels;
}

void SetPrefilteredSourceWidthMax(int width)
{
    VRK_ASSERT_RETURN(width > 0, , "Source width limit %d is not positive", width);
    sourceWidthMax = width;
}

void SetPrefilteredSourceHeightMax(int height)
{
    VRK_ASSERT_RETURN(height > 0, , "Source height limit %d is not positive", height);
    sourceHeightMax = height;
}

void SetPrefilteredTilseSizeMax(int size)
{
    VRK_ASSERT_RETURN(size > 0, , "Tile size %d is not positive", size);
    tileSizeMax = size;
}

void SetDiffuseImportanceSampling(bool use)
{
    diffuseImportanceSampling = use;
}

} // namespace Harrow::Vrk
