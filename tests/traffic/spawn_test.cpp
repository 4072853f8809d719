#include "traffic/spawn.h"

#include "core/parameters.h"
#include "core/run_state.h"
#include "liveries/liveries.h"
#include "sim/client.h"
#include "sim/ids.h"
#include "support/aircraft.h"
#include "support/world.h"
#include "traffic/removal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

namespace vlt {

class SpawnTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        closeRequested = false;
        ASSERT_TRUE(gf_resetRunState());
        gf_clearTables();
        gf_resetSimClient();
        gf_loadSmallWorld();
        userOnGround = true;
        userNow = {};
        userNow.lat = 47.5;
        userNow.lon = 9;
        COLLISION_USER_AIR.value = true;
        COLLISION_USER_GND.value = true;
        MAX_LIVE.value = -1;
        tick = 5000;
    }
    void TearDown() override
    {
        gf_clearTables();
        gf_clearWorld();
        gf_resetSimClient();
        failedLiveries.clear();
        BLOCK_CALLSIGN.value.clear();
        MAX_LIVE.value = -1;
        userOnGround = false;
        userNow = {};
    }

    enum class Became { Waits, Dropped, Erased, Spawned };

    static Became gate(LiveAc& ac)
    {
        const size_t before = ac.stream.size();
        spawnGate(ac);
        if (ac.eraseNow) {
            return Became::Erased;
        }
        if (ac.fs == FsState::Adding2Sim) {
            return Became::Spawned;
        }
        return ac.stream.size() < before ? Became::Dropped : Became::Waits;
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
};

TEST_F(SpawnTest, theGateJudgesIdentityAndStream)
{
    const struct {
        const char* what;
        std::function<void(LiveAc&)> change;
        Became expected;
    } cases[] = {
        {"ready", [](LiveAc&) {}, Became::Spawned},
        {"a second early", [](LiveAc& a) { a.stream[0].time = tick + 100; }, Became::Spawned},
        {"more than that", [](LiveAc& a) { a.stream[0].time = tick + 101; }, Became::Waits},
        {"no samples", [](LiveAc& a) { a.stream.clear(); }, Became::Erased},
        {"one sample", [](LiveAc& a) { a.stream.pop_back(); }, Became::Erased},
        {"air and ground", [](LiveAc& a) { a.stream[1].airborne = false; }, Became::Dropped},
        {"no name", [](LiveAc& a) { a.callsign.clear(); }, Became::Erased},
        {"nine letters", [](LiveAc& a) { a.callsign = "ABCDEFGHI"; }, Became::Erased},
        {"nine letters, but registered", [](LiveAc& a) { a.callsign = "ABCDEFGHI", a.regcode = "G-DBCJ"; },
         Became::Spawned},
        {"a listed ghost", [](LiveAc& a) { a.callsign = "BAW1_", ghostCallsigns.push_back("BAW1_"); },
         Became::Erased},
        {"a ghost whose twin is here", [](LiveAc& a) { a.callsign = "TWIN1_"; }, Became::Erased},
        {"a ghost alone", [](LiveAc& a) { a.callsign = "BAW2_"; }, Became::Spawned},
        {"blocked", [](LiveAc& a) { BLOCK_CALLSIGN.value = a.callsign; }, Became::Erased},
        {"no livery", [](LiveAc& a) { a.airline = "XXX", a.model = "A388"; }, Became::Erased},
        {"no livery found before", [](LiveAc& a) { failedLiveries.insert(gf_failedKey(a)); }, Became::Erased},
        {"eleven requests wait", [](LiveAc&) { liveCreateQueue.resize(11); }, Became::Dropped},
        {"ten requests wait", [](LiveAc&) { liveCreateQueue.resize(10); }, Became::Spawned},
        {"no room", [](LiveAc&) { MAX_LIVE.value = 0; }, Became::Erased},
    };
    for (const auto& c : cases) {
        TearDown();
        SetUp();
        gf_addFlying(20001, "TWIN1");
        LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
        c.change(ac);
        EXPECT_EQ(c.expected, gate(ac)) << c.what;
    }
}

TEST_F(SpawnTest, theGateKeepsTheUsersWayFree)
{
    // The aircraft is at 47 N 8 E and flies east; 1 nm is 0.01667 degrees of latitude.
    struct User {
        bool onGround;
        double lat, lon, altitude, agl, heading, speed;
    };
    const double north = 0;
    const struct {
        const char* what;
        User user;
        bool aircraftOnGround;
        bool held;
        Became expected;
    } cases[] = {
        {"flying user, same track 5 nm ahead",
         {false, 47, 8.12, 11000, 9000, north, 250},
         false,
         false,
         Became::Dropped},
        {"the same, 3001 ft above",
         {false, 47, 8.12, 13001, 9000, north, 250},
         false,
         false,
         Became::Spawned},
        {"the same, 7 nm ahead", {false, 47, 8.175, 11000, 9000, north, 250}, false, false, Became::Spawned},
        {"beside the track by 1 nm",
         {false, 47.01667, 8.05, 11000, 9000, north, 250},
         false,
         false,
         Became::Spawned},
        {"on the runway before a landing user",
         {false, 46.985, 8, 300, 300, north, 140},
         true,
         false,
         Became::Dropped},
        {"the same, user higher", {false, 46.985, 8, 1500, 1000, north, 140}, true, false, Became::Spawned},
        {"the same, off his line",
         {false, 46.985, 8, 300, 300, std::numbers::pi / 2, 140},
         true,
         false,
         Became::Spawned},
        {"held before, and it still lands",
         {false, 40, 8, 300, 300, north, 140},
         true,
         true,
         Became::Dropped},
        {"on top of a parked user", {true, 47.0013, 8, 0, 0, north, 0}, true, false, Became::Dropped},
        {"151 m from a parked user", {true, 47.00136, 8, 0, 0, north, 0}, true, false, Became::Spawned},
        {"in the air over a parked user", {true, 47, 8, 0, 0, north, 0}, false, false, Became::Spawned},
        {"held, user taxies", {true, 47.1, 8, 0, 0, north, 8.1}, true, true, Became::Dropped},
        {"held, user slow, far enough", {true, 47.1, 8, 0, 0, north, 8}, true, true, Became::Spawned},
        {"held, 400 m off", {true, 47.0036, 8, 0, 0, north, 0}, true, true, Became::Dropped},
    };
    for (const auto& c : cases) {
        TearDown();
        SetUp();
        userOnGround = c.user.onGround;
        userNow = {c.user.lat, c.user.lon, 0, 0, c.user.heading, c.user.altitude, c.user.agl, c.user.speed};
        LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
        ac.heldForUser = c.held;
        ac.trackTarget = std::numbers::pi / 2;
        if (c.aircraftOnGround) {
            for (PosSample& sample : ac.stream) {
                sample.airborne = false;
                sample.altitude = 0;
                sample.speed = 5;
            }
        }
        EXPECT_EQ(c.expected, gate(ac)) << c.what;
    }
}

TEST_F(SpawnTest, theFurthestMakesRoom)
{
    MAX_LIVE.value = 2;
    gf_addFlying(20001, "FAR1").lat = 50;
    gf_addFlying(20002, "NEAR1").lat = 47.6;
    LiveAc& nearer = gf_addBuffered(20003, "BAW3AK");
    EXPECT_EQ(Became::Spawned, gate(nearer));
    EXPECT_EQ(FsState::RemovingFromSim, gf_liveByHexid(20001)->fs);
    EXPECT_EQ(FsState::Active, gf_liveByHexid(20002)->fs);
}

TEST_F(SpawnTest, whoIsFurtherThanAllFindsNoRoom)
{
    MAX_LIVE.value = 1;
    gf_addFlying(20001, "NEAR1").lat = 47.4;
    LiveAc& further = gf_addBuffered(20003, "BAW3AK");
    EXPECT_EQ(Became::Erased, gate(further));
    EXPECT_EQ(FsState::Active, gf_liveByHexid(20001)->fs);
}

TEST_F(SpawnTest, theRegistrationKnowsBetterThanTheFeed)
{
    const auto& [regcode, known] = *std::ranges::find_if(dbase.registrations, [](const auto& row) {
        return row.second.opr.empty() && row.second.airl != "PVT";
    });
    LiveAc& ac = gf_addBuffered(20002, "");
    ac.airline = "XXX";
    ac.regcode = regcode;
    gate(ac);
    EXPECT_EQ(known.airl, ac.airline);
    EXPECT_EQ(known.type, ac.model);
    EXPECT_EQ(regcode, ac.callsign);
}

TEST_F(SpawnTest, withoutAnAirlineTheCallSignTells)
{
    const struct {
        const char* callsign;
        const char* airline;
    } cases[] = {{"baw12", "BAW"}, {"BAW12", "BAW"}, {"GABCD", "PVT"}, {"BAW", "PVT"}, {"B1W12", "PVT"}};
    for (const auto& c : cases) {
        LiveAc& ac = gf_addBuffered(20002, c.callsign);
        ac.airline.clear();
        gate(ac);
        EXPECT_EQ(c.airline, ac.airline) << c.callsign;
    }
}

TEST_F(SpawnTest, startsWithTheFirstSamplesPlaceAndAttitude)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    ac.stream[0].vs = -4000;
    ac.stream[0].roll = 0.2;
    ac.stream[0].rollValid = true;
    spawnLiveAc(ac);
    EXPECT_EQ(StState::Flying, ac.st);
    EXPECT_DOUBLE_EQ(47, ac.lat);
    EXPECT_DOUBLE_EQ(10000, ac.alt);
    EXPECT_DOUBLE_EQ(0.2, ac.bank);
    EXPECT_NEAR(std::numbers::pi / 2, ac.hdg, 0.01);
    EXPECT_NEAR(2.5 * std::numbers::pi / 180, ac.pitch, 1e-12) << "as with half of 3000 ft/min down";
    EXPECT_EQ((std::vector<uint32_t>{20002}), spawnStack);
}

TEST_F(SpawnTest, asksForTheObjectInDegreesAndWithAShortTail)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    ac.callsign = "ABCDEFGHIJKLMN";
    makeCreateRequest(20002);
    ASSERT_EQ(1U, liveCreateQueue.size());
    const CreateRequest& request = liveCreateQueue.front();
    EXPECT_NEAR(90, request.heading, 0.5);
    EXPECT_NEAR(-3, request.pitch, 1e-9);
    EXPECT_FALSE(request.onGround);
    EXPECT_EQ("ABCDEFGHIJK", request.tailNumber) << "11 bytes and the zero";
    EXPECT_FALSE(request.title.empty());
}

TEST_F(SpawnTest, aRemovalBeforeTheRequestLeftErasesWithoutASound)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    makeCreateRequest(20002);
    spawnStack.clear();
    removeAircraftFromSim(ac, "test");
    EXPECT_TRUE(ac.eraseCancelled);
    EXPECT_TRUE(liveCreateQueue.empty());
    gf_eraseMarked();
    EXPECT_TRUE(liveAcs.empty());
}

TEST_F(SpawnTest, aRemovalDuringTheSetUpFollowsIt)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    spawnStack.clear();
    handleSimMessage({77, 20002, 0, SimMessageKind::LiveObject, 0, 9000});
    removeAircraftFromSim(ac, "test");
    EXPECT_TRUE(ac.removeWhenAdded);
    for (int i = 0; i < 200; ++i) {
        gf_stepAckWaits();
    }
    EXPECT_EQ(FsState::Adding2Sim, ac.fs);
    gf_stepAckWaits();
    EXPECT_EQ(FsState::RemovingFromSim, ac.fs);
    EXPECT_EQ((std::deque<uint32_t>{77}), removeWaitQueue);
    handleSimMessage({77, 0, 0, SimMessageKind::ObjectRemoved, 0, 0});
    EXPECT_TRUE(liveAcs.empty());
}

TEST_F(SpawnTest, setsAnAircraftInTheAirUp)
{
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    ac.fs = FsState::Adding2Sim;
    ac.alt = 9999;
    ac.agl = 1999;
    setUpLiveAc(ac);
    EXPECT_EQ(FsState::Active, ac.fs);
    EXPECT_EQ((std::vector<std::pair<uint32_t, uint32_t>>{{ENGINE_AUTO_START, 0},
                                                          {SPOILERS_SET, 0},
                                                          {NAV_LIGHTS_SET, 1},
                                                          {BEACON_LIGHTS_SET, 1},
                                                          {LANDING_LIGHTS_SET, 1},
                                                          {TAXI_LIGHTS_SET, 0},
                                                          {STROBES_SET, 1},
                                                          {LOGO_LIGHTS_SET, 1},
                                                          {CABIN_LIGHTS_SET, 0}}),
              events());
}

TEST_F(SpawnTest, setsAHelicopterOnTheGroundUpWithoutFlaps)
{
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    ac.category = AcCategory::Rotorcraft;
    ac.st = StState::Taxi;
    ac.stream[0].airborne = false;
    setUpLiveAc(ac);
    const auto sent = events();
    EXPECT_EQ((std::pair<uint32_t, uint32_t>{THROTTLE_SET, 16383}), sent.back());
    EXPECT_TRUE(std::ranges::none_of(
        sent, [](const auto& e) { return e.first == FLAPS_SET || e.first == SPOILERS_SET; }));
}

TEST_F(SpawnTest, anAircraftComesBackWithAnotherLivery)
{
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    ac.lat = 47.01;
    ac.bank = 0.1;
    ac.throttleLevel = 3;
    const uint32_t objectid = ac.objectid;
    liveryRespawn(ac);
    EXPECT_EQ(FsState::LiveryRespawn, ac.fs);
    ASSERT_EQ(3U, ac.stream.size());
    EXPECT_EQ(tick + 1, ac.stream[0].time);
    EXPECT_LT(ac.stream[0].time, ac.stream[1].time) << "the stream stays in order";
    EXPECT_DOUBLE_EQ(47.01, ac.stream[0].lat);
    EXPECT_DOUBLE_EQ(0.1, ac.stream[0].roll);
    onObjectRemoved(objectid);
    EXPECT_EQ(FsState::Buffer, ac.fs);
    EXPECT_EQ(kNoObject, ac.objectid);
    EXPECT_EQ(kNoThrottleLevel, ac.throttleLevel);
}

TEST_F(SpawnTest, aRefusedLiveryIsNotTriedAgain)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    const std::string_view title = ac.title;
    handleSimMessage({0, 20002, 0, SimMessageKind::CreationRefused, 0, 0});
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_NE(refusedTitles.end(), std::ranges::find(refusedTitles, title));
    LiveAc& again = gf_addBuffered(20002, "BAW3AK");
    gate(again);
    EXPECT_NE(title, again.title);
}

TEST_F(SpawnTest, believesStaticDataOnlyWithinReason)
{
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    const auto tell = [&ac](double cg, double pitchDeg) {
        handleSimMessage(
            {ac.objectid, 0, 0, SimMessageKind::StaticData, cg, pitchDeg * std::numbers::pi / 180});
    };
    const double usual = 0.7 * std::numbers::pi / 180;
    tell(12.5, 2.5);
    EXPECT_DOUBLE_EQ(12.5, ac.staticCg);
    EXPECT_NEAR(2.5 * std::numbers::pi / 180, ac.staticPitch, 1e-12);
    tell(35.1, 2.6);
    EXPECT_DOUBLE_EQ(12.5, ac.staticCg);
    EXPECT_NEAR(usual, ac.staticPitch, 1e-12);
    tell(0.9, -1);
    EXPECT_DOUBLE_EQ(12.5, ac.staticCg);
    EXPECT_NEAR(usual, ac.staticPitch, 1e-12);
    tell(35, 0);
    EXPECT_DOUBLE_EQ(35, ac.staticCg);
    tell(1, -0.9);
    EXPECT_DOUBLE_EQ(1, ac.staticCg);
    EXPECT_NEAR(-0.9 * std::numbers::pi / 180, ac.staticPitch, 1e-12);
}

}  // namespace vlt
