// SPDX-License-Identifier: MIT
// The command line of vrk-envmap as a value. Parsing touches no file; only the text of --help asks for an application
// object.
#pragma once

#include <VrkGL/PrefilteredEnvMap.h>
#include <VrkGL/ZelImageCubemapUtils.h>

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace envmap
{

using Layout = Harrow::Vrk::ZelImageCubemapSourceType;

enum class FileFormat
{
    Hdr,
    Png,
};

struct Options
{
    QString imagePath;                          ///< empty where only the table is wanted
    QString outputFolder = QStringLiteral("."); ///< made if it is not there
    std::optional<Layout> layout;               ///< not given: what the sides' ratio says
    Harrow::Vrk::ShadingModel model = Harrow::Vrk::SHADING_PHYSICALLY_BASED;
    QString modelName = QStringLiteral("ggx");
    int size = 128; ///< of a face of the filtered cube map, in texels
    int samples = 256;
    QSize latLong;           ///< of a filtered map by longitude and latitude, in place of the cube map; empty: no
    bool everyTexel = false; ///< for the diffuse models by longitude and latitude
    int blurLayers = 0;
    int ndotlLayers = 0;
    FileFormat format = FileFormat::Hdr;
    float exposure = 0.0f; ///< of PNGs and of the sheet, in stops
    bool table = false;
    bool compare = false;
    QString sheetPath; ///< empty: none
};

struct ParsedOptions
{
    enum class Outcome
    {
        Run,
        ShowText, ///< `text` goes to standard output
        Error,    ///< `text` is one line
    };

    Outcome outcome = Outcome::Run;
    Options options;
    QString text;
};

/// `arguments` as the system gives them, the program's name first.
ParsedOptions parseOptions(const QStringList& arguments, const QString& version);

/// The word of the command line for a layout.
QString layoutName(Layout layout);

} // namespace envmap
