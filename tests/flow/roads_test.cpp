// The roads of aircraft, from their first report to the end: every one through the whole engine.
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/run_files.h"
#include "support/road.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace vlt {

// Runway 09/27 lies 800 m south of the gates, from 1500 m west to 1500 m east.
constexpr double kRunway = -800;
constexpr double kGateLane = -80;

class Roads : public ::testing::Test
{
protected:
    Roads()
    {
        stage.useGates();
    }
    void TearDown() override
    {
        MAX_HOLDING_MINUTES.value = MAX_HOLDING_MINUTES.def;
        GUID_CHANGES.value = true;
    }

    // Plays and expects that nothing was that must never be, nor any break in the motion.
    ReplayResult play(double seconds, size_t forcedBreaks = 0)
    {
        ReplayResult result = stage.play(seconds);
        for (const InvariantBreak& b : result.findings.invariantBreaks) {
            ADD_FAILURE() << "tick " << b.tick << ": " << b.what;
        }
        const std::vector<MotionBreak> breaks = gf_runMotion(result.lives).breaks;
        for (size_t i = forcedBreaks; i < breaks.size(); ++i) {
            const MotionBreak& b = breaks[i];
            ADD_FAILURE() << b.kind << " by " << b.size << " at " << b.time - result.clockAtStart << " s, "
                          << b.callsign;
        }
        for (const Complaint& c : result.complaints) {
            ADD_FAILURE() << c.function << ": " << c.reason;
        }
        return result;
    }
    std::vector<RoadLook> phase(StState st) const
    {
        std::vector<RoadLook> found;
        std::ranges::copy_if(stage.looks, std::back_inserter(found), [st](const RoadLook& look) {
            return look.fs == FsState::Active && look.st == st;
        });
        return found;
    }
    // The road from the lane before the gates onto the runway and into the air, westwards.
    static RouteLeg toRunway(double laneEast)
    {
        return {{gf_at(laneEast, kGateLane, 0), gf_at(laneEast + 200, kGateLane, 12),
                 gf_at(1400, kGateLane, 14), gf_at(1400, kRunway, 8), gf_at(1300, kRunway, 0)},
                false,
                60,
                20};
    }
    static RouteLeg takeOff()
    {
        return {{gf_at(1300, kRunway, 0), gf_at(-100, kRunway, 145), gf_at(-1600, kRunway, 158, 350),
                 gf_at(-12000, kRunway, 210, 4000), gf_at(-40000, kRunway, 280, 10000)},
                false,
                0,
                0};
    }
    // Down the approach from the east to `knots` on the runway, and what follows.
    static std::vector<RoutePoint> approach(double touchdown, double knots,
                                            const std::vector<RoutePoint>& more)
    {
        std::vector<RoutePoint> points = {
            gf_at(touchdown + 22000, kRunway, 185, 3780), gf_at(touchdown + 7400, kRunway, knots + 6, 1270),
            gf_at(touchdown + 250, kRunway, knots + 2, 22), gf_at(touchdown, kRunway, knots)};
        points.insert(points.end(), more.begin(), more.end());
        return points;
    }
    static RouteLeg landing(const RoutePoint& to)
    {
        return {approach(1000, 134,
                         {gf_at(-400, kRunway, 24), gf_at(-600, kRunway, 16), gf_at(-600, kGateLane, 12),
                          gf_at(to.east, kGateLane, 6), to}),
                false, 0, 200};
    }

    // Past the airport eastwards at 450 kt, 20,000 ft.
    static std::vector<PathState> overflight()
    {
        return gf_journey({{{gf_at(-40000, 9000, 450, 20000), gf_at(40000, 9000, 450, 20000)}, false, 0, 0}});
    }

    RoadStage stage;
};

TEST_F(Roads, fromTheGateToTheRunwayAndAway)
{
    RouteLeg push{{gf_at(0, 0, 0), gf_at(0, kGateLane, 3), gf_at(60, kGateLane, 0)}, true, 90, 0};
    stage.add({}, gf_journey({push, toRunway(60), takeOff()}));
    play(1000);
    EXPECT_EQ("parked pushing_back pushed_back taxi take_off flying", gf_phases(stage.looks));
    const auto pushed = phase(StState::PushingBack);
    ASSERT_FALSE(pushed.empty());
    // Tail first: south of the gate it goes on south, its nose north at the beginning.
    EXPECT_NEAR(0, std::remainder(pushed.front().headingDeg, 360), 1);
    for (size_t i = 1; i < pushed.size(); ++i) {
        EXPECT_LE(pushed[i].north, pushed[i - 1].north + 0.01);
        EXPECT_LE(pushed[i].speed, 0);
    }
    EXPECT_LT(pushed.back().north, -40);
    const auto rotation = phase(StState::TakeOff);
    ASSERT_FALSE(rotation.empty());
    EXPECT_NEAR(270, rotation.front().headingDeg, 4);
    EXPECT_NEAR(kRunway, rotation.front().north, 5);
    const auto flying = phase(StState::Flying);
    ASSERT_FALSE(flying.empty());
    EXPECT_GT(flying.back().feet, 3000);
    EXPECT_FALSE(flying.back().onGround);
}

TEST_F(Roads, thePushBackTurnsToTheSideOfTheReportsUnlessItIsToBeStraight)
{
    for (const bool straight : {false, true}) {
        STRAIGHT_PBS_ONLY.value = straight;
        RouteLeg push{{gf_at(0, 0, 0), gf_at(0, -35, 3, 0, 25), gf_at(-90, -35, 0)}, true, 90, 0};
        stage.add({}, gf_journey({push, {{gf_at(-90, -35, 0), gf_at(200, -35, 10)}, false, 90, 10}}));
        play(400);
        STRAIGHT_PBS_ONLY.value = false;
        const auto after = phase(StState::PushedBack);
        ASSERT_FALSE(after.empty());
        // The tail goes west, so the nose comes to point east.
        EXPECT_NEAR(straight ? 0 : 90, std::remainder(after.front().headingDeg, 360), 15) << straight;
        EXPECT_NEAR(straight ? 0 : -17, after.front().east, 2) << straight;
        stage.clear();
    }
}

TEST_F(Roads, fromTheRunwayToTheGate)
{
    stage.add({}, gf_journey({landing(gf_at(60, -9, 0))}));
    const ReplayResult result = play(900);
    EXPECT_EQ("flying taxi parking parked", gf_phases(stage.looks));
    ASSERT_EQ(1U, result.findings.lives.size());
    const ReplayLife& life = result.findings.lives[0];
    EXPECT_EQ("G2", life.stands);
    EXPECT_LT(life.standDistanceM, 2);
    ASSERT_TRUE(life.touchdown);
    EXPECT_LT(life.firstGroundReportM, 300);
    EXPECT_LT(life.touchdown->sinkFpm, 700);
    EXPECT_NEAR(0, std::remainder(stage.looks.back().headingDeg, 360), 1);
    EXPECT_NEAR(0, stage.looks.back().feet, 0.1);
}

TEST_F(Roads, outOfARampStandForwards)
{
    // R1 faces south; the way out lies ahead.
    stage.add({}, gf_journey({{{gf_at(400, 0, 0), gf_at(400, kGateLane, 8), gf_at(1400, kGateLane, 14),
                                gf_at(1400, kRunway, 8), gf_at(1300, kRunway, 0)},
                               false,
                               90,
                               20},
                              takeOff()}));
    play(700);
    EXPECT_EQ("parked taxi take_off flying", gf_phases(stage.looks));
    const auto taxi = phase(StState::Taxi);
    ASSERT_FALSE(taxi.empty());
    EXPECT_NEAR(180, taxi.front().headingDeg, 2);
}

TEST_F(Roads, aTouchAndGoAndLandingsBrokenOff)
{
    const struct {
        const char* what;
        std::vector<RoutePoint> points;
        const char* phases;
        bool touches;
    } cases[] = {
        {"a touch and go",
         approach(1000, 120,
                  {gf_at(200, kRunway, 105), gf_at(-500, kRunway, 125), gf_at(-3000, kRunway, 140, 800),
                   gf_at(-12000, kRunway, 180, 3000)}),
         "flying taxi take_off flying", true},
        {"one look at the ground, then away again",
         approach(1000, 125,
                  {gf_at(950, kRunway, 125), gf_at(600, kRunway, 130, 60), gf_at(-3000, kRunway, 150, 1200),
                   gf_at(-14000, kRunway, 190, 4000)}),
         "flying taxi take_off flying", true},
        {"a go-around",
         {gf_at(23000, kRunway, 185, 3780), gf_at(8400, kRunway, 140, 1270), gf_at(3500, kRunway, 136, 420),
          gf_at(1500, kRunway, 140, 420), gf_at(-4000, kRunway, 160, 2000),
          gf_at(-16000, kRunway, 200, 4500)},
         "flying",
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        stage.clear();
        stage.add({}, gf_journey({{c.points}}), 2);
        const ReplayResult result = play(600);
        EXPECT_EQ(c.phases, gf_phases(stage.looks));
        EXPECT_EQ(c.touches, result.findings.lives.at(0).touchdown.has_value());
        EXPECT_EQ(c.touches, std::ranges::any_of(stage.looks, &RoadLook::landingRoll));
        EXPECT_GT(stage.looks.back().feet, 500);
        for (const RoadLook& look : stage.looks) {
            EXPECT_TRUE(look.fs != FsState::Active || look.feet > -3) << look.tick;
        }
    }
}

// What pilots do that a table of phases doesn't foresee.
TEST_F(Roads, hostileOnes)
{
    struct Case {
        std::string what;
        const char* type;
        std::vector<RoutePoint> points;
        std::string phases;
    };
    std::vector<Case> cases;
    for (const double knots : {40.0, 80.0, 120.0}) {
        const double run = knots * knots / 11;  // metres
        cases.push_back({format("a take-off rejected at {} kt", knots),
                         "A320",
                         {gf_at(1400, kRunway, 0), gf_at(1400 - run, kRunway, knots),
                          gf_at(1400 - 1.7 * run - 50, kRunway, 10), gf_at(-1200, kRunway, 10),
                          gf_at(-1200, kGateLane, 10), gf_at(-900, kGateLane, 0)},
                         "taxi"});
    }
    for (const double feet : {400.0, 200.0, 50.0, 5.0}) {
        std::vector<RoutePoint> points = approach(1000, 134, {});
        points.resize(2);  // 7.4 km before the touchdown
        points.push_back(gf_at(1000 + feet * 5.8, kRunway, 136, feet));
        points.push_back(gf_at(-2500, kRunway, 150, feet + 1000));
        points.push_back(gf_at(-14000, kRunway, 190, 4000));
        cases.push_back({format("a landing broken off at {} ft", feet), "A320", points,
                         feet < 10 ? "flying taxi take_off flying" : "flying"});
    }
    Case circuits{"ten quick touch-and-goes", "C172", {gf_at(6000, kRunway, 80, 800)}, "flying"};
    for (int i = 0; i < 10; ++i) {
        for (const RoutePoint& p :
             {gf_at(1000, kRunway, 60, 0), gf_at(700, kRunway, 55), gf_at(300, kRunway, 65),
              gf_at(-1500, kRunway, 75, 500, 300), gf_at(-1500, -2300, 90, 800, 300),
              gf_at(4000, -2300, 90, 800, 300), gf_at(4000, kRunway, 75, 500, 300)}) {
            circuits.points.push_back(p);
        }
        circuits.phases += " taxi take_off flying";
    }
    cases.push_back(circuits);
    cases.push_back({"a helicopter taxies through the air",
                     "R44",
                     {gf_at(-300, 0, 0), gf_at(-300, -30, 8, 10), gf_at(-300, -200, 20, 20),
                      gf_at(300, -200, 20, 20), gf_at(320, -200, 0)},
                     ""});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        stage.clear();
        const double pause = c.points[0].feet > 0 ? 0 : 40;
        const auto journey = gf_journey({{c.points, false, pause, pause}});
        stage.add({4198297, "ODD1", c.type, "G-ODDY", "", ""}, journey, 3);
        play(journey.back().time + 20);
        if (!c.phases.empty()) {
            EXPECT_EQ(c.phases, gf_phases(stage.looks));
        }
        ASSERT_FALSE(stage.looks.empty());
        for (const RoadLook& look : stage.looks) {
            EXPECT_TRUE(look.fs != FsState::Active || look.feet > -3) << look.tick;
        }
    }
}

TEST_F(Roads, aHelicopterLeavesItsPadAndComesBack)
{
    const RoutePoint pad = gf_at(-300, 0, 0);
    stage.add({4198297, "GHELI", "R44", "G-HELI", "", ""},
              gf_journey({{{pad, gf_at(-1500, 1200, 60, 500, 500), gf_at(-5000, 3000, 90, 800, 500),
                            gf_at(-6000, 1000, 80, 800, 500), gf_at(-3500, 0, 70, 600, 500),
                            gf_at(-1500, 0, 50, 300), pad},
                           false,
                           120,
                           200}}));
    const ReplayResult result = play(900);
    const std::string phases = gf_phases(stage.looks);
    EXPECT_TRUE(phases.starts_with("parked")) << phases;
    EXPECT_NE(std::string::npos, phases.find("flying")) << phases;
    EXPECT_TRUE(result.findings.lives.at(0).stands.starts_with("H1"));
    EXPECT_NEAR(-300, stage.looks.back().east, 60);
    EXPECT_NEAR(0, stage.looks.back().feet, 1);
}

TEST_F(Roads, anAircraftIsTowedToAnotherGate)
{
    const RoutePoint gate = gf_at(0, -5, 0);
    RouteLeg in = landing(gate);
    in.pauseAfter = 400;
    // Pushed out and pulled into the third gate, slowly.
    RouteLeg out{{gate, gf_at(0, -60, 3), gf_at(-40, -60, 0)}, true, 0, 120};
    RouteLeg over{{gf_at(-40, -60, 0), gf_at(120, -60, 5), gf_at(120, -5, 0)}, false, 0, 300};
    stage.add({}, gf_journey({in, out, over}));
    const ReplayResult result = play(1800);
    EXPECT_TRUE(std::ranges::any_of(stage.looks, &RoadLook::towed));
    EXPECT_EQ("G1 G3", result.findings.lives.at(0).stands);
    EXPECT_LT(result.findings.lives.at(0).standDistanceM, 2);
}

TEST_F(Roads, withoutReportsItHoldsOnTheTaxiwayAndGoesInTheEnd)
{
    MAX_HOLDING_MINUTES.value = 1;
    RouteLeg push{{gf_at(0, 0, 0), gf_at(0, kGateLane, 3), gf_at(60, kGateLane, 0)}, true, 90, 0};
    const auto journey = gf_journey({push, toRunway(60)});
    stage.add({}, journey, 4, 0, journey.back().time - 100);
    const ReplayResult result = play(journey.back().time + 250);
    EXPECT_EQ("reports ended", result.findings.lives.at(0).why);
    const RoadLook& last = stage.looks.back();
    const auto still = std::ranges::find_if(stage.looks, [&last](const RoadLook& look) {
        return look.east == last.east && look.north == last.north;
    });
    // At the same place for its minute of holding, looked at every three seconds.
    EXPECT_NEAR(63, (last.tick - still->tick) / 100.0, 4);
}

TEST_F(Roads, inTheAirItFliesOnForAMinuteInsideTheRangeAndNotAtItsRim)
{
    for (const bool rim : {false, true}) {
        stage.clear();
        stage.options.rangeNm = 20;
        const double end = rim ? 19.9 : 12;
        stage.add({}, gf_journey({{{gf_at(2 * kMetresPerNm, 5000, 400, 12000),
                                    gf_at(end * kMetresPerNm, 5000, 400, 12000)},
                                   false,
                                   0,
                                   0}}));
        const ReplayResult result = play(400);
        const ReplayLife& life = result.findings.lives.at(0);
        EXPECT_EQ("reports ended", life.why);
        const double lastEast = stage.looks.back().east / kMetresPerNm;
        // Eight samples of eight seconds, each five percent slower, are some 5.8 nm at 400 kt.
        EXPECT_NEAR(rim ? end : end + 5.8, lastEast, 0.7) << rim;
    }
}

TEST_F(Roads, anotherCallSignExchangesTheObjectInPlace)
{
    const auto journey = overflight();
    RoadAircraft aircraft;
    stage.add(aircraft, journey, 4, 0, 150);
    aircraft.callsign = "BAW77";
    for (double at = 152; at < 300; at += 4) {
        PathState state = gf_stateAt(journey, at);
        state.time = 0;
        stage.add(aircraft, {state}, 1, at);
    }
    play(330);
    std::set<uint32_t> objects;
    for (const RoadLook& look : stage.looks) {
        if (look.fs == FsState::Active) {
            objects.insert(look.objectid);
        }
    }
    EXPECT_EQ(2U, objects.size());
    const auto gone = std::ranges::find(stage.looks, FsState::LiveryRespawn, &RoadLook::fs);
    ASSERT_NE(stage.looks.end(), gone);
    const auto back = std::find_if(gone, stage.looks.end(),
                                   [](const RoadLook& look) { return look.fs == FsState::Active; });
    ASSERT_NE(stage.looks.end(), back);
    // 450 kt: it goes on where it is due then.
    EXPECT_NEAR(gone->east + 2.315 * (back->tick - gone->tick), back->east, 60);
    EXPECT_LT(back->tick - gone->tick, 500);
}

TEST_F(Roads, anOverflightFollowsItsReportsHalfAMinuteLaterAndSmoothly)
{
    const auto journey = overflight();
    const auto placeAt = [&](double second) {
        const PathState state = gf_stateAt(journey, second);
        return gf_positionAround(state.east, state.north);
    };
    stage.add({}, journey);
    EXPECT_EQ("VWorld A319 British Airways G-DBCJ", play(300).lives.at(0).title);
    EXPECT_GT(stage.looks.size(), 2000U);
    for (size_t i = 1; i < stage.looks.size(); ++i) {
        const RoadLook &look = stage.looks[i], &before = stage.looks[i - 1];
        if (look.tick > 6000 && before.fs == FsState::Active && look.fs == FsState::Active) {
            // Up to two seconds of set-up come on top: it flies at its speed rather than making them good.
            const double second = look.tick / 100.0;
            EXPECT_LT(look.lon, placeAt(second - 30).lon + 1e-5);
            EXPECT_GT(look.lon, placeAt(second - 32.6).lon);
            EXPECT_NEAR(placeAt(second - 31).lat, look.lat, 1e-4) << "11 m";
            EXPECT_NEAR(23.15, look.east - before.east, 8) << "450 kt in a tenth of a second, " << second;
        }
    }
}

TEST_F(Roads, oneThatLeavesTheRangeWhileItIsCreatedIsTakenOverAndRemoved)
{
    stage.add({}, overflight());
    bool driven = false;
    stage.onLook = [&](const RoadLook& look) {
        if (look.fs == FsState::Adding2Sim) {
            LATERAL_RANGE.value = 5;
            gf_applyLateralRange();
        }
        driven = driven || look.fs == FsState::Active;
    };
    const ReplayResult result = play(100);
    EXPECT_TRUE(driven);
    EXPECT_EQ(1U, result.counts.created);
    EXPECT_EQ(1U, result.counts.removed);
}

TEST_F(Roads, comesAsSoonAsTheSimulatorLetsItAndFollowsItsReportsThen)
{
    const struct {
        const char* what;
        SimulatorFaults faults;
        int32_t until;  // second
        int32_t firstDriven, lastDriven;
        bool refused;
    } cases[] = {{"all is well", {}, 0, 30, 36, false},
                 {"no title can be created", {.refuseTitles = true}, 60, 60, 70, true},
                 {"objects come 20 s late", {.acknowledgeAfter = 20}, 150, 50, 56, false},
                 {"objects don't come", {.acknowledgeAfter = kNeverInLife}, 100, 100, 106, false},
                 {"no frames", {.noFrames = true}, 80, 80, 86, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        stage.clear();
        stage.add({}, overflight());
        stage.onSecond = [&](int32_t now, VirtualSimulator& simulator) {
            simulator.setFaults(now < c.until * kTicksPerSecond ? c.faults : SimulatorFaults{});
        };
        const ReplayResult result = play(180);
        const auto active = std::ranges::find(stage.looks, FsState::Active, &RoadLook::fs);
        ASSERT_NE(stage.looks.end(), active);
        EXPECT_GE(active->tick, c.firstDriven * kTicksPerSecond);
        EXPECT_LE(active->tick, c.lastDriven * kTicksPerSecond);
        EXPECT_EQ(1U, result.counts.created);
        EXPECT_EQ(c.refused, result.counts.refused > 0);
    }
}

TEST_F(Roads, standsStillWhileTheFlightIsPausedAndGoesOnWhereItWas)
{
    stage.add({}, overflight());
    int passes = 0;
    std::set<double> places;
    stage.onSecond = [&](int32_t now, VirtualSimulator& simulator) {
        if (now == 10000) {  // seen at every pass while the tick stands
            simulator.setRunning(++passes > 500);
            places.insert(simulator.objects().at(0).lon);
        }
    };
    play(250, 1);  // the way of the second in which it goes on
    EXPECT_EQ(501, passes);
    EXPECT_EQ(1U, places.size());
    EXPECT_EQ(24500, stage.looks.back().tick);
    EXPECT_EQ(FsState::Active, stage.looks.back().fs) << "its reports are heard again";
}

}  // namespace vlt
