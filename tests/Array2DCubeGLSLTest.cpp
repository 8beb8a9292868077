// SPDX-License-Identifier: MIT
//
// Cube maps in the GLSL of Array2DTextureManager: six layers, sampled by hand. Judged by a table of directions, and by
// what the driver makes of the same cube map with a samplerCube of its own.
#include "Array2DGLSLTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kSize = 8;
constexpr int kNumber = 4;

struct Direction
{
    float x;
    float y;
    float z;
};

/// The direction through the middle of a texel, by OpenGL's definition of the faces.
Direction throughTexel(int face, int column, int row, float length = 1.0f)
{
    const float s = (2.0f * float(column) + 1.0f) / float(kSize) - 1.0f;
    const float t = (2.0f * float(row) + 1.0f) / float(kSize) - 1.0f;
    const Direction faces[] = {{1, -t, -s}, {-1, -t, s}, {s, 1, t}, {s, -1, -t}, {s, -t, 1}, {-s, -t, -1}};
    return {faces[face].x * length, faces[face].y * length, faces[face].z * length};
}

class Array2DCubeGLSLGL : public Array2DGLSLFixture
{
protected:
    /// The cube map is not the first one of its slot: its layers start at 6.
    void place()
    {
        Texture* const before = texture(9, kSize, kSize, GL_TEXTURE_CUBE_MAP);
        source = texture(kNumber, kSize, kSize, GL_TEXTURE_CUBE_MAP);
        announce({tokenOf(before)});
        cube = tokenOf(source);
        announce({cube});
    }

    void bindSource()
    {
        source->bind();
        glUniform1i(program->getUniformLocation(QStringLiteral("u_Cube")), source->unit());
    }

    Texture* source = nullptr;
    TextureToken cube;
};

} // namespace

TEST_F(Array2DCubeGLSLGL, EveryTexelIsWhereTheDriversOwnCubeHasIt)
{
    forEachVariant(
        [&]
        {
            std::vector<Lookup> lookups;
            std::vector<Texel> expected;
            const auto add = [&](const Direction& direction, int face, int x, int y)
            {
                lookups.push_back({cube, {direction.x, direction.y, direction.z, 0}});
                expected.push_back(knownTexel(kNumber, face, x, y));
            };
            for (const char* const call :
                 {"managedTextureCube(vo_Token, vo_Place.xyz)", "managedTextureCubeLod(vo_Token, vo_Place.xyz, 0.0)",
                  "textureLod(u_Cube, vo_Place.xyz, 0.0) + 0.0 * managedTextureLod(vo_Token, vec2(0.0), 0.0)"})
            {
                place();
                lookups.clear();
                expected.clear();
                for (int face = 0; face < 6; ++face)
                    for (int y = 0; y < kSize; ++y)
                        for (int x = 0; x < kSize; ++x)
                            for (const float length : {1.0f, 0.3f, 70.0f})
                                add(throughTexel(face, x, y, length), face, x, y);
                ASSERT_TRUE(build(variant, QLatin1String(call)));
                const bool isDrivers = QLatin1String(call).startsWith(QLatin1String("textureLod"));
                const auto actual =
                    lookUp(lookups, isDrivers ? std::function<void()>([this] { bindSource(); }) : nullptr);
                for (std::size_t i = 0; i < actual.size(); ++i)
                    ASSERT_TRUE(texelsAgree(actual[i], expected[i])) << call << " " << i;
                if (isDrivers)
                    source->unbind();
                restart();
            }
        });
}

TEST_F(Array2DCubeGLSLGL, DiagonalsGoWhereTheTableSays)
{
    forEachVariant(
        [&]
        {
            place();
            const struct
            {
                Direction direction;
                int face; ///< In the order of OpenGL: +x, -x, +y, -y, +z, -z.
                float u;
                float v;
            } rows[] = {
                // As far along x as along y: y has it.
                {{1, 1, 0}, 2, 1.0f, 0.5f},
                {{-1, 1, 0}, 2, 0.0f, 0.5f},
                {{1, -1, 0}, 3, 1.0f, 0.5f},
                {{-1, -1, 0}, 3, 0.0f, 0.5f},
                {{2, 2, 1}, 2, 1.0f, 0.75f},
                {{2, -2, 1}, 3, 1.0f, 0.25f},
                // As far along x as along z, and not so far along y: z has it.
                {{1, 0, 1}, 4, 1.0f, 0.5f},
                {{-1, 0, 1}, 4, 0.0f, 0.5f},
                {{1, 0, -1}, 5, 0.0f, 0.5f},
                {{-1, 0, -1}, 5, 1.0f, 0.5f},
                {{2, 1, 2}, 4, 1.0f, 0.25f},
                {{2, -1, -2}, 5, 0.0f, 0.75f},
                // As far along y as along z: z.
                {{0, 1, 1}, 4, 0.5f, 0.0f},
                {{0, -1, 1}, 4, 0.5f, 1.0f},
                {{0, 1, -1}, 5, 0.5f, 0.0f},
                {{0, -1, -1}, 5, 0.5f, 1.0f},
                {{1, 2, -2}, 5, 0.25f, 0.0f},
                // All alike: z.
                {{1, 1, 1}, 4, 1.0f, 0.0f},
                {{-1, 1, 1}, 4, 0.0f, 0.0f},
                {{1, -1, 1}, 4, 1.0f, 1.0f},
                {{-1, -1, 1}, 4, 0.0f, 1.0f},
                {{1, 1, -1}, 5, 0.0f, 0.0f},
                {{-1, 1, -1}, 5, 1.0f, 0.0f},
                {{1, -1, -1}, 5, 0.0f, 1.0f},
                {{-1, -1, -1}, 5, 1.0f, 1.0f},
                // A little more of one, for either sign of it and of what decides the row.
                {{1.01f, 1, 0}, 0, 0.5f, 0.5f - 0.5f / 1.01f},
                {{-1.01f, 1, 0}, 1, 0.5f, 0.5f - 0.5f / 1.01f},
                {{1.01f, 0, 1}, 0, 0.5f - 0.5f / 1.01f, 0.5f},
                {{-1.01f, 0, 1}, 1, 0.5f + 0.5f / 1.01f, 0.5f},
                {{1, 0.5f, 1.01f}, 4, 0.5f + 0.5f / 1.01f, 0.5f - 0.25f / 1.01f},
                {{1, 0.5f, -1.01f}, 5, 0.5f - 0.5f / 1.01f, 0.5f - 0.25f / 1.01f},
                {{0, 1.01f, 1}, 2, 0.5f, 0.5f + 0.5f / 1.01f},
                {{0, -1.01f, 1}, 3, 0.5f, 0.5f - 0.5f / 1.01f},
            };
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureCube(vo_Token, vo_Place.xyz)")));
            std::vector<Lookup> lookups;
            for (const auto& row : rows)
                lookups.push_back({cube, {row.direction.x, row.direction.y, row.direction.z, 0}});
            const auto actual = lookUp(lookups);
            for (std::size_t i = 0; i < std::size(rows); ++i)
            {
                const auto texelOf = [](float coordinate) { return std::clamp(int(coordinate * kSize), 0, kSize - 1); };
                EXPECT_TRUE(
                    texelsAgree(actual[i], knownTexel(kNumber, rows[i].face, texelOf(rows[i].u), texelOf(rows[i].v))))
                    << rows[i].direction.x << " " << rows[i].direction.y << " " << rows[i].direction.z;
            }
        });
}

TEST_F(Array2DCubeGLSLGL, TheLevelIsTaken)
{
    forEachVariant(
        [&]
        {
            Texture* const levels = texture(kNumber, kSize, kSize, GL_TEXTURE_CUBE_MAP, 1, 2);
            cube = tokenOf(levels);
            announce({cube});
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureCubeLod(vo_Token, vo_Place.xyz, vo_Place.w)")));
            for (int face = 0; face < 6; ++face)
            {
                const Direction direction = throughTexel(face, 5, 2);
                const auto actual = lookUp({{cube, {direction.x, direction.y, direction.z, 0}},
                                            {cube, {direction.x, direction.y, direction.z, 1}}});
                EXPECT_TRUE(texelsAgree(actual[0], knownTexel(kNumber, face, 5, 2))) << face;
                EXPECT_TRUE(texelsAgree(actual[1], knownTexel(kNumber, face + 8, 2, 1))) << face;
            }
        });
}

TEST_F(Array2DCubeGLSLGL, TheFormWithoutALevelTakesTheBaseLevelWhateverTheDistance)
{
    forEachVariant(
        [&]
        {
            cube = tokenOf(texture(kNumber, kSize, kSize, GL_TEXTURE_CUBE_MAP, 1, 2));
            announce({cube});
            // Neighbouring pixels are far apart on the cube: derivatives would choose the smallest level.
            ASSERT_TRUE(build(variant, QStringLiteral("managedTextureCube(vo_Token, vec3(1.0, -0.1 + "
                                                      "(mod(floor(gl_FragCoord.x), 2.0) == 0.0 ? 0.0 : 0.9), -0.1))")));
            const auto actual = lookUp({{cube}, {cube}, {cube}, {cube}});
            for (const Texel& texel : actual)
                EXPECT_LT(texel[0], knownTexel(kNumber, 6, 0, 0)[0]) << "a face of the base level";
        });
}

} // namespace Harrow::Vrk::Test
