// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Reads pictures back and compares them. On a failure the actual, the expected and a difference picture are written
/// beside the test program.

#include <QImage>
#include <QString>

#include <gtest/gtest.h>

namespace Harrow::Vrk::Test
{

/// Reads the bound read framebuffer, RGBA8, top row first.
QImage readPicture(int width, int height);

/// How far two pictures are apart, in steps of 1/255 over all channels; 255 for different sizes.
struct PictureDifference
{
    int maximum = 0;
    double mean = 0.0;
};
PictureDifference comparePictures(const QImage& actual, const QImage& expected);

/// Holds when sizes agree and no channel differs by more than `maximum`, and all by no more than `mean` on average.
testing::AssertionResult picturesAgree(const QImage& actual, const QImage& expected, int maximum, double mean);

/// An RGBA8 picture with a depth buffer to draw into: for contexts without a default framebuffer. Bound while alive.
class OffscreenTarget
{
public:
    OffscreenTarget(int width, int height);
    ~OffscreenTarget();
    OffscreenTarget(const OffscreenTarget&) = delete;
    OffscreenTarget& operator=(const OffscreenTarget&) = delete;

    QImage read() const;

private:
    int _width;
    int _height;
    unsigned int _framebuffer = 0;
    unsigned int _renderbuffers[2] = {0, 0};
};

} // namespace Harrow::Vrk::Test
