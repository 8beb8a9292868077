// SPDX-License-Identifier: MIT
#include "ClipperVolume.h"

#include "Bounds.h"
#include "ClipperVolumeTestTools.h"
#include "support/LogCapture.h"

#include <QMatrix4x4>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

using Polygon = QList<QVector3D>;
using Polygons = QList<Polygon>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const Plane kLeftOfOne(QVector3D(1, 0, 0), 1.0f);

/// Eight points that tell their index.
QList<QVector3D> numberedCorners()
{
    QList<QVector3D> corners;
    for (int i = 0; i < 8; ++i)
        corners.append(QVector3D(float(i), 0, 0));
    return corners;
}

/// The clipping written down step by step, with nothing shared, remembered or left out.
Polygons clipStepByStep(const QList<Plane>& planes, const Polygons& faces)
{
    Polygons polygons = faces;
    for (const Plane& plane : planes)
    {
        Polygons kept;
        for (const Polygon& polygon : polygons)
        {
            if (polygon.size() < 2)
                continue;
            Polygon out;
            for (qsizetype i = 0; i < polygon.size(); ++i)
            {
                const QVector3D cur = polygon[i];
                const QVector3D prev = polygon[(i + polygon.size() - 1) % polygon.size()];
                const float dc = QVector3D::dotProduct(plane.normal, cur) - plane.distance;
                const float dp = QVector3D::dotProduct(plane.normal, prev) - plane.distance;
                const int signs = ((dc > 0) - (dc < 0)) * ((dp > 0) - (dp < 0));
                if (signs == -1)
                {
                    const float t = dc / (dc - dp);
                    out.append(cur + (prev - cur) * t);
                }
                if (dc < 0 || dc == 0)
                    out.append(cur);
            }
            if (!out.isEmpty())
                kept.append(out);
        }
        polygons = kept;
    }
    return polygons;
}

QList<QVector3D> uniqueOneByOne(const Polygons& faces)
{
    QList<QVector3D> points;
    for (const Polygon& face : faces)
    {
        for (const QVector3D& point : face)
        {
            bool taken = false;
            for (const QVector3D& other : points)
                taken = taken || (point.x() == other.x() && point.y() == other.y() && point.z() == other.z());
            if (!taken)
                points.append(point);
        }
    }
    return points;
}

QMatrix4x4 randomRigid(Random& random)
{
    QMatrix4x4 matrix;
    matrix.translate(random.point(5.0));
    matrix.rotate(random.between(0, 360), random.direction());
    return matrix;
}

} // namespace

static_assert(std::is_same_v<decltype(ClipperVolume::faces), QList<QList<QVector3D>>>);
static_assert(std::is_same_v<decltype(ClipperVolume::planes), QList<Plane>>);

// ---- the volume ----------------------------------------------------------------------------------------------------

TEST(ClipperVolumeTest, IsEmptyAtFirst)
{
    EXPECT_TRUE(ClipperVolume().faces.isEmpty());
    EXPECT_TRUE(ClipperVolume().planes.isEmpty());
}

TEST(ClipperVolumeTest, ATriangleFaceAppendsItsPolygonAndPlane)
{
    const QVector3D a(1, 1, 4);
    const QVector3D b(6, 1, 4);
    const QVector3D c(1, 3, 4);
    ClipperVolume volume;
    volume.addTriangleFace(a, b, c);
    volume.addTriangleFace(a, c, b);
    EXPECT_EQ(volume.faces, (Polygons{{a, b, c}, {a, c, b}}));
    ASSERT_EQ(volume.planes.size(), 2);
    EXPECT_TRUE(sameBits(volume.planes[0], Plane(a, b, c)));
    EXPECT_TRUE(sameBits(volume.planes[1], Plane(a, c, b)));
    EXPECT_EQ(volume.planes[0].normal, QVector3D(0, 0, 1));
    EXPECT_EQ(volume.planes[0].distance, 4.0f);
}

TEST(ClipperVolumeTest, AQuadFaceAppendsItsPolygonAndThePlaneOfItsFirstThree)
{
    const QVector3D a(1, 1, 4);
    const QVector3D b(6, 1, 4);
    const QVector3D c(6, 3, 4);
    const QVector3D off(1, 3, 9);
    ClipperVolume volume;
    volume.addTriangleFace(a, b, c);
    volume.addQuadFace(a, b, c, off);
    EXPECT_EQ(volume.faces, (Polygons{{a, b, c}, {a, b, c, off}}));
    ASSERT_EQ(volume.planes.size(), 2);
    EXPECT_TRUE(sameBits(volume.planes[1], Plane(a, b, c)));
}

// ---- facesFromCorners ----------------------------------------------------------------------------------------------

TEST(FacesFromCornersTest, StandInTheirOrder)
{
    const int expected[6][4] = {{0, 1, 3, 2}, {1, 5, 7, 3}, {5, 4, 6, 7}, {4, 0, 2, 6}, {2, 3, 7, 6}, {4, 5, 1, 0}};
    const Polygons faces = facesFromCorners(numberedCorners());
    ASSERT_EQ(faces.size(), 6);
    for (int face = 0; face < 6; ++face)
    {
        ASSERT_EQ(faces[face].size(), 4);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(faces[face][i].x(), float(expected[face][i])) << face << ", " << i;
    }
}

TEST(FacesFromCornersTest, FewerThanEightCornersAreReportedAndHaveNoFace)
{
    for (int count = 0; count < 8; ++count)
    {
        const LogCapture log;
        EXPECT_EQ(facesFromCorners(numberedCorners().mid(0, count)), Polygons());
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList{
                      assertionLine("8 <= corners.size()", QStringLiteral("Faces need 8 corners, not %1").arg(count))});
    }
}

TEST(FacesFromCornersTest, FurtherCornersAreNotLookedAt)
{
    const LogCapture log;
    QList<QVector3D> corners = numberedCorners();
    corners.append(QVector3D(kNaN, kNaN, kNaN));
    EXPECT_EQ(facesFromCorners(corners), facesFromCorners(numberedCorners()));
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- cornersFromPlanes ---------------------------------------------------------------------------------------------

TEST(CornersFromPlanesTest, GiveTheCornersOfABoxExactly)
{
    Random random(821);
    for (int i = 0; i < 2000; ++i)
    {
        const Bounds box(random.point(100.0), random.point(100.0));
        EXPECT_EQ(cornersFromPlanes(box.planes()), box.corners());
    }
}

TEST(CornersFromPlanesTest, TheFirstIsThatOfPlanesTwoFiveAndZero)
{
    Random random(822);
    for (int i = 0; i < 500; ++i)
    {
        const QList<Plane> planes = planesOfCorners(randomFrustumCorners(random));
        EXPECT_TRUE(sameBits(cornersFromPlanes(planes).value(0), planeIntersection(planes[2], planes[5], planes[0])));
    }
}

TEST(CornersFromPlanesTest, EachIsTheCommonPointOfTheThreePlanesThere)
{
    const int meeting[8][3] = {{2, 5, 0}, {4, 5, 0}, {2, 3, 0}, {4, 3, 0}, {2, 5, 1}, {4, 5, 1}, {2, 3, 1}, {4, 3, 1}};
    Random random(823);
    for (int i = 0; i < 500; ++i)
    {
        QList<Plane> planes;
        for (int plane = 0; plane < 6; ++plane)
            planes.append(Plane(random.direction(), random.between(-5, 5)));
        const QList<QVector3D> corners = cornersFromPlanes(planes);
        ASSERT_EQ(corners.size(), 8);
        for (int corner = 0; corner < 8; ++corner)
        {
            const Corner common = commonPoint(planes, meeting[corner][0], meeting[corner][1], meeting[corner][2]);
            if (std::fabs(common.determinant) < 0.05)
                continue;
            const double tolerance = 2e-5 / (common.determinant * common.determinant);
            EXPECT_LE(distanceBetween(vec(corners[corner]), common.point), tolerance) << corner;
        }
    }
}

TEST(CornersFromPlanesTest, GiveTheCornersOfTurnedBoxesAndFrusta)
{
    Random random(824);
    for (int i = 0; i < 2000; ++i)
    {
        const QList<QVector3D> corners = i % 2 ? randomBoxCorners(random) : randomFrustumCorners(random);
        const QList<QVector3D> found = cornersFromPlanes(planesOfCorners(corners));
        ASSERT_EQ(found.size(), 8);
        for (int corner = 0; corner < 8; ++corner)
            EXPECT_LE(distanceBetween(vec(found[corner]), vec(corners[corner])), 5e-4) << corner;
    }
}

TEST(CornersFromPlanesTest, GiveTheCornersOfARigidlyMovedBox)
{
    Random random(825);
    for (int i = 0; i < 500; ++i)
    {
        const Bounds box(random.point(3.0) - QVector3D(4, 4, 4), random.point(3.0) + QVector3D(4, 4, 4));
        const QMatrix4x4 moved = randomRigid(random);
        QList<Plane> planes;
        for (const Plane& plane : box.planes())
        {
            const QVector3D normal = moved.mapVector(plane.normal).normalized();
            planes.append(Plane(normal, moved.map(plane.normal * plane.distance)));
        }
        const QList<QVector3D> found = cornersFromPlanes(planes);
        const QList<QVector3D> corners = box.corners();
        ASSERT_EQ(found.size(), 8);
        for (int corner = 0; corner < 8; ++corner)
            EXPECT_LE(distanceBetween(vec(found[corner]), vec(moved.map(corners[corner]))), 1e-4) << corner;
    }
}

TEST(CornersFromPlanesTest, FewerThanSixPlanesAreReportedAndHaveNoCorner)
{
    for (int count = 0; count < 6; ++count)
    {
        const LogCapture log;
        EXPECT_EQ(cornersFromPlanes(Bounds().planes().mid(0, count)), QList<QVector3D>());
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList{
                      assertionLine("6 <= planes.size()", QStringLiteral("Corners need 6 planes, not %1").arg(count))});
    }
}

TEST(CornersFromPlanesTest, FurtherPlanesAreNotLookedAt)
{
    const LogCapture log;
    const Bounds box(QVector3D(1, 2, 3), QVector3D(4, 5, 6));
    EXPECT_EQ(cornersFromPlanes(box.planes() + QList<Plane>{Plane(QVector3D(1, 1, 1), 0.0f)}), box.corners());
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- clipFaces -----------------------------------------------------------------------------------------------------

TEST(ClipFacesTest, NoFacesGiveNone)
{
    EXPECT_EQ(clipFaces({}, {}), Polygons());
    EXPECT_EQ(clipFaces({kLeftOfOne, kLeftOfOne}, {}), Polygons());
}

TEST(ClipFacesTest, WithoutPlanesThePolygonsComeBackAsTheyAre)
{
    const Polygons faces = {{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {{1, 1, 1}}, {}};
    EXPECT_EQ(clipFaces({}, faces), faces);
}

TEST(ClipFacesTest, KeepsTheNegativeSide)
{
    const Polygon inside = {{0, 0, 0}, {0.5f, 0, 0}, {0, 2, 0}};
    const Polygon outside = {{2, 0, 0}, {3, 0, 0}, {2, 2, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {outside, inside}), Polygons{inside});
}

TEST(ClipFacesTest, AnEdgeThatIsCutGetsItsPointInItsPlace)
{
    const Polygon triangle = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {triangle}), (Polygons{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 2, 0}}}));
}

TEST(ClipFacesTest, TheWalkStartsWithTheLastPointAsThePrevious)
{
    // The first edge that is walked is the one from the last point to the first, so its cut comes first.
    const Polygon triangle = {{0, 0, 0}, {0, 2, 0}, {2, 0, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {triangle}), (Polygons{{{1, 0, 0}, {0, 0, 0}, {0, 2, 0}, {1, 1, 0}}}));
}

TEST(ClipFacesTest, AVertexExactlyOnThePlaneIsKeptAndMakesNoIntersection)
{
    const Polygon triangle = {{1, 0, 0}, {3, 1, 0}, {0, 1, 0}};
    // From (0, 1, 0) to (1, 0, 0) and from there to (3, 1, 0) nothing is cut; from (3, 1, 0) to (0, 1, 0) one edge is.
    EXPECT_EQ(clipFaces({kLeftOfOne}, {triangle}), (Polygons{{{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}}));

    const Polygon touching = {{1, 0, 0}, {3, 1, 0}, {3, -1, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {touching}), (Polygons{{{1, 0, 0}}}));

    const Polygon lying = {{1, 0, 0}, {1, 1, 0}, {1, 0, 1}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {lying}), Polygons{lying});
    EXPECT_EQ(clipFaces({Plane(QVector3D(-1, 0, 0), -1.0f)}, {lying}), Polygons{lying});
}

TEST(ClipFacesTest, APointThatIsLeftIsDroppedByTheNextPlane)
{
    const Polygon touching = {{1, 0, 0}, {3, 1, 0}, {3, -1, 0}};
    const Plane everything(QVector3D(1, 0, 0), 100.0f);
    EXPECT_EQ(clipFaces({kLeftOfOne, everything}, {touching}), Polygons());
}

TEST(ClipFacesTest, PolygonsOfOnePointOrNoneAreDropped)
{
    const Polygon line = {{0, 0, 0}, {0.5f, 0, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {{}, {{0, 0, 0}}, line, {{0.5f, 0, 0}}}), Polygons{line});
}

TEST(ClipFacesTest, ALineIsWalkedThereAndBack)
{
    const Polygon line = {{0, 0, 0}, {3, 0, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {line}), (Polygons{{{1, 0, 0}, {0, 0, 0}, {1, 0, 0}}}));
}

TEST(ClipFacesTest, EveryPolygonIsClippedByEveryPlane)
{
    const Bounds box(QVector3D(1, 1, -1), QVector3D(2, 2, 1));
    const Polygon square = {{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {0, 3, 0}};
    const Polygons clipped = clipFaces(box.planes(), {square, square});
    ASSERT_EQ(clipped.size(), 2);
    EXPECT_EQ(clipped[0], clipped[1]);
    EXPECT_EQ(uniquePoints({clipped[0]}).size(), 4);
    for (const QVector3D& corner : {QVector3D(1, 1, 0), QVector3D(2, 1, 0), QVector3D(2, 2, 0), QVector3D(1, 2, 0)})
        EXPECT_TRUE(clipped[0].contains(corner));
}

TEST(ClipFacesTest, LeavesWhatItIsGivenAlone)
{
    const Polygons faces = {{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {{0, 0, 0}, {0.5f, 0, 0}, {0, 2, 0}}};
    Polygons given = faces;
    Polygons clipped = clipFaces({kLeftOfOne}, given);
    clipped[1][0] = QVector3D(7, 7, 7);
    EXPECT_EQ(given, faces);
}

TEST(ClipFacesTest, GivesTheSameBitsAsTheStepsOneByOne)
{
    Random random(826);
    int cut = 0;
    for (int i = 0; i < 3000; ++i)
    {
        Polygons faces;
        for (int face = random.below(5); face >= 0; --face)
        {
            Polygon polygon;
            for (int point = random.below(8); point > 0; --point)
                polygon.append(random.point(5.0));
            faces.append(polygon);
        }
        QList<Plane> planes;
        for (int plane = random.below(6); plane >= 0; --plane)
            planes.append(Plane(random.direction(), random.between(-1, 4)));
        const Polygons expected = clipStepByStep(planes, faces);
        EXPECT_TRUE(sameBits(clipFaces(planes, faces), expected));
        cut += !expected.isEmpty();
    }
    EXPECT_GT(cut, 1000);
}

TEST(ClipFacesTest, GivesTheSameBitsForAwkwardFloats)
{
    const LogCapture log;
    Random random(827);
    int kept = 0;
    for (int i = 0; i < 20000; ++i)
    {
        Polygons faces;
        for (int face = random.below(3); face >= 0; --face)
        {
            Polygon polygon;
            for (int point = random.below(6); point > 0; --point)
                polygon.append(awkwardPoint(random));
            faces.append(polygon);
        }
        QList<Plane> planes;
        for (int plane = random.below(3); plane >= 0; --plane)
            planes.append(Plane(awkwardPoint(random), awkwardFloat(random)));
        const Polygons expected = clipStepByStep(planes, faces);
        EXPECT_TRUE(sameBits(clipFaces(planes, faces), expected));
        kept += !expected.isEmpty();
    }
    EXPECT_GT(kept, 1000);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(ClipFacesTest, APointThatIsNotANumberIsDroppedAndCutsNothing)
{
    const Polygon polygon = {{0, 0, 0}, {kNaN, 0, 0}, {0, 2, 0}};
    EXPECT_EQ(clipFaces({kLeftOfOne}, {polygon}), (Polygons{{{0, 0, 0}, {0, 2, 0}}}));
    EXPECT_EQ(clipFaces({Plane(QVector3D(kNaN, 0, 0), 1.0f)}, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}), Polygons());
}

// ---- uniquePoints --------------------------------------------------------------------------------------------------

TEST(UniquePointsTest, KeepTheOrderOfAppearance)
{
    const QVector3D a(3, 0, 0);
    const QVector3D b(1, 0, 0);
    const QVector3D c(2, 0, 0);
    EXPECT_EQ(uniquePoints({{a, b, a}, {}, {c, b}, {a}}), (QList<QVector3D>{a, b, c}));
    EXPECT_EQ(uniquePoints({}), QList<QVector3D>());
    EXPECT_EQ(uniquePoints({{}, {}}), QList<QVector3D>());
}

TEST(UniquePointsTest, AreComparedWithoutTolerance)
{
    const float next = std::nextafter(1.0f, 2.0f);
    for (int axis = 0; axis < 3; ++axis)
    {
        QVector3D near(1, 1, 1);
        near[axis] = next;
        EXPECT_EQ(uniquePoints({{QVector3D(1, 1, 1), near, near}}).size(), 2) << axis;
    }
}

TEST(UniquePointsTest, ZeroEqualsMinusZeroAndTheFirstIsKept)
{
    const QVector3D zero(0.0f, 1, 0.0f);
    const QVector3D minus(-0.0f, 1, -0.0f);
    EXPECT_TRUE(sameBits(uniquePoints({{zero, minus}}), {zero}));
    EXPECT_TRUE(sameBits(uniquePoints({{minus, zero}}), {minus}));
}

TEST(UniquePointsTest, WhatIsNotANumberEqualsNothing)
{
    const QVector3D nan(1, kNaN, 1);
    EXPECT_EQ(uniquePoints({{nan, nan}, {nan}}).size(), 3);
    const QVector3D infinite(kInfinity, -kInfinity, 0);
    EXPECT_EQ(uniquePoints({{infinite, infinite}}).size(), 1);
}

TEST(UniquePointsTest, AreThoseOfComparingOneByOneHoweverMany)
{
    Random random(828);
    int many = 0;
    for (int i = 0; i < 400; ++i)
    {
        Polygons faces;
        for (int face = random.below(60); face >= 0; --face)
        {
            Polygon polygon;
            for (int point = random.below(8); point > 0; --point)
                polygon.append(awkwardPoint(random));
            faces.append(polygon);
        }
        const QList<QVector3D> expected = uniqueOneByOne(faces);
        EXPECT_TRUE(sameBits(uniquePoints(faces), expected));
        many += expected.size() > 64;
    }
    EXPECT_GT(many, 100);
}

TEST(UniquePointsTest, OfAHundredThousandAreFoundInOneGo)
{
    constexpr int kCount = 100000;
    Polygon polygon;
    for (int round = 0; round < 2; ++round)
    {
        for (int i = 0; i < kCount; ++i)
            polygon.append(QVector3D(float(i % 300), float(i / 300), 0.5f));
    }
    const QList<QVector3D> points = uniquePoints({polygon});
    EXPECT_EQ(points, polygon.mid(0, kCount));
}

TEST(UniquePointsTest, OfAHundredThousandThatAreNotNumbersAreAllKept)
{
    constexpr int kCount = 100000;
    Polygon polygon(kCount, QVector3D(kNaN, 1, 2));
    polygon.append(QVector3D(1, 2, 3));
    polygon.append(QVector3D(kNaN, 1, 2));
    polygon.append(QVector3D(1, 2, 3));
    EXPECT_TRUE(sameBits(uniquePoints({polygon}), polygon.mid(0, kCount + 2)));
}

// ---- intersectVolumes ----------------------------------------------------------------------------------------------

TEST(IntersectVolumesTest, FacesOfTheSecondComeFirstAndPlanesOfTheFirst)
{
    Random random(829);
    int withFaces = 0;
    for (int i = 0; i < 200; ++i)
    {
        const ClipperVolume a = randomVolume(random);
        const ClipperVolume b = randomVolume(random);
        const ClipperVolume common = intersectVolumes(a, b);
        EXPECT_TRUE(sameBits(common.faces, clipStepByStep(a.planes, b.faces) + clipStepByStep(b.planes, a.faces)));
        const QList<Plane> planes = a.planes + b.planes;
        ASSERT_EQ(common.planes.size(), planes.size());
        for (qsizetype plane = 0; plane < planes.size(); ++plane)
            EXPECT_TRUE(sameBits(common.planes[plane], planes[plane]));
        withFaces += !common.faces.isEmpty();
    }
    EXPECT_GT(withFaces, 50);
}

TEST(IntersectVolumesTest, OfTwoBoxesIsTheBoxTheyShare)
{
    const Bounds a(QVector3D(0, 0, 0), QVector3D(4, 4, 4));
    const Bounds b(QVector3D(2, 1, -5), QVector3D(9, 3, 3));
    const QList<QVector3D> points = uniquePoints(intersectVolumes(a.clippingVolume(), b.clippingVolume()).faces);
    EXPECT_EQ(points.size(), 8);
    for (const QVector3D& corner : Bounds(QVector3D(2, 1, 0), QVector3D(4, 3, 3)).corners())
        EXPECT_TRUE(points.contains(corner));
}

TEST(IntersectVolumesTest, OfAVolumeWithItselfHasItsFacesTwice)
{
    const ClipperVolume box = Bounds(QVector3D(0, 0, 0), QVector3D(4, 4, 4)).clippingVolume();
    const ClipperVolume common = intersectVolumes(box, box);
    EXPECT_EQ(common.faces, box.faces + box.faces);
    EXPECT_EQ(common.planes.size(), 12);
}

TEST(IntersectVolumesTest, OfVolumesApartHasPlanesButNoFaces)
{
    const ClipperVolume common = intersectVolumes(Bounds(QVector3D(0, 0, 0), QVector3D(1, 1, 1)).clippingVolume(),
                                                  Bounds(QVector3D(2, 2, 2), QVector3D(3, 3, 3)).clippingVolume());
    EXPECT_EQ(common.faces, Polygons());
    EXPECT_EQ(common.planes.size(), 12);
}

TEST(IntersectVolumesTest, WithAnEmptyVolumeKeepsTheOther)
{
    const ClipperVolume box = Bounds(QVector3D(0, 0, 0), QVector3D(4, 4, 4)).clippingVolume();
    EXPECT_EQ(intersectVolumes(ClipperVolume(), box).faces, box.faces);
    EXPECT_EQ(intersectVolumes(box, ClipperVolume()).faces, box.faces);
    EXPECT_TRUE(intersectVolumes(ClipperVolume(), ClipperVolume()).faces.isEmpty());
}

TEST(IntersectVolumesTest, OfTwoHasTheCornersThatEnumerationFinds)
{
    const LogCapture log;
    Random random(830);
    int looked = 0;
    int empty = 0;
    for (int i = 0; i < 6000 && !testing::Test::HasFailure(); ++i)
    {
        const ClipperVolume a = randomVolume(random);
        const ClipperVolume b = randomVolume(random);
        const QList<QVector3D> points = uniquePoints(intersectVolumes(a, b).faces);
        looked += expectCorners(a.planes + b.planes, points);
        empty += points.isEmpty();
    }
    EXPECT_GT(looked, 20000);
    EXPECT_GT(empty, 100);
    EXPECT_LT(empty, 4500);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(IntersectVolumesTest, OfThreeHasTheCornersThatEnumerationFinds)
{
    Random random(831);
    int looked = 0;
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i)
    {
        const ClipperVolume a = randomVolume(random);
        const ClipperVolume b = randomVolume(random);
        const ClipperVolume c = randomVolume(random);
        const ClipperVolume common = intersectVolumes(intersectVolumes(a, b), c);
        looked += expectCorners(a.planes + b.planes + c.planes, uniquePoints(common.faces));
    }
    EXPECT_GT(looked, 2000);
}

} // namespace Harrow::Vrk::Test
