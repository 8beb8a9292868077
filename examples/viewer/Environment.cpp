// SPDX-License-Identifier: MIT
#include "Environment.h"

#include "Terminal.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/PrefilteredEnvMap.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureLoader.h>

#include <QFile>
#include <QFileInfo>
#include <QSize>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr QSize kSpecularSize(512, 256);
constexpr unsigned kSpecularSamples = 64;
// Each texel of the diffuse map sums up all texels of the picture, so both are small.
constexpr QSize kDiffuseSize(64, 32);
constexpr QSize kDiffuseSource(128, 64);
constexpr int kTableSide = 64;

// What a white surface shows on average, without a word about the exposure.
constexpr float kMiddle = 0.42f;
constexpr float kLeast = 1.0e-6f;

ShadingModel modelOf(SpecularModel model)
{
    constexpr ShadingModel kModels[] = {SHADING_TRADITIONAL, SHADING_ENERY_CONSERVING, SHADING_PHYSICALLY_BASED};
    return kModels[int(model)];
}

ShadingModel modelOf(DiffuseModel model)
{
    return model == DiffuseModel::Lambert ? SHADING_LAMBERTIAN_DIFFUSE : SHADING_OREN_NAYAR_DIFFUSE;
}

/// What no reader of texture files claims are pictures for a screen, with 8 bits a channel.
TextureFileInfo infoOf(const std::unique_ptr<TextureLoader>& loader)
{
    TextureFileInfo info;
    info.srgb = loader == nullptr;
    return info;
}

/// Of a file, or of what is inside of the program.
Texture* loadTexture(const QString& path)
{
    if (!path.startsWith(u':'))
        return LoadTextureFromFile(path, infoOf(std::unique_ptr<TextureLoader>(IdentifyTextureFromFile(path))));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    QByteArray bytes = file.readAll();
    return LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()), std::size_t(bytes.size()),
                                 TextureFileInfo(), path);
}

} // namespace

Environment::Environment() = default;

Environment::~Environment() = default;

bool Environment::create(const EnvironmentSettings& settings, QString& error)
{
    if (!load(settings.path, error))
        return false;
    if (!filter(settings))
    {
        error = QStringLiteral("the driver can't filter the environment '%1'").arg(settings.path);
        return false;
    }
    _unexposed = kMiddle / brightness();
    expose(settings);
    return true;
}

void Environment::expose(const EnvironmentSettings& settings)
{
    _scale = std::exp2(settings.exposure.value_or(0.0f)) * _unexposed;
}

bool Environment::load(const QString& path, QString& error)
{
    if (!QFileInfo(path).isFile())
    {
        error = QStringLiteral("there is no file '%1'").arg(path);
        return false;
    }
    {
        const AbortScope scope;
        _source.reset(loadTexture(path));
    }
    if (!_source || _source->target() != GL_TEXTURE_2D)
    {
        error = QStringLiteral("'%1' is no picture of an environment").arg(path);
        return false;
    }
    const AutoBinder bound(_source.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 1000);
    glGenerateMipmap(GL_TEXTURE_2D);
    return true;
}

bool Environment::filter(const EnvironmentSettings& settings)
{
    GLint drawFramebuffer = 0;
    GLint readFramebuffer = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawFramebuffer);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readFramebuffer);

    ProgressLine progress;
    const QString work = QStringLiteral("filtering the environment");
    const ShadingModel specular = modelOf(settings.specular);
    progress.show(work, 0.0f);
    _specular.reset(CreatePrefilteredLatLongEnvMap(_source.get(), kSpecularSize.width(), kSpecularSize.height(),
                                                   kSpecularSamples, specular, RGBA16F));
    progress.show(work, 0.4f);
    SetPrefilteredSourceWidthMax(kDiffuseSource.width());
    SetPrefilteredSourceHeightMax(kDiffuseSource.height());
    _diffuse.reset(CreatePrefilteredLatLongEnvMap(_source.get(), kDiffuseSize.width(), kDiffuseSize.height(), 1,
                                                  modelOf(settings.diffuse), RGBA16F));
    SetPrefilteredSourceWidthMax(std::numeric_limits<int>::max());
    SetPrefilteredSourceHeightMax(std::numeric_limits<int>::max());
    progress.show(work, 0.8f);
    const int levels = MaxLODLevel(kSpecularSize.width(), kSpecularSize.height());
    _table.reset(CreatePreintegratedBRDFTable(kTableSide, kTableSide, unsigned(levels - 1), specular, RGBA16F));

    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, GLuint(drawFramebuffer));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(readFramebuffer));
    glDisable(GL_DEPTH_TEST);
    return _specular && _diffuse && _table;
}

/// The mean luminance of what a white surface shows, over all the ways that it can face.
float Environment::brightness()
{
    std::vector<float> texels(std::size_t(4 * kDiffuseSize.width() * kDiffuseSize.height()));
    const AutoBinder bound(_diffuse.get());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, texels.data());
    double sum = 0.0;
    double weights = 0.0;
    for (int row = 0; row < kDiffuseSize.height(); ++row)
    {
        const double weight = std::sin(M_PI * (row + 0.5) / kDiffuseSize.height());
        for (int column = 0; column < kDiffuseSize.width(); ++column)
        {
            const float* const texel =
                texels.data() + std::size_t(4) * std::size_t(row * kDiffuseSize.width() + column);
            sum += weight * (0.2126 * texel[0] + 0.7152 * texel[1] + 0.0722 * texel[2]);
            weights += weight;
        }
    }
    return std::isfinite(sum) ? std::max(float(sum / weights), kLeast) : 1.0f;
}

void Environment::bind(ShaderProgram& program)
{
    static const QString scaleName = QStringLiteral("u_EnvironmentScale");
    static const std::pair<QString, Map Environment::*> samplers[] = {
        {QStringLiteral("u_EnvironmentSource"), &Environment::_source},
        {QStringLiteral("u_EnvironmentSpecular"), &Environment::_specular},
        {QStringLiteral("u_EnvironmentDiffuse"), &Environment::_diffuse},
        {QStringLiteral("u_EnvironmentTable"), &Environment::_table}};
    for (const auto& [name, map] : samplers)
    {
        Texture* const texture = (this->*map).get();
        texture->bind();
        program.setUniform(name, QVariant(texture->unit()));
    }
    program.setUniform(scaleName, QVariant(_scale));
}

void Environment::unbind()
{
    for (const Map* map : {&_table, &_diffuse, &_specular, &_source})
        (*map)->unbind();
}

} // namespace vrkview
