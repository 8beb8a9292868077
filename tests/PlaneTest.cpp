// SPDX-License-Identifier: MIT
#include "Plane.h"

#include "ClipperVolumeTestTools.h"
#include "VectorNormalize.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

bool hasNaN(const QVector3D& p)
{
    return std::isnan(p.x()) || std::isnan(p.y()) || std::isnan(p.z());
}

} // namespace

static_assert(sizeof(Plane) == 16);
static_assert(std::is_trivially_copyable_v<Plane>);
static_assert(std::is_same_v<decltype(Plane::normal), QVector3D>);
static_assert(std::is_same_v<decltype(Plane::distance), float>);
static_assert(std::is_same_v<decltype(Plane().DistanceTo(QVector3D())), float>);
static_assert(std::is_same_v<decltype(Plane().WhichSide(QVector3D())), int>);

// ---- construction --------------------------------------------------------------------------------------------------

TEST(PlaneTest, TheDefaultIsAllZero)
{
    EXPECT_EQ(Plane().normal, QVector3D(0, 0, 0));
    EXPECT_EQ(Plane().distance, 0.0f);
}

TEST(PlaneTest, NormalAndDistanceAreTakenAsGiven)
{
    const Plane plane(QVector3D(2, -3, 4), 5.0f);
    EXPECT_EQ(plane.normal, QVector3D(2, -3, 4));
    EXPECT_EQ(plane.distance, 5.0f);
}

TEST(PlaneTest, ThroughAPointTheNormalIsNotNormalized)
{
    const Plane plane(QVector3D(2, -3, 4), QVector3D(5, 7, 11));
    EXPECT_EQ(plane.normal, QVector3D(2, -3, 4));
    EXPECT_EQ(plane.distance, 33.0f);
    EXPECT_EQ(plane.DistanceTo(QVector3D(5, 7, 11)), 0.0f);
}

TEST(PlaneTest, ThroughThreePointsTheNormalHasLengthOneAndTurnsWithThem)
{
    const Plane plane(QVector3D(1, 1, 4), QVector3D(6, 1, 4), QVector3D(1, 3, 4));
    EXPECT_EQ(plane.normal, QVector3D(0, 0, 1));
    EXPECT_EQ(plane.distance, 4.0f);

    const Plane slanted(QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(0, 0, 1));
    const float third = float(1.0 / std::sqrt(3.0));
    EXPECT_FLOAT_EQ(slanted.normal.x(), third);
    EXPECT_FLOAT_EQ(slanted.normal.y(), third);
    EXPECT_FLOAT_EQ(slanted.normal.z(), third);
    EXPECT_FLOAT_EQ(slanted.distance, third);
}

TEST(PlaneTest, TheSecondAndThirdPointSwappedGiveTheOppositeNormal)
{
    Random random(20231);
    for (int i = 0; i < 1000; ++i)
    {
        const QVector3D a = random.point(10.0);
        const QVector3D b = random.point(10.0);
        const QVector3D c = random.point(10.0);
        const Plane one(a, b, c);
        const Plane other(a, c, b);
        EXPECT_EQ(other.normal, -one.normal);
        EXPECT_EQ(other.distance, -one.distance);
        EXPECT_NE(one.normal, QVector3D());
    }
}

TEST(PlaneTest, TheDistanceOfThreePointsIsThatOfTheFirst)
{
    Random random(20232);
    for (int i = 0; i < 1000; ++i)
    {
        const QVector3D a = random.point(10.0);
        const Plane plane(a, random.point(10.0), random.point(10.0));
        EXPECT_EQ(plane.distance, QVector3D::dotProduct(plane.normal, a));
        EXPECT_EQ(plane.DistanceTo(a), 0.0f);
    }
}

TEST(PlaneTest, ThreePointsOnALineMakeAPlaneThroughTheOriginWithoutNormal)
{
    const Plane plane(QVector3D(1, 2, 3), QVector3D(2, 4, 6), QVector3D(3, 6, 9));
    EXPECT_EQ(plane.normal, QVector3D(0, 0, 0));
    EXPECT_EQ(plane.distance, 0.0f);
    EXPECT_EQ(plane.WhichSide(QVector3D(7, 8, 9)), 0);
}

TEST(PlaneTest, IsCopiedAndAssigned)
{
    const Plane plane(QVector3D(1, 2, 3), 4.0f);
    const Plane copy(plane);
    EXPECT_TRUE(sameBits(copy, plane));
    Plane assigned;
    assigned = plane;
    EXPECT_TRUE(sameBits(assigned, plane));
}

// ---- sides ---------------------------------------------------------------------------------------------------------

TEST(PlaneTest, DistancesAreNegativeInside)
{
    const Plane plane(QVector3D(0, 1, 0), 2.0f);
    EXPECT_EQ(plane.DistanceTo(QVector3D(9, 5, 9)), 3.0f);
    EXPECT_EQ(plane.DistanceTo(QVector3D(9, 2, 9)), 0.0f);
    EXPECT_EQ(plane.DistanceTo(QVector3D(9, -5, 9)), -7.0f);
}

TEST(PlaneTest, WhichSideOfAPointOnThePlaneIsZero)
{
    EXPECT_EQ(Plane(QVector3D(0, 0, 1), 4.0f).WhichSide(QVector3D(5, 6, 4)), 0);
}

TEST(PlaneTest, WhichSideHasNoTolerance)
{
    const Plane plane(QVector3D(1, 0, 0), 1.0f);
    EXPECT_EQ(plane.WhichSide(QVector3D(std::nextafter(1.0f, 0.0f), 0, 0)), -1);
    EXPECT_EQ(plane.WhichSide(QVector3D(1, 0, 0)), 0);
    EXPECT_EQ(plane.WhichSide(QVector3D(std::nextafter(1.0f, 2.0f), 0, 0)), 1);

    const float tiny = std::numeric_limits<float>::denorm_min();
    const Plane origin(QVector3D(1, 0, 0), 0.0f);
    EXPECT_EQ(origin.WhichSide(QVector3D(-tiny, 0, 0)), -1);
    EXPECT_EQ(origin.WhichSide(QVector3D(-0.0f, 0, 0)), 0);
    EXPECT_EQ(origin.WhichSide(QVector3D(tiny, 0, 0)), 1);
}

TEST(PlaneTest, WhichSideOfInfinityIsASideAndOfWhatIsNoNumberIsZero)
{
    const Plane plane(QVector3D(1, 1, 1), 1.0f);
    EXPECT_EQ(plane.WhichSide(QVector3D(kInfinity, 0, 0)), 1);
    EXPECT_EQ(plane.WhichSide(QVector3D(-kInfinity, 0, 0)), -1);
    EXPECT_EQ(plane.WhichSide(QVector3D(kNaN, 0, 0)), 0);
    EXPECT_EQ(plane.WhichSide(QVector3D(kInfinity, -kInfinity, 0)), 0);
}

// ---- normalize -----------------------------------------------------------------------------------------------------

TEST(VectorNormalizeTest, DividesByTheLength)
{
    EXPECT_EQ(normalize(QVector3D(3, 4, 0)), QVector3D(0.6f, 0.8f, 0));
    EXPECT_EQ(normalize(QVector3D(0, 0, -8)), QVector3D(0, 0, -1));
    Random random(20233);
    for (int i = 0; i < 1000; ++i)
    {
        const QVector3D p = random.point(100.0);
        const QVector3D n = normalize(p);
        EXPECT_NEAR(dot(vec(n), vec(n)), 1.0, 4e-7);
        const Vec across = cross(vec(n), vec(p));
        EXPECT_LT(std::sqrt(dot(across, across)), 2e-5);
        EXPECT_GT(dot(vec(n), vec(p)), 0.0);
    }
}

TEST(VectorNormalizeTest, LeavesALengthOfNearlyOneUnchanged)
{
    const float above = 1.0f + 83.0f * 0x1p-23f; // 9.894e-6 above 1
    const float below = 1.0f - 167.0f * 0x1p-24f;
    for (const float length : {1.0f, above, below})
    {
        const QVector3D p(0, length, 0);
        EXPECT_TRUE(sameBits(normalize(p), p)) << length;
    }
    const QVector3D slanted(0.6f, 0.0f, -0.8f);
    EXPECT_TRUE(sameBits(normalize(slanted), slanted));
}

TEST(VectorNormalizeTest, DividesALengthJustFurtherFromOne)
{
    const float above = 1.0f + 84.0f * 0x1p-23f; // 1.0014e-5 above 1
    const float below = 1.0f - 168.0f * 0x1p-24f;
    for (const float length : {above, below})
        EXPECT_EQ(normalize(QVector3D(0, length, 0)), QVector3D(0, 1, 0)) << length;
}

TEST(VectorNormalizeTest, MakesALengthOfAtMostAHundredThousandthZero)
{
    EXPECT_EQ(normalize(QVector3D(0, 0, 0)), QVector3D(0, 0, 0));
    EXPECT_EQ(normalize(QVector3D(1e-5f, 0, 0)), QVector3D(0, 0, 0));
    EXPECT_EQ(normalize(QVector3D(0, -1e-20f, 1e-30f)), QVector3D(0, 0, 0));
    EXPECT_EQ(normalize(QVector3D(0, std::nextafter(1e-5f, 1.0f), 0)), QVector3D(0, 1, 0));
}

TEST(VectorNormalizeTest, TakesLengthsWhoseSquaresLeaveTheRangeOfFloat)
{
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(normalize(QVector3D(largest, 0, 0)), QVector3D(1, 0, 0));
    EXPECT_EQ(normalize(QVector3D(3.0f * 0x1p100f, 0, 4.0f * 0x1p100f)), QVector3D(0.6f, 0, 0.8f));
}

TEST(VectorNormalizeTest, KeepsWhatIsNotANumber)
{
    EXPECT_TRUE(hasNaN(normalize(QVector3D(0, kNaN, 0))));
    EXPECT_TRUE(hasNaN(normalize(QVector3D(kInfinity, 0, 0))));
}

// ---- planeIntersection ---------------------------------------------------------------------------------------------

TEST(PlaneIntersectionTest, IsExactForPlanesOfTheAxes)
{
    const Plane x(QVector3D(-1, 0, 0), 2.5f);
    const Plane y(QVector3D(0, 1, 0), 3.25f);
    const Plane z(QVector3D(0, 0, -1), -7.0f);
    const QVector3D common(-2.5f, 3.25f, 7.0f);
    EXPECT_EQ(planeIntersection(x, y, z), common);
    EXPECT_EQ(planeIntersection(x, z, y), common);
    EXPECT_EQ(planeIntersection(y, x, z), common);
    EXPECT_EQ(planeIntersection(y, z, x), common);
    EXPECT_EQ(planeIntersection(z, x, y), common);
    EXPECT_EQ(planeIntersection(z, y, x), common);
}

TEST(PlaneIntersectionTest, AgreesWithCramersRule)
{
    Random random(20234);
    int compared = 0;
    for (int i = 0; i < 20000; ++i)
    {
        const QList<Plane> planes = {Plane(random.direction(), random.between(-10, 10)),
                                     Plane(random.direction(), random.between(-10, 10)),
                                     Plane(random.direction(), random.between(-10, 10))};
        const Corner corner = commonPoint(planes, 0, 1, 2);
        if (std::fabs(corner.determinant) < 0.05)
            continue;
        ++compared;
        const QVector3D point = planeIntersection(planes[0], planes[1], planes[2]);
        // Both b against c and their line against a may be as flat as the determinant says.
        const double tolerance = 2e-5 / (corner.determinant * corner.determinant);
        EXPECT_LE(distanceBetween(vec(point), corner.point), tolerance) << "determinant " << corner.determinant;
    }
    EXPECT_GT(compared, 15000);
}

TEST(PlaneIntersectionTest, FollowsItsStepsToTheBit)
{
    Random random(20235);
    for (int i = 0; i < 5000; ++i)
    {
        const Plane a(random.direction(), random.between(-10, 10));
        const Plane b(random.direction(), random.between(-10, 10));
        const Plane c(random.direction(), random.between(-10, 10));
        const float across[3] = {b.normal.y() * c.normal.z() - b.normal.z() * c.normal.y(),
                                 b.normal.z() * c.normal.x() - b.normal.x() * c.normal.z(),
                                 b.normal.x() * c.normal.y() - b.normal.y() * c.normal.x()};
        const QVector3D dir = normalize(QVector3D(across[0], across[1], across[2]));
        const double dotbc = QVector3D::dotProduct(b.normal, c.normal);
        const double den = 1.0 - dotbc * dotbc;
        const double kb = (double(b.distance) - double(c.distance) * dotbc) / den;
        const double kc = (double(c.distance) - double(b.distance) * dotbc) / den;
        const QVector3D base = b.normal * float(kb) + c.normal * float(kc);
        const QVector3D from = a.normal * a.distance - base;
        const float s = QVector3D::dotProduct(from, a.normal) / QVector3D::dotProduct(dir, a.normal);
        EXPECT_TRUE(sameBits(planeIntersection(a, b, c), base + dir * s));
    }
}

TEST(PlaneIntersectionTest, OfNearlyParallelPlanesStaysNearBoth)
{
    // An angle of 1e-3 between b and c: in float, 1 - cos^2 would keep no more than one or two digits.
    const Plane a(QVector3D(0, 0, 1), 3.0f);
    const Plane b(QVector3D(1, 0, 0), 2.0f);
    const Plane c(QVector3D(float(std::cos(1e-3)), float(std::sin(1e-3)), 0), 2.0f);
    const QVector3D point = planeIntersection(a, b, c);
    EXPECT_NEAR(point.z(), 3.0f, 1e-5);
    EXPECT_NEAR(b.DistanceTo(point), 0.0f, 0.05f);
    EXPECT_NEAR(c.DistanceTo(point), 0.0f, 0.05f);
}

TEST(PlaneIntersectionTest, OfParallelPlanesIsNoFinitePointAndReportsNothing)
{
    const LogCapture log;
    const Plane x(QVector3D(1, 0, 0), 1.0f);
    const Plane x2(QVector3D(1, 0, 0), 2.0f);
    const Plane y(QVector3D(0, 1, 0), 1.0f);
    for (const QVector3D& point :
         {planeIntersection(y, x, x2), planeIntersection(x, x2, y), planeIntersection(x, y, x2),
          planeIntersection(x, x, x), planeIntersection(Plane(), Plane(), Plane())})
    {
        EXPECT_FALSE(std::isfinite(point.x()) && std::isfinite(point.y()) && std::isfinite(point.z()));
    }
    EXPECT_EQ(log.texts(), QStringList());
}

TEST(PlaneIntersectionTest, TakesAnyFloats)
{
    const LogCapture log;
    Random random(20236);
    int finite = 0;
    for (int i = 0; i < 20000; ++i)
    {
        const Plane a(awkwardPoint(random), awkwardFloat(random));
        const Plane b(awkwardPoint(random), awkwardPoint(random));
        const Plane c(awkwardPoint(random), awkwardPoint(random), awkwardPoint(random));
        const QVector3D point = planeIntersection(a, b, c);
        finite += std::isfinite(point.x()) && std::isfinite(point.y()) && std::isfinite(point.z());
        const int side = a.WhichSide(point);
        EXPECT_EQ(side, (a.DistanceTo(point) > 0.0f) - (a.DistanceTo(point) < 0.0f));
    }
    EXPECT_GT(finite, 0);
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
