// SPDX-License-Identifier: MIT
// The command line of vrk-deep-pick.
#pragma once

#include <ModelReader.h>

#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

namespace deeppick
{

struct PickOptions
{
    QString modelPath; ///< empty for the built-in scene
    vrkview::UpAxis upAxis = vrkview::UpAxis::Y;
    QPoint pixel; ///< from the picture's top left, inside it
    QSize size{960, 640};
    float azimuth = 35.0f;
    float elevation = 22.0f;
    bool check = false;
    QString outputPath; ///< empty for no picture
    int room = 0;       ///< fragments that the buffer has room for at first; 0 for a guess
};

struct ParsedPickOptions
{
    enum class Outcome
    {
        Run,
        ShowText,
        Error
    };

    Outcome outcome = Outcome::Run;
    PickOptions options;
    QString text; ///< of the other two: what to show, or one line of what is wrong
};

ParsedPickOptions parsePickOptions(const QStringList& arguments);

} // namespace deeppick
