#include "airports/parking/planner.h"

#include "airports/loading.h"
#include "airports/parking/static_parking.h"
#include "core/base/parameters.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <tuple>

namespace vlt {

class PlannerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
    }
};

// A field at which everything collides: few aircraft for many stands, some flights in the air, some stands
// kept.
static void lf_makeField(std::mt19937& rng, bool huge)
{
    const auto draw = [&rng](uint32_t below) { return static_cast<uint32_t>(rng() % below); };
    parkApf.stands.clear();
    parkPlan.clear();
    const uint32_t stands = huge ? 5000 : draw(13);
    const double apart = draw(2) == 0 ? 30 : 60;  // metres; the nearer ones touch
    const uint32_t regs = draw(9) == 0 ? 1 : 9;
    for (uint32_t i = 0; i < stands; ++i) {
        gf_addStand(("S" + std::to_string(i)).c_str(), apart * i, 0, 90).reserved = false;
    }
    for (ParkPos& stand : parkApf.stands) {
        stand.options.clear();
        stand.reserved = draw(8) == 0;
        stand.heli = draw(8) == 0;
        for (uint32_t n = huge ? 1 : draw(5); n > 0; --n) {
            StandOption option;
            option.reg = draw(6) == 0 ? "" : "R" + std::to_string(draw(regs)) + std::string(200, 'X');
            option.callsign = "C" + std::to_string(draw(12));
            option.coupledCs = draw(2) == 0 ? "" : "C" + std::to_string(draw(12));
            option.airline = "DLH";
            option.type = "A320";
            option.day = 1 + static_cast<int32_t>(draw(7));
            option.real = draw(4) != 0;
            for (uint32_t k = 1 + draw(6); k > 0; --k) {
                option.hours.set(draw(48));
            }
            stand.options.push_back(option);
        }
    }
    gf_numberStands(parkApf.stands);
}

// Why an option that the planner left out of a field that stays too empty couldn't come in.
static bool lf_isBlocked(const StandOption& option)
{
    const auto heard = [](const std::string& cs) { return cs == "C1" || cs == "C2"; };
    return heard(option.callsign) || heard(option.coupledCs) ||
           std::ranges::any_of(parkPlan, [&option](const PlanEntry& e) {
               return e.callsign == option.callsign || e.callsign == option.coupledCs ||
                      (!option.reg.empty() && e.reg == option.reg);
           });
}

// The half hours back at which the planner would find the option; 48 if never.
static int32_t lf_offset(const StandOption& option, HourStamp now)
{
    int32_t offset = 0;
    for (HourStamp when = now; offset < 48; ++offset, when = gf_halfHoursBefore(now, offset)) {
        if (option.day == static_cast<int32_t>(when.day) && option.hours.test(when.slot)) {
            break;
        }
    }
    return offset;
}

// Nobody is left out who had a free stand to himself.
static void lf_expectNobodyMissing(HourStamp now)
{
    for (const ParkPos& stand : parkApf.stands) {
        if (stand.reserved || stand.planned || stand.neighbourPlanned || stand.options.size() != 1 ||
            (stand.heli && !HELICOPTERS.value)) {
            continue;
        }
        const StandOption& option = stand.options.front();
        if (lf_offset(option, now) <= MAX_FIT.value && (option.real || PARK_SOFT.value)) {
            ASSERT_TRUE(lf_isBlocked(option)) << stand.id << ' ' << option.callsign;
        }
    }
}

// Some option of the stand, as it was before the planning, is what the entry says.
static bool lf_historyTells(const ParkPos& stand, const PlanEntry& entry, HourStamp now)
{
    const int32_t place =
        (static_cast<int32_t>(now.day) - 1) * 48 + static_cast<int32_t>(now.slot) - entry.offset;
    const int32_t there = (place + 7 * 48) % (7 * 48);
    return std::ranges::any_of(stand.options, [&](const StandOption& o) {
        return o.real == entry.real && o.reg == entry.reg && o.callsign == entry.callsign &&
               o.coupledCs == entry.coupledCs && o.day == there / 48 + 1 &&
               o.hours.test(static_cast<size_t>(there % 48));
    });
}

TEST_F(PlannerTest, randomHistoriesAreKeptTo)
{
    std::mt19937 rng(14);
    size_t planned = 0;
    int32_t tooFew = 0;
    for (int round = 0; round < 4000; ++round) {
        SCOPED_TRACE(round);
        lf_makeField(rng, round == 0);
        MAX_FIT.value = static_cast<int32_t>(rng() % 3 == 0 ? 0 : rng() % 48);
        HELICOPTERS.value = rng() % 2 == 0;
        PARK_SOFT.value = rng() % 2 == 0;
        PARK_FAKE.value = false;
        WEEK.value = false;
        parking_percentage.value = static_cast<int32_t>(rng() % 101);
        Planning planning;
        planning.now = {1 + static_cast<uint32_t>(rng() % 7), static_cast<uint32_t>(rng() % 48)};
        planning.heard = {"C1", "C2_"};
        gf_renumberOptions();
        const int32_t wanted = wantedCount();
        const int32_t have = static_cast<int32_t>(rng() % 3);
        gf_planPasses(planning, wanted, have);
        ASSERT_LE(std::ssize(parkPlan), std::max(wanted - have, 0));
        planned += parkPlan.size();
        if (std::ssize(parkPlan) + have < wanted) {
            ++tooFew;
            lf_expectNobodyMissing(planning.now);
        }
        std::set<std::string> regs;
        for (const PlanEntry& entry : parkPlan) {
            const ParkPos& stand = parkApf.stands[entry.stand - 1];
            ASSERT_TRUE(lf_historyTells(stand, entry, planning.now)) << stand.id << ' ' << entry.offset;
            ASSERT_FALSE(stand.reserved || (stand.heli && !HELICOPTERS.value));
            ASSERT_LE(entry.offset, MAX_FIT.value);
            ASSERT_TRUE(entry.real || PARK_SOFT.value);
            ASSERT_TRUE(entry.reg.empty() || regs.insert(entry.reg).second) << entry.reg;
            for (const char* heard : {"C1", "C2"}) {
                ASSERT_NE(heard, entry.callsign);
                ASSERT_NE(heard, entry.coupledCs);
            }
            for (const uint32_t beside : stand.neighbours) {
                ASSERT_EQ(parkPlan.end(), std::ranges::find(parkPlan, beside, &PlanEntry::stand));
            }
        }
    }
    EXPECT_GT(planned, 1000u);
    EXPECT_GT(tooFew, 1000);
}

TEST_F(PlannerTest, theWantedShareOfTheStands)
{
    // stands, percent, own percent, own most: wanted
    const int32_t cases[][5] = {{1, 0, -1, -1, 1},  {3, 30, -1, -1, 1},  {3, 50, -1, -1, 2},
                                {4, 30, -1, -1, 1}, {10, 25, -1, -1, 3}, {10, 25, 60, -1, 6},
                                {10, 80, -1, 5, 5}, {4, 0, -1, -1, 0},   {0, 50, -1, -1, 0}};
    for (const auto& c : cases) {
        parkApf.stands.assign(static_cast<size_t>(c[0]), ParkPos{});
        parking_percentage.value = c[1];
        CUSTOM_PARKING_PERCENTAGE.value = c[2];
        CUSTOM_MAX_PARK.value = c[3];
        EXPECT_EQ(c[4], wantedCount()) << c[0] << " stands, " << c[1] << " %";
        EXPECT_EQ(c[4], maxPark) << "the limit for live aircraft too";
    }
    CUSTOM_PARKING_PERCENTAGE.value = CUSTOM_PARKING_PERCENTAGE.def;
    CUSTOM_MAX_PARK.value = CUSTOM_MAX_PARK.def;
}

TEST_F(PlannerTest, theFlightThatLeavesNextNamesTheAircraft)
{
    PlanEntry entry;
    const std::tuple<const char*, const char*, bool, const char*> cases[] = {{"DLH1", "DLH2", true, "DLH1*"},
                                                                             {"DLH1", "DLH2", false, "DLH2*"},
                                                                             {"DLH1_", "", false, "DLH1*"},
                                                                             {"", "DLH2*", true, "DLH2*"},
                                                                             {"", "", true, ""}};
    for (const auto& [callsign, coupled, stays, name] : cases) {
        entry.callsign = callsign;
        entry.coupledCs = coupled;
        entry.stays = stays;
        EXPECT_EQ(name, lf_detcs(entry)) << callsign << ' ' << coupled;
    }
}

}  // namespace vlt
