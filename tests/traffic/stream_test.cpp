// What becomes of a new report: stops, stands, landings, and the end of the reports.
#include "traffic/stream.h"

#include "core/base/parameters.h"
#include "sim/wire/ids.h"
#include "traffic/arrival.h"
#include "traffic/geodesy.h"
#include "traffic/ground_place.h"
#include "traffic/stand_holding.h"
#include "traffic/stream_end.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vlt {

class StreamPlace : public GroundPlace
{
protected:
    // A taxiing aircraft with samples `metres` east of its place, 500 ticks apart; standing at equal ones.
    static LiveAc& taxiing(std::initializer_list<double> metres)
    {
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Taxi);
        ac.stream.clear();
        double last = -1e9;
        for (const double east : metres) {
            const bool stands = east == last;
            PosSample sample = gf_groundSample(east, 0, stands ? 0 : 10,
                                               tick + 500 * static_cast<int32_t>(ac.stream.size()));
            sample.stationary = stands;
            ac.stream.push_back(sample);
            last = east;
        }
        return ac;
    }
    // The next report, 500 ticks after the last.
    static void hear(LiveAc& ac, double metresEast, double speed)
    {
        decodeExisting(ac, gf_groundSample(metresEast, 0, speed, ac.stream.back().time + 500));
    }
    // An aircraft parked at a stand at its place, its nose east, as after its arrival.
    static LiveAc& parked()
    {
        ParkPos& stand = gf_addStand("A1", 0, 0, 90);
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Parked);
        gf_takeStand(ac, stand);
        ac.extendCount = 1;
        ac.stream.front().time = tick + 60'480'000 - 200'000;
        return ac;
    }
};

class Stops : public StreamPlace
{
};

TEST_F(Stops, aStandingAircraftNeedsNoHistory)
{
    LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Taxi);
    for (int i = 0; i < 20; ++i) {
        hear(ac, 0, 0);
        EXPECT_EQ(2U, ac.stream.size());  // where it stands, and the latest
    }
}

TEST_F(Stops, jitterOnTheGroundIsAStopAndInTheAirNothing)
{
    LiveAc& ac = taxiing({-60, 0});
    hear(ac, 8, 3);
    ASSERT_EQ(3U, ac.stream.size());
    EXPECT_TRUE(ac.stream.back().stationary);
    EXPECT_EQ(ac.stream[1].lon, ac.stream[2].lon);
    EXPECT_EQ(0, ac.stream.back().speed);
    LiveAc& flying = gf_addFlying(20002, "DLH1");
    const size_t before = flying.stream.size();
    decodeExisting(flying, gf_eastOf(flying.stream.back(), 0.002));
    EXPECT_EQ(before, flying.stream.size());
}

TEST_F(Stops, aShortStopIsCutOutAndATrueOneStays)
{
    const struct {
        const char* what;
        int32_t stopTicks;
        double goesTo;
        bool stays;
    } cases[] = {{"ten seconds", 1000, 90, false},
                 {"fifteen seconds", 1500, 90, true},
                 {"long, but it ends where it began", 6000, 20, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({-120, -60, 0, 0});
        ac.stream.back().time = ac.stream[2].time + c.stopTicks;
        decodeExisting(ac, gf_groundSample(c.goesTo, 0, 12, ac.stream.back().time + 500));
        const bool stays = std::ranges::any_of(ac.stream, &PosSample::stationary);
        EXPECT_EQ(c.stays, stays) << c.what;
        EXPECT_FALSE(ac.stream.back().stationary) << c.what;
        EXPECT_EQ(c.stays ? 5U : 4U, ac.stream.size()) << c.what;
    }
}

TEST_F(Stops, aHelicopterKeepsEveryReport)
{
    LiveAc& ac = taxiing({-60, 0});
    ac.category = AcCategory::Rotorcraft;
    hear(ac, 4, 5);
    hear(ac, 4, 5);
    ASSERT_EQ(4U, ac.stream.size());
    EXPECT_FALSE(ac.stream[2].stationary);
    EXPECT_TRUE(ac.stream[3].stationary);
    EXPECT_EQ(5, ac.stream[3].speed);
}

TEST_F(Stops, aStreamThatGrowsTooLongEndsTheAircraft)
{
    LiveAc& ac = taxiing({0, 60});
    for (int i = 2; i <= 202; ++i) {
        hear(ac, i * 60.0, 10);
    }
    EXPECT_EQ(FsState::RemovingFromSim, ac.fs);
}

class AtStand : public StreamPlace
{
};

TEST_F(AtStand, noiseNeverMovesAParkedAircraft)
{
    LiveAc& ac = parked();
    // Two hours of reports around the stand, 0 to 15 m off, to all sides.
    for (int i = 0; i < 720; ++i) {
        const double out = (i * 7) % 16;
        const double side = i % 4 < 2 ? 1 : -1;
        PosSample sample = gf_groundSample(i % 2 != 0 ? side * out : 0, i % 2 != 0 ? 0 : side * out, 0, 0);
        sample.time = ac.stream.back().time + 1;
        tick += 1000;
        decodeExisting(ac, sample);
        ASSERT_EQ(1U, ac.stream.size()) << i;
        ASSERT_FALSE(ac.pullOutPending) << i;
    }
    EXPECT_EQ(StState::Parked, ac.st);
}

TEST_F(AtStand, threeReportsFartherOutEachAreBelieved)
{
    LiveAc& ac = parked();
    // The second one is more than half a wing off already, but it is only the second.
    for (const double out : {1.0, 6.0, 10.0}) {
        hear(ac, -out, 2);
        EXPECT_EQ(1U, ac.stream.size()) << out;
    }
    hear(ac, -13.1, 2);
    EXPECT_EQ(2U, ac.stream.size());
    EXPECT_TRUE(ac.pullOutPending);
    EXPECT_EQ(tick + 1, ac.stream.front().time);
    EXPECT_EQ(0, ac.extendCount);
}

TEST_F(AtStand, oneReportBeyondTheWingTipIsBelieved)
{
    LiveAc& ac = parked();
    hear(ac, -1, 2);
    hear(ac, -17, 2);
    EXPECT_FALSE(ac.pullOutPending);
    hear(ac, -22, 2);
    EXPECT_TRUE(ac.pullOutPending);
}

TEST_F(AtStand, aReportFarOffRemovesTheParkedAircraft)
{
    const struct {
        double out;
        StState before;
        bool leaves, goes;
    } cases[] = {{84, StState::Taxi, false, false},
                 {86, StState::Taxi, true, false},
                 {169, StState::Parking, false, false},
                 {171, StState::Parking, true, false},
                 {201, StState::Taxi, false, true}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = parked();
        ac.prevSt = c.before;
        hear(ac, -c.out, 10);
        EXPECT_EQ(c.leaves, ac.pullOutPending) << c.out;
        EXPECT_EQ(c.goes, ac.fs == FsState::RemovingFromSim) << c.out;
    }
}

TEST_F(AtStand, anAircraftMovedSoonAfterItsLandingIsTowed)
{
    const struct {
        const char* what;
        AcCategory category;
        int minutes;
        bool towed;
    } cases[] = {{"an airliner after 24 minutes", AcCategory::Large, 24, true},
                 {"an airliner after 25", AcCategory::Large, 25, false},
                 {"a business jet after 14", AcCategory::Buzjets, 14, true},
                 {"a widebody after 59", AcCategory::Heavy, 59, true},
                 {"a light one at once", AcCategory::Light, 1, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = parked();
        ac.category = c.category;
        ac.landed = true;
        ac.prevSt = StState::Parking;
        ac.stream.front().time = tick + 60'480'000 - c.minutes * 6000;
        leaveStand(ac);
        EXPECT_EQ(c.towed, ac.towed) << c.what;
        EXPECT_FALSE(ac.landed) << c.what;
    }
}

class AfterPushBack : public StreamPlace
{
};

TEST_F(AfterPushBack, itTaxiesOnceItsReportsAreFarEnoughOff)
{
    // Half span 17.05 m: 2.75 of it are 46.9 m, 6 are 102.3 m.
    const struct {
        double metres, before;
        bool starts;
    } cases[] = {{46, 10, false}, {48, 10, true}, {48, 60, false}, {103, 120, true}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::PushedBack);
        ac.standId = 3;
        ac.pushedBackDist = c.before / kMetresPerNm;
        hear(ac, c.metres, 8);
        EXPECT_EQ(c.starts ? StState::Taxi : StState::PushedBack, ac.st) << c.metres;
        EXPECT_EQ(c.starts ? kNoStand : 3U, ac.standId) << c.metres;
        EXPECT_EQ(!c.starts, ac.holding) << c.metres;
        EXPECT_EQ(c.starts ? 2U : 1U, ac.stream.size()) << c.metres;
    }
}

TEST_F(AfterPushBack, reportsDuringThePushOnlyTellTheSide)
{
    LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::PushingBack);
    ac.pushStage = 2;
    PosSample sample = gf_groundSample(-40, 0, 4, tick + 3000);
    sample.track = 170;  // the nose has swung from east to the right
    decodeExisting(ac, sample);
    EXPECT_EQ(1U, ac.stream.size());
    EXPECT_TRUE(ac.pushTurnKnown && ac.pushTurnRight);
    sample.heading = 10 * kRadPerDeg;
    sample.headingValid = true;
    decodeExisting(ac, sample);
    EXPECT_FALSE(ac.pushTurnRight);
    ac.pushTurnKnown = false;
    STRAIGHT_PBS_ONLY.value = true;
    decodeExisting(ac, sample);
    EXPECT_FALSE(ac.pushTurnKnown);
}

class OnTheRunway : public StreamPlace
{
};

TEST_F(OnTheRunway, twoFastReportsBeginTheTakeOff)
{
    const struct {
        double last, now;
        bool begins;
    } cases[] = {{42, 60, false}, {43, 43, true}, {60, 42, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({-60, 0});
        ac.stream.back().speed = c.last;
        hear(ac, 100, c.now);
        EXPECT_EQ(c.begins, ac.takeOff) << c.last << ' ' << c.now;
        EXPECT_EQ(c.begins ? 5000 : 1000, ac.leadLimit);
    }
}

TEST_F(OnTheRunway, aLandingIsBrokenOffByTwoAirborneReports)
{
    LiveAc& ac = taxiing({-200, 0});
    ac.landingRoll = true;
    ac.landed = true;
    PosSample up = gf_groundSample(200, 0, 140, ac.stream.back().time + 400);
    up.airborne = true;
    up.altitude = 1100;
    decodeExisting(ac, up);
    EXPECT_FALSE(ac.takeOff);
    up.lon = gf_groundSample(400, 0, 0, 0).lon;
    up.time += 400;
    decodeExisting(ac, up);
    EXPECT_TRUE(ac.takeOff);
    EXPECT_FALSE(ac.landed);
    EXPECT_EQ(StState::Taxi, ac.st);
    EXPECT_TRUE(sent(THROTTLE_SET, 11468));
    EXPECT_TRUE(sent(SPOILERS_SET, 16383));
}

TEST_F(OnTheRunway, reportsThatLeadBackAreLeftOut)
{
    LiveAc& ac = taxiing({0, 100, 200});
    ac.landingRoll = true;
    ac.hdg = 90 * kRadPerDeg;
    // Behind the last two samples: both go, the third from the end leads ahead.
    hear(ac, 50, 60);
    ASSERT_EQ(2U, ac.stream.size());
    EXPECT_EQ(gf_groundSample(50, 0, 0, 0).lon, ac.stream[1].lon);
    // A landing aircraft doesn't speed up, but it may taxi.
    ac.stream.back().speed = 60;
    hear(ac, 150, 80);
    EXPECT_EQ(60, ac.stream.back().speed);
    hear(ac, 250, 30);
    EXPECT_EQ(30, ac.stream.back().speed);
}

TEST_F(OnTheRunway, onApproachAReportFromBehindTheOnlySampleIsDropped)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.approach = true;
    ac.stream.resize(1);
    PosSample behind = gf_eastOf(ac.stream.back(), -1);
    behind.time += 500;
    decodeExisting(ac, behind);
    EXPECT_EQ(1U, ac.stream.size());
    decodeExisting(ac, gf_eastOf(ac.stream.back(), 1));
    EXPECT_EQ(2U, ac.stream.size());
}

class StreamEnd : public StreamPlace
{
};

TEST_F(StreamEnd, aTaxiingAircraftHoldsAndInTheEndGoes)
{
    LiveAc& ac = taxiing({0});
    for (int seconds = 0; seconds <= 20 * 60 + 3; seconds += 3) {
        const bool holds = extendStream(ac);
        EXPECT_EQ(seconds <= 20 * 60, holds) << seconds;
        EXPECT_TRUE(ac.holding);
        ac.stream.resize(1);
        tick += 300;
    }
}

TEST_F(StreamEnd, itDoesNotHoldInTheWayOfAnother)
{
    LiveAc& other = gf_addOnGround(20002, "DLH1", StState::Taxi);
    other.lon = gf_groundSample(40, 0, 0, 0).lon;
    LiveAc& ac = taxiing({0});
    EXPECT_FALSE(extendStream(ac));
    liveAcs[0].lon = gf_groundSample(41, 0, 0, 0).lon;  // (17.05 + 17.05) * 1.2 = 40.9 m
    EXPECT_TRUE(extendStream(ac));
}

TEST_F(StreamEnd, aHeldAircraftReportedElsewhereComesBackThere)
{
    for (const double metres : {249.0, 251.0}) {
        SetUp();
        LiveAc& ac = taxiing({0});
        ac.holding = true;
        hear(ac, metres, 10);
        EXPECT_EQ(metres > 250, ac.fs == FsState::RemovingFromSim) << metres;
    }
}

TEST_F(StreamEnd, onlyWellInsideTheRangeItFliesOn)
{
    userNow.lat = 46;
    userNow.lon = 8;
    const struct {
        double milesNorth;
        bool goesOn;
    } cases[] = {{39.4, true}, {39.6, false}};
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.lat = 46 + c.milesNorth / 60.0;
        ac.stream.resize(1);
        EXPECT_EQ(c.goesOn, extendStream(ac)) << c.milesNorth;
    }
}

TEST_F(StreamEnd, inventedSpeedsFollowThePhase)
{
    const struct {
        const char* what;
        double speed, next, nextVs;
        bool takeOff, landingRoll;
    } cases[] = {{"a run that has just begun", 30, 40, 0, true, false},
                 {"a fast run", 140, 150, 600, true, false},
                 {"beyond all", 171, 180, 2400, true, false},
                 {"a fast roll-out", 140, 100, 0, false, true},
                 {"a slow one", 59, 20, 0, false, true},
                 {"neither", 12, 0, 0, false, false}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = taxiing({0});
        ac.stream.back().speed = c.speed;
        ac.takeOff = c.takeOff;
        ac.landingRoll = c.landingRoll;
        extrapolate(ac, 5);
        EXPECT_EQ(c.next, ac.stream.back().speed) << c.what;
        EXPECT_EQ(c.nextVs, ac.stream.back().vs) << c.what;
        EXPECT_EQ(c.next == 0, ac.stream.back().stationary) << c.what;
        EXPECT_EQ(ac.stream.front().time + 300, ac.stream.back().time) << c.what;
    }
}

TEST_F(StreamEnd, aParkedAircraftWaitsForAWeekAndNoLongerCountsAsReporting)
{
    LiveAc& ac = parked();
    ac.extendCount = 0;
    ac.liveAtStand = true;
    gf_claimStand(ac);
    ac.stream.front().time = tick;
    ASSERT_TRUE(extendStream(ac));
    EXPECT_EQ(tick + 60'480'000, ac.stream.back().time);
    EXPECT_FALSE(ac.liveAtStand || parkApf.stands[0].occupiedByLive);
    ac.stream.pop_front();
    EXPECT_FALSE(extendStream(ac));
}

}  // namespace vlt
