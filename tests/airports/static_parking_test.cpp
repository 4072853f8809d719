#include "airports/parking/static_parking.h"

#include "airports/parking/renewal.h"
#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "link/traffic_reader.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "support/world.h"
#include "traffic/performance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace vlt {

static constexpr double kWednesdayTen = 1717582200;  // 2024-06-05 10:10 UTC: day 3, slot 20
static constexpr double kMondayZero = 1717373400;    // 2024-06-03 00:10 UTC: day 1, slot 0

// Three stands: two aircraft of 34 m touch on A and B, C lies apart.
class StaticParkingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_loadSmallWorld();
        begin(kWednesdayTen);
    }
    void TearDown() override
    {
        simTimeMode = false;
        gf_freshRun();
        gf_clearWorld();
    }
    static void begin(double now)
    {
        gf_freshRun();
        simTimeMode = true;
        lastTimestamp = now;
        hourNow = weekHourStamp();
        parkState = ParkState::Loaded;
        gf_addStand("A", 0, 0, 90);
        gf_addStand("B", 30, 0, 90);
        gf_addStand("C", 500, 0, 90);
        parkApf.stands[0].neighbours = {2};
        parkApf.stands[1].neighbours = {1};
        parking_percentage.value = 100;
        MAX_FIT.value = 4;
    }
    static void history(size_t stand, const char* callsign, const char* coupled, const char* type,
                        int32_t day, size_t first, size_t last)
    {
        StandOption option;
        option.airline = "BAW";
        option.type = type;
        option.callsign = callsign;
        option.coupledCs = coupled;
        option.day = day;
        for (size_t slot = first; slot <= last; ++slot) {
            option.hours.set(slot);
        }
        parkApf.stands[stand].options.push_back(option);
    }
    // BAW1, a turn-round as BAW2, has stood on A since so many half hours.
    static StaticAc& parked(int32_t halfHours, FsState fs = FsState::Active)
    {
        StaticAc ac;
        ac.hexid = 1;
        ac.objectid = 77;
        ac.fs = fs;
        ac.airline = "BAW";
        gf_setModel(ac, "A319");
        ac.callsign = "BAW1*";
        ac.coupledCs1 = "BAW1";
        ac.coupledCs2 = "BAW2";
        ac.standId = 1;
        ac.standLat = parkApf.stands[0].lat;
        ac.standLon = parkApf.stands[0].lon;
        ac.stamp = gf_halfHoursBefore(hourNow, halfHours);
        staticAcs.push_back(ac);
        return staticAcs.back();
    }
    static LiveAc& parkedLive(uint32_t hexid, uint32_t stand, int32_t minutes)
    {
        LiveAc& ac = gf_addOnGround(hexid, "LIV1", StState::Parked);
        ac.fs = FsState::Active;
        ac.objectid = hexid;
        ac.standId = stand;
        ac.liveAtStand = false;
        ac.parkedSince = tick - minutes * kTicksPerMinute;
        return ac;
    }
    static std::string plan()
    {
        std::string text;
        for (const PlanEntry& entry : parkPlan) {
            text += (text.empty() ? "" : " ") + parkApf.stands[entry.stand - 1].id + ":" + lf_detcs(entry);
        }
        return text;
    }
    static bool goes(const StaticAc& ac)
    {
        return ac.fs == FsState::RemovingFromSim;
    }
};

TEST_F(StaticParkingTest, aRenewalDecidesOnEachStaticAircraft)
{
    struct Case {
        const char* what;
        double now;
        int32_t since;  // half hours
        const char* heard;
        std::vector<std::tuple<size_t, const char*, const char*, const char*, int32_t, size_t, size_t>>
            histories;
        bool goes;
        const char* plan;
    };
    // clang-format off
    const Case cases[] = {
        {"its own flight still", kWednesdayTen, 0, "", {{0, "BAW1", "", "A319", 3, 20, 21}}, false, ""},
        {"its flight is in the air", kWednesdayTen, 0, "BAW2", {{0, "BAW1", "BAW2", "A319", 3, 20, 20}}, true, ""},
        {"a later one", kWednesdayTen, 2, "", {{0, "BAW9", "", "A319", 3, 20, 20}}, true, "A:BAW9*"},
        {"an earlier one", kWednesdayTen, 2, "", {{0, "BAW9", "", "A319", 3, 17, 17}}, false, ""},
        {"one as late", kWednesdayTen, 2, "", {{0, "BAW9", "", "A319", 3, 18, 18}}, false, ""},
        {"a day later", kWednesdayTen, 48, "", {{0, "BAW9", "", "A319", 3, 17, 17}}, true, "A:BAW9*"},
        {"its history, beside another", kWednesdayTen, 0, "",
         {{0, "BAW7", "", "A319", 3, 16, 16}, {1, "BAW8", "", "C172", 3, 20, 20}}, false, "B:BAW8*"},
        {"no history within Max fit", kWednesdayTen, 0, "",
         {{0, "BAW7", "", "A319", 3, 15, 15}, {1, "BAW8", "", "C172", 3, 20, 20}}, true, "B:BAW8*"},
        {"history of another type", kWednesdayTen, 0, "",
         {{0, "BAW7", "", "A320", 3, 19, 19}, {1, "BAW8", "", "C172", 3, 20, 20}}, true, "B:BAW8*"},
        {"the clock was put back by an hour", kWednesdayTen, -2, "", {{0, "BAW9", "", "A319", 3, 20, 20}}, false, ""},
        {"history of yesterday, a week's end before", kMondayZero, 0, "",
         {{0, "BAW7", "", "A319", 7, 44, 44}, {1, "BAW8", "", "C172", 1, 0, 0}}, false, "B:BAW8*"},
        {"history of one that is in the air", kWednesdayTen, 0, "BAW7",
         {{0, "BAW7", "", "A319", 3, 20, 20}}, true, ""},
        {"history of one whose next flight is in the air", kWednesdayTen, 0, "BAW8",
         {{0, "BAW7", "BAW8", "A319", 3, 20, 20}}, false, ""},
        {"yesterday's last half hour", kMondayZero + 3 * 1800, 0, "",
         {{0, "BAW7", "", "A319", 7, 47, 47}, {1, "BAW8", "", "C172", 1, 3, 3}}, false, "B:BAW8*"},
        {"yesterday's too far back", kMondayZero, 0, "",
         {{0, "BAW7", "", "A319", 7, 43, 43}, {1, "BAW8", "", "C172", 1, 0, 0}}, true, "B:BAW8*"},
        {"it leaves next, under its next call sign", kWednesdayTen, 0, "",
         {{0, "BAW1", "BAW2", "A319", 3, 20, 20}}, true, "A:BAW2*"},
    };
    // clang-format on
    for (const Case& c : cases) {
        begin(c.now);
        const StaticAc& ac = parked(c.since);
        for (const auto& [stand, callsign, coupled, type, day, first, last] : c.histories) {
            history(stand, callsign, coupled, type, day, first, last);
        }
        gf_requestRenewal();
        trafficReader.callsignsHeard.insert(c.heard);
        gf_renewIfRequested();
        EXPECT_EQ(c.goes, goes(ac)) << c.what;
        EXPECT_EQ(c.plan, plan()) << c.what;
        gf_renewIfRequested();
        EXPECT_EQ(c.plan, plan()) << c.what << ": asked for once";
    }
}

TEST_F(StaticParkingTest, aRenewalLetsLiveAircraftStayForAWhile)
{
    struct Case {
        const char* what;
        int32_t minutes;
        AcCategory category;
        bool reports, onlyAtFirst, goes;
    };
    const Case cases[] = {
        {"an hour and a half", 90, AcCategory::Large, false, false, false},
        {"longer", 91, AcCategory::Large, false, false, true},
        {"longer, but it reports", 91, AcCategory::Large, true, false, false},
        {"a wide one", 180, AcCategory::Heavy, false, false, false},
        {"a wide one, longer", 181, AcCategory::Heavy, false, false, true},
        {"for ever without renewals", 999, AcCategory::Large, false, true, false},
    };
    for (const Case& c : cases) {
        begin(kWednesdayTen);
        LiveAc& ac = parkedLive(20000, 3, c.minutes);
        ac.category = c.category;
        ac.liveAtStand = c.reports;
        INITIAL_LOAD_ONLY.value = c.onlyAtFirst;
        parkingAdjustments();
        EXPECT_EQ(c.goes, ac.fs == FsState::RemovingFromSim) << c.what;
    }
    begin(kWednesdayTen);
    parking_percentage.value = 30;  // one of three
    parkedLive(20000, 1, 50);
    parkedLive(20001, 3, 40);
    history(2, "BAW9", "", "A319", 3, 20, 20);
    parkingAdjustments();
    EXPECT_EQ(FsState::RemovingFromSim, liveAcs.front().fs) << "more than wanted: the longest parked goes";
    EXPECT_EQ(FsState::Active, liveAcs.back().fs);
    EXPECT_EQ("", plan());
}

TEST_F(StaticParkingTest, aWishIsServedAfterAWholePeriodOfListening)
{
    begin(kWednesdayTen);
    history(0, "BAW9", "", "A319", 3, 20, 20);
    history(2, "BAW8", "", "A319", 3, 20, 20);
    trafficReader.callsignsHeard.insert("BAW8");  // long ago
    renewalWanted = true;
    gf_renewIfRequested();
    EXPECT_TRUE(trafficReader.collectCallsigns);
    EXPECT_EQ("", plan()) << "not yet";
    trafficReader.callsignsHeard.insert("BAW9");
    gf_renewIfRequested();
    EXPECT_FALSE(trafficReader.collectCallsigns);
    EXPECT_EQ("C:BAW8*", plan());
    gf_renewIfRequested();
    EXPECT_FALSE(trafficReader.collectCallsigns) << "asked for once";
    INITIAL_LOAD_ONLY.value = true;
    gf_requestRenewal();
    EXPECT_FALSE(trafficReader.collectCallsigns) << "no renewals are wanted";
}

TEST_F(StaticParkingTest, theLongestStandingGoWhenFewerAreWanted)
{
    for (const bool reversed : {false, true}) {
        begin(kWednesdayTen);
        parking_percentage.value = 30;  // one of three
        StaticAc old = parked(3);
        StaticAc fresh = old;
        fresh.hexid = 2;
        fresh.standId = 3;
        fresh.callsign = fresh.coupledCs1 = "BAW3*";
        fresh.stamp = gf_halfHoursBefore(hourNow, 1);
        staticAcs = reversed ? std::vector{fresh, old} : std::vector{old, fresh};
        history(0, "BAW1", "", "A319", 3, 17, 21);
        history(2, "BAW3", "", "A319", 3, 19, 21);
        parkingAdjustments();
        for (const StaticAc& ac : staticAcs) {
            EXPECT_EQ(ac.hexid == 1, goes(ac)) << reversed;
        }
        EXPECT_EQ("", plan());
        parkingAdjustments();
        EXPECT_EQ(1, std::ranges::count_if(staticAcs, goes)) << "the other stays";
    }
    begin(kWednesdayTen);
    parking_percentage.value = 30;
    parked(0);
    history(0, "BAW1", "BAW2", "A319", 3, 20, 20);
    parkingAdjustments();
    EXPECT_EQ("A:BAW2*", plan()) << "who comes back under another call sign counts once";
}

TEST_F(StaticParkingTest, anEntryIsPlacedWhereNobodyIsInTheWay)
{
    struct Case {
        const char* what;
        size_t placed, left;
        void (*prepare)();
    };
    const Case cases[] = {
        {"nobody", 1, 0, [] {}},
        {"a live one at the stand", 0, 0, [] { parkedLive(20000, 1, 0); }},
        {"one that is about to appear", 0, 0, [] { parkedLive(20000, 1, 0).fs = FsState::Adding2Sim; }},
        {"one that parks beside", 0, 0, [] { parkedLive(20000, 2, 0).st = StState::Parking; }},
        {"one that taxies to it", 1, 0, [] { parkedLive(20000, 1, 0).st = StState::Taxi; }},
        {"one at another stand", 1, 0, [] { parkedLive(20000, 3, 0); }},
        {"a static one", 0, 0, [] { parked(0); }},
        {"a static one that is to come", 0, 0, [] { parked(0, FsState::Adding2Sim); }},
        {"a static one that goes", 0, 1, [] { parked(0, FsState::RemovingFromSim); }},
    };
    for (const Case& c : cases) {
        begin(kWednesdayTen);
        parkPlan = {{1, 3, "BAW", "A319", "BAW5", "", "G-DBCJ", true, true}};
        c.prepare();
        const size_t before = staticAcs.size();
        planStep();
        EXPECT_EQ(c.placed, staticAcs.size() - before) << c.what;
        EXPECT_EQ(c.left, parkPlan.size()) << c.what;
        EXPECT_EQ(c.placed, staticCreateQueue.size()) << c.what;
    }
    begin(kWednesdayTen);
    parkPlan = {{1, 3, "BAW", "A319", "BAW5", "", "G-DBCJ", true, true}};
    planStep();
    ASSERT_EQ(1u, staticAcs.size());
    EXPECT_EQ("BAW5*", staticAcs.front().callsign);
    EXPECT_EQ(17u, staticAcs.front().stamp.slot) << "since when its history has it there";
    EXPECT_EQ(1u, staticAcs.front().standId);
    planStep();
    EXPECT_EQ(1u, staticAcs.size()) << "the plan is empty";
    const PlanEntry entry{3, 0, "BAW", "A319", "BAW6", "", "", true, true};
    for (int i = 0; i < 10'000; ++i) {
        staticAcs.resize(1);
        staticCreateQueue.clear();
        parkPlan = {entry};
        planStep();
        ASSERT_EQ(2u, staticAcs.size());
        ASSERT_TRUE(staticAcs[1].hexid != 0 && staticAcs[1].hexid != staticAcs[0].hexid) << i;
    }
}

TEST_F(StaticParkingTest, whereTheSimulatorTakesNoMoreOnlyThoseThatStandStay)
{
    parked(0, FsState::Adding2Sim);
    parked(0).hexid = 2;
    parkPlan = {{3, 0, "BAW", "A319", "BAW6", "", "", true, true}};
    gf_pausePlanning();
    EXPECT_TRUE(staticAcs[0].removeWhenAdded);
    EXPECT_FALSE(goes(staticAcs[1]) || staticAcs[1].removeWhenAdded);
    EXPECT_TRUE(parkPlan.empty());
}

TEST_F(StaticParkingTest, aRefusedOptionMakesWayForTheNextUnlessOnlyItsNextFlightIsHeard)
{
    const std::pair<const char*, const char*> cases[] = {{"", "A:BAW1*"}, {"BAW1", "A:BAW2*"}, {"BAW9", ""}};
    for (const auto& [heard, expected] : cases) {
        begin(kWednesdayTen);
        RANDOM.value = false;
        history(0, "BAW1", "BAW9", "A319", 3, 18, 21);
        history(0, "BAW2", "", "A319", 3, 18, 21);
        gf_preparePlanning();
        EXPECT_TRUE(planningRuns);
        trafficReader.callsignsHeard.insert(heard);
        planningRuns = false;
        initialPlanning();
        EXPECT_EQ(!parkPlan.empty(), planningRuns) << "until all are placed";
        EXPECT_EQ(expected, plan()) << heard;
    }
}

}  // namespace vlt
