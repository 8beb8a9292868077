// SPDX-License-Identifier: MIT
// Everything that vrk-envmap does with OpenGL, from the picture to the files.
#pragma once

#include "ContactSheet.h"
#include "EnvironmentPicture.h"
#include "EnvmapOptions.h"
#include "Progress.h"

#include <QStringList>

namespace envmap
{

/// Made, used and destroyed with the same context current, after the functions are loaded.
class Work
{
public:
    explicit Work(const Options& options);
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    /// On false `error` says in one line what went wrong; files that were written before it stay.
    bool run(QString& error);

    /// The paths of the files, in the order in which they were written.
    const QStringList& files() const
    {
        return _files;
    }

    /// What is to be told beside, a line each.
    const QStringList& remarks() const
    {
        return _remarks;
    }

private:
    struct Level
    {
        LightImage light;
        double roughness = 0.0;
    };

    void begin(const char* work, float from, float to);
    bool checkDriver(QString& error) const;
    bool readSource(QString& error);
    bool makeCube(QString& error);
    bool filter(QString& error);
    bool filterCube(QString& error);
    bool filterLatLong(QString& error);
    bool makeLayers(QString& error);
    bool addLayers(const char* name, TexturePointer cubes, QString& error);
    bool makeTable(QString& error);
    void compare();
    bool drawSheet(QString& error);

    bool isLatLong() const;
    void addLevel(LightImage light, int level, int levels);
    QString pathOf(const QString& file) const;
    bool write(const LightImage& light, const QString& name, QString& error);
    bool writeImage(const QImage& image, const QString& path, QString& error);
    QString title() const;

    const Options& _options;
    Progress _progress;
    LightImage _picture;
    Layout _layout = Layout::LatLong;
    TexturePointer _cube;
    LightImage _cubeStrip;
    LightImage _latLong; ///< what a map by longitude and latitude was filtered from
    std::vector<Level> _levels;
    std::vector<std::pair<QString, LightImage>> _layers;
    LightImage _table;
    QStringList _files;
    QStringList _remarks;
};

} // namespace envmap
