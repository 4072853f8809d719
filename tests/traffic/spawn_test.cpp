#include "traffic/spawn.h"

#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/liveries.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "support/world.h"
#include "traffic/create_request.h"
#include "traffic/object_config.h"
#include "traffic/removal.h"
#include "traffic/sim_answers.h"

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
        gf_freshRun();
        gf_loadSmallWorld();
        userOnGround = true;
        userNow.lat = 47.5;
        userNow.lon = 9;
        tick = 5000;
    }
    void TearDown() override
    {
        gf_freshRun();
        gf_clearWorld();
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
        {"blocked", [](LiveAc& a) { blockedCallsign = a.callsign; }, Became::Erased},
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
    using enum Became;
    struct User {
        double lat, lon, altitude, agl, heading, speed;
    };
    const double east = std::numbers::pi / 2;
    const struct {
        const char* what;
        bool userOnGround, aircraftOnGround, held;
        User user;
        Became expected;
    } cases[] = {
        {"same track, 5 nm ahead", false, false, false, {47, 8.12, 11000, 9000, 0, 250}, Dropped},
        {"the same, 3001 ft above", false, false, false, {47, 8.12, 13001, 9000, 0, 250}, Spawned},
        {"the same, 7 nm ahead", false, false, false, {47, 8.175, 11000, 9000, 0, 250}, Spawned},
        {"1 nm beside", false, false, false, {47.01667, 8.05, 11000, 9000, 0, 250}, Spawned},
        {"before a landing user", false, true, false, {46.985, 8, 300, 300, 0, 140}, Dropped},
        {"the same, user higher", false, true, false, {46.985, 8, 1500, 1000, 0, 140}, Spawned},
        {"the same, off his line", false, true, false, {46.985, 8, 300, 300, east, 140}, Spawned},
        {"held, and he still lands", false, true, true, {40, 8, 300, 300, 0, 140}, Dropped},
        {"on top of a parked user", true, true, false, {47.0013, 8, 0, 0, 0, 0}, Dropped},
        {"151 m from a parked user", true, true, false, {47.00136, 8, 0, 0, 0, 0}, Spawned},
        {"above a parked user", true, false, false, {47, 8, 0, 0, 0, 0}, Spawned},
        {"held, user taxies", true, true, true, {47.1, 8, 0, 0, 0, 8.1}, Dropped},
        {"held, user slow, far enough", true, true, true, {47.1, 8, 0, 0, 0, 8}, Spawned},
        {"held, 400 m off", true, true, true, {47.0036, 8, 0, 0, 0, 0}, Dropped},
    };
    for (const auto& c : cases) {
        TearDown();
        SetUp();
        userOnGround = c.userOnGround;
        userNow = {c.user.lat, c.user.lon, 0, 0, c.user.heading, c.user.altitude, c.user.agl, c.user.speed};
        LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
        ac.heldForUser = c.held;
        ac.trackTarget = east;
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
    EXPECT_EQ(Became::Spawned, gate(gf_addBuffered(20003, "BAW3AK")));
    EXPECT_EQ(FsState::RemovingFromSim, gf_liveByHexid(20001)->fs);
    EXPECT_EQ(FsState::Active, gf_liveByHexid(20002)->fs);
    gf_liveByHexid(20002)->lat = 47.4;
    MAX_LIVE.value = 1;
    EXPECT_EQ(Became::Erased, gate(gf_addBuffered(20004, "BAW4AK"))) << "further than all";
    EXPECT_EQ(FsState::Active, gf_liveByHexid(20002)->fs);
}

TEST_F(SpawnTest, theRegistrationOrTheCallSignTellsTheAirline)
{
    dbase.registrations["G-KNWN"] = {"RYR", "B738", "", false};
    const struct {
        const char *callsign, *airline, *regcode, *expected;  // call sign, airline and model
    } cases[] = {{"baw12", "", "", "baw12 BAW A319"},         {"BAW12", "", "", "BAW12 BAW A319"},
                 {"GABCD", "", "", "GABCD PVT A319"},         {"BAW", "", "", "BAW PVT A319"},
                 {"B1W12", "", "", "B1W12 PVT A319"},         {"", "XXX", "G-KNWN", "G-KNWN RYR B738"},
                 {"BAW12", "XXX", "G-KNWN", "BAW12 RYR B738"}};
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addBuffered(20002, c.callsign);
        ac.airline = c.airline;
        ac.regcode = c.regcode;
        gate(ac);
        EXPECT_EQ(c.expected, format("{} {} {}", ac.callsign, ac.airline, ac.model)) << c.callsign;
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
    ac.callsign = "ABCDEFGHIJKLMN";
    makeCreateRequest(20002);
    ASSERT_EQ(1U, liveCreateQueue.size());
    const CreateRequest& request = liveCreateQueue.front();
    EXPECT_NEAR(90, request.heading, 0.5);
    EXPECT_NEAR(2.5, request.pitch, 1e-9) << "degrees, as with half of 3000 ft/min down";
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

TEST_F(SpawnTest, setsAnAircraftUpByItsPhase)
{
    using Events = std::vector<std::pair<uint32_t, uint32_t>>;
    const auto setUp = [](LiveAc& ac) {
        eventQueue.clear();
        setUpLiveAc(ac);
        Events list;
        for (const QueuedEvent& e : eventQueue) {
            list.emplace_back(e.event, e.value);
        }
        return list;
    };
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    ac.fs = FsState::Adding2Sim;
    ac.alt = 9999;
    ac.agl = 1999;
    const Events inTheAir{{ENGINE_AUTO_START, 0}, {SPOILERS_SET, 0},       {NAV_LIGHTS_SET, 1},
                          {BEACON_LIGHTS_SET, 1}, {LANDING_LIGHTS_SET, 1}, {TAXI_LIGHTS_SET, 0},
                          {STROBES_SET, 1},       {LOGO_LIGHTS_SET, 1},    {CABIN_LIGHTS_SET, 0}};
    EXPECT_EQ(inTheAir, setUp(ac));
    EXPECT_EQ(FsState::Active, ac.fs);
    LiveAc& helicopter = gf_addFlying(20003, "HELI1");
    helicopter.category = AcCategory::Rotorcraft;
    helicopter.st = StState::Taxi;
    helicopter.stream[0].airborne = false;
    const Events sent = setUp(helicopter);
    EXPECT_EQ((Events::value_type{THROTTLE_SET, 16383}), sent.back());
    EXPECT_TRUE(std::ranges::none_of(
        sent, [](const auto& e) { return e.first == FLAPS_SET || e.first == SPOILERS_SET; }));
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
    constexpr double kDeg = std::numbers::pi / 180;
    const struct {
        double cg, pitch, expectedCg, expectedPitch;  // feet, degrees
    } cases[] = {{12.5, 2.5, 12.5, 2.5},
                 {35.1, 2.6, 12.5, 0.7},
                 {0.9, -1, 12.5, 0.7},
                 {35, 0, 35, 0},
                 {1, -0.9, 1, -0.9}};
    for (const auto& c : cases) {
        handleSimMessage({ac.objectid, 0, 0, SimMessageKind::StaticData, c.cg, c.pitch * kDeg});
        EXPECT_DOUBLE_EQ(c.expectedCg, ac.staticCg) << c.cg;
        EXPECT_NEAR(c.expectedPitch * kDeg, ac.staticPitch, 1e-12) << c.pitch;
    }
}

}  // namespace vlt
