// The engine's budgets: feed lines, ticks, the frame handler.
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/run.h"
#include "core/traffic_loop.h"
#include "link/traffic_reader.h"
#include "sim/client.h"
#include "sim/frame.h"
#include "sim/requests.h"
#include "standin/direct.h"
#include "standin/virtual_simulator.h"
#include "traffic/geodesy.h"
#include "traffic/performance.h"
#include "traffic/traffic.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace vlt {

static std::string lf_line(double lat, double timestamp)
{
    return format(
        "RTTFC,4198297,{:.6f},8.123456,35000.0,-64.0,0,104.1,447.5,BAW3AK,A319,G-DBCJ,TLS,LHR,{:.1f},X2,"
        "null,adsb_icao,-1,280.0,447.0,0.78,-1,-0.53,-1,104.1,1792.0,none,A3,-1,-1,-1,-1,null,0.0,-1,-1,"
        "-1,-1,-1,1,0,0",
        lat, timestamp);
}

static void lf_prepareReader(bool open)
{
    trafficReader.setCentre({47, 8});
    LATERAL_RANGE.value = 40;
    gf_applyLateralRange();
    realTrafficHere = true;
    feedQueue.clear();
    intakeOpen = open;
}

static void lf_lineOutOfRange(benchmark::State& state)
{
    lf_prepareReader(true);
    const std::string line = lf_line(52.3, 1717665811.8);
    for (auto _ : state) {
        trafficReader.take(line);
    }
}
BENCHMARK(lf_lineOutOfRange)->Name("feed/out_of_range");

static void lf_lineInRange(benchmark::State& state)
{
    constexpr size_t kFull = 1000;
    lf_prepareReader(true);
    const std::string line = lf_line(47.3, 1717665811.8);
    for (auto _ : state) {
        trafficReader.take(line);
        if (feedQueue.size() > kFull) {
            feedQueue.clear();
        }
    }
    feedQueue.clear();
}
BENCHMARK(lf_lineInRange)->Name("feed/in_range");

// Taxies round a bend.
static void lf_putOnCurve(LiveAc& ac)
{
    ac.st = StState::Taxi;
    ac.onGround = true;
    ac.followsCourse = true;
    ac.way.bends = true;
    ac.way.share = 0;
    ac.way.terms = {Metres{100, 100}, Metres{-100, 0}, Metres{}};
    ac.way.perTick = 1e-9;
}

static void lf_parkStatics(int count)
{
    for (int i = 0; i < count; ++i) {
        StaticAc& parked = staticAcs.emplace_back();
        parked.objectid = 5000 + static_cast<uint32_t>(i);
        parked.callsign = format("DLH{}*", i);
        parked.fs = FsState::Active;
        parked.standLat = 48;
    }
}

// `count` aircraft, every third of them on the ground in a bend, whose legs take so long that none ends
// within the measurement; and as many static ones.
static void lf_fillSky(int count)
{
    closeRequested = false;
    if (!gf_resetRun()) {
        std::abort();
    }
    gf_reserveTables();
    for (int i = 0; i < count; ++i) {
        LiveAc& ac = liveAcs.emplace_back();
        ac.hexid = 20000 + static_cast<uint32_t>(i);
        ac.objectid = 100 + static_cast<uint32_t>(i);
        ac.callsign = format("BAW{}", i);
        ac.model = "A319";
        gf_applyPerformance(ac);
        ac.fs = FsState::Active;
        ac.st = StState::Flying;
        PosSample sample;
        sample.lat = 47 + i * 0.001;
        sample.lon = 8;
        sample.altitude = 35000;
        sample.speed = 450;
        sample.airborne = true;
        sample.time = tick + 1000000000;
        ac.stream = {sample, sample};
        ac.lat = sample.lat;
        ac.lon = sample.lon;
        ac.way.from = {sample.lat, sample.lon};
        ac.way.terms[0] = {1, 1};
        ac.way.share = 0;
        ac.way.perTick = 1e-9;
        ac.followsCourse = true;
        if (i % 3 == 0) {
            lf_putOnCurve(ac);
        }
    }
    lf_parkStatics(count);
}

// The mean of a tick, and the worst of a thousand, with 200 records a second coming in.
static void lf_tick(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    lf_fillSky(static_cast<int>(state.range(0)));
    lf_prepareReader(true);
    std::vector<double> micros;
    double stamp = 1717665811.8;
    for (auto _ : state) {
        for (int i = 0; i < 2; ++i) {
            stamp += 0.001;
            trafficReader.take(lf_line(47.3, stamp));
        }
        const auto begin = Clock::now();
        trafficTick();
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        state.SetIterationTime(seconds);
        micros.push_back(seconds * 1e6);
        sendBuffer.clear();
    }
    std::ranges::sort(micros);
    state.counters["p999_us"] = micros[micros.size() * 999 / 1000];
    gf_clearTables();
}
BENCHMARK(lf_tick)->Name("tick/live")->Arg(100)->Arg(300)->Arg(1000)->UseManualTime()->Iterations(5000);

// What the engine does on a frame of the simulator: composes 300 position packets. The virtual
// simulator's own work is in the figure too.
static void lf_frame(benchmark::State& state)
{
    constexpr int kAircraft = 300;
    VirtualSimulator simulator{SimulatorOptions{}};
    gf_setDirectSimulator(&simulator);
    if (!gf_openSim()) {
        state.SkipWithError("no simulator");
    }
    userObjectId = 1;
    simRequestFailed = false;
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < kAircraft; ++i) {
            sendBuffer.push_back({static_cast<uint32_t>(100 + i), 47, 8, 0, 0, 0, 35000, 0, 450});
        }
        state.ResumeTiming();
        gf_onFrame();
    }
    gf_closeSim();
    gf_setDirectSimulator(nullptr);
}
BENCHMARK(lf_frame)->Name("frame/300_positions")->Iterations(2000);

}  // namespace vlt
