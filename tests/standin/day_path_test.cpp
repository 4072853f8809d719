#include "standin/day_path.h"

#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vlt {

constexpr double kMetresPerSecond = 1852.0 / 3600;  // of a knot
const double kPi = std::acos(-1);

TEST(Journey, acceleratesEvenlyBetweenTwoSpeeds)
{
    // From 50 to 150 kt over 5000 m: the mean speed is 100 kt, so it takes 5000 / 51.44 s.
    const auto journey = gf_journey({{{{0, 0, 0, 50, 0}, {0, 5000, 0, 150, 0}}}});
    const double seconds = 5000 / (100 * kMetresPerSecond);
    EXPECT_NEAR(seconds, journey.back().time, 2 * kPathStep);
    EXPECT_NEAR(100, gf_stateAt(journey, seconds / 2).knots, 1);
    EXPECT_NEAR(0, gf_stateAt(journey, seconds / 2).heading, 1e-9);
}

TEST(Journey, climbsAsFastAsSlopeAndSpeedSay)
{
    // 1000 ft in 6000 m at 120 kt: 97.2 s, 617 ft/min.
    const auto journey = gf_journey({{{{0, 0, 0, 120, 0}, {6000, 0, 0, 120, 1000}}}});
    EXPECT_NEAR(617, journey[20].climb, 1);
    const PathState a = gf_stateAt(journey, 10);
    const PathState b = gf_stateAt(journey, 70);
    EXPECT_NEAR(617, b.feet - a.feet, 1);
}

TEST(Journey, roundsACornerWithItsRadiusAndBanksForIt)
{
    constexpr double kRadius = 2000;
    const auto journey =
        gf_journey({{{{0, 0, 0, 200, 3000}, {0, 20000, kRadius, 200, 3000}, {20000, 20000, 0, 200, 3000}}}});
    // North, then a quarter circle about (2000, 18000), then east.
    double widest = 0;
    for (const PathState& state : journey) {
        if (state.north > 18000.5 && state.east < 1999.5) {
            widest = std::max(widest, std::abs(std::hypot(state.east - 2000, state.north - 18000) - kRadius));
        }
    }
    EXPECT_LT(widest, 1);
    EXPECT_NEAR(kPi / 2, journey.back().heading, 1e-6);
    const double length = 18000 + kRadius * kPi / 2 + 18000;
    EXPECT_NEAR(length / (200 * kMetresPerSecond), journey.back().time, 2 * kPathStep);
    double bank = 0;
    for (const PathState& state : journey) {
        bank = std::max(bank, state.bank);
    }
    const double speed = 200 * kMetresPerSecond;
    EXPECT_NEAR(std::atan(speed * speed / 9.81 / kRadius), bank, 0.01) << "to the right, so positive";
}

TEST(Journey, isPushedWithTheNoseAgainstTheWay)
{
    const auto journey = gf_journey({{{{0, 0, 0, 3, 0}, {0, -100, 0, 3, 0}}, true}});
    EXPECT_NEAR(0, gf_stateAt(journey, 20).heading, 1e-9);
    EXPECT_NEAR(kPi, gf_stateAt(journey, 20).track, 1e-9);
    EXPECT_LT(gf_stateAt(journey, 20).north, -20);
}

TEST(Journey, standsStillBetweenLegs)
{
    RouteLeg first{{{0, 0, 0, 20, 0}, {0, 500, 0, 0, 0}}, false, 0, 30};
    RouteLeg second{{{0, 500, 0, 0, 0}, {0, 1000, 0, 20, 0}}, false, 12, 0};
    const auto journey = gf_journey({first, second});
    double standing = 0;
    for (const PathState& state : journey) {
        standing += state.knots == 0 ? kPathStep : 0;
    }
    EXPECT_NEAR(42, standing, 2 * kPathStep);
}

}  // namespace vlt
