// SPDX-License-Identifier: MIT
// The command line as a value. Parsing needs no display and touches no file; what a path or a size means on this
// machine is checked by whoever uses it. Only the text of --help asks for an application object.
#pragma once

#include "ModelReader.h"
#include "RenderSettings.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace vrkview
{

struct Options
{
    QString modelPath;            ///< empty: the built-in scene, or another that is made here
    QString outputPath;           ///< empty: vrkview.png in the current folder; with `window`: no picture
    QSize size{1280, 720};        ///< of the picture in pixels; of the window in device independent pixels
    std::optional<float> azimuth; ///< degrees; not given: what suits the model
    std::optional<float> elevation;
    int samples = 0; ///< per pixel; 0: many for a picture, few for a window
    UpAxis upAxis = UpAxis::Y;
    RenderSettings settings;
    std::optional<bool> shadows; ///< not given: in the built-in scene
    bool noEnvironment = false;  ///< not even in the built-in scene
    bool builtIn = false;
    int crowd = 0;                       ///< instances of the crowd scene; 0 is no crowd
    QString texturePath;                 ///< a texture file that is shown in place of a scene
    std::optional<int> textureLevel = 0; ///< nothing: all levels
    std::optional<float> exposure;
    int textures = 0;       ///< panels of the wall of textures; 0 is no wall
    bool streamers = false; ///< the wall of screens
    QString camera;         ///< name or number of one of the file's cameras; empty: orbiting
    bool stats = false;
    bool window = false;

    /// For tests: the window closes by itself after this many frames, 0 is never. With `outputPath` the last frame
    /// is written there. Not listed by --help.
    int frames = 0;

    /// For tests and pictures of the window: keys that are pressed, one after each frame, as in "S, Shift+P". --help
    /// does not list it.
    QString press;
};

struct ParsedOptions
{
    enum class Outcome
    {
        Run,
        ShowText, ///< --help or --version: `text` goes to standard output
        Error,    ///< `text` is one line
    };

    Outcome outcome = Outcome::Run;
    Options options;
    QString text;
};

/// `arguments` as the system gives them, the program's name first. `version` is what --version shows.
ParsedOptions parseOptions(const QStringList& arguments, const QString& version);

} // namespace vrkview
