// SPDX-License-Identifier: MIT
// The crowd on a stage of its own, by the library alone: records, manager, programs, lights, textures, framebuffer.
// Everything on it can be changed between frames.
#pragma once

#include "CrowdModel.h"
#include "Lighting.h"
#include "Records.h"
#include "RenderSettings.h"
#include "Wardrobe.h"

#include "GLSLMacroProcessor.h"

#include <QString>

#include <functional>
#include <memory>

namespace Harrow::Vrk
{
class FramebufferObject;
class ShaderProgram;
class Texture;
class TextureManager;
} // namespace Harrow::Vrk

namespace vrksoak
{

class Random;

struct StageSettings
{
    vrkview::ManagerKind manager = vrkview::ManagerKind::Sampler;
    vrkview::RecordCarrier carrier = vrkview::RecordCarrier::UniformBuffer;
    bool byBaseInstance = false;
    int crowd = 100;

    QString text() const;
};

class Stage
{
public:
    Stage();
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    bool create(const StageSettings& settings, QString& error);

    /// On false `error` says in one line what went wrong.
    bool draw(int frame, QString& error);

    /// \name Changes
    ///@{
    bool buildPrograms(int look, QString& error);
    bool changeLights(Random& random, QString& error);
    bool resizeTarget(Random& random, QString& error);
    ///@}

    /// Takes away all that has come since the start, but for what the library keeps for the next ones. False, with
    /// `error` in one line, when the manager has not got all tokens back.
    bool rest(QString& error);

    CrowdModel& crowd()
    {
        return *_crowd;
    }
    Wardrobe& wardrobe()
    {
        return *_wardrobe;
    }
    Lighting& lighting()
    {
        return *_lighting;
    }
    Harrow::Vrk::TextureManager& manager()
    {
        return *_manager;
    }

private:
    struct Programs
    {
        Harrow::Vrk::GLSLMacroProcessor processor; // the programs point at it
        std::unique_ptr<Harrow::Vrk::ShaderProgram> crowd;
        std::unique_ptr<Harrow::Vrk::ShaderProgram> depth;
    };

    template <typename Manager> Manager& newManager();
    bool createManager(vrkview::ManagerKind kind, QString& error);
    std::unique_ptr<Harrow::Vrk::ShaderProgram> newProgram(Programs& programs, const QString& fragmentName) const;
    bool createTarget(int width, int height, QString& error);
    void destroyTarget();
    void drawDepth(const QMatrix4x4& clipFromWorld);
    void drawCrowd(const QMatrix4x4& clipFromWorld);

    StageSettings _settings;
    vrkview::Model _model;
    std::shared_ptr<Harrow::Vrk::TextureManager> _manager; // not shared, but it knows how its kind is deleted
    std::function<quint64()> _tokenEnd;                    // of the manager: one past the highest token in use
    quint64 _tokenEndAtStart = 0;
    std::unique_ptr<Records> _records;
    std::unique_ptr<CrowdModel> _crowd;
    std::unique_ptr<Wardrobe> _wardrobe;
    std::unique_ptr<Lighting> _lighting;
    std::unique_ptr<Programs> _programs;
    std::unique_ptr<Harrow::Vrk::FramebufferObject> _framebuffer;
    std::unique_ptr<Harrow::Vrk::Texture> _color;
    std::unique_ptr<Harrow::Vrk::Texture> _depth;
    int _width = 0;
    int _height = 0;
    int _look = 0;
};

} // namespace vrksoak
