#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vlt {

TEST(Geodesy, distancesAndBearingsAreThoseOfAGlobe)
{
    // A degree of latitude on a sphere of 6366.707 km is 60.0 nm; LHR to JFK by great circle is 2991 nm.
    const struct {
        LatLon from, to;
        double nm, bearingDeg, tolerance;
    } cases[] = {{{10, 20}, {11, 20}, 60, 0, 0.01},
                 {{48, 8}, {47, 8}, 60, 180, 0.01},
                 {{0, 8}, {0, 9}, 60, 90, 0.01},
                 {{51.4706, -0.4619}, {40.6398, -73.7789}, 2991, 288, 10},
                 {{47, 8}, {47, 8}, 0, 0, 0},
                 {{0, 179.99}, {0, -179.99}, 1.2, 90, 0.001},  // across the date line
                 {{0, 0}, {0, 180}, 10800, 90, 2},             // to the other side
                 {{89, 0}, {89, 180}, 120, 0, 0.02}};          // over the pole
    for (const auto& c : cases) {
        EXPECT_NEAR(c.nm, distNm(c.from, c.to), c.tolerance);
        EXPECT_NEAR(c.bearingDeg, bearing(c.from, c.to) * kDegPerRad, c.tolerance) << c.nm;
        const LatLon there = destination(c.from, bearing(c.from, c.to), distNm(c.from, c.to) * kFeetPerNm);
        EXPECT_NEAR(0, distNm(c.to, there), 0.01) << c.nm;
    }
}

TEST(Geodesy, theNullPositionIsASmallBox)
{
    EXPECT_TRUE(gf_isNullPosition({0, 0}) && gf_isNullPosition({0.0009, 0.05}));
    for (const LatLon outside : {LatLon{0.00091, 0.05}, LatLon{0.0009, 0.0501}, LatLon{-0.0001, 0.01}}) {
        EXPECT_FALSE(gf_isNullPosition(outside)) << outside.lat;
    }
    EXPECT_EQ(0, gf_normalAngle(NAN));
    EXPECT_NEAR(kTwoPi - 0.5, gf_normalAngle(-0.5 - 2 * kTwoPi), 1e-12);
}

}  // namespace vlt
