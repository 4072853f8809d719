// How much faster than time a replay runs.
#include "core/base/text.h"
#include "standin/replay.h"
#include "traffic/geodesy.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace vlt {

// An aircraft on a circle around the user, told every four seconds.
static std::string lf_line(int number, int second)
{
    constexpr double kKnots = 420;
    const double radius = 5 + number % 50 / 2.0;  // nm
    const double angle = number * 2.4 + second * kKnots / 3600 / radius;
    const double lat = 47.6 + radius * std::cos(angle) / 60;
    const double lon = 11.5 + radius * std::sin(angle) / 60 / std::cos(47.6 * kRadPerDeg);
    const double track = gf_normalAngle(angle + std::acos(0.0)) * kDegPerRad;
    return format(
        "RTTFC,{},{:.6f},{:.6f},{},0,0,{:.1f},{},BAW{},A320,,LHR,VIE,{}.0,X2,null,adsb_icao,-1,-1,420,-1,"
        "-1,-1,-1,{:.1f},-1,none,A3,-1,-1,-1,-1,null,0.0,-1,-1,-1,-1,-1,1,0,0",
        4194304 + number, lat, lon, 5000 + number * 100, track, kKnots, number, 1717665600 + second, track);
}

static std::filesystem::path lf_writeRecording(int aircraft, int seconds)
{
    const auto path = std::filesystem::temp_directory_path() / "velatra-bench-recording.txt";
    std::ofstream file(path);
    for (int second = 0; second < seconds; ++second) {
        for (int number = second % 4; number < aircraft; number += 4) {
            file << lf_line(number, second) << '\n';
        }
    }
    return path;
}

// Four minutes with a hundred aircraft, most of which are driven after the first one.
static void lf_replay(benchmark::State& state)
{
    constexpr int kAircraft = 100;
    constexpr int kSeconds = 240;
    const FeedSource feed(lf_writeRecording(kAircraft, kSeconds));
    ReplayOptions options;
    options.world = VELATRA_SOURCE_DIR "/data/world";
    options.user = {47.6, 11.5, 0, 0, 0, true};
    options.seconds = kSeconds;
    for (auto _ : state) {
        const ReplayResult result = gf_replay(feed, options);
        state.counters["times_real_time"] = result.simulatedSeconds / result.wallSeconds;
        state.counters["mean_aircraft"] = result.aircraftSeconds / result.simulatedSeconds;
    }
}
BENCHMARK(lf_replay)->Name("replay/100_aircraft")->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace vlt
