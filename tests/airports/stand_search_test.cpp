#include "airports/stand_search.h"

#include "airports/airport_place.h"
#include "airports/parking/park_airport.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "support/fresh_run.h"
#include "traffic/geodesy.h"

#include <set>

namespace vlt {

// Stands around 47 N 8 E, by metres east of there, and aircraft by their half span.
class StandSearchTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        gf_seedRandom(3);
    }
    void TearDown() override
    {
        SetUp();
    }

    static ParkPos& stand(const char* id, double metresEast, double radiusM)
    {
        ParkPos& added = gf_addStand(id, metresEast, 0, 90);
        added.radius = radiusM / kMetresPerNm;
        return added;
    }
    static LiveAc aircraft(double halfSpanM, AcCategory category = AcCategory::Large)
    {
        LiveAc ac;
        ac.callsign = "BAW1";
        ac.airline = "BAW";
        ac.model = "A319";
        ac.category = category;
        ac.radius = halfSpanM / kMetresPerNm;
        return ac;
    }
    static StandOption option(const char* callsign, int32_t day, const char* hours, bool real = true)
    {
        StandOption made;
        made.airline = "BAW";
        made.type = "B738";
        made.callsign = callsign;
        made.day = day;
        made.sequence = 1;
        made.real = real;
        hoursToSet(hours, made.hours);
        return made;
    }
    static LatLon at(double metresEast)
    {
        const PosSample sample = gf_groundSample(metresEast, 0, 0, 0);
        return {sample.lat, sample.lon};
    }
    // The id of the stand found, or "none".
    static std::string found(double metresEast, const LiveAc& ac, double searchM, bool allowFar)
    {
        const uint32_t index = standAtPosition(at(metresEast), ac, searchM / kMetresPerNm, allowFar);
        return index == kNoStand ? "none" : gf_stand(index)->id;
    }
};

TEST_F(StandSearchTest, theUsersStandIsTheNearestWithin55Metres)
{
    EXPECT_EQ("", nearestStandId(at(0)));
    stand("A1", 40, 20);
    stand("A2", -40, 20);
    EXPECT_EQ("A1", nearestStandId(at(0))) << "a tie is the earlier one's";
    EXPECT_EQ("A2", nearestStandId(at(-1)));
    EXPECT_EQ("A1", nearestStandId(at(94.9)));
    EXPECT_EQ("", nearestStandId(at(95.2)));
    EXPECT_EQ("", nearestStandId({0.0005, 0.02})) << "no position yet";
    EXPECT_EQ("A1", nearestStandId(at(41)));
    parkApf.stands[0].id = "B1";
    EXPECT_EQ("A1", nearestStandId(at(41))) << "the same place again is the same answer";
    gf_forgetNearestStand();
    EXPECT_EQ("B1", nearestStandId(at(41)));
}

TEST_F(StandSearchTest, aStandTooSmallIsTakenWhenTheAircraftIsRightOnIt)
{
    const struct {
        double metres, radius;
        const char* found;
        double radiusAfter;  // learned: a metre less than the half span
    } cases[] = {{19.9, 15, "A1", 19}, {20.1, 15, "none", 15}, {50, 18.3, "A1", 18.3}};
    for (const auto& c : cases) {
        SetUp();
        const ParkPos& small = stand("A1", 0, c.radius);
        EXPECT_EQ(c.found, found(c.metres, aircraft(20), 55, false)) << c.metres;
        EXPECT_NEAR(c.radiusAfter, small.radius * kMetresPerNm, 1e-6) << c.metres;
        const bool learned = c.radius != c.radiusAfter;
        EXPECT_EQ(learned, small.radiusChanged) << c.metres;
        EXPECT_EQ(learned ? 1 : 0, updateCount) << c.metres;
    }
}

TEST_F(StandSearchTest, historyReachesFartherButNotPastAFittingStand)
{
    ParkPos& far = stand("FAR", 80, 30);
    far.options = {option("BAW1", 1, "1")};
    const LiveAc ac = aircraft(17);
    EXPECT_EQ("none", found(0, ac, 55, false));
    EXPECT_EQ("FAR", found(0, ac, 55, true));
    EXPECT_EQ("none", found(-6, ac, 55, true)) << "86 m";
    far.options[0].real = false;
    EXPECT_EQ("none", found(0, ac, 55, true));
    far.options[0].real = true;
    far.options[0].sequence = 0;
    EXPECT_EQ("none", found(0, ac, 55, true)) << "switched off";
    far.options[0] = option("KLM9", 1, "1");
    EXPECT_EQ("none", found(0, ac, 55, true));
    far.options[0].type = "A319";
    EXPECT_EQ("FAR", found(0, ac, 55, true)) << "its airline's type";
    stand("NEAR", -54, 30);
    EXPECT_EQ("NEAR", found(0, ac, 55, true));
    parkApf.stands[1].occupiedByLive = true;
    EXPECT_EQ("FAR", found(0, ac, 55, true));
}

TEST_F(StandSearchTest, helicoptersAndHelipadsBelongTogether)
{
    stand("H", 0, 15).heli = true;
    EXPECT_EQ("none", found(0, aircraft(10), 55, false));
    EXPECT_EQ("H", found(0, aircraft(5, AcCategory::Rotorcraft), 55, false));
    parkApf.stands[0].heli = false;
    EXPECT_EQ("none", found(0, aircraft(5, AcCategory::Rotorcraft), 55, false));
}

// --- the plausible stand

TEST_F(StandSearchTest, everyKindOfAircraftLooksAtItsStands)
{
    stand("GATE", 0, 20);
    stand("RAMP", 100, 20).ramp = true;
    stand("CARGO", 200, 20).cargo = true;
    stand("HELI", 300, 20).heli = true;
    const struct {
        const char* what;
        AcCategory category;
        bool cargo;
        const char *airline, *free, *expected;  // `free` alone isn't taken at this time; empty: all are free
    } cases[] = {
        {"helicopter", AcCategory::Rotorcraft, false, "PVT", "", "HELI"},
        {"helicopter, pad taken", AcCategory::Rotorcraft, false, "PVT", "RAMP", "RAMP"},
        {"freighter", AcCategory::Heavy, true, "FDX", "", "CARGO"},
        {"freighter, cargo taken", AcCategory::Heavy, true, "FDX", "GATE", "GATE"},
        {"freighter, no helipad", AcCategory::Heavy, true, "FDX", "HELI", "none"},
        {"airliner", AcCategory::Large, false, "BAW", "GATE", "GATE"},
        {"airliner, gates taken", AcCategory::Large, false, "BAW", "RAMP", "RAMP"},
        {"airliner, no cargo stand", AcCategory::Large, false, "BAW", "CARGO", "none"},
        {"business jet", AcCategory::Buzjets, false, "NJE", "", "RAMP"},
        {"private airliner", AcCategory::Large, false, "PVT", "GATE", "none"},
    };
    for (const auto& c : cases) {
        for (ParkPos& any : parkApf.stands) {
            const bool taken = *c.free != '\0' && any.id != c.free;
            any.options.assign(taken ? 1 : 0, option("X", 3, "10,11", false));
        }
        LiveAc ac = aircraft(12, c.category);
        ac.cargo = c.cargo;
        ac.airline = c.airline;
        const uint32_t index = chooseStand({3, 10}, ac, true);
        EXPECT_EQ(c.expected, index == kNoStand ? "none" : gf_stand(index)->id) << c.what;
    }
}

TEST_F(StandSearchTest, airlinersGoToGatesFirstNineTimesInTen)
{
    stand("GATE", 0, 20);
    stand("RAMP", 100, 20).ramp = true;
    int gates = 0;
    for (int i = 0; i < 2000; ++i) {
        gates += chooseStand({3, 10}, aircraft(17), true) == 1;
    }
    EXPECT_NEAR(1800, gates, 60) << "4.5 standard deviations";
    parkApf.code = "KJFK";
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(1U, chooseStand({3, 10}, aircraft(17), true));
    }
}

TEST_F(StandSearchTest, theClosestFitIsChosenAndKnownFlightsComeFirst)
{
    parkApf.code = "KTST";
    parkAirport = ParkAirportPlace{47, 8, 0};
    stand("WIDE", 0, 60);
    stand("TIGHT", 100, 18);
    EXPECT_EQ(2U, chooseStand({3, 10}, aircraft(17.5), true));
    stand("KNOWN", 200, 19).options = {option("BAW1", 5, "30")};
    std::set<uint32_t> chosen;
    for (int i = 0; i < 50; ++i) {
        chosen.insert(chooseStand({3, 10}, aircraft(17.5), true));
    }
    EXPECT_EQ(std::set<uint32_t>{3}, chosen);
}

TEST_F(StandSearchTest, aSmallAirportMayLookHalfAnHourAhead)
{
    for (const int count : {10, 11}) {
        for (const bool takenNext : {false, true}) {
            closeAirport();
            for (int i = 0; i < count; ++i) {
                auto& options = stand(format("A{}", i).c_str(), i * 60.0, 20).options;
                options = {option("X", 7, "47")};
                options.resize(takenNext ? 2 : 1, option("X", 1, "0"));  // the week goes round
            }
            EXPECT_EQ(count == 10 && !takenNext, chooseStand({7, 47}, aircraft(17), true) != kNoStand)
                << count;
            EXPECT_EQ(kNoStand, chooseStand({7, 47}, aircraft(17), false));
        }
    }
}

// --- coupled call signs

TEST_F(StandSearchTest, historyCouplesTheNextFlightAroundThisTime)
{
    const struct {
        const char* what;
        uint32_t slot;
        const char* hours;
        AcCategory category;
        bool found;
        void (*change)(StandOption&) = [](StandOption&) {};
    } cases[] = {
        {"first slot, last in reach", 0, "10", AcCategory::Large, true},
        {"first slot, out of reach", 0, "11", AcCategory::Large, false},
        {"last slot, first in reach", 47, "37", AcCategory::Large, true},
        {"last slot, out of reach", 47, "36", AcCategory::Large, false},
        {"the day doesn't go round", 0, "47", AcCategory::Large, false},
        {"a heavy looks farther", 20, "6", AcCategory::Heavy, true},
        {"another not", 20, "6", AcCategory::Large, false},
        {"another day", 10, "10", AcCategory::Large, false, [](StandOption& o) { o.day = 4; }},
        {"switched off", 10, "10", AcCategory::Large, false, [](StandOption& o) { o.sequence = 0; }},
        {"another airline", 10, "10", AcCategory::Large, false, [](StandOption& o) { o.airline = "KLM"; }},
        {"not coupled", 10, "10", AcCategory::Large, false, [](StandOption& o) { o.coupledCs.clear(); }},
    };
    for (const auto& c : cases) {
        closeAirport();
        StandOption coupled = option("BAW1", 3, c.hours);
        coupled.coupledCs = "BAW2";
        c.change(coupled);
        stand("A1", 0, 20).options = {coupled};
        for (const char* callsign : {"BAW1", "BAW2", "BAW1_", "BAW7"}) {
            LiveAc ac = aircraft(17, c.category);
            ac.callsign = callsign;
            lf_searchForCoupledCsAroundThisTime({3, c.slot}, ac);
            const bool found = c.found && ac.callsign != "BAW7";
            EXPECT_EQ(found ? "BAW2" : "", ac.coupledCs2) << c.what << ", " << callsign;
            EXPECT_EQ(found ? "BAW1" : "", ac.coupledCs1) << c.what << ", " << callsign;
        }
    }
}

}  // namespace vlt
