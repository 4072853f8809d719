// Static parking's budgets: a planning over every offset, one aircraft placed, the renewal.
#include "airports/parking/planner.h"
#include "airports/parking/renewal.h"
#include "airports/parking/static_parking.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "standin/world.h"
#include "standin/world_tables.h"
#include "traffic/create_request.h"
#include "traffic/geodesy.h"
#include "traffic/performance.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace vlt {

static constexpr int kStands = 300;
static constexpr int kOptions = 100;
static constexpr size_t kStatics = 200;

static StandOption lf_flight(int stand, int number)
{
    StandOption option;
    option.reg = format("G-{:03}{:03}", stand, number);
    option.airline = "BAW";
    option.type = number % 4 == 0 ? "A320" : "A319";
    option.callsign = format("BAW{}", stand * kOptions + number);
    option.coupledCs = format("BAW{}X", stand * kOptions + number);
    option.day = number % 4 + 4;  // Thursday to Sunday
    option.sequence = number + 1;
    for (int slot = number % 40; slot < number % 40 + 6; ++slot) {
        option.hours.set(static_cast<size_t>(slot));
    }
    return option;
}

// Rows of stands 100 m apart. Their flights are of days that aren't asked for: every offset is searched, at
// every stand.
static void lf_layOutAirport()
{
    constexpr double kSpacing = 100 / kMetresPerNm / 60;
    static const bool loaded = (gf_loadWorld(gf_sampleWorld()), true);
    benchmark::DoNotOptimize(loaded);
    parkApf = Apf{};
    parkApf.code = "BENC";
    for (int i = 0; i < kStands; ++i) {
        ParkPos stand;
        stand.id = format("S{}", i);
        stand.index = static_cast<uint32_t>(i + 1);
        stand.lat = 51.4 + i / 20 * kSpacing;
        stand.lon = -0.4 + i % 20 * kSpacing * 2;
        stand.radius = 25 / kMetresPerNm;
        for (int number = 0; number < kOptions; ++number) {
            stand.options.push_back(lf_flight(i, number));
        }
        parkApf.stands.push_back(std::move(stand));
    }
    parkState = ParkState::Loaded;
    parking_percentage.value = 100;
    LOG.value = false;
}

static void lf_clearAirport()
{
    staticAcs.clear();
    parkPlan.clear();
    parkApf = Apf{};
    parkState = ParkState::None;
}

static void lf_plan(benchmark::State& state)
{
    lf_layOutAirport();
    for (auto _ : state) {
        state.PauseTiming();
        parkPlan.clear();
        gf_renumberOptions();
        Planning planning;
        planning.now = {3, 47};  // Wednesday, its last half hour
        state.ResumeTiming();
        planPass(planning, kStands, 0, true);
        if (planning.maxFitReal != 47) {
            state.SkipWithError("the plan isn't the one that was meant");
        }
    }
    lf_clearAirport();
}
BENCHMARK(lf_plan)->Name("parking/plan")->Unit(benchmark::kMicrosecond);

static StaticAc lf_parked(const ParkPos& stand, uint32_t hexid)
{
    const StandOption& option = stand.options[hexid % kOptions];
    StaticAc ac;
    ac.hexid = hexid;
    ac.objectid = hexid;
    ac.fs = FsState::Active;
    ac.airline = option.airline;
    gf_setModel(ac, option.type);
    ac.callsign = option.callsign + "*";
    ac.coupledCs1 = option.callsign;
    ac.coupledCs2 = option.coupledCs;
    ac.regcode = option.reg;
    ac.standId = stand.index;
    ac.standLat = stand.lat;
    ac.standLon = stand.lon;
    ac.stamp = {3, 40};
    return ac;
}

static void lf_placeOne(benchmark::State& state)
{
    lf_layOutAirport();
    for (uint32_t i = 0; i < kStatics; ++i) {
        staticAcs.push_back(lf_parked(parkApf.stands[i], i + 1));
    }
    const ParkPos& stand = parkApf.stands[kStatics];
    const StandOption& option = stand.options.front();
    for (auto _ : state) {
        state.PauseTiming();
        parkPlan = {{stand.index, 0, option.airline, option.type, option.callsign, option.coupledCs,
                     option.reg, true, true}};
        state.ResumeTiming();
        planStep();
        state.PauseTiming();
        if (staticAcs.size() != kStatics + 1) {
            state.SkipWithError("the aircraft isn't placed");
            break;
        }
        staticAcs.pop_back();
        staticCreateQueue.clear();
        state.ResumeTiming();
    }
    lf_clearAirport();
}
BENCHMARK(lf_placeOne)->Name("parking/plan_step")->Unit(benchmark::kMicrosecond);

static void lf_renew(benchmark::State& state)
{
    lf_layOutAirport();
    WEEK.value = true;  // whatever the day is on which this runs
    for (auto _ : state) {
        state.PauseTiming();
        staticAcs.clear();
        for (uint32_t i = 0; i < kStatics; ++i) {
            staticAcs.push_back(lf_parked(parkApf.stands[i], i + 1));
        }
        state.ResumeTiming();
        parkingAdjustments();
        if (parkPlan.empty()) {
            state.SkipWithError("nothing is renewed");
        }
    }
    WEEK.value = false;
    lf_clearAirport();
}
BENCHMARK(lf_renew)->Name("parking/adjustments")->Unit(benchmark::kMicrosecond);

}  // namespace vlt
