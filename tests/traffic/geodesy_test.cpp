#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace vlt {

constexpr double kPi = std::numbers::pi;

TEST(Geodesy, distancesAreThoseOfAGlobe)
{
    // A degree of latitude on a sphere of 6366.707 km is 60.0 nm; LHR to JFK by great circle is 2991 nm.
    EXPECT_NEAR(60.0, distNm({10, 20}, {11, 20}), 0.01);
    EXPECT_NEAR(2991, distNm({51.4706, -0.4619}, {40.6398, -73.7789}), 10);
    EXPECT_EQ(0, distNm({47, 8}, {47, 8}));
    EXPECT_NEAR(1.2, distNm({0, 179.99}, {0, -179.99}), 0.001) << "across the date line";
    EXPECT_NEAR(10800, distNm({0, 0}, {0, 180}), 2) << "to the other side";
    EXPECT_NEAR(120.0, distNm({89, 0}, {89, 180}), 0.02) << "over the pole";
}

TEST(Geodesy, bearingsGoRoundTheCompass)
{
    EXPECT_NEAR(0, bearing({47, 8}, {48, 8}), 1e-9);
    EXPECT_NEAR(kPi / 2, bearing({0, 8}, {0, 9}), 1e-9);
    EXPECT_NEAR(kPi, bearing({48, 8}, {47, 8}), 1e-9);
    EXPECT_NEAR(kPi * 1.5, bearing({0, 9}, {0, 8}), 1e-9);
    EXPECT_NEAR(kPi / 2, bearing({0, 179.9}, {0, -179.9}), 1e-9);
    EXPECT_EQ(0, bearing({47, 8}, {47, 8}));
}

TEST(Geodesy, destinationUndoesDistanceAndBearing)
{
    for (const double heading : {0.1, 1.0, 2.5, 4.0, 6.0}) {
        const LatLon from{61.5, 179.95};
        const LatLon to = destination(from, heading, 5 * kFeetPerNm);
        EXPECT_NEAR(5, distNm(from, to), 0.01) << heading;
        EXPECT_NEAR(heading, bearing(from, to), 1e-3) << heading;
        EXPECT_LE(std::abs(to.lon), 180) << heading;
    }
}

TEST(Geodesy, anglesTakeTheShorterWay)
{
    EXPECT_NEAR(0.2, angleDiff(kTwoPi - 0.1, 0.1), 1e-12);
    EXPECT_NEAR(-0.2, angleDiff(0.1, kTwoPi - 0.1), 1e-12);
    EXPECT_NEAR(kTwoPi - 0.5, gf_normalAngle(-0.5), 1e-12);
    EXPECT_NEAR(0.5, gf_normalAngle(0.5 + 2 * kTwoPi), 1e-12);
    EXPECT_EQ(0, gf_normalAngle(std::numeric_limits<double>::quiet_NaN()));
}

TEST(Geodesy, offLineIsMeasuredAcrossTheLine)
{
    // A minute of longitude at the equator is 1 nm, to the right of somebody who looks north.
    EXPECT_NEAR(kFeetPerNm, gf_offLineFeet({0, 0}, 0, {2.0 / 60, 1.0 / 60}), 20);
    EXPECT_NEAR(kFeetPerNm, gf_offLineFeet({0, 0}, 0, {2.0 / 60, -1.0 / 60}), 20);
    EXPECT_NEAR(0, gf_offLineFeet({0, 0}, 0, {1, 0}), 1e-3);
}

TEST(Geodesy, theNullPositionIsASmallBox)
{
    EXPECT_TRUE(gf_isNullPosition({0, 0}) && gf_isNullPosition({0.0009, 0.05}));
    for (const LatLon outside : {LatLon{0.00091, 0.05}, LatLon{0.0009, 0.0501}, LatLon{-0.0001, 0.01}}) {
        EXPECT_FALSE(gf_isNullPosition(outside)) << outside.lat;
    }
}

}  // namespace vlt
