// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Shadows: turns a list of lights into up to 32 projections, one for each layer of a depth array texture, and tells a
/// shader which of them belong to which light. The application renders the depth; the lookups are in GLSL.

#include "Export.h"

#include <QList>
#include <QMatrix4x4>
#include <QObject>
#include <QString>

#include <utility>

QT_FORWARD_DECLARE_CLASS(QVariant)
QT_FORWARD_DECLARE_CLASS(QVector3D)

namespace Harrow::Vrk
{

class GLSLMacroProcessor;
class ShaderProgram;
class Texture;

/// Lights that have projections of their own, at most; the size of the shader's array.
inline constexpr int kShadowMapInfoArraySizeMax = 32;
/// Projections of all lights together, at most; the size of the shader's array.
inline constexpr int kShadowMapTransformArraySizeMax = 32;

/// Static operations alone. What they work on lives in two kinds of object that the application keeps, and that travel
/// as `QVariant`s of `QObject*`, so that who passes them on need not know their types.
///
/// Once, for each program that is lit:
///
///     ShadowMapManager::setup(&processor, 0);              // the defines
///     program.setMacroProcessor(&processor);
///     program.addShaderFromFile(GL_FRAGMENT_SHADER, ShadowMapManager::getShaderFile());
///     program.addShader(GL_FRAGMENT_SHADER, text);         // with #include "ShadowMapManager.glslh"
///
/// and in each frame:
///
///     if (ShadowMapManager::processLights(lights, renderData, &projection, &view, &sceneBounds))
///         for (int layer = 0; layer < renderData.transformCount; ++layer)
///             drawDepth(layer, renderData.transforms[layer]);
///     ShadowMapManager::bind(&program, data);
///     // draw
///     ShadowMapManager::unbind(&program, data);
///
/// **What a layer holds.** The shader compares the red of the layer with z / w of the projected point as it is, without
/// bringing it from -1..1 to 0..1: depth has to be written in that form. Values at or below 0 and at or above 1 count
/// as nothing there. For variance maps green holds the square of red.
///
/// **Which way lights look.** A point light and a spot look along the -z of their own space, a directional light shines
/// along its +z. Fitted projections turn y around for a light whose transform does not mirror. The place of a
/// directional light should be within what is seen, before the eye for one: its maps are a hundredth larger around that
/// place, not around what they show, so from a place far away they miss as much at the side toward it.
///
/// All on the thread of the OpenGL context; everything but `bind` and `unbind` does without the context itself.
class VRKGL_EXPORT ShadowMapManager
{
public:
    class Light;
    class RenderData;

    ShadowMapManager() = delete;

    /// Binds the texture, which must have a free unit, and sets the lookups' uniforms of `program`, which must be
    /// bound. True when done. False, with an assertion, when `data` is null, holds no `QObject*` or a null one, or an
    /// object of another class, whose name goes to the debug log as "Type '%s'"; when there is no texture or no unit
    /// for it; and when `program` is null, with the texture bound all the same. Lists whose size is not the shader's
    /// are reported and passed on as they are.
    static bool bind(ShaderProgram* program, QVariant dataVariant);
    /// Unbinds the texture. False, with an assertion, without render data or texture. `program` is not looked at.
    static bool unbind(ShaderProgram* program, QVariant dataVariant);

    /// Gives the processor the defines of the lookups; nothing when it is null. Bit 0 of `flags` asks for variance
    /// maps: the depth texture holds depth in red and its square in green.
    static void setup(GLSLMacroProcessor* processor, int flags);
    /// How much of the light that variance maps let through counts as none, from 0 to below 1: what lets light bleed
    /// through where shadows overlap. For all programs, from the next `bind` on. 0.1 at the start.
    static void setVarianceClamping(float clamp);

    /// Gives each light its projections, in the order of `lights`, until all 32 are taken. `lights` is a list of
    /// `Light`s, as a `QVariantList` or what converts to one; what does not counts as an empty list, and null as no
    /// lights. `projection` and `view` are the camera's, clip space from view and view from world; `sceneBounds` are
    /// the lower and upper corner of all that casts or receives shadows, in the world. Each of the three may be null.
    ///
    /// With bounds, and better with a camera too, directional and point lights get projections that cover what there is
    /// to see and no more (`ShadowMapManagerCulling`), several for cascades. Without them a directional light gets a
    /// fixed box around its place, and a point light all six sides up to 100 units far. A spot always gets its cone
    /// that far.
    ///
    /// Returns whether a matrix in use has changed, so that depth has to be rendered anew; false without any. More than
    /// 32 lights: "More lights %d than shadow projection supports %d. Ignoring top most." (debug). An entry that is no
    /// `Light`: an assertion and false; the lights before it are processed, and counts stay as they were.
    static bool processLights(QVariant lights, RenderData& data);
    static bool processLights(QVariant lights, RenderData& data, const QMatrix4x4* projection, const QMatrix4x4* view,
                              const std::pair<QVector3D, QVector3D>* sceneBounds);

    /// "ShadowMapManager.glslc", for `ShaderProgram::addShaderFromFile`.
    static QString getShaderFile();

private:
    static void setupSextant();
};

/// What shadows need to know of a light. A plain record; nothing is told when it changes.
class VRKGL_EXPORT ShadowMapManager::Light : public QObject
{
    Q_OBJECT

public:
    /// Tells how projections are fitted to the light.
    enum Type
    {
        ePoint = 0,
        eSpot = 1,
        eDirectional = 2
    };
    Q_ENUM(Type)

    /// A point light that is on and casts shadows, without cascades or cone.
    explicit Light(QObject* parent = nullptr);

    /// Only a light that is on and casts shadows gets projections.
    void setType(Type type);
    void setOn(bool on);
    void setShadowCaster(bool shadowCaster);
    /// How many parts the range from near to far is split into, each with a projection of its own. Below 2 there are no
    /// cascades, and neither without a camera and scene bounds. For directional and point lights.
    void setCSMLevels(int levels);
    /// Half the angle of the cone, in radians; negative for none. A point light that has one looks only to the sides
    /// that it reaches. A spot needs one.
    void setSpotCutoff(float radians);
    /// To the world from the light's space. A transform that can't be inverted counts as identity.
    void setTransform(const QMatrix4x4& worldFromLight);

    /// As they were set.
    Type type() const;
    bool on() const;
    bool shadowCaster() const;
    int csmLevels() const;
    float spotCutoff() const;
    QMatrix4x4 transform() const;

private:
    Type _type = ePoint;
    bool _on = true;
    bool _shadowCaster = true;
    qint32 _csmLevels = 0;
    float _spotCutoff = -1.0f;
    QMatrix4x4 _transform;
};

/// The projections of a frame, in the form that OpenGL takes them in. The lists have their 32 entries from the start;
/// who changes their size is told at `bind`.
class VRKGL_EXPORT ShadowMapManager::RenderData : public QObject
{
    Q_OBJECT

public:
    /// To a layer's clip space from the world: sixteen floats, column after column.
    struct VRKGL_EXPORT Transform
    {
        /// All zero.
        Transform() = default;
        Transform(const QMatrix4x4& matrix);
        Transform& operator=(const QMatrix4x4& matrix);

        /// The same numbers, as Qt's matrix.
        QMatrix4x4 toMatrix() const;
        /// Element by element, exactly; false where one is not a number.
        bool operator==(const QMatrix4x4& matrix) const;

        /// Column after column.
        float values[16] = {};
    };

    /// The projections of a light: how many, and the first. An ivec2 in GLSL.
    struct ProjectorInfo
    {
        /// Of the projections; `index` is that of the first.
        qint32 count = 0;
        qint32 index = 0;
    };

    /// How soft the edge of a projection's shadows is meant to be. For the application.
    struct BlurInfo
    {
        /// As it was set.
        float blur = 0.0005f;
    };

    /// Without a texture, and all projections zero.
    explicit RenderData(QObject* parent = nullptr);

    /// The depth array texture, a layer for each projection. Borrowed: it must live as long as it is set.
    void setProjectionTexture(Texture* texture);
    /// Stores a projection and returns whether it differs from what was there. An index beyond the lists: an assertion
    /// and false.
    bool setTransform(int index, const QMatrix4x4& matrix, float blur);

    /// As it was set; null at the start.
    Texture* projectionTexture() const;

private:
    Texture* _projectionTexture = nullptr;

public:
    qint32 lightCount = 0;               ///< that the last `processLights` took
    qint32 transformCount = 0;           ///< in use
    QList<Transform> transforms;         ///< by layer
    QList<ProjectorInfo> projectorInfos; ///< by light
    QList<BlurInfo> blurInfos;           ///< by transform
};

} // namespace Harrow::Vrk
