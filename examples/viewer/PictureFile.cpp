// SPDX-License-Identifier: MIT
#include "PictureFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace vrkview
{

namespace
{
constexpr int kDotsPerMeter = 2835; // 72 to the inch
}

QString pictureFault(const QString& path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return QStringLiteral("it is a directory");
    if (info.exists() && !info.isFile())
        return QStringLiteral("it is not a regular file");
    if (info.suffix().compare(QLatin1String("png"), Qt::CaseInsensitive) != 0)
        return QStringLiteral("pictures are written as .png");
    if (!info.dir().exists())
        return QStringLiteral("there is no folder '%1'").arg(info.path());

    // Permissions alone don't tell, as on a read-only file system; a try does. What it opened is removed again.
    QSaveFile trial(path);
    if (trial.open(QIODevice::WriteOnly))
        return {};
    return QStringLiteral("no file can be made there (%1)").arg(trial.errorString());
}

bool writePicture(const QImage& image, const QString& path, QString& error)
{
    // The same pixels make the same file, whatever screen there is: else its dots per inch would go in.
    QImage picture = image;
    picture.setDotsPerMeterX(kDotsPerMeter);
    picture.setDotsPerMeterY(kDotsPerMeter);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !picture.save(&file, "PNG") || !file.commit())
    {
        error = file.error() == QFileDevice::NoError ? QStringLiteral("the picture could not be encoded")
                                                     : file.errorString();
        return false;
    }
    return true;
}

} // namespace vrkview
