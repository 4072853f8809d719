// Bends, moves at the stand, the runway, and the drive onto a stand.
#include "traffic/ground_motion.h"

#include "airports/loading.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "traffic/arrival.h"
#include "traffic/cycle.h"
#include "traffic/geodesy.h"
#include "traffic/ground_place.h"
#include "traffic/leg_time.h"
#include "traffic/legs.h"
#include "traffic/runway.h"
#include "traffic/stand_holding.h"
#include "traffic/stays.h"
#include "traffic/step_motion.h"
#include "traffic/taxi_curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace vlt {

class GroundMotion : public GroundPlace
{
protected:
    struct Point {
        double east, north, speed;
    };
    // A taxiing aircraft at the first point, nose east, with 1000 ticks between its samples.
    static LiveAc& taxiing(std::initializer_list<Point> points)
    {
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Taxi);
        ac.hdg = std::numbers::pi / 2;
        ac.stream.clear();
        for (const Point& p : points) {
            const int32_t time = tick + 1000 * static_cast<int32_t>(ac.stream.size());
            ac.stream.push_back(gf_groundSample(p.east, p.north, p.speed, time));
        }
        ac.lat = ac.stream[0].lat;
        ac.lon = ac.stream[0].lon;
        return ac;
    }
    static double east(const LiveAc& ac)
    {
        return (ac.lon - 8) * 60 * std::cos(47 * kRadPerDeg) * kMetresPerNm;
    }
    static double north(const LiveAc& ac)
    {
        return (ac.lat - 47) * 60 * kMetresPerNm;
    }
    // Runs legs and ticks as the cycle does, until `done` or the time is over.
    template <typename Done>
    static bool drive(LiveAc& ac, int32_t ticks, Done done)
    {
        for (int32_t i = 0; i < ticks; ++i) {
            if (tick >= ac.stream.front().time) {
                nextPosMain(ac);
            }
            if (!ac.stream.front().stationary) {
                stepMotion(ac);
            }
            ++tick;
            if (done()) {
                return true;
            }
        }
        return false;
    }
};

class Bends : public GroundMotion
{
};

TEST_F(Bends, whichBendsBecomeCurves)
{
    const struct {
        const char* what;
        double deg, legM, speed;
        bool curve;
        size_t samples;  // after the leg was set up
    } cases[] = {{"as good as straight", 2.9, 100, 10, false, 2},
                 {"a gentle bend", 3.1, 100, 10, true, 1},
                 {"a right angle", 90, 40, 10, true, 1},
                 {"a right angle after a long leg: its first half stays straight", 90, 100, 10, false, 3},
                 {"the same, fast", 90, 100, 44, true, 1},
                 {"nearly back", 161, 40, 10, false, 2},
                 {"just a curve", 159, 40, 10, true, 1}};
    for (const auto& c : cases) {
        SetUp();
        const double angle = c.deg * kRadPerDeg;
        LiveAc& ac = taxiing({{0, 0, c.speed},
                              {c.legM, 0, c.speed},
                              {c.legM + 100 * std::cos(angle), -100 * std::sin(angle), c.speed}});
        nextPos(ac);
        EXPECT_EQ(c.curve, gf_hasCurve(ac.curve)) << c.what;
        EXPECT_EQ(c.samples, ac.stream.size()) << c.what;
    }
}

TEST_F(Bends, aChangeOfSpeedOnALongLegIsTakenInTwoSteps)
{
    const struct {
        double from, to, legM;
        size_t samples;
    } cases[] = {{10, 15, 150, 1}, {10, 15.1, 150, 2}, {15.1, 10, 150, 2}, {10, 20, 99, 1}, {0, 8, 150, 2}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({{0, 0, c.from}, {c.legM, 0, c.to}});
        nextPos(ac);
        EXPECT_EQ(c.samples, ac.stream.size()) << c.from << ' ' << c.to << ' ' << c.legM;
    }
    EXPECT_EQ(4, liveAcs[0].stream.front().speed);  // the mean of the last case
}

TEST_F(Bends, theTurnTakesTheRoomThatTheLegGives)
{
    // At 10 kt, 5.144 m/s; an airliner's nominal rate is 0.07 degrees a tick.
    const struct {
        const char* what;
        double deg, legM, factor;
        int32_t limit;
    } cases[] = {{"a right angle, much room: three times the rate at most", 90, 400, 3, 2000},
                 {"a sharp bend, less room: by the room", 60, 50, 1.98, 1000},
                 {"a gentle bend on a long leg: slowly", 20, 400, 0.281, 1000},
                 {"a gentle bend with no room: faster", 40, 10, 1.683, 1000}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({{0, 0, 10}, {c.legM, 0, 10}});
        ac.turning = true;
        ac.turnDeg = c.deg;
        legTime(ac);
        EXPECT_NEAR(c.factor, ac.turnRate / ac.turnRateNominal, 0.01) << c.what;
        EXPECT_EQ(c.limit, ac.lagLimit) << c.what;
    }
}

TEST_F(Bends, theCurveLeadsPastTheBendToTheThirdSampleAndTurnsTheNose)
{
    LiveAc& ac = taxiing({{0, 0, 10}, {40, 0, 10}, {40, -40, 10}, {40, -140, 10}});
    double sharpest = 0;
    double before = ac.hdg;
    double farthestOff = 0;
    nextPos(ac);
    const int32_t arrival = ac.stream.front().time;
    ASSERT_TRUE(drive(ac, 4000, [&] {
        sharpest = std::max(sharpest, std::abs(angleDiff(before, ac.hdg)));
        before = ac.hdg;
        farthestOff = std::max(farthestOff, east(ac) - 40);
        return tick >= arrival;
    }));
    EXPECT_NEAR(40, east(ac), 0.5);
    EXPECT_NEAR(-40, north(ac), 0.5);
    EXPECT_LT(farthestOff, 0.5);
    EXPECT_LE(sharpest, ac.turnRateNominal * 3 + 1e-9);
    // The turn rate is that of the bend; the nose is round a little after the curve's end.
    EXPECT_NEAR(180, ac.hdg * kDegPerRad, 12);
}

TEST_F(Bends, aCurveHasAPointEverywhereButOutside)
{
    LiveAc& ac = taxiing({{0, 0, 10}, {40, 0, 10}, {40, -40, 10}});
    makeCurve(ac);
    const auto start = curvePoint(ac.curve, 0);
    const auto middle = curvePoint(ac.curve, 0.5);
    const auto end = curvePoint(ac.curve, 1);
    ASSERT_TRUE(start && middle && end);
    EXPECT_NEAR(90, start->bearing * kDegPerRad, 0.01);
    EXPECT_NEAR(135, middle->bearing * kDegPerRad, 0.1);
    EXPECT_NEAR(180, end->bearing * kDegPerRad, 0.01);
    // A quadratic curve's middle: a quarter of both ends and half of the control point.
    EXPECT_NEAR(30, distNm({47, 8}, {47, middle->lon}) * kMetresPerNm, 0.1);
    EXPECT_NEAR(-10, (middle->lat - 47) * 60 * kMetresPerNm, 0.1);
    for (const double outside : {-0.001, 1.001, std::nan("")}) {
        EXPECT_FALSE(curvePoint(ac.curve, outside));
    }
    EXPECT_FALSE(curvePoint(Curve{}, 0.5));
}

TEST_F(Bends, aCurveAcrossTheDateLineIsShort)
{
    LiveAc& ac = taxiing({{0, 0, 10}, {40, 0, 10}, {40, -40, 10}});
    const double shift = 180 - ac.stream[1].lon + 0.0001;
    for (PosSample& sample : ac.stream) {
        sample.lon = std::remainder(sample.lon + shift, 360.0);
    }
    ac.lon = ac.stream[0].lon;
    nextPos(ac);
    for (int i = 0; i < 1000; ++i) {
        const LatLon before{ac.lat, ac.lon};
        stepMotion(ac);
        ASSERT_LT(distNm(before, {ac.lat, ac.lon}) * kMetresPerNm, 0.5) << i;
    }
}

class AtTheStand : public GroundMotion
{
protected:
    // Parked at a stand with its nose east, reports leading away to `direction` from there, degrees.
    static LiveAc& leaving(double directionDeg)
    {
        ParkPos& stand = gf_addStand("A1", 0, 0, 90);
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Parked);
        ac.hdg = std::numbers::pi / 2;
        gf_takeStand(ac, stand);
        ac.pullOutPending = true;
        const double angle = directionDeg * kRadPerDeg;
        ac.stream.push_back(gf_groundSample(60 * std::sin(angle), 60 * std::cos(angle), 8, tick + 3000));
        return ac;
    }
};

TEST_F(AtTheStand, aheadItPullsOutBehindItPushesBack)
{
    const struct {
        double direction;
        StState st;
    } cases[] = {
        {175, StState::Taxi}, {185, StState::PushingBack}, {5, StState::Taxi}, {355, StState::PushingBack}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = leaving(c.direction);
        nextPos(ac);
        EXPECT_EQ(c.st, ac.st) << c.direction;
        EXPECT_TRUE(sent(TAXI_LIGHTS_SET, 1)) << c.direction;
    }
}

TEST_F(AtTheStand, aStraightPushBackLeavesTailFirstAndKeepsItsNose)
{
    LiveAc& ac = leaving(270);
    ASSERT_TRUE(drive(ac, 20'000, [&] { return ac.st == StState::PushedBack; }));
    // 2.5 radii of the stand, 20 m each.
    EXPECT_NEAR(-50, east(ac), 1.5);
    EXPECT_NEAR(0, north(ac), 0.1);
    EXPECT_NEAR(90, ac.hdg * kDegPerRad, 0.1);
    EXPECT_TRUE(sent(ENGINE_AUTO_START, 0));
}

TEST_F(AtTheStand, aTurnedPushBackEndsToTheSideThatWasReported)
{
    for (const bool right : {true, false}) {
        SetUp();
        LiveAc& ac = leaving(270);
        bool backwards = true;
        ASSERT_TRUE(drive(ac, 20'000, [&] {
            ac.pushTurnKnown = ac.pushStage == 2 || ac.pushTurnKnown;
            ac.pushTurnRight = right;
            backwards = backwards && (ac.st != StState::PushingBack || ac.speedOut <= 0);
            return ac.st == StState::PushedBack;
        }));
        EXPECT_TRUE(backwards);
        // The nose turns right when the tail goes left of its way: north of a stand that faces east.
        EXPECT_NEAR(right ? 17 : -17, north(ac), 1) << right;
        EXPECT_NEAR(right ? 180 : 0, right ? ac.hdg * kDegPerRad : std::remainder(ac.hdg * kDegPerRad, 360),
                    15);
    }
}

TEST_F(AtTheStand, aPullOutGoesAheadByTwoHalfSpans)
{
    LiveAc& ac = leaving(90);
    nextPos(ac);
    ASSERT_EQ(1U, ac.stream.size());
    EXPECT_NEAR(2 * 17.05, distNm({47, 8}, gf_placeOf(ac.stream[0])) * kMetresPerNm, 0.2);
    EXPECT_FALSE(ac.pullOutPending);
}

TEST_F(AtTheStand, withoutItsStandItStaysWhereItIs)
{
    LiveAc& ac = leaving(270);
    parkApf.stands.clear();
    nextPos(ac);
    EXPECT_EQ(StState::Taxi, ac.st);
    EXPECT_NE(StState::PushingBack, ac.st);
}

class Arrival : public GroundMotion
{
protected:
    // Comes to rest `metres` short of the stand A1, nose east.
    static LiveAc& arriving(double metres)
    {
        gf_addStand("A1", 0, 0, 90);
        LiveAc& ac = taxiing({{-metres - 30, 0, 5}, {-metres, 0, 4}, {-metres, 0, 0}});
        ac.stream[2].stationary = true;
        ac.landed = true;
        return ac;
    }
};

TEST_F(Arrival, itDrivesOntoTheStandAndParks)
{
    LiveAc& ac = arriving(12);
    ASSERT_TRUE(drive(ac, 20'000, [&] { return ac.st == StState::Parked; }));
    EXPECT_NEAR(0, east(ac), 0.05);
    EXPECT_NEAR(0, north(ac), 0.05);
    EXPECT_NEAR(90, ac.hdg * kDegPerRad, 0.6);
    EXPECT_EQ(1U, ac.standId);
    EXPECT_TRUE(sent(ENGINE_AUTO_SHUTDOWN, 0));
    EXPECT_EQ(1, std::ranges::count(standChangeList, 20001U));
}

TEST_F(Arrival, whereItDoesNotPark)
{
    const struct {
        const char* what;
        std::function<void(LiveAc&)> spoil;
        bool parks;
    } cases[] = {{"nothing speaks against it", [](LiveAc&) {}, true},
                 {"the reserved stand", [](LiveAc&) { reservedStand = "A1"; }, false},
                 {"where the user stands",
                  [](LiveAc&) {
                      userNow.lat = 47;
                      userNow.lon = 8;
                  },
                  false},
                 {"just out of a stand", [](LiveAc& ac) { ac.prevSt = StState::Parked; }, false},
                 {"just pushed back", [](LiveAc& ac) { ac.prevSt = StState::PushedBack; }, false},
                 {"the same, but towed",
                  [](LiveAc& ac) {
                      ac.prevSt = StState::Parked;
                      ac.towed = true;
                  },
                  true},
                 {"looked there before",
                  [](LiveAc& ac) {
                      ac.lastParkLat = ac.stream.back().lat;
                      ac.lastParkLon = ac.stream.back().lon;
                  },
                  false},
                 {"still fast", [](LiveAc& ac) { ac.stream[1].speed = 5.1; }, false},
                 {"no airport", [](LiveAc&) { parkAirport.reset(); }, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = arriving(12);
        c.spoil(ac);
        nextPos(ac);
        EXPECT_EQ(c.parks, ac.st == StState::Parking) << c.what;
    }
}

TEST_F(Arrival, whoIsThereBeforeItMakesWay)
{
    arriving(12);
    LiveAc& there = gf_addOnGround(20002, "DLH1", StState::Parked);
    there.standId = 1;
    nextPos(liveAcs[0]);
    EXPECT_EQ(StState::Parking, liveAcs[0].st);
    EXPECT_EQ(FsState::RemovingFromSim, liveAcs[1].fs);
}

TEST_F(Arrival, neighboursThatWouldTouchMakeWayAndOthersStay)
{
    // Two half spans of 17.05 m and a tenth are 37.5 m.
    for (const double apart : {37.0, 38.0}) {
        SetUp();
        arriving(12);
        gf_addStand("A2", 0, apart, 90);
        parkApf.stands[0].neighbours = {2};
        LiveAc& beside = gf_addOnGround(20002, "DLH1", StState::Parked);
        beside.standId = 2;
        StaticAc parked;
        parked.standId = 2;
        parked.radius = beside.radius;
        parked.objectid = 77;
        parked.fs = FsState::Active;
        staticAcs.push_back(parked);
        nextPos(liveAcs[0]);
        EXPECT_EQ(apart < 37.5, liveAcs[1].fs == FsState::RemovingFromSim) << apart;
        EXPECT_EQ(apart < 37.5, staticAcs[0].fs == FsState::RemovingFromSim) << apart;
    }
}

TEST_F(Arrival, aStaticAircraftWhoseCreationWaitsIsTakenBack)
{
    LiveAc& ac = arriving(12);
    StaticAc parked;
    parked.standId = 1;
    parked.hexid = 5;
    parked.callsign = "DLH9*";
    parked.fs = FsState::Adding2Sim;
    staticAcs.push_back(parked);
    CreateRequest request;
    request.hexid = 5;
    request.tailNumber = "DLH9*";
    staticCreateQueue.push_back(request);
    nextPos(ac);
    EXPECT_TRUE(staticCreateQueue.empty());
    gf_updateLiveAcs();
    EXPECT_TRUE(staticAcs.empty()) << "its record goes within the tick";
}

TEST_F(Arrival, ofTwoThatArriveTheSecondGoes)
{
    LiveAc& ac = arriving(12);
    ASSERT_TRUE(drive(ac, 20'000, [&] { return ac.st == StState::Parked; }));
    LiveAc& second = gf_addOnGround(20002, "DLH1", StState::Parking);
    gf_takeStand(second, parkApf.stands[0]);
    arrivedAtStand(second);
    EXPECT_EQ(FsState::RemovingFromSim, liveAcs[1].fs);
    EXPECT_EQ(FsState::Active, liveAcs[0].fs);
}

TEST_F(Arrival, awayFromItsStandItTaxiesOn)
{
    for (const double metres : {1.9, 2.1}) {
        SetUp();
        ParkPos& stand = gf_addStand("A1", metres, 0, 90);
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Parking);
        gf_takeStand(ac, stand);
        arrivedAtStand(ac);
        EXPECT_EQ(metres < 2 ? StState::Parked : StState::Taxi, ac.st) << metres;
    }
}

TEST_F(Arrival, oneTooManyAndTheLongestParkedGoes)
{
    maxPark = 2;
    for (uint32_t i = 0; i < 3; ++i) {
        LiveAc& ac = gf_addOnGround(20001 + i, "DLH", StState::Parked);
        ac.parkedSince = tick - static_cast<int32_t>(i % 2 * 1000 + i);
    }
    maxParkCheck(0);
    const auto gone = std::ranges::find(liveAcs, FsState::RemovingFromSim, &LiveAc::fs);
    ASSERT_NE(liveAcs.end(), gone);
    EXPECT_EQ(20002U, gone->hexid);
    EXPECT_EQ(1, std::ranges::count(liveAcs, FsState::RemovingFromSim, &LiveAc::fs));
    maxPark = 0;
    maxParkCheck(0);
    EXPECT_EQ(1, std::ranges::count(liveAcs, FsState::RemovingFromSim, &LiveAc::fs));
}

TEST_F(Arrival, theStaticOfTheOldestHalfHourMakesRoomAcrossTheWeeksEnd)
{
    maxPark = 2;
    hourNow = {1, 4};
    for (const HourStamp stamp : {HourStamp{7, 40}, HourStamp{1, 2}, HourStamp{7, 30}}) {
        StaticAc parked;
        parked.stamp = stamp;
        parked.objectid = 50 + static_cast<uint32_t>(staticAcs.size());
        parked.fs = FsState::Active;
        staticAcs.push_back(parked);
    }
    maxParkCheck(0);
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[2].fs);
}

TEST_F(Arrival, theRoundOfTheParkedSendsAwayWhoStayedTooLong)
{
    const struct {
        AcCategory category;
        int32_t minutes;
        bool reports, stays;
    } cases[] = {{AcCategory::Large, 90, false, true},
                 {AcCategory::Large, 91, false, false},
                 {AcCategory::Large, 200, true, true},
                 {AcCategory::Heavy, 180, false, true},
                 {AcCategory::Heavy, 181, false, false}};
    for (const auto& c : cases) {
        SetUp();
        tick = 2'000'000;
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Parked);
        ac.category = c.category;
        ac.liveAtStand = c.reports;
        ac.parkedSince = tick - c.minutes * 6000;
        const auto stays = oldParkedRound();
        EXPECT_EQ(c.stays ? 1U : 0U, stays.size()) << c.minutes;
        EXPECT_EQ(c.stays, ac.fs == FsState::Active) << c.minutes;
        if (c.stays) {
            EXPECT_EQ(c.reports ? 0 : c.minutes, stays[0].minutes);
        }
    }
}

class Runway : public GroundMotion
{
};

TEST_F(Runway, whenTheNoseComesUp)
{
    const struct {
        const char* what;
        double front, vs;
        bool airborne;
        double ahead;
        bool rotates;
    } cases[] = {{"all ahead climb", 130, 800, true, 150, true},
                 {"climbing, told on the ground", 130, 800, false, 150, true},
                 {"too slow yet", 42, 800, true, 150, false},
                 {"no climb told, but fast and airborne", 130, 0, true, 140, true},
                 {"the same, a knot too slow", 130, 0, true, 139, false},
                 {"fast on the ground", 130, 0, false, 160, false},
                 {"a climb of exactly 256", 130, 256, false, 150, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({{0, 0, c.front}, {400, 0, c.ahead}, {800, 0, c.ahead}});
        ac.takeOff = true;
        for (size_t i = 1; i < 3; ++i) {
            ac.stream[i].vs = c.vs;
            ac.stream[i].airborne = c.airborne;
            ac.stream[i].altitude = c.airborne ? 100 : 0;
        }
        gf_judgeRotation(ac, 500);
        EXPECT_EQ(c.rotates, ac.st == StState::TakeOff) << c.what;
        EXPECT_EQ(c.rotates ? ac.rotateTicks : 1, ac.phaseTicks) << c.what;
    }
}

TEST_F(Runway, theThrottleFollowsTheRun)
{
    const struct {
        double front, next;
        uint32_t value;
    } cases[] = {{10, 19, 0},    {15, 10, 4914},  {10, 20, 4914}, {20, 10, 8191},
                 {10, 25, 8191}, {25, 10, 16383}, {10, 30, 16383}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({{0, 0, c.front}, {40, 0, c.next}});
        ac.takeOff = true;
        nextPos(ac);
        EXPECT_TRUE(sent(THROTTLE_SET, c.value)) << c.front << ' ' << c.next;
    }
}

TEST_F(Runway, theLandingRollEndsWhenItTurnsOff)
{
    const struct {
        const char* what;
        double offDeg, speed;
        bool over, brakesOff;
    } cases[] = {{"fast on the runway", 14.99, 91, false, false},
                 {"slow on the runway", 14.99, 90, false, true},
                 {"turned off", 15.01, 91, true, true}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({{0, 0, c.speed}, {100, 0, c.speed}});
        ac.landingRoll = true;
        ac.landingHdg = ac.hdg - c.offDeg * kRadPerDeg;
        nextPos(ac);
        EXPECT_EQ(!c.over, ac.landingRoll) << c.what;
        EXPECT_EQ(c.brakesOff, sent(SPOILERS_SET, 0)) << c.what;
        EXPECT_EQ(c.over, sent(STROBES_SET, 0)) << c.what;
    }
}

TEST_F(Runway, aTouchAndGoRotatesOutOfTheRoll)
{
    LiveAc& ac = taxiing({{0, 0, 130}, {400, 0, 140}});
    ac.landingRoll = true;
    ac.landed = true;
    rotationStart(ac);
    EXPECT_EQ(StState::TakeOff, ac.st);
    EXPECT_TRUE(ac.takeOff);
    EXPECT_FALSE(ac.landingRoll || ac.landed);
    EXPECT_TRUE(sent(THROTTLE_SET, 16383));
}

TEST_F(Runway, aHelicopterGetsNeitherFlapsNorSpoilersNorGear)
{
    LiveAc& ac = taxiing({{0, 0, 30}, {100, 0, 50}});
    ac.category = AcCategory::Rotorcraft;
    takeOffStart(ac);
    nextPos(ac);
    rotationStart(ac);
    for (const QueuedEvent& e : eventQueue) {
        EXPECT_TRUE(e.event != FLAPS_SET && e.event != SPOILERS_SET && e.event != GEAR_SET);
        EXPECT_TRUE(e.event != THROTTLE_SET || e.value == 16383);
    }
}

}  // namespace vlt
