#include "tools/replay.h"

#include "core/base/text.h"
#include "standin/airport_files.h"
#include "standin/day_airport.h"
#include "standin/feed_player.h"
#include "standin/replay.h"
#include "standin/replay_files.h"
#include "traffic/geodesy.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace vlt {

struct ReplayToolOptions {
    ReplayOptions replay;
    std::filesystem::path recording;  // empty: the built-in day
    std::filesystem::path out = "replay";
    std::vector<double> user;  // latitude, longitude
    std::optional<double> userAltitude;
    double userHeadingDeg = 0;
    std::optional<double> elevation;
    double slopePercent = 0;
    int32_t every = 10;
    bool noEvents = false;
};

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

static void lf_resolve(ReplayToolOptions& options)
{
    ReplayOptions& replay = options.replay;
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
}

static int lf_replay(ReplayToolOptions options)
{
    lf_resolve(options);
    DayOptions day;
    day.seed = options.replay.seed;
    day.world = options.replay.world;
    const FeedSource feed = options.recording.empty() ? FeedSource(day) : FeedSource(options.recording);
    ReplayRecorder recorder(options.out, options.every, !options.noEvents);
    const ReplayResult result = gf_replay(feed, options.replay, &recorder);
    gf_writeReplay(result, options.out);
    const nlohmann::ordered_json told = {
        {"out", options.out.string()},
        {"seconds", result.simulatedSeconds},
        {"wallSeconds", result.wallSeconds},
        {"timesRealTime", std::round(result.simulatedSeconds / result.wallSeconds)},
        {"aircraftHours", result.aircraftSeconds / 3600},
        {"invariantBreaks", result.findings.invariantBreakCount}};
    std::cout << told.dump() << std::endl;
    return result.findings.invariantBreakCount == 0 ? 0 : 2;
}

void gf_addReplayCommand(CLI::App& app)
{
    const auto options = std::make_shared<ReplayToolOptions>();
    ReplayOptions& replay = options->replay;
    CLI::App* command = app.add_subcommand(
        "replay", "a recording through the whole engine; exit code 2 if something was that must never be");
    command->add_option("--recording", options->recording, "one datagram per line; else the built-in day")
        ->check(CLI::ExistingFile);
    command->add_option("--out", options->out, "folder of the results")->capture_default_str();
    command->add_option("--world", replay.world, "folder of the plain tables")->capture_default_str();
    command
        ->add_option("--airport-file", replay.airportFile, "the park airport's; else none, or the day's own")
        ->check(CLI::ExistingFile);
    command->add_option("--airport", replay.airportCode, "its code")->capture_default_str();
    command->add_option("--from", replay.from, "seconds of the feed to begin at")->capture_default_str();
    command->add_option("--seconds", replay.seconds, "of the replay")->capture_default_str();
    command->add_option("--user", options->user, "latitude and longitude")->expected(2);
    command->add_option("--user-altitude", options->userAltitude, "feet; else on the ground");
    command->add_option("--user-heading", options->userHeadingDeg, "degrees true")->capture_default_str();
    command->add_option("--user-speed", replay.user.speed, "knots")->capture_default_str();
    command->add_option("--range", replay.rangeNm, "nm")->capture_default_str();
    command->add_option("--ground", options->elevation,
                        "elevation of the ground at the user's latitude, feet");
    command->add_option("--slope", options->slopePercent, "percent by which the ground rises northwards");
    command->add_option("--qnh", replay.qnh, "hPa")->capture_default_str();
    command->add_flag("--pressure-altitudes", replay.pressureAltitudes,
                      "the altitudes as an altimeter set to 1013 hPa shows them");
    command->add_option("--seed", replay.seed)->capture_default_str();
    command->add_option("--every", options->every, "ticks between the rows of tracks.csv")
        ->capture_default_str();
    command->add_flag("--no-events", options->noEvents, "no events.csv");
    command->callback([options] {
        if (const int code = lf_replay(*options); code != 0) {
            throw CLI::RuntimeError(code);
        }
    });
}

}  // namespace vlt
