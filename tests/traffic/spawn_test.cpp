// From the buffer into the simulator and out of it again.
#include "traffic/spawn.h"

#include "core/base/run_state.h"
#include "liveries/database.h"
#include "liveries/liveries.h"
#include "traffic/auto_range.h"
#include "traffic/create_request.h"
#include "traffic/removal.h"
#include "traffic/sim_answers.h"
#include "traffic/stage.h"

#include <tuple>

namespace vlt {

class Spawn : public Stage
{
protected:
    void SetUp() override
    {
        Stage::SetUp();
        userOnGround = true;
        userNow.lat = 47.5;
        userNow.lon = 9;
    }
    enum Became { Waits, Dropped, Erased, Spawned };
    static Became gate(LiveAc& ac)
    {
        const size_t before = ac.stream.size();
        spawnGate(ac);
        if (ac.eraseNow || ac.fs == FsState::Adding2Sim) {
            return ac.eraseNow ? Erased : Spawned;
        }
        return ac.stream.size() < before ? Dropped : Waits;
    }
};

TEST_F(Spawn, theGateJudgesIdentityAndStream)
{
    // clang-format off
    const struct { const char* what; void (*change)(LiveAc&); Became expected; } cases[] = {
        {"ready",               [](LiveAc&) {}, Spawned},
        {"a second early",      [](LiveAc& a) { a.stream[0].time = tick + 100; }, Spawned},
        {"more than that",      [](LiveAc& a) { a.stream[0].time = tick + 101; }, Waits},
        {"taxiing, three",      [](LiveAc& a) { a.stream = samples("0@9 30@9", tick - 200); }, Spawned},
        {"standing, three",     [](LiveAc& a) { a.stream = samples("0s 0s", tick - 200); }, Waits},
        {"no samples",          [](LiveAc& a) { a.stream.clear(); }, Erased},
        {"one sample",          [](LiveAc& a) { a.stream.pop_back(); }, Erased},
        {"air and ground",      [](LiveAc& a) { a.stream[1].airborne = false; }, Dropped},
        {"no name",             [](LiveAc& a) { a.callsign.clear(); }, Erased},
        {"nine letters",        [](LiveAc& a) { a.callsign = "ABCDEFGHI"; }, Erased},
        {"but registered",      [](LiveAc& a) { a.callsign = "ABCDEFGHI"; a.regcode = "G-DBCJ"; }, Spawned},
        {"a listed ghost",      [](LiveAc& a) { a.callsign = "BAW1_"; ghostCallsigns.push_back("BAW1_"); }, Erased},
        {"whose twin is here",  [](LiveAc& a) { a.callsign = "TWIN1_"; }, Erased},
        {"a ghost alone",       [](LiveAc& a) { a.callsign = "BAW2_"; }, Spawned},
        {"blocked",             [](LiveAc& a) { blockedCallsign = a.callsign; }, Erased},
        {"no livery",           [](LiveAc& a) { a.airline = "XXX"; a.model = "A388"; }, Erased},
        {"found none before",   [](LiveAc& a) { failedLiveries.insert(gf_failedKey(a)); }, Erased},
        {"eleven requests",     [](LiveAc&) { liveCreateQueue.resize(11); }, Dropped},
        {"but it was there",    [](LiveAc& a) { liveCreateQueue.resize(11); a.st = StState::Flying; }, Spawned},
        {"ten requests",        [](LiveAc&) { liveCreateQueue.resize(10); }, Spawned},
        {"no room",             [](LiveAc&) { MAX_LIVE.value = 0; }, Erased},
        {"room for two",        [](LiveAc&) { MAX_LIVE.value = 2; }, Spawned},
        {"one is on its way",   [](LiveAc&) { MAX_LIVE.value = 2; spawnStack = {1}; }, Erased},
        {"one is asked for",    [](LiveAc&) { MAX_LIVE.value = 2; liveCreateQueue.resize(1); }, Erased},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        gf_addFlying(20001, "TWIN1");
        LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
        c.change(ac);
        EXPECT_EQ(c.expected, gate(ac)) << c.what;
    }
}

TEST_F(Spawn, theGateKeepsTheUsersWayFree)
{
    // The aircraft is at 47 N 8 E and flies east; 1 nm is 0.01667 degrees of latitude.
    struct User {
        double lat, lon, altitude, agl, hdgDeg, speed;
    };
    // clang-format off
    const struct { const char* what; bool userOnGround, acOnGround, held; User user; Became expected; } cases[] = {
        {"same track, 5 nm ahead",       false, false, false, {47, 8.12, 11000, 9000, 0, 250}, Dropped},
        {"the same, 3001 ft above",      false, false, false, {47, 8.12, 13001, 9000, 0, 250}, Spawned},
        {"the same, 7 nm ahead",         false, false, false, {47, 8.175, 11000, 9000, 0, 250}, Spawned},
        {"1 nm beside",                  false, false, false, {47.01667, 8.05, 11000, 9000, 0, 250}, Spawned},
        {"before a landing user",        false, true,  false, {46.985, 8, 300, 300, 0, 140}, Dropped},
        {"the same, user higher",        false, true,  false, {46.985, 8, 1500, 1000, 0, 140}, Spawned},
        {"the same, off his line",       false, true,  false, {46.985, 8, 300, 300, 90, 140}, Spawned},
        {"held, and he still lands",     false, true,  true,  {40, 8, 300, 300, 0, 140}, Dropped},
        {"on top of a parked user",      true,  true,  false, {47.0013, 8, 0, 0, 0, 0}, Dropped},
        {"151 m from a parked user",     true,  true,  false, {47.00136, 8, 0, 0, 0, 0}, Spawned},
        {"above a parked user",          true,  false, false, {47, 8, 0, 0, 0, 0}, Spawned},
        {"held, user taxies",            true,  true,  true,  {47.1, 8, 0, 0, 0, 8.1}, Dropped},
        {"held, user slow, far enough",  true,  true,  true,  {47.1, 8, 0, 0, 0, 8}, Spawned},
        {"held, 400 m off",              true,  true,  true,  {47.0036, 8, 0, 0, 0, 0}, Dropped},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        userOnGround = c.userOnGround;
        const User& u = c.user;
        userNow = {u.lat, u.lon, 0, 0, u.hdgDeg * kRadPerDeg, u.altitude, u.agl, u.speed};
        LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
        ac.heldForUser = c.held;
        if (c.acOnGround) {
            ac.stream = samples("0@5 1500@5", tick - 500);
        }
        EXPECT_EQ(c.expected, gate(ac)) << c.what;
        EXPECT_EQ(c.expected == Dropped && (c.held || !c.userOnGround), ac.heldForUser) << c.what;
    }
}

TEST_F(Spawn, theRangeFollowsTheUser)
{
    // In the air by his height, from 3000 ft on, and below that by the distance to the park airport at 47.5
    // N.
    // clang-format off
    const struct { const char* what; bool wanted, onGround; double altitude, lat; int32_t nm; } cases[] = {
        {"on the ground", true, true, 99000, 47.5, 10},    {"high up", true, false, 18001, 47.5, 100},
        {"on the way", true, false, 18000, 47.5, 40},      {"near", true, false, 1000, 47.6166, 10},
        {"farther", true, false, 1000, 47.8, 21},          {"far", true, false, 1000, 48.12, 40},
        {"not wanted", false, true, 1000, 47.5, 25},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        AUTO_RANGE.value = c.wanted;
        AUTO_RANGE_ABOVE_HEIGHT.value = 18000;
        AIRPORT_HEIGHT.value = 3000;
        LATERAL_RANGE.value = 25;
        userOnGround = c.onGround;
        userNow = {c.lat, 8, 0, 0, 0, c.altitude};
        parkAirports.emplace_back();
        std::tie(parkAirports.back().lat, parkAirports.back().lon) = std::tuple(47.5, 8.0);
        gf_adaptRange();
        parkAirports.clear();
        EXPECT_EQ(c.nm, LATERAL_RANGE.value) << c.what;
    }
}

TEST_F(Spawn, theFurthestMakesRoom)
{
    gf_addFlying(20001, "FAR1").lat = 50;
    gf_addFlying(20002, "NEAR1").lat = 47.6;
    MAX_LIVE.value = 2;
    EXPECT_EQ(Spawned, gate(gf_addBuffered(20003, "BAW3AK")));
    EXPECT_TRUE(goes(liveAcs[0]) && !goes(liveAcs[1]));
    MAX_LIVE.value = 1;
    liveAcs[1].lat = 47.4;
    EXPECT_EQ(Erased, gate(gf_addBuffered(20004, "BAW4AK"))) << "further than all";
    EXPECT_FALSE(goes(liveAcs[1]));
    LiveAc& turnedAway = add("birth: 0s 0s", 20005, "BAW5AK");
    turnedAway.fs = FsState::Buffer;
    turnedAway.airline = "BAW";
    gf_addStand("A1", 0, 0, 90);
    std::tie(liveAcs[1].st, liveAcs[1].standId, liveAcs[1].liveAtStand) =
        std::tuple(StState::Parked, 1, true);
    liveAcs[0].fs = FsState::Active;
    EXPECT_EQ(Erased, gate(turnedAway)) << "its stand is taken";
    EXPECT_FALSE(goes(liveAcs[0]) || goes(liveAcs[1])) << "which costs nobody his object";
    for (const int32_t most : {-1, 0, 1, 2}) {
        liveAcs[0].fs = liveAcs[1].fs = FsState::Active;
        MAX_LIVE.value = most;
        gf_keepWithinMaxLive();
        EXPECT_EQ(most < 0 ? 2 : most, gf_activeCount());
    }
    for (const double further : {0.09, 0.11}) {  // nm than a newcomer at 8 E, seen from 7 E
        SetUp();
        std::tie(userNow.lat, userNow.lon) = std::tuple(47, 7);
        MAX_LIVE.value = 1;
        LiveAc& far = gf_addFlying(20001, "FAR1");
        far.lon += further / 60 / std::cos(47 * kRadPerDeg);
        EXPECT_EQ(further > 0.1 ? Spawned : Erased, gate(gf_addBuffered(20003, "BAW3AK"))) << further;
    }
}

TEST_F(Spawn, startsWithTheFirstSamplesPlaceAndAttitudeAndAnAirline)
{
    LiveAc& ac = gf_addBuffered(20002, "baw12");
    ac.airline.clear();
    ac.stream[0].vs = -4000;
    ac.stream[0].roll = 0.2;
    ac.stream[0].rollValid = true;
    gate(ac);
    EXPECT_EQ(StState::Flying, ac.st);
    EXPECT_NEAR(-4000 / 60., ac.vsOut, 1e-9) << "feet a second";
    EXPECT_EQ(std::list<uint32_t>{20002}, standChangeList) << "its static twin goes";
    ac.callsign = "ABCDEFGHIJKLMN";
    makeCreateRequest(20002);
    ASSERT_EQ(1U, liveCreateQueue.size());
    const CreateRequest& r = liveCreateQueue.front();
    // Where it will be when it is set up, two seconds on. 2.5 degrees as with half of 3000 ft/min down; 11
    // bytes and the zero.
    EXPECT_EQ("BAW A319 47 8.0041 10000 2.5 11.5 90 false ABCDEFGHIJK",
              format("{} {} {} {:.4f} {} {:.1f} {:.1f} {:.0f} {} {}", ac.airline, ac.model, r.lat, r.lon,
                     r.altitude, r.pitch, r.bank, r.heading, r.onGround, r.tailNumber));
    EXPECT_FALSE(r.title.empty());
    add("taxi: 0@20+5 100@20+9.7", 20004, "DLH1").fs = FsState::Buffer;
    makeCreateRequest(20004);
    EXPECT_NEAR(25.8, east(liveCreateQueue.back()), 0.5) << "20 kt, and half a second later";
    ackWait.assign(1, {77, 20099, 0, SimMessageKind::LiveObject, 0, 900});
    for (int i = 0; i <= 200; ++i) {
        gf_stepAckWaits();
    }
    EXPECT_TRUE(ackWait.empty());
    dbase.registrations["EI-DAC"].cargo = true;
    for (const char* callsign : {"GABCD", "BAW", "B1W12", ""}) {
        LiveAc& other = gf_addBuffered(20003, callsign);
        other.airline.clear();
        other.regcode = *callsign == 0 ? "EI-DAC" : "";
        gate(other);
        EXPECT_EQ(*callsign == 0 ? "RYR B738" : "PVT A319", other.airline + " " + other.model) << callsign;
        EXPECT_EQ(*callsign == 0, other.cargo) << callsign;
    }
    EXPECT_EQ(halfWingspanNm("B738"), liveAcs.back().radius) << "as wide as it is shown";
}

TEST_F(Spawn, whoTookOffWithoutAnObjectComesBackInTheAir)
{
    LiveAc& ac = add("taxi rolls: 0 0 3000^900 3500^1000");
    ac.fs = FsState::Buffer;  // its object was exchanged, and the user was in its way
    ac.title = "some livery";
    for (int i = 0; i < 30 && ac.fs == FsState::Buffer; ++i, tick += 100) {
        spawnGate(ac);
    }
    EXPECT_EQ("flying: 3000^900 3500^1000", look(ac));
    handleSimMessage({77, ac.hexid, 0, SimMessageKind::LiveObject, 0, 900});
    EXPECT_FALSE(ac.onGround);
    LiveAc& stands = add("parked: 0s", 20003, "DLH1");
    stands.fs = FsState::Adding2Sim;
    stands.altRate = 1;
    hourNow = {3, 7};
    handleSimMessage({78, 20003, 0, SimMessageKind::LiveObject, 0, 5});
    EXPECT_TRUE(stands.onGround && stands.altRate == 0 && stands.stamp == hourNow);
}

TEST_F(Spawn, aRemovalWhileItIsCreated)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    makeCreateRequest(20002);
    spawnStack.clear();
    const ParkPos& stand = gf_addStand("A1", 0, 0, 90);
    gf_takeStand(ac, stand);
    gf_claimStand(ac);
    removeAircraftFromSim(ac, "test");
    EXPECT_EQ(kNobody, stand.occupiedByLive);
    EXPECT_TRUE(liveCreateQueue.empty());
    gf_eraseMarked();
    EXPECT_TRUE(liveAcs.empty()) << "before the request left: without a sound";

    LiveAc& asked = gf_addBuffered(20003, "BAW3AK");
    spawnLiveAc(asked);
    spawnStack.clear();
    handleSimMessage({77, 20003, 0, SimMessageKind::LiveObject, 0, 9000});
    removeAircraftFromSim(asked, "test");
    for (int i = 0; i < 200; ++i) {
        gf_stepAckWaits();
    }
    EXPECT_EQ(FsState::Adding2Sim, asked.fs);
    gf_stepAckWaits();
    EXPECT_TRUE(goes(asked)) << "after its set-up";
    EXPECT_EQ((std::deque<uint32_t>{77}), removeWaitQueue);
    handleSimMessage({77, 0, 0, SimMessageKind::ObjectRemoved, 0, 0});
    EXPECT_TRUE(liveAcs.empty());

    for (const bool removed : {false, true}) {
        SetUp();
        StaticAc& parked = addStatic();
        std::tie(parked.hexid, parked.fs, parked.removeWhenAdded) =
            std::tuple(5, FsState::Adding2Sim, removed);
        handleSimMessage({78, 5, 200, SimMessageKind::StaticObject, 0, 0});
        gf_stepAckWaits();
        EXPECT_EQ(removed ? FsState::RemovingFromSim : FsState::Active, parked.fs);
        EXPECT_EQ(78U, parked.objectid);
        EXPECT_TRUE(commands().starts_with("throttle=0 flaps=0 shutdown=0"));
    }
    removeWaitQueue.clear();
    handleSimMessage({79, 6, 200, SimMessageKind::StaticObject, 0, 0});
    gf_stepAckWaits();
    EXPECT_EQ((std::deque<uint32_t>{79}), removeWaitQueue) << "nobody wants it any more";
}

TEST_F(Spawn, whoGoesGivesItsOwnStandBackOnEveryRoad)
{
    const struct {
        const char* what;
        FsState fs;
        void (*go)(LiveAc& ac);
    } cases[] = {
        {"in the buffer", FsState::Buffer, [](LiveAc& ac) { removeAircraftFromSim(ac, "test"); }},
        {"removed", FsState::Active, [](LiveAc& ac) { removeAircraftFromSim(ac, "test"); }},
        {"by the simulator", FsState::Active, [](LiveAc& ac) { onObjectRemoved(ac.objectid); }},
        {"refused", FsState::Adding2Sim, [](LiveAc& ac) { gf_onCreateRefused(ac.hexid); }},
        {"taken back", FsState::Adding2Sim,
         [](LiveAc& ac) {
             spawnStack = {ac.hexid};
             removeAircraftFromSim(ac, "test");
         }},
    };
    for (const uint32_t holder : {20001U, 20009U}) {
        for (const auto& c : afresh(cases)) {
            gf_addStand("A1", 0, 0, 90).occupiedByLive = holder;
            LiveAc& ac = add("parked: 0s");
            ac.standId = 1;
            ac.fs = c.fs;
            c.go(ac);
            EXPECT_EQ(holder == 20001 ? kNobody : holder, parkApf.stands[0].occupiedByLive) << c.what;
        }
    }
}

TEST_F(Spawn, aRefusedLiveryIsNotTriedAgainNorWhereNoneFits)
{
    LiveAc& ac = gf_addBuffered(20002, "BAW3AK");
    spawnLiveAc(ac);
    const std::string_view title = ac.title;
    handleSimMessage({0, 20002, 0, SimMessageKind::CreationRefused, 0, 0});
    EXPECT_TRUE(liveAcs.empty());
    LiveAc& again = gf_addBuffered(20002, "BAW3AK");
    gate(again);
    EXPECT_NE(title, again.title);
    LiveAc& unknown = gf_addBuffered(20003, "XXX1");
    std::tie(unknown.airline, unknown.model, unknown.regcode) = std::tuple("XXX", "A388", "X-1");
    EXPECT_EQ(Erased, gate(unknown));
    EXPECT_TRUE(failedLiveries.contains(gf_failedKey(unknown)));
}

TEST_F(Spawn, believesStaticDataOnlyWithinReason)
{
    LiveAc& ac = gf_addFlying(20002, "BAW3AK");
    // Feet and degrees: told, and believed.
    const std::tuple<double, double, double, double> cases[] = {{12.5, 2.5, 12.5, 2.5},
                                                                {35.1, 2.6, 12.5, 0.7},
                                                                {0.9, -1, 12.5, 0.7},
                                                                {35, 0, 35, 0},
                                                                {1, -0.9, 1, -0.9}};
    for (const auto& [cg, pitch, believedCg, believedPitch] : cases) {
        handleSimMessage({ac.objectid, 0, 0, SimMessageKind::StaticData, cg, pitch * kRadPerDeg});
        EXPECT_DOUBLE_EQ(believedCg, ac.staticCg) << cg;
        EXPECT_NEAR(believedPitch, ac.staticPitch * kDegPerRad, 1e-9) << pitch;
    }
}

}  // namespace vlt
