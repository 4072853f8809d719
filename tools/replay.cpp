#include "tools/replay.h"

#include "core/base/text.h"
#include "standin/airport_files.h"
#include "standin/day_airport.h"
#include "standin/feed_player.h"
#include "standin/long_run.h"
#include "standin/replay_files.h"
#include "standin/seed_table.h"
#include "traffic/geodesy.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace vlt {

// Where the user stands on the built-in day: off the taxiways.
static constexpr LatLon kDayUser{kDayAirport.lat + 0.02, kDayAirport.lon};

// The built-in day's own airport file, written beside the results.
static std::filesystem::path lf_writeDayAirport(const ReplayToolOptions& options)
{
    for (const ArchivedAirport& airport : gf_worldAirports(options.replay.world)) {
        if (airport.code == kDayAirportCode) {
            std::filesystem::path path = options.out / (airport.code + ".xml");
            std::filesystem::create_directories(options.out);
            std::ofstream(path, std::ios::binary) << gf_archivedText(airport);
            return path;
        }
    }
    throw std::runtime_error(format("{} has no airport {}", options.replay.world.string(), kDayAirportCode));
}

ReplayOptions gf_replayOptions(const ReplayToolOptions& options)
{
    ReplayOptions replay = options.replay;
    const bool day = options.recording.empty();
    if (day && replay.airportFile.empty()) {
        replay.airportFile = lf_writeDayAirport(options);
        replay.airportCode = kDayAirportCode;
    }
    if (options.user.empty() && !day) {
        throw std::runtime_error("a recording needs --user, by which its range is judged");
    }
    replay.user.lat = options.user.empty() ? kDayUser.lat : options.user[0];
    replay.user.lon = options.user.empty() ? kDayUser.lon : options.user[1];
    replay.user.heading = options.userHeadingDeg * kRadPerDeg;
    replay.user.onGround = !options.userAltitude;
    replay.user.altitude = options.userAltitude.value_or(0);
    constexpr double kFeetPerPercent = kFeetPerNm / 100;
    replay.terrain.originLat = replay.user.lat;
    replay.terrain.slopeFtPerNm = options.slopePercent * kFeetPerPercent;
    replay.terrain.elevation = options.elevation.value_or(day ? kDayElevation : 0);
    return replay;
}

static FeedSource lf_feed(const ReplayToolOptions& options)
{
    if (!options.recording.empty()) {
        return FeedSource(options.recording);
    }
    DayOptions day;
    day.seed = options.replay.seed;
    day.world = options.replay.world;
    return FeedSource(day);
}

static ReplayResult lf_replayInto(const ReplayToolOptions& options)
{
    ReplayOptions replay = gf_replayOptions(options);
    replay.planFolder = options.out / "orig_dest";
    const FeedSource feed = lf_feed(options);
    ReplayRecorder recorder(options.out, options.every, !options.noEvents);
    ReplayResult result = gf_replay(feed, replay, &recorder);
    gf_writeReplay(result, options.out);
    return result;
}

static int lf_replaySeeds(const ReplayToolOptions& options)
{
    SeedTable table;
    for (uint64_t seed = 1; seed <= options.seeds; ++seed) {
        ReplayToolOptions one = options;
        one.replay.seed = seed;
        one.out = options.out / format("{}", seed);
        table.add(seed, lf_replayInto(one));
    }
    std::cout << table.text() << std::flush;
    return table.invariantBreaks() == 0 ? 0 : 2;
}

static void lf_printResult(const ReplayToolOptions& options, const ReplayResult& result)
{
    const nlohmann::ordered_json told = {
        {"out", options.out.string()},
        {"seconds", result.simulatedSeconds},
        {"wallSeconds", result.wallSeconds},
        {"timesRealTime", std::round(result.simulatedSeconds / result.wallSeconds)},
        {"aircraftHours", result.aircraftSeconds / 3600},
        {"invariantBreaks", result.findings.invariantBreakCount}};
    std::cout << told.dump() << std::endl;
}

// Many hours in one run; of what was, only what is wrong is kept.
static int lf_replayAgain(const ReplayToolOptions& options)
{
    ReplayOptions replay = gf_replayOptions(options);
    replay.planFolder = options.out / "orig_dest";
    replay.forgets = true;
    FeedSource feed = lf_feed(options);
    constexpr double kSilent = 300;  // seconds, after which all but the parked have gone
    feed.repeat(replay.from, replay.seconds, std::min(kSilent, replay.seconds / 2));
    replay.seconds *= options.repeat;
    LongRunRecorder recorder(options.out);
    const ProcessUse before = gf_processUse();
    const ReplayResult result = gf_replay(feed, replay, &recorder);
    std::vector<std::string> faults = gf_longRunFaults(recorder.minutes(), before, gf_processUse());
    for (const InvariantBreak& b : result.findings.invariantBreaks) {
        faults.push_back(format("tick {}: {}", b.tick, b.what));
    }
    std::cout << gf_hoursText(recorder.minutes());
    for (const std::string& fault : faults) {
        std::cout << fault << "\n";
    }
    lf_printResult(options, result);
    return faults.empty() ? 0 : 2;
}

int gf_replayToFiles(const ReplayToolOptions& options)
{
    if (options.seeds > 0) {
        return lf_replaySeeds(options);
    }
    if (options.repeat > 0) {
        return lf_replayAgain(options);
    }
    const ReplayResult result = lf_replayInto(options);
    lf_printResult(options, result);
    return result.findings.invariantBreakCount == 0 ? 0 : 2;
}

}  // namespace vlt
