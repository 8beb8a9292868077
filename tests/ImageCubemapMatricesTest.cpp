// SPDX-License-Identifier: MIT
//
// The matrices of the cube map conversion: against their numbers, and against where OpenGL's table of faces, the cells
// of a cross and the cells of a row put each place.
#include "ZelRenderCubemapMatrices.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace Harrow::Vrk::Test
{

namespace
{

using Vector = std::array<double, 3>;

/// What OpenGL's table of faces says of the place s, t.
Vector placeOnFace(int face, double s, double t)
{
    const Vector places[] = {{1, -t, -s}, {-1, -t, s}, {s, 1, t}, {s, -1, -t}, {s, -t, 1}, {-s, -t, -1}};
    return places[face];
}

template <int Columns, int Rows>
std::array<double, Rows> product(const QGenericMatrix<Columns, Rows, float>& matrix,
                                 const std::array<double, Columns>& vector)
{
    std::array<double, Rows> result = {};
    for (int row = 0; row < Rows; ++row)
        for (int column = 0; column < Columns; ++column)
            result[std::size_t(row)] += double(matrix(row, column)) * vector[std::size_t(column)];
    return result;
}

constexpr double kPlaces[] = {-1.0, -0.25, 0.5, 1.0};

} // namespace

TEST(ImageCubemapMatrices, ThePixelsOfAFaceStandForTheDirectionsOfItsTexels)
{
    for (int face = 0; face < 6; ++face)
        for (const double s : kPlaces)
            for (const double t : kPlaces)
                EXPECT_EQ(product(cubemapFaceNormalMatrix(face), {1, s, t}), placeOnFace(face, s, t)) << face;
}

TEST(ImageCubemapMatrices, TheColumnsOfTheFacesAreTheirs)
{
    const float columns[6][9] = {{1, 0, 0, 0, 0, -1, 0, -1, 0}, {-1, 0, 0, 0, 0, 1, 0, -1, 0},
                                 {0, 1, 0, 1, 0, 0, 0, 0, 1},   {0, -1, 0, 1, 0, 0, 0, 0, -1},
                                 {0, 0, 1, 1, 0, 0, 0, -1, 0},  {0, 0, -1, -1, 0, 0, 0, -1, 0}};
    for (int face = 0; face < 6; ++face)
        for (int i = 0; i < 9; ++i)
            EXPECT_EQ(cubemapFaceNormalMatrix(face).constData()[i], columns[face][i]) << face << " " << i;
}

TEST(ImageCubemapMatrices, EachFaceFillsItsCellOfTheCross)
{
    const int cells[2][6][2] = {{{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {3, 1}},
                                {{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {1, 3}}};
    for (const bool portrait : {false, true})
    {
        const double columns = portrait ? 3 : 4;
        const double rows = portrait ? 4 : 3;
        for (int face = 0; face < 6; ++face)
            for (const double s : kPlaces)
                for (const double t : kPlaces)
                {
                    const Vector place = placeOnFace(face, s, t);
                    const auto uv = product(cubemapCrossMatrix(face, portrait), {place[0], place[1], place[2], 1});
                    // The faces lie as OpenGL has them, but for the last one of an upright cross, which hangs upside
                    // down.
                    const double turn = portrait && face == 5 ? -1.0 : 1.0;
                    EXPECT_NEAR(uv[0], (cells[portrait][face][0] + 0.5 + 0.5 * turn * s) / columns, 1e-6)
                        << portrait << face;
                    EXPECT_NEAR(uv[1], (cells[portrait][face][1] + 0.5 + 0.5 * turn * t) / rows, 1e-6)
                        << portrait << face;
                }
    }
}

TEST(ImageCubemapMatrices, EachFaceFillsItsCellOfTheRow)
{
    for (int face = 0; face < 6; ++face)
        for (const double s : kPlaces)
            for (const double t : kPlaces)
            {
                const Vector place = placeOnFace(face, s, t);
                const auto uv = product(cubemapLinearMatrix(face), {place[0], place[1], place[2], 1});
                EXPECT_NEAR(uv[0], (face + 0.5 + 0.5 * s) / 6.0, 1e-6) << face;
                EXPECT_NEAR(uv[1], 0.5 + 0.5 * t, 1e-6) << face;
            }
}

TEST(ImageCubemapMatrices, TheRowsOfTheLinearMatrixAreTheirs)
{
    const double a = 1.0 / 12.0;
    const double rows[6][2][4] = {{{0, 0, -a, a}, {0, -0.5, 0, 0.5}},   {{0, 0, a, 0.25}, {0, -0.5, 0, 0.5}},
                                  {{a, 0, 0, 5 * a}, {0, 0, 0.5, 0.5}}, {{a, 0, 0, 7 * a}, {0, 0, -0.5, 0.5}},
                                  {{a, 0, 0, 0.75}, {0, -0.5, 0, 0.5}}, {{-a, 0, 0, 11 * a}, {0, -0.5, 0, 0.5}}};
    for (int face = 0; face < 6; ++face)
        for (int row = 0; row < 2; ++row)
            for (int column = 0; column < 4; ++column)
                EXPECT_NEAR(cubemapLinearMatrix(face)(row, column), rows[face][row][column], 1e-7) << face;
}

TEST(ImageCubemapMatrices, EachCellOfAStripShowsItsFaceUpsideDown)
{
    for (int face = 0; face < 6; ++face)
        for (const double x : kPlaces)
            for (const double y : kPlaces)
                EXPECT_EQ(product(cubemapStripMatrix(face), {x, y, -1}), placeOnFace(face, x, -y)) << face;
}

} // namespace Harrow::Vrk::Test
