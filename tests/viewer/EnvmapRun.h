// SPDX-License-Identifier: MIT
// Runs vrk-envmap in a folder of the test's own, with pictures whose every pixel the test computes.
#pragma once

#include "ModelFiles.h"
#include "RadianceDecoder.h"
#include "ViewerRun.h"

#include <array>
#include <functional>

using Vector = std::array<double, 3>;
using Color = std::array<double, 3>;

/// What the environment shows in a direction of length 1.
using Environment3D = std::function<Color(const Vector&)>;

/// Directions of OpenGL's faces, +x -x +y -y +z -z, for s and t from -1 to 1, t growing downwards.
Vector faceDirection(int face, double s, double t);
/// Of the texel of a strip whose faces are as wide as it is high.
Vector stripDirection(int height, int x, int y);
/// Of the pixel of a picture by longitude and latitude: up at the top, +x in the middle, +z a quarter further right.
Vector latLongDirection(int width, int height, int x, int y);

/// Radiance files made pixel by pixel, as a reader of the simplest kind wants them: no run-length coding.
QByteArray plainRadiance(int width, int height, const std::function<Color(int x, int y)>& color);
QByteArray latLongFile(int width, const Environment3D& environment);
QByteArray stripFile(int face, const Environment3D& environment);

/// Of three different waves, from 0.2 to 0.8: smooth, and different towards all sides.
Color waves(const Vector& direction);

class EnvmapRun
{
public:
    /// `arguments` with `--output` into a folder "out" of `folder`; fails the test unless it succeeds, prints exactly
    /// the files that it made, and says nothing else.
    EnvmapRun(const ModelFolder& folder, const QStringList& arguments, const Environment& environment = {});

    const ViewerRun& run() const
    {
        return _run;
    }
    /// By its name in the folder.
    RadiancePicture hdr(const QString& name) const;
    QImage png(const QString& name) const;
    QStringList files() const;

    /// Number behind `word` in each line that begins with "level", such as "mean error".
    std::vector<double> levelNumbers(const QString& word) const;

private:
    QString _folder;
    ViewerRun _run;
};

/// The run says `words` in one line, fails, and leaves `folder` as it was.
void expectEnvmapRefused(const ModelFolder& folder, const QStringList& arguments, const QString& words,
                         const Environment& environment = {});

/// No texel of a strip is farther off from the environment than `tolerance`.
void expectStrip(const RadiancePicture& strip, const Environment3D& environment, double tolerance);
