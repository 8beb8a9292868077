// SPDX-License-Identifier: MIT
#include "Bounds.h"

#include "ClipperVolumeTestTools.h"
#include "support/LogCapture.h"

#include <QMatrix4x4>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Harrow::Vrk
{

struct BoundsTestAccess
{
    static void scanMinMax(Bounds& bounds, const QVector3D* array, qsizetype size, qsizetype arraySize)
    {
        bounds.scanMinMax(array, size, arraySize);
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{
namespace
{

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const QVector3D kLower(-1, -2, -3);
const QVector3D kUpper(4, 5, 6);

void expectBox(const Bounds& bounds, const QVector3D& lower, const QVector3D& upper)
{
    EXPECT_EQ(bounds.boxLowerBounds(), lower);
    EXPECT_EQ(bounds.boxUpperBounds(), upper);
}

Bounds randomBounds(Random& random)
{
    const QVector3D centre = random.point(3.0);
    const QVector3D half(random.between(0.5, 4.0), random.between(0.5, 4.0), random.between(0.5, 4.0));
    return Bounds(centre - half, centre + half);
}

/// A plane that passes within `reach` of the origin.
Plane randomPlane(Random& random, double reach)
{
    const QVector3D normal = random.direction();
    return Plane(normal, random.between(-reach, reach));
}

} // namespace

static_assert(sizeof(Bounds) == 24, "six floats");
static_assert(std::is_trivially_copyable_v<Bounds>);
static_assert(std::is_nothrow_move_assignable_v<Bounds>);
static_assert(std::is_copy_assignable_v<Bounds>);

// ---- construction --------------------------------------------------------------------------------------------------

TEST(BoundsTest, TheDefaultIsAllZero)
{
    expectBox(Bounds(), QVector3D(0, 0, 0), QVector3D(0, 0, 0));
    EXPECT_TRUE(Bounds().isNull());
}

TEST(BoundsTest, LowerAndUpperAreTakenAsGiven)
{
    expectBox(Bounds(kLower, kUpper), kLower, kUpper);
    expectBox(Bounds(kUpper, kLower), kUpper, kLower);
}

TEST(BoundsTest, HoldsTheLowerThreeFloatsBeforeTheUpper)
{
    const Bounds bounds(kLower, kUpper);
    float floats[6];
    std::memcpy(floats, &bounds, sizeof floats);
    const float expected[6] = {-1, -2, -3, 4, 5, 6};
    EXPECT_EQ(std::memcmp(floats, expected, sizeof floats), 0);
}

TEST(BoundsTest, EveryPointWidens)
{
    const QList<QVector3D> points = {{1, 5, -3}, {4, -2, 0}, {-1, 0, 6}, {0, 0, 0}};
    expectBox(Bounds(points), kLower, kUpper);

    Random random(811);
    for (int i = 0; i < 200; ++i)
    {
        QList<QVector3D> cloud;
        for (int count = 1 + random.below(20); count > 0; --count)
            cloud.append(random.point(50.0));
        const Bounds bounds(cloud);
        for (int axis = 0; axis < 3; ++axis)
        {
            const auto less = [axis](const QVector3D& a, const QVector3D& b) { return a[axis] < b[axis]; };
            EXPECT_EQ(bounds.boxLowerBounds()[axis], (*std::min_element(cloud.begin(), cloud.end(), less))[axis]);
            EXPECT_EQ(bounds.boxUpperBounds()[axis], (*std::max_element(cloud.begin(), cloud.end(), less))[axis]);
        }
    }
}

TEST(BoundsTest, NoPointsLeaveTheExtremesAndReportNothing)
{
    const LogCapture log;
    const Bounds bounds{QList<QVector3D>()};
    expectBox(bounds, QVector3D(kLargest, kLargest, kLargest), QVector3D(-kLargest, -kLargest, -kLargest));
    EXPECT_FALSE(bounds.isNull());
    EXPECT_FALSE(bounds.isInside(QVector3D(0, 0, 0)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(BoundsTest, OfOnePointIsNull)
{
    const Bounds bounds(QList<QVector3D>{{1.5f, -2.5f, 3.5f}});
    expectBox(bounds, QVector3D(1.5f, -2.5f, 3.5f), QVector3D(1.5f, -2.5f, 3.5f));
    EXPECT_TRUE(bounds.isNull());
}

TEST(BoundsTest, CoordinatesThatAreNotNumbersArePassedOver)
{
    expectBox(Bounds(QList<QVector3D>{{kNaN, 1, 2}, {3, kNaN, 4}, {5, 6, kNaN}}), QVector3D(3, 1, 2),
              QVector3D(5, 6, 4));
    expectBox(Bounds(QList<QVector3D>{{-kInfinity, 0, 0}, {kInfinity, 0, 0}}), QVector3D(-kInfinity, 0, 0),
              QVector3D(kInfinity, 0, 0));
    // Infinity is above the largest finite float, so it does not lower the lower bound.
    expectBox(Bounds(QList<QVector3D>{{kInfinity, 0, 0}}), QVector3D(kLargest, 0, 0), QVector3D(kInfinity, 0, 0));
}

TEST(BoundsTest, IsCopiedAndMoved)
{
    Bounds bounds(kLower, kUpper);
    const Bounds copy(bounds);
    expectBox(copy, kLower, kUpper);
    Bounds assigned;
    assigned = bounds;
    expectBox(assigned, kLower, kUpper);
    Bounds moved;
    moved = std::move(bounds);
    expectBox(moved, kLower, kUpper);
}

// ---- the scan ------------------------------------------------------------------------------------------------------

TEST(BoundsScanTest, AsksForMoreThanNoPoints)
{
    const QVector3D points[2] = {{9, 9, 9}, {-9, -9, -9}};
    for (const qsizetype size : {qsizetype(0), qsizetype(-1)})
    {
        const LogCapture log;
        Bounds bounds(kLower, kUpper);
        BoundsTestAccess::scanMinMax(bounds, points, size, 2);
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList{assertionLine("0 < size", "Size must be geater than 0")});
        expectBox(bounds, kLower, kUpper);
    }
}

TEST(BoundsScanTest, AsksForNoMoreThanTheArrayHolds)
{
    const LogCapture log;
    const QVector3D points[2] = {{9, 9, 9}, {-9, -9, -9}};
    Bounds bounds(kLower, kUpper);
    BoundsTestAccess::scanMinMax(bounds, points, 3, 2);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList{assertionLine("size <= arraySize", "Size 3 is beyond the array's 2")});
    expectBox(bounds, kLower, kUpper);
}

TEST(BoundsScanTest, TakesTheFirstPointsOfTheArray)
{
    const LogCapture log;
    const QVector3D points[3] = {{9, 0, 0}, {0, -9, 0}, {0, 0, 100}};
    Bounds bounds(kLower, kUpper);
    BoundsTestAccess::scanMinMax(bounds, points, 2, 3);
    expectBox(bounds, QVector3D(-1, -9, -3), QVector3D(9, 5, 6));
    BoundsTestAccess::scanMinMax(bounds, points, 3, 3);
    expectBox(bounds, QVector3D(-1, -9, -3), QVector3D(9, 5, 100));
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- isNull, isInside ----------------------------------------------------------------------------------------------

TEST(BoundsTest, IsNullOnlyWhereAllAxesAgreeExactly)
{
    EXPECT_TRUE(Bounds(kLower, kLower).isNull());
    EXPECT_TRUE(Bounds(QVector3D(0, 0, 0), QVector3D(-0.0f, -0.0f, -0.0f)).isNull());
    for (int axis = 0; axis < 3; ++axis)
    {
        QVector3D upper = kLower;
        upper[axis] = std::nextafter(upper[axis], 10.0f);
        EXPECT_FALSE(Bounds(kLower, upper).isNull()) << axis;
    }
    const QVector3D nan(kNaN, 0, 0);
    EXPECT_FALSE(Bounds(nan, nan).isNull());
}

TEST(BoundsTest, APointExactlyOnAFaceIsInside)
{
    const Bounds bounds(kLower, kUpper);
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const float side : {kLower[axis], kUpper[axis]})
        {
            QVector3D point(1, 1, 1);
            point[axis] = side;
            EXPECT_TRUE(bounds.isInside(point)) << axis;
        }
    }
    for (const QVector3D& corner : bounds.corners())
        EXPECT_TRUE(bounds.isInside(corner));
}

TEST(BoundsTest, APointJustBeyondAFaceIsOutside)
{
    const Bounds bounds(kLower, kUpper);
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const float beyond : {std::nextafter(kLower[axis], -10.0f), std::nextafter(kUpper[axis], 10.0f)})
        {
            QVector3D point(1, 1, 1);
            point[axis] = beyond;
            EXPECT_FALSE(bounds.isInside(point)) << axis;
            const float floats[3] = {point.x(), point.y(), point.z()};
            EXPECT_FALSE(bounds.isInside(floats)) << axis;
        }
    }
}

TEST(BoundsTest, ThreeFloatsAreAPoint)
{
    const Bounds bounds(kLower, kUpper);
    const float corner[3] = {4, -2, 6};
    EXPECT_TRUE(bounds.isInside(corner));
    const float swapped[3] = {-2, 4, 6};
    EXPECT_FALSE(bounds.isInside(swapped));
}

TEST(BoundsTest, NothingIsInsideWhatIsUpsideDownOrNotANumber)
{
    EXPECT_FALSE(Bounds(kUpper, kLower).isInside(QVector3D(0, 0, 0)));
    EXPECT_FALSE(Bounds(kLower, kUpper).isInside(QVector3D(0, kNaN, 0)));
    EXPECT_FALSE(Bounds(QVector3D(kNaN, 0, 0), kUpper).isInside(QVector3D(1, 1, 1)));
}

TEST(BoundsTest, NullFloatsAreReportedAndOutside)
{
    const LogCapture log;
    const float* const none = nullptr;
    EXPECT_FALSE(Bounds().isInside(none));
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList{assertionLine("nullptr != point", "Point is NULL on isInside")});
}

// ---- corners, planes, faces ----------------------------------------------------------------------------------------

TEST(BoundsTest, CornersStandWithXFastestThenYThenZ)
{
    const QList<QVector3D> expected = {{-1, -2, -3}, {4, -2, -3}, {-1, 5, -3}, {4, 5, -3},
                                       {-1, -2, 6},  {4, -2, 6},  {-1, 5, 6},  {4, 5, 6}};
    EXPECT_EQ(Bounds(kLower, kUpper).corners(), expected);
}

TEST(BoundsTest, PlanesStandInTheirOwnOrder)
{
    struct Row
    {
        QVector3D normal;
        int corner;
        float distance;
    };
    const Row rows[] = {
        {{0, 0, -1}, 3, 3}, {{0, 0, 1}, 7, 6}, {{-1, 0, 0}, 2, 1},
        {{0, 1, 0}, 3, 5},  {{1, 0, 0}, 1, 4}, {{0, -1, 0}, 0, 2},
    };
    const Bounds bounds(kLower, kUpper);
    const QList<Plane> planes = bounds.planes();
    ASSERT_EQ(planes.size(), 6);
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(planes[i].normal, rows[i].normal) << i;
        EXPECT_EQ(planes[i].distance, rows[i].distance) << i;
        EXPECT_EQ(planes[i].DistanceTo(bounds.corners()[rows[i].corner]), 0.0f) << i;
        EXPECT_LT(planes[i].DistanceTo(QVector3D(1, 1, 1)), 0.0f) << i;
    }
}

TEST(BoundsTest, EachPlaneGoesThroughTheCornerOfItsRow)
{
    // An infinite coordinate across the normal spoils the distance, and so tells which corner it came from.
    struct Row
    {
        int plane;
        int corner;
    };
    const Row rows[] = {{0, 3}, {1, 7}, {2, 2}, {3, 3}, {4, 1}, {5, 0}};
    const int planeAxis[] = {2, 2, 0, 1, 0, 1};
    for (const Row& row : rows)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            if (axis == planeAxis[row.plane])
                continue;
            const bool upperHere = row.corner >> axis & 1;
            QVector3D lower = kLower;
            QVector3D upper = kUpper;
            (upperHere ? upper : lower)[axis] = kInfinity;
            EXPECT_TRUE(std::isnan(Bounds(lower, upper).planes()[row.plane].distance)) << row.plane << ", " << axis;
            lower = kLower;
            upper = kUpper;
            (upperHere ? lower : upper)[axis] = kInfinity;
            EXPECT_FALSE(std::isnan(Bounds(lower, upper).planes()[row.plane].distance)) << row.plane << ", " << axis;
        }
    }
}

TEST(BoundsTest, TheClippingVolumeHasTheFacesOfTheCornersAndThePlanes)
{
    const Bounds bounds(kLower, kUpper);
    const ClipperVolume volume = bounds.clippingVolume();
    EXPECT_EQ(volume.faces, facesFromCorners(bounds.corners()));
    const QList<Plane> planes = bounds.planes();
    ASSERT_EQ(volume.planes.size(), 6);
    ASSERT_EQ(volume.faces.size(), 6);
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE(sameBits(volume.planes[i], planes[i])) << i;
    EXPECT_EQ(expectCorners(volume.planes, uniquePoints(volume.faces)), 8);
}

// ---- transform -----------------------------------------------------------------------------------------------------

TEST(BoundsTest, TransformDoesNotTranslateByAMatrixThatTranslates)
{
    QMatrix4x4 matrix;
    matrix.translate(10, 20, 30);
    expectBox(Bounds(kLower, kUpper).transform(matrix), kLower, kUpper);
}

TEST(BoundsTest, TransformTranslatesByTheTransposed)
{
    QMatrix4x4 matrix;
    matrix.translate(10, 20, 30);
    expectBox(Bounds(kLower, kUpper).transform(matrix.transposed()), QVector3D(9, 18, 27), QVector3D(14, 25, 36));
}

TEST(BoundsTest, TransformReadsTheSixteenFloatsAsRowsWithoutDividingByW)
{
    // All powers of two: the results are exact, and each float of the matrix shows in them.
    QMatrix4x4 matrix;
    float* const m = matrix.data();
    for (int i = 0; i < 16; ++i)
        m[i] = float(1 << i);
    const Bounds bounds(QVector3D(1, 2, 3), QVector3D(5, 7, 11));
    expectBox(bounds.transform(matrix), QVector3D(1 + 4 + 12 + 8, 16 + 64 + 192 + 128, 256 + 1024 + 3072 + 2048),
              QVector3D(5 + 14 + 44 + 8, 80 + 224 + 704 + 128, 1280 + 3584 + 11264 + 2048));
}

TEST(BoundsTest, TransformMapsTwoCornersAlone)
{
    // A quarter turn about z by rows: x' = -y, y' = x. Of the box's corners only two are mapped; here they suffice.
    const QMatrix4x4 turn(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    const Bounds turned = Bounds(kLower, kUpper).transform(turn);
    expectBox(turned, QVector3D(-5, -1, -3), QVector3D(2, 4, 6));

    // With x' = x - y, the whole box would reach from -6 to 6.
    const QMatrix4x4 shear(1, 0, 0, 0, -1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    const Bounds sheared = Bounds(kLower, kUpper).transform(shear);
    expectBox(sheared, QVector3D(-1, -2, -3), QVector3D(1, 5, 6));
}

TEST(BoundsTest, TransformByAMirrorKeepsLowerBelowUpper)
{
    QMatrix4x4 mirror;
    mirror.scale(-1, 1, -2);
    expectBox(Bounds(kLower, kUpper).transform(mirror), QVector3D(-4, -2, -12), QVector3D(1, 5, 6));
}

TEST(BoundsTest, TransformLeavesTheBoxItselfAlone)
{
    const Bounds bounds(kLower, kUpper);
    QMatrix4x4 scale;
    scale.scale(2);
    expectBox(bounds.transform(scale), kLower * 2, kUpper * 2);
    expectBox(bounds, kLower, kUpper);
}

// ---- frustrumClipped -----------------------------------------------------------------------------------------------

TEST(BoundsClippedTest, ABoxWhollyInsideGivesItsEightCornersOnce)
{
    const Bounds box(kLower, kUpper);
    const Bounds around(QVector3D(-100, -100, -100), QVector3D(100, 100, 100));
    const QList<QVector3D> c = box.corners();
    const QList<QVector3D> byFaces = {c[0], c[1], c[3], c[2], c[5], c[7], c[4], c[6]};
    EXPECT_EQ(box.frustrumClipped(around.planes(), around.corners(), {}), byFaces);
}

TEST(BoundsClippedTest, AFrustumWhollyInsideGivesItsEightCornersOnce)
{
    const Bounds box(QVector3D(-100, -100, -100), QVector3D(100, 100, 100));
    const Bounds inner(kLower, kUpper);
    const QList<QVector3D> c = inner.corners();
    const QList<QVector3D> byFaces = {c[0], c[1], c[3], c[2], c[5], c[7], c[4], c[6]};
    EXPECT_EQ(box.frustrumClipped(inner.planes(), inner.corners(), {}), byFaces);
}

TEST(BoundsClippedTest, APointMayComeFromBothSteps)
{
    const Bounds box(kLower, kUpper);
    const QList<QVector3D> points = box.frustrumClipped(box.planes(), box.corners(), {});
    ASSERT_EQ(points.size(), 16);
    EXPECT_EQ(points.mid(0, 8), points.mid(8));
    EXPECT_EQ(uniquePoints({points}).size(), 8);
}

TEST(BoundsClippedTest, WithoutCornersOnlyTheSidesOfTheBoxAreClipped)
{
    Random random(812);
    int longer = 0;
    for (int i = 0; i < 200; ++i)
    {
        const Bounds box = randomBounds(random);
        const QList<QVector3D> corners = randomFrustumCorners(random);
        const QList<Plane> planes = planesOfCorners(corners);
        const QList<QVector3D> whole = box.frustrumClipped(planes, corners, {});
        const QList<QVector3D> sides = box.frustrumClipped(planes, {}, {});
        EXPECT_TRUE(sameBits(whole.mid(0, sides.size()), sides));
        EXPECT_EQ(uniquePoints({sides}).size(), sides.size());
        EXPECT_EQ(uniquePoints({whole.mid(sides.size())}).size(), whole.size() - sides.size());
        longer += whole.size() > sides.size();
    }
    EXPECT_GT(longer, 20);
}

TEST(BoundsClippedTest, NothingInCommonIsNothing)
{
    const Bounds box(kLower, kUpper);
    const Bounds away(QVector3D(10, 10, 10), QVector3D(20, 20, 20));
    EXPECT_EQ(box.frustrumClipped(away.planes(), away.corners(), {}), QList<QVector3D>());
}

TEST(BoundsClippedTest, ExtraPlanesCutTheBoxAndTheFrustum)
{
    const Bounds box(QVector3D(0, 0, 0), QVector3D(4, 4, 4));
    const Bounds frustum(QVector3D(1, 1, 1), QVector3D(9, 3, 3));
    const QList<Plane> half = {Plane(QVector3D(1, 0, 0), 2.0f)};
    // Of the box no side reaches into the frustum below x = 2; of the frustum four sides do.
    EXPECT_EQ(box.frustrumClipped(frustum.planes(), {}, half), QList<QVector3D>());
    const QList<QVector3D> points = box.frustrumClipped(frustum.planes(), frustum.corners(), half);
    EXPECT_EQ(points.size(), 8);
    for (const QVector3D& corner : Bounds(QVector3D(1, 1, 1), QVector3D(2, 3, 3)).corners())
        EXPECT_TRUE(points.contains(corner));

    // And the other way about.
    const QList<QVector3D> sides = frustum.frustrumClipped(box.planes(), {}, half);
    EXPECT_EQ(sides.size(), 8);
    EXPECT_EQ(frustum.frustrumClipped(box.planes(), box.corners(), half), sides);
}

TEST(BoundsClippedTest, WithoutPlanesTheBoxAndWhatIsInItRemain)
{
    const Bounds box(QVector3D(0, 0, 0), QVector3D(4, 4, 4));
    EXPECT_EQ(box.frustrumClipped({}, {}, {}).size(), 8);
    const Bounds inner(QVector3D(1, 1, 1), QVector3D(2, 2, 2));
    EXPECT_EQ(box.frustrumClipped({}, inner.corners(), {}).size(), 16);
}

TEST(BoundsClippedTest, FewerThanEightCornersAreReportedAndLeftOut)
{
    const Bounds box(kLower, kUpper);
    for (int count = 1; count < 8; ++count)
    {
        const LogCapture log;
        const QList<QVector3D> few = box.corners().mid(0, count);
        EXPECT_EQ(box.frustrumClipped({}, few, {}), box.frustrumClipped({}, {}, {}));
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList{
                      assertionLine("8 <= corners.size()", QStringLiteral("Faces need 8 corners, not %1").arg(count))});
    }
}

TEST(BoundsClippedTest, FindsTheCornersThatEnumerationFinds)
{
    const LogCapture log;
    Random random(813);
    int looked = 0;
    int empty = 0;
    for (int i = 0; i < 6000 && !testing::Test::HasFailure(); ++i)
    {
        const Bounds box = randomBounds(random);
        const QList<QVector3D> corners = random.below(2) ? randomFrustumCorners(random) : randomBoxCorners(random);
        const QList<Plane> planes = planesOfCorners(corners);
        QList<Plane> extra;
        for (int count = random.below(4); count > 0; --count)
            extra.append(randomPlane(random, 3.0));

        const QList<QVector3D> points = box.frustrumClipped(planes, corners, extra);
        // What only extra planes cut off has no face to stand on.
        const int firstExtra = 12;
        const auto skip = [](const Corner& corner) { return corner.planes[0] >= firstExtra; };
        looked += expectCorners(box.planes() + planes + extra, points, skip);
        empty += points.isEmpty();
    }
    EXPECT_GT(looked, 20000);
    EXPECT_GT(empty, 100);
    EXPECT_LT(empty, 4500);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(BoundsTest, TakesAnyFloats)
{
    const LogCapture log;
    Random random(814);
    for (int i = 0; i < 5000; ++i)
    {
        const Bounds box(awkwardPoint(random), awkwardPoint(random));
        const Bounds other(QList<QVector3D>{awkwardPoint(random), awkwardPoint(random)});
        QMatrix4x4 matrix;
        for (int at = 0; at < 16; ++at)
            matrix.data()[at] = awkwardFloat(random);
        const Bounds mapped = box.transform(matrix);
        EXPECT_EQ(box.corners().size(), 8);
        EXPECT_LE(box.frustrumClipped(other.planes(), mapped.corners(), mapped.planes()).size(), 1000);
        EXPECT_FALSE(box.isInside(QVector3D(kNaN, 0, 0)));
        EXPECT_EQ(cornersFromPlanes(box.planes()).size(), 8);
    }
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
