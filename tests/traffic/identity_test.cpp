// Changes of identity, ghosts, doubles, who has a stand, and collisions with the user.
#include "traffic/identity.h"

#include "airports/catalogue.h"
#include "airports/parking/park_airport.h"
#include "core/base/parameters.h"
#include "liveries/liveries.h"
#include "sim/user_aircraft.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "support/world.h"
#include "traffic/arrival.h"
#include "traffic/collision.h"
#include "traffic/geodesy.h"
#include "traffic/removal.h"
#include "traffic/spawn.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_spawn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace vlt {

class Identity : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        gf_loadSmallWorld();
        userHalfSpan = 17 / kMetresPerNm;
    }
    void TearDown() override
    {
        gf_freshRun();
        gf_clearWorld();
    }
    static FeedRecord report(const LiveAc& ac)
    {
        FeedRecord record;
        record.hexid = ac.hexid;
        record.callsign = ac.callsign;
        record.regcode = ac.regcode;
        record.origin = ac.origin;
        record.destination = ac.destination;
        return record;
    }
    static bool goes(const LiveAc& ac)
    {
        return ac.fs == FsState::RemovingFromSim;
    }
};

TEST_F(Identity, whatBringsANewObject)
{
    const struct {
        const char* what;
        std::function<void(LiveAc&, FeedRecord&)> change;
        bool kept, respawns;
    } cases[] = {
        {"nothing new", [](LiveAc&, FeedRecord&) {}, true, false},
        {"a call sign", [](LiveAc&, FeedRecord& r) { r.callsign = "BAW99"; }, false, true},
        {"a route that was unknown",
         [](LiveAc& ac, FeedRecord& r) {
             ac.origin.clear();
             r.origin = "LHR";
         },
         false, true},
        {"another route", [](LiveAc&, FeedRecord& r) { r.origin = "CDG", r.destination = "FRA"; }, false,
         true},
        {"another origin only", [](LiveAc&, FeedRecord& r) { r.origin = "CDG"; }, true, false},
        {"the registration as call sign", [](LiveAc& ac, FeedRecord& r) { r.callsign = ac.regcode; }, true,
         false},
        {"during the take-off",
         [](LiveAc& ac, FeedRecord& r) {
             ac.takeOff = true;
             r.callsign = "BAW99";
         },
         true, false},
        {"on approach",
         [](LiveAc& ac, FeedRecord& r) {
             ac.approach = true;
             r.callsign = "BAW99";
         },
         true, false},
        {"while it is extended",
         [](LiveAc& ac, FeedRecord& r) {
             ac.extendCount = 1;
             r.callsign = "BAW99";
         },
         true, false},
        {"with exchanges switched off",
         [](LiveAc&, FeedRecord& r) {
             GUID_CHANGES.value = false;
             r.callsign = "BAW99";
         },
         true, false},
    };
    for (const auto& c : cases) {
        SetUp();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.regcode = "G-DBCJ";
        ac.origin = "TLS";
        ac.destination = "LHR";
        FeedRecord record = report(ac);
        c.change(ac, record);
        EXPECT_EQ(c.kept, identityUpdate(ac, record)) << c.what;
        EXPECT_EQ(c.respawns, ac.fs == FsState::LiveryRespawn) << c.what;
    }
}

TEST_F(Identity, aRespawnedAircraftComesBackWhereItWas)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    ac.lat += 0.01;
    ac.bank = 0.2;
    FeedRecord record = report(ac);
    record.callsign = "BAW99";
    identityUpdate(ac, record);
    EXPECT_EQ(ac.lat, ac.stream.front().lat);
    EXPECT_EQ(ac.bank, ac.stream.front().roll);
    EXPECT_EQ(tick + 1, ac.stream.front().time);
    EXPECT_EQ("BAW99", ac.coupledCs1);
}

TEST_F(Identity, aRegistrationThatTellsAnotherAircraftNeedsANewLivery)
{
    // The world's data base knows it as another type than the feed told.
    const auto known = std::ranges::find_if(dbase.registrations, [](const auto& row) {
        return row.second.opr.empty() && !regcodeTitles.contains(row.first);
    });
    ASSERT_NE(dbase.registrations.end(), known);
    LiveAc& ac = gf_addFlying(20001, "XXX1");
    ac.airline = "XXX";
    ac.title = "some livery";
    titleCache[ac.hexid] = ac.title;
    FeedRecord record = report(ac);
    record.regcode = known->first;
    EXPECT_FALSE(updateRegcode(ac, record));
    EXPECT_EQ(StState::Birth, ac.st);
    EXPECT_EQ(known->second.airl, ac.airline);
    EXPECT_EQ(known->second.type, ac.model);
    EXPECT_TRUE(ac.title.empty());
    EXPECT_FALSE(titleCache.contains(ac.hexid));
    EXPECT_EQ(record.regcode, ac.regcode);
    // The same again is nothing new.
    EXPECT_TRUE(updateRegcode(ac, record));
}

TEST_F(Identity, aLiveryOfThatVeryRegistrationIsTaken)
{
    ASSERT_FALSE(regcodeTitles.empty());
    const auto& [registration, title] = *regcodeTitles.begin();
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    FeedRecord record = report(ac);
    record.regcode = registration;
    ac.title = title;
    EXPECT_TRUE(updateRegcode(ac, record));
    ac.regcode.clear();
    ac.title = "another";
    EXPECT_FALSE(updateRegcode(ac, record));
}

TEST_F(Identity, aGhostGoesForGoodWhenItsTwinComes)
{
    gf_addFlying(20001, "BAW3AK_");
    ghostCheck("BAW3AK");
    EXPECT_TRUE(goes(liveAcs[0]));
    EXPECT_EQ(std::vector<std::string>{"BAW3AK_"}, ghostCallsigns);
    LiveAc& again = gf_addBuffered(20003, "BAW3AK_");
    spawnGate(again);
    EXPECT_TRUE(again.eraseNow);
}

TEST_F(Identity, aGhostMayTurnOutToBeTheFlightItself)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK_");
    FeedRecord record = report(ac);
    record.callsign = "BAW3AK";
    EXPECT_FALSE(identityUpdate(ac, record));
    EXPECT_EQ(FsState::LiveryRespawn, ac.fs);
    EXPECT_EQ("BAW3AK", ac.callsign);
    EXPECT_TRUE(ghostCallsigns.empty());
    EXPECT_EQ(1U, removeWaitQueue.size());
}

TEST_F(Identity, anAircraftDoesNotBecomeAGhostOrADouble)
{
    for (const char* callsign : {"DLH1_", "DLH1"}) {
        SetUp();
        gf_addFlying(20002, "DLH1");
        LiveAc& ac = gf_addFlying(20001, "KLM5");
        FeedRecord record = report(ac);
        record.callsign = callsign;
        EXPECT_FALSE(identityUpdate(ac, record)) << callsign;
        EXPECT_EQ("KLM5", ac.callsign);
    }
}

TEST_F(Identity, oneAircraftUnderTwoAddressesIsShownOnce)
{
    const struct {
        const char* what;
        const char* callsign;
        const char* regcode;
        StState st;
        bool newComes, oldGoes;
    } cases[] = {{"the same call sign", "BAW3AK", "", StState::Flying, false, false},
                 {"the same registration", "BAW9", "G-DBCJ", StState::Flying, false, false},
                 {"nothing in common", "BAW9", "G-EUUA", StState::Flying, true, false},
                 {"no registrations", "BAW9", "", StState::Flying, true, false},
                 {"the old one only parks", "BAW3AK", "", StState::Parked, true, true}};
    for (const auto& c : cases) {
        SetUp();
        LiveAc& old = gf_addFlying(20001, "BAW3AK");
        old.regcode = std::string(c.what) == "no registrations" ? "" : "G-DBCJ";
        old.st = c.st;
        LiveAc& fresh = gf_addBuffered(20002, c.callsign);
        fresh.regcode = c.regcode;
        ASSERT_EQ(c.newComes, gf_doublesMakeWay(fresh)) << c.what;
        if (c.newComes) {
            gf_removeDoubles(fresh);
        }
        EXPECT_EQ(c.oldGoes, goes(liveAcs[0])) << c.what;
    }
}

TEST_F(Identity, whoGetsAStandThatIsTaken)
{
    const struct {
        const char* what;
        const char* holder;
        const char* newcomer;
        StState st;
        bool reports, newGetsIt, holderGoes;
    } cases[] = {
        {"another flight", "DLH1", "KLM5", StState::Parked, false, true, true},
        {"another flight, the holder still reports", "DLH1", "KLM5", StState::Parked, true, false, false},
        {"the same flight", "DLH1", "DLH1", StState::Parked, true, true, true},
        {"the holder's ghost", "DLH1", "DLH1_", StState::Parked, false, false, false},
        {"the ghost's twin", "DLH1_", "DLH1", StState::PushingBack, true, true, true},
        {"no ghost against a ghost", "DLH1_", "KLM5", StState::Parked, true, true, true},
        {"a ghost against none", "DLH1", "KLM5_", StState::PushedBack, false, false, false},
        {"the holder taxies already", "DLH1", "KLM5", StState::Taxi, false, true, false}};
    for (const auto& c : cases) {
        SetUp();
        gf_addStand("A1", 0, 0, 90);
        LiveAc& holder = gf_addOnGround(20001, c.holder, c.st);
        holder.standId = 1;
        holder.liveAtStand = c.reports;
        LiveAc& newcomer = gf_addOnGround(20002, c.newcomer, StState::Birth);
        newcomer.fs = FsState::Buffer;
        ASSERT_EQ(c.newGetsIt, standConflict(newcomer, 1)) << c.what;
        if (c.newGetsIt) {
            gf_removeHolder(newcomer, 1);
        }
        EXPECT_EQ(c.holderGoes, goes(liveAcs[0])) << c.what;
    }
}

class BirthOnGround : public Identity
{
protected:
    // A new aircraft with two samples `metres` short of the stand A1.
    static LiveAc& arriving(double metres, bool standing, double secondSpeed = 4)
    {
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Birth);
        ac.fs = FsState::Buffer;
        PosSample first = gf_groundSample(-metres - (standing ? 0 : 20), 0, standing ? 0 : 5, tick);
        PosSample second = gf_groundSample(-metres, 0, standing ? 0 : secondSpeed, tick + 500);
        first.stationary = second.stationary = standing;
        ac.stream = {first, second};
        return ac;
    }
};

TEST_F(BirthOnGround, whichPhaseANewAircraftBegins)
{
    const struct {
        const char* what;
        double metres;
        bool standing;
        double speed;
        std::function<void()> before;
        bool comes;
        StState st;
    } cases[] = {{"at its stand", 30, true, 0, [] {}, true, StState::Parked},
                 {"standing, no stand near: it waits", 56, true, 0, [] {}, false, StState::Birth},
                 {"creeping onto its stand", 10, false, 5, [] {}, true, StState::Parked},
                 {"too fast for that", 10, false, 5.1, [] {}, true, StState::Taxi},
                 {"no stand near", 80, false, 4, [] {}, true, StState::Taxi},
                 {"no airport", 30, true, 0, closeAirport, true, StState::Taxi},
                 {"the reserved stand", 30, true, 0, [] { reservedStand = "A1"; }, true, StState::Birth},
                 {"a stand whose holder reports", 30, true, 0,
                  [] {
                      LiveAc& holder = gf_addOnGround(20009, "DLH1", StState::Parked);
                      holder.standId = 1;
                      holder.liveAtStand = true;
                  },
                  false, StState::Birth}};
    for (const auto& c : cases) {
        SetUp();
        gf_addStand("A1", 0, 0, 90);
        c.before();
        LiveAc& ac = arriving(c.metres, c.standing, c.speed);
        EXPECT_EQ(c.comes, gf_birthOnGround(ac)) << c.what;
        EXPECT_EQ(c.st, ac.st) << c.what;
        if (c.st == StState::Parked) {
            EXPECT_EQ(1U, ac.stream.size());
            EXPECT_EQ(47, ac.stream[0].lat);
            EXPECT_TRUE(parkApf.stands[0].occupiedByLive);
        }
    }
}

TEST_F(BirthOnGround, anAdjacentAircraftThatWouldTouchKeepsItAway)
{
    for (const double apart : {37.0, 38.0}) {
        SetUp();
        gf_addStand("A1", 0, 0, 90);
        gf_addStand("A2", 0, apart, 90);
        parkApf.stands[0].neighbours = {2};
        LiveAc& beside = gf_addOnGround(20002, "DLH1", StState::Parked);
        beside.standId = 2;
        LiveAc& ac = arriving(1, true);
        EXPECT_EQ(apart > 37.5, gf_birthOnGround(ac)) << apart;
        EXPECT_EQ(apart < 37.5, ac.eraseNow) << apart;
    }
}

TEST_F(BirthOnGround, aStandIsFreeAgainHoweverItsAircraftGoes)
{
    const std::pair<const char*, std::function<void(LiveAc&)>> ends[] = {
        {"refused by the simulator", [](LiveAc& ac) { gf_onCreateRefused(ac.hexid); }},
        {"taken back in time",
         [](LiveAc& ac) {
             spawnStack.push_back(ac.hexid);
             removeAircraftFromSim(ac, "test");
         }},
        {"turned away while it changes its livery",
         [](LiveAc& ac) {
             ac.fs = FsState::Buffer;
             removeAircraftFromSim(ac, "test");
         }},
        {"removed by the simulator itself",
         [](LiveAc& ac) {
             ac.fs = FsState::Active;
             ac.objectid = 77;
             onObjectRemoved(77);
         }},
    };
    for (const auto& [what, end] : ends) {
        SetUp();
        gf_addStand("A1", 0, 0, 90);
        LiveAc& ac = arriving(30, true);
        ASSERT_TRUE(gf_birthOnGround(ac));
        ASSERT_TRUE(parkApf.stands[0].occupiedByLive);
        ac.fs = FsState::Adding2Sim;
        end(ac);
        EXPECT_FALSE(parkApf.stands[0].occupiedByLive) << what;
    }
}

TEST_F(BirthOnGround, whoGoesFreesItsOwnStandOnly)
{
    gf_addStand("A1", 0, 0, 90);
    ASSERT_TRUE(gf_birthOnGround(arriving(30, true)));
    LiveAc& late = gf_addOnGround(20009, "DLH9", StState::Parking);
    late.standId = 1;
    arrivedAtStand(late);
    EXPECT_EQ(FsState::RemovingFromSim, late.fs) << "somebody else came first";
    EXPECT_EQ(liveAcs[0].hexid, parkApf.stands[0].occupiedByLive);
}

class StaticTwins : public Identity
{
protected:
    static StaticAc& addStatic(const char* callsign, const char* regcode)
    {
        StaticAc parked;
        parked.callsign = callsign;
        parked.regcode = regcode;
        parked.objectid = 60;
        parked.fs = FsState::Active;
        return staticAcs.emplace_back(parked);
    }
};

TEST_F(StaticTwins, theLiveFlightReplacesItsStaticOne)
{
    const struct {
        const char* what;
        const char* callsign;
        const char* coupled2;
        const char* regcode;
        bool same;
    } cases[] = {{"same registration", "BAW1", "", "G-DBCJ", true},
                 {"first coupled call sign", "DLH1", "", "", true},
                 {"second one", "DLH2", "", "", true},
                 {"through its own coupling", "BAW1", "DLH2", "", true},
                 {"as a ghost", "DLH1_", "", "", true},
                 {"another", "BAW1", "", "", false}};
    for (const auto& c : cases) {
        SetUp();
        StaticAc& parked = addStatic("DLH1*", "G-DBCJ");
        parked.coupledCs1 = "DLH1";
        parked.coupledCs2 = "DLH2";
        LiveAc& ac = gf_addFlying(20001, c.callsign);
        ac.coupledCs2 = c.coupled2;
        ac.regcode = c.regcode;
        gf_removeSameFlight(ac);
        EXPECT_EQ(c.same, staticAcs[0].fs == FsState::RemovingFromSim) << c.what;
    }
}

TEST_F(StaticTwins, aStaticTwinOfOneOnTheGroundGoes)
{
    addStatic("DLH1*", "");
    addStatic("KLM5*", "PH-BXA");
    addStatic("AFR7*", "");
    gf_addOnGround(20001, "DLH1", StState::Taxi);
    gf_addOnGround(20002, "KLM9", StState::Taxi).regcode = "PH-BXA";
    gf_addFlying(20003, "AFR7");
    gf_removeStaticTwins();
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[0].fs);
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[1].fs);
    EXPECT_EQ(FsState::Active, staticAcs[2].fs);
}

class Collision : public StaticTwins
{
};

TEST_F(Collision, inTheAir)
{
    const struct {
        const char* what;
        double milesEast, feetNorth, feetAbove;
        bool goes;
    } cases[] = {{"ahead and in line", 3, 600, 500, true},
                 {"900 ft off the line", 3, 900, 500, false},
                 {"too far", 4.1, 0, 0, false},
                 {"just above", 3, 0, 1001, false},
                 {"just within", 3, 0, 999, true}};
    for (const auto& c : cases) {
        SetUp();
        userNow.lat = 47;
        userNow.lon = 8;
        userNow.altitude = 5000;
        userNow.agl = 4000;
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.lat = 47 + c.feetNorth / kFeetPerNm / 60;
        ac.lon = gf_eastOf(gf_airSample(0), c.milesEast).lon;
        ac.alt = 5000 + c.feetAbove;
        ac.hdg = 270 * kRadPerDeg;
        gf_checkCollisions();
        EXPECT_EQ(c.goes, goes(liveAcs[0])) << c.what;
        COLLISION_USER_AIR.value = false;
        liveAcs[0].fs = FsState::Active;
        gf_checkCollisions();
        EXPECT_FALSE(goes(liveAcs[0])) << c.what;
    }
}

TEST_F(Collision, onTheRunwayBeforeALandingUser)
{
    const struct {
        double milesEast, feetNorth, agl;
        bool goes;
    } cases[] = {{0.9, 40, 400, true}, {0.9, 60, 400, false}, {1.1, 0, 400, false}, {0.9, 0, 501, false}};
    for (const auto& c : cases) {
        SetUp();
        userNow = {47, 8, 0, 0, 90 * kRadPerDeg, 1400, c.agl, 140};
        LiveAc& ac = gf_addOnGround(20001, "BAW3AK", StState::Taxi);
        ac.lat = 47 + c.feetNorth / kFeetPerNm / 60;
        ac.lon = gf_eastOf(gf_airSample(0), c.milesEast).lon;
        gf_checkCollisions();
        EXPECT_EQ(c.goes, goes(liveAcs[0])) << c.milesEast << ' ' << c.feetNorth << ' ' << c.agl;
    }
}

TEST_F(Collision, onTheGroundOneAircraftASecond)
{
    // (17 + 17.05) m * 1.15 are 39.2 m; static ones have * 1.1.
    userOnGround = true;
    userNow.lat = 47;
    userNow.lon = gf_groundSample(-39, 0, 0, 0).lon;
    gf_addOnGround(20001, "BAW3AK", StState::Taxi);
    gf_addOnGround(20002, "DLH1", StState::Parked);
    gf_checkCollisions();
    EXPECT_TRUE(goes(liveAcs[0]));
    EXPECT_FALSE(goes(liveAcs[1]));
    gf_checkCollisions();
    EXPECT_TRUE(goes(liveAcs[1]));
    SetUp();
    userOnGround = true;
    userNow.lat = 47;
    userNow.lon = gf_groundSample(-39.4, 0, 0, 0).lon;
    gf_addOnGround(20001, "BAW3AK", StState::Taxi);
    gf_checkCollisions();
    EXPECT_FALSE(goes(liveAcs[0]));
}

TEST_F(Collision, staticAircraftGoOnlyBeforeAMovingUser)
{
    userOnGround = true;
    userNow.lat = 47;
    userNow.lon = 8;
    gf_checkCollisions();
    StaticAc& parked = addStatic("DLH1*", "");
    parked.standLat = 47;
    parked.standLon = 8;
    gf_checkCollisions();
    EXPECT_EQ(FsState::Active, staticAcs[0].fs);
    userNow.lat += 1e-6;
    gf_checkCollisions();
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[0].fs);
}

TEST_F(Collision, aTaxiingAircraftClearsStaticOnesOnlyIfTheUserWantsThat)
{
    userOnGround = true;
    userNow.lat = 46;
    userNow.lon = 8;
    StaticAc& parked = addStatic("DLH1*", "");
    parked.standLat = 47;
    parked.standLon = 8;
    gf_addOnGround(20001, "BAW3AK", StState::Taxi);
    gf_checkCollisions();
    EXPECT_EQ(FsState::Active, staticAcs[0].fs);
    COLLISION_LIVE_PARKED_GND.value = true;
    gf_checkCollisions();
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[0].fs);
}

TEST_F(Collision, aBlockedCallSignGoesOnce)
{
    gf_addFlying(20001, "BAW3AK");
    BLOCK_CALLSIGN.value = "BAW3AK";
    gf_serviceBlock();
    EXPECT_FALSE(goes(liveAcs[0]));
    blockChanged = true;
    gf_serviceBlock();
    EXPECT_TRUE(goes(liveAcs[0]));
    EXPECT_FALSE(blockChanged);
}

}  // namespace vlt
