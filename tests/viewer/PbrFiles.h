// SPDX-License-Identifier: MIT
// Squares of glTF whose material the tests write, with pictures inside of the file, and environments to light them.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QJsonObject>
#include <QList>
#include <QVector3D>

#include <functional>

/// A square from (-1, -1) to (1, 1) in the plane z = 0 that faces +z. A camera "front" looks at it from (0, 0, 3).
struct Square
{
    QJsonObject material{}; ///< as glTF has it; its textures are numbers of `pictures`
    QList<QImage> pictures{};
    QJsonObject sampler{};     ///< of all pictures, if it has words
    bool mirroredX = false;    ///< pictures lie from right to left
    bool mirroredY = false;    ///< they stand on their heads
    QJsonObject node{};        ///< more words about its node
    QList<QJsonObject> more{}; ///< nodes beside it
    QJsonObject root{};        ///< more words about the file
};

/// Its second set of texture coordinates goes from right to left where the first goes from left to right.
QByteArray gltfFile(const Square& square);

/// The same as a binary file, with the pictures as data addresses.
QByteArray glbFile(const Square& square);

/// Where the camera sees a place of the square, in a square picture of `side` pixels.
QPoint pixelOf(double x, double y, int side);

QImage plainPicture(int red, int green, int blue);

/// A picture whose texels say this normal, x to the right and y upwards.
QImage normalPicture(const QVector3D& normal);

/// Red and green above, blue and white below, from left to right.
QImage quarterPicture();

/// A Radiance picture by latitude and longitude of grey light; 1 is the most that it holds.
QByteArray environmentFile(const std::function<float(const QVector3D& direction)>& light);

/// The light that a channel of a finished picture shows, from 0 to 1; exact below the knee at 0.6.
double shownLight(int channel);
