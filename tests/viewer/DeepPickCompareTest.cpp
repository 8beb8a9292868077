// SPDX-License-Identifier: MIT
// The ray of vrk-deep-pick against a box whose places are known, and that a comparison finds what differs.
#include "Comparison.h"
#include "RayCast.h"

#include "ModelFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace deeppick;

namespace
{

constexpr int kSubpixelBits = 8;
const QSize kSize(201, 101);
const QPoint kPixel(110, 40);

vrkview::Model boxModel(const QMatrix4x4& worldFromBox)
{
    const TriangleSoup soup = boxSoup({-1, -1, -1}, {1, 1, 1});
    vrkview::Mesh mesh;
    mesh.name = QStringLiteral("box");
    mesh.positions = soup.positions;
    mesh.normals = soup.normals;
    mesh.indices = soup.indices;
    vrkview::Model model;
    model.name = QStringLiteral("boxes");
    model.materials.emplace_back();
    model.meshes.push_back(mesh);
    model.instances.push_back({0, worldFromBox});
    model.measure();
    return model;
}

/// A box, what the ray through the pixel meets of it, and fragments that agree with that.
class DeepPickCompareTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        const vrkview::Model model = boxModel(QMatrix4x4());
        const std::optional<PickScene> made = makePickScene(model, error);
        ASSERT_TRUE(made) << qPrintable(error);
        scene = *made;
        view = makePickView(model, scene, 30.0f, 20.0f, kSize);
        hits = RayCast(scene, view, kSubpixelBits).cast(kPixel);
        for (const RayHit& hit : hits)
        {
            Fragment fragment;
            fragment.object = scene.draws[hit.draw].object;
            fragment.draw = hit.draw;
            fragment.triangle = hit.triangle;
            fragment.position = {float(hit.position.x), float(hit.position.y), float(hit.position.z)};
            fragment.normal = {float(hit.normal.x), float(hit.normal.y), float(hit.normal.z)};
            fragment.texCoord = {float(hit.u), float(hit.v)};
            fragment.depth = float(hit.depth);
            fragments.push_back(fragment);
        }
        ASSERT_EQ(fragments.size(), 2u);
    }

    double reach() const
    {
        return RayCast(scene, view, kSubpixelBits).reach();
    }

    /// The first fault there is, or empty.
    QString fault() const
    {
        for (const ComparedSurface& surface : compare(fragments, hits, reach()))
            if (!surface.fault.isEmpty())
                return surface.fault;
        return {};
    }

    PickScene scene;
    PickView view;
    std::vector<RayHit> hits;
    std::vector<Fragment> fragments;
};

} // namespace

TEST_F(DeepPickCompareTest, TheRayMeetsABoxWhereSlabsSay)
{
    // Independent of triangles: a ray is within the box while it is between each two planes. The ray from the matrices'
    // inverse, as far as single precision goes.
    const QMatrix4x4 sceneFromClip = (view.clipFromView * view.viewFromScene).inverted();
    const float x = 2.0f * (float(kPixel.x()) + 0.5f) / float(kSize.width()) - 1.0f;
    const float y = 1.0f - 2.0f * (float(kPixel.y()) + 0.5f) / float(kSize.height());
    const QVector3D from = scene.worldFromScene * sceneFromClip.map(QVector3D(x, y, -1.0f));
    const QVector3D to = scene.worldFromScene * sceneFromClip.map(QVector3D(x, y, 1.0f));
    float enters = 0.0f;
    float leaves = 1.0f;
    for (int axis = 0; axis < 3; ++axis)
    {
        const float one = (-1.0f - from[axis]) / (to[axis] - from[axis]);
        const float other = (1.0f - from[axis]) / (to[axis] - from[axis]);
        enters = std::max(enters, std::min(one, other));
        leaves = std::min(leaves, std::max(one, other));
    }
    ASSERT_LT(enters, leaves);
    const float shares[] = {enters, leaves};
    for (std::size_t i = 0; i < 2; ++i)
    {
        const QVector3D place = from + shares[i] * (to - from);
        const QVector3D inClip =
            (view.clipFromView * view.viewFromScene).map(place / scene.worldFromScene); // divided by w
        EXPECT_NEAR(hits[i].position.x, double(place.x()), 1e-5);
        EXPECT_NEAR(hits[i].position.y, double(place.y()), 1e-5);
        EXPECT_NEAR(hits[i].position.z, double(place.z()), 1e-5);
        EXPECT_NEAR(hits[i].depth, 0.5 + 0.5 * double(inClip.z()), 1e-5);
        EXPECT_GT(hits[i].inside, 1.0);
        // The normal of a side is where the side is.
        const double outwards = hits[i].normal.x * hits[i].position.x + hits[i].normal.y * hits[i].position.y +
                                hits[i].normal.z * hits[i].position.z;
        EXPECT_NEAR(outwards, 1.0, 1e-12);
    }
}

TEST_F(DeepPickCompareTest, TheToleranceIsSmallOnASurfaceSeenFromTheFront)
{
    // A pixel of this picture is about a twentieth of the box, and the reach is a two-hundredth of a pixel.
    for (const RayHit& hit : hits)
    {
        EXPECT_LT(hit.allowed.position, 2e-3);
        EXPECT_LT(hit.allowed.depth, 1e-3);
        EXPECT_LT(hit.allowed.normal, 1e-4);
        EXPECT_LT(hit.allowed.texCoord, 1e-4);
    }
}

TEST_F(DeepPickCompareTest, AgreeingListsHaveNoFault)
{
    EXPECT_EQ(fault(), QString());
    EXPECT_EQ(compare(fragments, hits, reach()).size(), 2u);
}

TEST_F(DeepPickCompareTest, ALostFragmentIsFound)
{
    fragments.pop_back();
    EXPECT_EQ(fault(), QStringLiteral("the buffer lacks it"));
    fragments.clear();
    EXPECT_EQ(fault(), QStringLiteral("the buffer lacks it"));
}

TEST_F(DeepPickCompareTest, AFragmentThatShouldNotBeThereIsFound)
{
    hits.pop_back();
    EXPECT_EQ(fault(), QStringLiteral("the ray does not meet it"));
}

TEST_F(DeepPickCompareTest, AFragmentTwiceIsFound)
{
    fragments.push_back(fragments.back());
    EXPECT_EQ(fault(), QStringLiteral("the ray does not meet it"));
}

TEST_F(DeepPickCompareTest, AnotherTriangleOrDrawIsFound)
{
    ++fragments[0].triangle;
    EXPECT_EQ(fault(), QStringLiteral("the ray does not meet it"));
    --fragments[0].triangle;
    ++fragments[0].draw;
    EXPECT_EQ(fault(), QStringLiteral("the ray does not meet it"));
}

TEST_F(DeepPickCompareTest, TheWrongOrderIsFound)
{
    std::swap(fragments[0], fragments[1]);
    EXPECT_EQ(fault(), QStringLiteral("it is nearer than the one before it"));
}

TEST_F(DeepPickCompareTest, EachQuantityThatIsOffIsFound)
{
    const struct
    {
        const char* words;
        std::function<void(Fragment&)> change;
    } rows[] = {
        {"the position is off by 0.01", [](Fragment& f) { f.position += QVector3D(0, 0.01f, 0); }},
        {"the normal is off by 0.01", [](Fragment& f) { f.normal += QVector3D(0.01f, 0, 0); }},
        {"the texcoord is off by 0.01", [](Fragment& f) { f.texCoord += QVector2D(0, 0.01f); }},
        {"the depth is off by 0.01", [](Fragment& f) { f.depth += 0.01f; }},
        {"the position is off by nan", [](Fragment& f) { f.position.setX(std::nanf("")); }},
    };
    const std::vector<Fragment> right = fragments;
    for (const auto& row : rows)
    {
        fragments = right;
        row.change(fragments[1]);
        EXPECT_TRUE(fault().startsWith(QLatin1String(row.words))) << qPrintable(fault()) << " for " << row.words;
    }
}

TEST_F(DeepPickCompareTest, ATriangleMetAtItsEdgeMayBeMissing)
{
    fragments.pop_back();
    hits.back().inside = 0.5 * reach();
    EXPECT_EQ(fault(), QString());
    hits.back().inside = 2.0 * reach();
    EXPECT_EQ(fault(), QStringLiteral("the buffer lacks it"));
}

TEST_F(DeepPickCompareTest, NamesStayInTheirLine)
{
    scene.objectNames[0] = QStringLiteral("a \"b\"\nc");
    const QString line = describe(fragments[0], 1, scene);
    EXPECT_TRUE(line.startsWith(QStringLiteral("1 \"a  b  c\" instance 0 triangle "))) << qPrintable(line);
    EXPECT_FALSE(line.contains(QLatin1Char('\n')));
}
