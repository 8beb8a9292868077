// SPDX-License-Identifier: MIT
#include "support/Picture.h"

#include "GLFunctions.h"

#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <cstdlib>

namespace Harrow::Vrk::Test
{
namespace
{

template <typename Visit> void forEachChannel(const QImage& left, const QImage& right, Visit visit)
{
    for (int y = 0; y < left.height(); ++y)
    {
        const uchar* const a = left.constScanLine(y);
        const uchar* const b = right.constScanLine(y);
        for (int i = 0; i < left.width() * 4; ++i)
            visit(i, y, std::abs(int(a[i]) - int(b[i])));
    }
}

QImage differencePicture(const QImage& left, const QImage& right)
{
    QImage result(left.size(), QImage::Format_RGBA8888);
    result.fill(Qt::black);
    forEachChannel(left, right,
                   [&result](int i, int y, int difference)
                   {
                       if (i % 4 != 3)
                           result.scanLine(y)[i] = static_cast<uchar>(std::min(255, difference * 16));
                   });
    return result;
}

QString writeBeside(const QString& kind, const QImage& image)
{
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    const QString name =
        QStringLiteral("%1.%2.%3.png").arg(QLatin1String(info->test_suite_name()), QLatin1String(info->name()), kind);
    const QString path = QDir(QCoreApplication::applicationDirPath()).filePath(QString(name).replace(u'/', u'_'));
    image.save(path);
    return path;
}

} // namespace

QImage readPicture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGBA8888);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    return image.mirrored();
}

PictureDifference comparePictures(const QImage& actual, const QImage& expected)
{
    const QImage a = actual.convertToFormat(QImage::Format_RGBA8888);
    const QImage b = expected.convertToFormat(QImage::Format_RGBA8888);
    if (a.size() != b.size())
        return {255, 255.0};
    PictureDifference result;
    double sum = 0.0;
    forEachChannel(a, b,
                   [&](int, int, int difference)
                   {
                       result.maximum = std::max(result.maximum, difference);
                       sum += difference;
                   });
    result.mean = sum / (4.0 * std::max(1, a.width() * a.height()));
    return result;
}

testing::AssertionResult picturesAgree(const QImage& actual, const QImage& expected, int maximum, double mean)
{
    if (actual.size() != expected.size() || actual.isNull())
        return testing::AssertionFailure() << "sizes differ: " << actual.width() << " x " << actual.height() << " and "
                                           << expected.width() << " x " << expected.height();
    const PictureDifference difference = comparePictures(actual, expected);
    if (difference.maximum <= maximum && difference.mean <= mean)
        return testing::AssertionSuccess();
    const QString actualPath = writeBeside(QStringLiteral("actual"), actual);
    writeBeside(QStringLiteral("expected"), expected);
    writeBeside(QStringLiteral("difference"), differencePicture(actual.convertToFormat(QImage::Format_RGBA8888),
                                                                expected.convertToFormat(QImage::Format_RGBA8888)));
    return testing::AssertionFailure() << "pictures differ by " << difference.maximum << " at most and "
                                       << difference.mean << " on average; see " << qPrintable(actualPath);
}

OffscreenTarget::OffscreenTarget(int width, int height) : _width(width), _height(height)
{
    glGenFramebuffers(1, &_framebuffer);
    glGenRenderbuffers(2, _renderbuffers);
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffers[0]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, _renderbuffers[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffers[1]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, _renderbuffers[1]);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glViewport(0, 0, width, height);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
}

OffscreenTarget::~OffscreenTarget()
{
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteRenderbuffers(2, _renderbuffers);
    glDeleteFramebuffers(1, &_framebuffer);
}

QImage OffscreenTarget::read() const
{
    return readPicture(_width, _height);
}

} // namespace Harrow::Vrk::Test
