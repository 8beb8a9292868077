// SPDX-License-Identifier: MIT
#include "NumberedFile.h"

#include "PictureFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vrkview
{

namespace
{
constexpr int kLastNumber = 99999;
}

bool writeNumberedPicture(const QImage& image, const QString& folder, QString& path, QString& error)
{
    if (image.isNull())
    {
        error = QStringLiteral("there is no memory for the picture");
        return false;
    }
    for (int number = 1; number <= kLastNumber; ++number)
    {
        // A name is taken by making the file: between a look at the folder and that another program could come.
        path = QDir(folder).absoluteFilePath(QStringLiteral("vrkview-%1.png").arg(number, 3, 10, QLatin1Char('0')));
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        {
            file.close();
            if (writePicture(image, path, error))
                return true;
            file.remove();
            return false;
        }
        // A link takes its name too when what it leads to is not there.
        if (!file.exists() && !QFileInfo(path).isSymLink())
        {
            error = file.errorString();
            return false;
        }
    }
    error = QStringLiteral("all numbers are taken");
    return false;
}

} // namespace vrkview
