// SPDX-License-Identifier: MIT
// What the programs of the guides share, and what says nothing about the library: a context without a window, a picture
// to draw into, and checks on it. A message at warning level or above counts as a failed check.
#pragma once

#include "HeadlessContext.h"

#include <QColor>
#include <QImage>
#include <QList>
#include <QVector3D>

class Guide
{
public:
    /// Makes a context current, loads OpenGL's functions, and makes a picture of that many pixels. A first argument
    /// names the file that `finish` saves the picture to.
    Guide(int argc, char** argv, int width, int height);

    /// Whether that went well. If not, it was told why.
    bool isReady() const;

    /// Makes the picture what is drawn into, and clears colour and depth.
    void begin(const QColor& background);

    /// Appends the twelve triangles of a box, three floats for each vertex, counter-clockwise seen from outside.
    static void addBox(QList<float>& vertices, const QVector3D& low, const QVector3D& high);

    /// A pixel, counted from the lower left, of what has been drawn when the first one is asked for after `begin`.
    QColor pixel(int x, int y);

    /// Complains unless it holds; the second form lets each channel be off by three of 255.
    void expect(bool holds, const char* what);
    void expectColor(const QColor& seen, const QColor& wanted, const char* what);

    /// The exit code of the program: 0 if every check held and OpenGL has no error to tell.
    int finish();

private:
    const QImage& picture();

    vrkview::HeadlessContext _context;
    const char* _file = nullptr;
    int _width;
    int _height;
    unsigned _framebuffer = 0; // smoothed, and a plain one to read from
    unsigned _resolved = 0;
    QImage _picture; // as it was read, the bottom row first; null until then
    bool _ready = false;
    int _failures = 0;
};
