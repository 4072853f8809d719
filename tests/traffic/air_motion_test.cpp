#include "traffic/air_motion.h"
#include "traffic/legs.h"
#include "traffic/stream_end.h"

#include "core/base/random.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "traffic/air_config.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/performance.h"
#include "traffic/step_motion.h"
#include "traffic/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>
#include <vector>

namespace vlt {

constexpr double kDeg = std::numbers::pi / 180;

class AirMotionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        tick = 10000;
    }
    void TearDown() override
    {
        SetUp();
    }

    static std::vector<std::pair<uint32_t, uint32_t>> events()
    {
        std::vector<std::pair<uint32_t, uint32_t>> list;
        for (const QueuedEvent& e : eventQueue) {
            list.emplace_back(e.event, e.value);
        }
        eventQueue.clear();
        return list;
    }
    static bool sent(uint32_t event, uint32_t value)
    {
        const auto list = events();
        return std::ranges::find(list, std::pair{event, value}) != list.end();
    }
    static void fly(LiveAc& ac, int ticks)
    {
        for (int i = 0; i < ticks; ++i) {
            stepMotion(ac);
            ++tick;
        }
    }
    // An aircraft on approach to an airport at 1000 ft below its place.
    static LiveAc& addApproaching(double agl)
    {
        parkAirport = ParkAirportPlace{47, 8, 1000};
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.approach = true;
        ac.agl = agl;
        ac.alt = 1000 + agl;
        ac.staticCg = 10;
        for (PosSample& s : ac.stream) {
            s.altitude = 1000 + agl;
        }
        return ac;
    }
};

TEST_F(AirMotionTest, aLegEndsAtItsSampleInItsTime)
{
    for (const double shift : {0.0, 171.99}) {  // the second goes over the date line
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        PosSample& target = ac.stream[1];
        ac.lon = ac.stream[0].lon = ac.stream[0].lon + shift;
        target.lon = std::remainder(target.lon + shift, 360.0);
        const LatLon end{target.lat, target.lon};
        ac.lat += 0.001;  // an error of the leg before
        nextPosMain(ac);
        ASSERT_EQ(1U, ac.stream.size());
        EXPECT_LT(std::abs(ac.dLon), 1e-4) << "the short way";
        const int32_t ticks = ac.stream[0].time - tick;
        EXPECT_NEAR(1000, ticks, 2) << "its speed and distance give ten seconds";
        fly(ac, ticks);
        EXPECT_NEAR(end.lat, ac.lat, 1e-9);
        EXPECT_NEAR(end.lon, ac.lon, 1e-9);
    }
}

TEST_F(AirMotionTest, arrivalTimesStayNearTheirReports)
{
    // The leg is 0.8333 nm; what its speed gives is 30000 ticks per knot-hundredth.
    const struct {
        const char* what;
        double frontSpeed, nextSpeed;
        int32_t reportedAfter;  // ticks from now
        int32_t extendCount;
        int32_t expectedAfter;
    } cases[] = {
        {"as reported", 300, 300, 1000, 0, 1000},
        {"faster, but not by more than ten seconds", 300, 300, 2500, 0, 1500},
        {"slower, but not by more than ten seconds", 100, 100, 1000, 0, 2000},
        {"invented samples have no clock", 100, 100, 1000, 1, 3000},
        {"never before now", 300, 300, -5000, 0, 0},
        {"no speed at all: as the times tell", 0, 0, 2000, 0, 2000},
        {"the mean of both", 200, 400, 1000, 0, 1000},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.stream[0].speed = c.frontSpeed;
        ac.stream[0].time = tick;
        ac.stream[1].speed = c.nextSpeed;
        ac.stream[1].time = tick + c.reportedAfter;
        ac.extendCount = c.extendCount;
        gf_setArrivalTime(ac);
        EXPECT_NEAR(c.expectedAfter, ac.stream[1].time - tick, 2) << c.what;
    }
}

TEST_F(AirMotionTest, hostileNumbersNeverLeaveTheClock)
{
    for (const double speed : {-1e7, 1e-9, 1e7}) {
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.stream[0].speed = speed;
        ac.stream[1].speed = speed;
        ac.stream[1].lon = -172;
        nextPosMain(ac);
        EXPECT_GE(ac.stream[0].time, tick) << speed;
        EXPECT_TRUE(std::isfinite(ac.dLat) && std::isfinite(ac.dLon) && std::isfinite(ac.altRate)) << speed;
        liveAcs.clear();
    }
}

TEST_F(AirMotionTest, pitchFollowsTheVerticalSpeed)
{
    const std::pair<double, double> cases[] = {
        {0, -3}, {2400, -11.8}, {9000, -11.8}, {-1200, -0.8}, {-4000, 2.5}};
    for (const auto& [vs, degrees] : cases) {
        EXPECT_NEAR(degrees * kDeg, gf_pitchForVs(vs), 1e-12) << vs;
    }
}

TEST_F(AirMotionTest, climbsWithinItsPowers)
{
    const struct {
        const char* what;
        double agl, climb;  // feet
        double expected;    // feet per tick, of a leg of 1000 ticks
    } cases[] = {
        {"as reported", 5000, 300, 0.3},
        {"no faster than the category", 5000, 2000, 0.6},
        {"descending high up", 5000, -2000, -2.0},
        {"level near the ground still climbs", 1000, 0, 0.2},
        {"does not sink near the ground", 800, -500, 0.2},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.agl = c.agl;
        ac.stream[1].altitude = ac.alt + c.climb;
        nextPosMain(ac);
        EXPECT_NEAR(c.expected, ac.altRate, 0.005) << c.what;
    }
}

TEST_F(AirMotionTest, banksIntoTheTurnAndWithinItsCategory)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    PosSample third = ac.stream[1];
    third.lat -= 0.05;  // a right turn to the south
    third.time += 1000;
    ac.stream.push_back(third);
    nextPosMain(ac);
    const int32_t ticks = ac.stream[0].time - tick;
    EXPECT_NEAR(90 * kDeg / ticks, ac.hdgRate, 1e-4);
    EXPECT_LT(ac.bankRate, 0) << "right wing down is negative";
    fly(ac, ticks);
    EXPECT_NEAR(-20 * kDeg, ac.bank, 0.1 * kDeg) << "ten seconds at two degrees per second";
    EXPECT_NEAR(180 * kDeg, ac.hdg, 0.5 * kDeg);
}

TEST_F(AirMotionTest, reportedAttitudeWinsNearTheGround)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.agl = 900;
    ac.stream[1].attitudeGiven = ac.stream[1].headingValid = ac.stream[1].rollValid = true;
    ac.stream[1].heading = 100 * kDeg;
    ac.stream[1].roll = -5 * kDeg;
    nextPosMain(ac);
    fly(ac, ac.stream[0].time - tick);
    EXPECT_NEAR(100 * kDeg, ac.hdg, 0.1 * kDeg);
    EXPECT_NEAR(-5 * kDeg, ac.bank, 0.01 * kDeg);
}

TEST_F(AirMotionTest, configuresByHeightAndVerticalSpeed)
{
    constexpr int kNone = -1;  // the command isn't sent
    const struct {
        const char* what;
        double altitude, agl, vs;
        bool nearAirport;
        uint32_t throttleLevel, flapsLevel;
        int lights, cabin, throttle, gear, flaps;  // what is sent
    } cases[] = {
        {"cruise", 35000, 2500, 0, false, 5, 4, 0, 1, 11468, 0, 0},
        {"below 10000 ft", 9000, 2500, 0, false, 3, 0, 1, 1, kNone, 0, kNone},
        {"descending", 9000, 2500, -250, false, 3, 0, 1, 1, 8191, 0, kNone},
        {"initial approach", 3000, 2399, 100, false, 2, 0, 1, 1, kNone, kNone, 3072},
        {"first flaps above 2000 ft", 3000, 2100, 0, false, 2, 1, 1, 1, kNone, kNone, kNone},
        {"climb after take-off", 1500, 1200, 601, false, 5, 1, 1, 0, 16383, 0, 0},
        {"level low, not ours", 1500, 1200, 600, false, 2, 1, 1, 0, kNone, kNone, kNone},
        {"descending elsewhere", 1500, 1200, -600, false, 2, 1, 1, 0, kNone, kNone, kNone},
        {"descending to the airport", 1500, 1200, -600, true, 2, 1, 1, 0, 4914, 1, 16383},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        parkAirport.reset();
        if (c.nearAirport) {
            parkAirport = ParkAirportPlace{47.1, 8, 300};
        }
        ac.stream[0].altitude = c.altitude;
        ac.stream[0].vs = c.vs;
        ac.agl = c.agl;
        ac.throttleLevel = c.throttleLevel;
        ac.flapsLevel = c.flapsLevel;
        gf_airConfig(ac);
        std::map<uint32_t, int> sentValues;
        for (const auto& [event, value] : events()) {
            sentValues[event] = static_cast<int>(value);
        }
        const std::pair<uint32_t, int> expected[] = {{LANDING_LIGHTS_SET, c.lights},
                                                     {CABIN_LIGHTS_SET, c.cabin},
                                                     {THROTTLE_SET, c.throttle},
                                                     {GEAR_SET, c.gear},
                                                     {FLAPS_SET, c.flaps}};
        for (const auto& [event, value] : expected) {
            EXPECT_EQ(value, sentValues.contains(event) ? sentValues[event] : kNone)
                << c.what << " " << event;
        }
        EXPECT_EQ(c.nearAirport, ac.approach) << c.what;
    }
}

TEST_F(AirMotionTest, levelsAreCommandedOnce)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.stream[0].altitude = 3000;
    ac.agl = 1900;
    ac.category = AcCategory::Light;
    ac.flapsLevel = 1;
    gf_airConfig(ac);
    EXPECT_TRUE(sent(FLAPS_SET, 10240)) << "level 2";
    gf_airConfig(ac);
    EXPECT_FALSE(sent(FLAPS_SET, 10240));
    LiveAc& helicopter = gf_addFlying(20002, "HELI1");
    helicopter.category = AcCategory::Rotorcraft;
    helicopter.stream[0].altitude = 12000;
    gf_airConfig(helicopter);
    for (const auto& [event, value] : events()) {
        EXPECT_TRUE(event != GEAR_SET && event != FLAPS_SET) << event;
    }
}

TEST_F(AirMotionTest, theLastLegGoesToTheGroundByPressure)
{
    const struct {
        const char* what;
        int32_t qnh;
        double agl;
        bool airport;
        double expectedVs;  // feet per minute
    } cases[] = {
        {"airport known, low pressure", 1013, 500, true, -500 * 6},
        {"high pressure", 1020, 500, true, -842},
        {"high pressure, gentle reports are not believed", 1014, 500, true, -806},
        {"high pressure, near the ground", 1020, 100, true, -600},
        {"no airport", 1000, 500, false, -601},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = addApproaching(c.agl);
        if (!c.airport) {
            parkAirport.reset();
        }
        currentQnh = c.qnh;
        ac.stream[0].vs = ac.stream[1].vs = -800;
        ac.stream[1].airborne = false;
        ac.stream[1].altitude = 0;
        airSettings(ac, 1000);
        EXPECT_NEAR(c.expectedVs / 6000, ac.altRate, 1e-9) << c.what;
        EXPECT_TRUE(sent(GEAR_SET, 1)) << c.what;
    }
}

TEST_F(AirMotionTest, flaresInStagesAndTouchesDown)
{
    LiveAc& ac = addApproaching(41);
    ac.pitch = -2.5 * kDeg;
    ac.altRate = -0.12;
    flareStep(ac);
    EXPECT_EQ(0U, ac.flareStage) << "a foot too high";
    const struct {
        double agl, altRate;
        uint32_t stage;
    } stages[] = {{40, -0.1, 1}, {30, -0.075, 2}, {20, -0.05, 3}, {13, -0.025, 4}};
    for (const auto& s : stages) {
        ac.agl = s.agl;
        ac.alt = 1000 + s.agl;
        flareStep(ac);
        EXPECT_EQ(s.stage, ac.flareStage);
        EXPECT_DOUBLE_EQ(s.altRate, ac.altRate);
    }
    EXPECT_TRUE(flareActive);
    EXPECT_TRUE(sent(THROTTLE_SET, 0));
    fly(ac, 500);
    EXPECT_NEAR(-4 * kDeg, ac.pitch, 1e-9) << "the flare's pitch, and no further";
    ac.bank = 1 * kDeg;
    ac.staticPitch = 0.5 * kDeg;
    onTouchdown(ac);
    EXPECT_TRUE(ac.onGround && ac.landingRoll && ac.landed && !ac.approach);
    EXPECT_TRUE(sent(SPOILERS_SET, 16383));
    fly(ac, gf_forCategory(kDerotateTicks, AcCategory::Large) + 2);
    EXPECT_NEAR(0.5 * kDeg, ac.pitch, 1e-9);
    EXPECT_EQ(0, ac.bank);
}

TEST_F(AirMotionTest, withoutApproachThereIsNoFlare)
{
    LiveAc& ac = addApproaching(30);
    ac.approach = false;
    const double before = ac.pitch;
    fly(ac, 10);
    EXPECT_EQ(0U, ac.flareStage);
    EXPECT_EQ(before, ac.pitch);
    onTouchdown(ac);
    EXPECT_TRUE(ac.onGround);
    EXPECT_FALSE(ac.landingRoll);
}

TEST_F(AirMotionTest, rotatesThenClimbsHarderSecondBySecond)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.st = StState::TakeOff;
    ac.onGround = true;
    ac.alt = 1000;
    ac.agl = 0;
    ac.altRate = 0.5;
    ac.phaseTicks = ac.rotateTicks;
    ac.pitchRate = ac.rotatePitch / ac.rotateTicks;
    fly(ac, ac.rotateTicks);
    EXPECT_FALSE(ac.onGround);
    EXPECT_DOUBLE_EQ(1000, ac.alt) << "only the nose has come up";
    EXPECT_NEAR(ac.rotatePitch, ac.pitch, std::abs(ac.rotatePitch) * 0.06);
    fly(ac, 299);
    EXPECT_NEAR(1000 + 0.5 * (99 * 0.1 + 100 * 0.2 + 100 * 0.5), ac.alt, 1e-9);
    EXPECT_FALSE(sent(GEAR_SET, 0));
    fly(ac, 1);
    EXPECT_TRUE(sent(GEAR_SET, 0)) << "three seconds after the nose came up";
    ac.agl = 799;
    fly(ac, 300);
    EXPECT_EQ(StState::TakeOff, ac.st);
    ac.agl = 800;
    fly(ac, 1);
    EXPECT_EQ(StState::Flying, ac.st);
    EXPECT_LE(ac.pitch, ac.climbPitch);
}

TEST_F(AirMotionTest, fliesOnForAWhileWhenReportsStop)
{
    userNow.lat = 47;
    userNow.lon = 8;
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.stream.pop_back();
    ac.lat = 47 + 39.6 / 60;
    EXPECT_FALSE(extendStream(ac)) << "at the rim of the range it has just left";
    ac.lat = 47 + 39.4 / 60;
    for (int i = 1; i <= 8; ++i) {
        ASSERT_TRUE(extendStream(ac)) << i;
        const PosSample& from = ac.stream[0];
        const PosSample& to = ac.stream[1];
        EXPECT_NEAR(300 * std::pow(0.95, i), to.speed, 1e-6);
        EXPECT_NEAR(to.speed * 8 / 3600, distNm({from.lat, from.lon}, {to.lat, to.lon}), 0.002);
        EXPECT_EQ(800, to.time - from.time);
        ac.stream.pop_front();
    }
    EXPECT_FALSE(extendStream(ac)) << "used up";
}

TEST_F(AirMotionTest, newReportsEndAnExtensionUnlessTheyLieBehind)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.extendCount = 5;
    PosSample behind = gf_eastOf(ac.stream.back(), -1);
    decodeExisting(ac, behind);
    EXPECT_EQ(2U, ac.stream.size());
    EXPECT_EQ(5, ac.extendCount);
    decodeExisting(ac, gf_eastOf(ac.stream.back(), 1));
    EXPECT_EQ(3U, ac.stream.size());
    EXPECT_EQ(0, ac.extendCount);
    EXPECT_EQ(3000, ac.lagLimit);
    EXPECT_EQ(tick + 1, ac.stream.front().time);
}

TEST_F(AirMotionTest, aTakeOffWhoseReportsStayOnTheGroundEndsThere)
{
    const struct {
        int32_t phaseTicks;  // -300: the climb still builds up
        bool airborneAhead, ends;
    } cases[] = {{-300, false, false}, {-301, true, false}, {-301, false, true}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::TakeOff);
        ac.onGround = false;
        ac.takeOff = true;
        ac.phaseTicks = c.phaseTicks;
        ac.stream.push_back(gf_groundSample(50, 0, 20, tick + 500));
        ac.stream.back().airborne = c.airborneAhead;
        onTouchdown(ac);
        EXPECT_TRUE(c.ends == ac.onGround && c.ends != ac.takeOff) << c.phaseTicks << c.airborneAhead;
        EXPECT_EQ(c.ends ? StState::Taxi : StState::TakeOff, ac.st) << c.phaseTicks << c.airborneAhead;
    }
}

}  // namespace vlt
