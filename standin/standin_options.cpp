#include "standin/standin_options.h"

#include "standin/day_airport.h"
#include "standin/installed_titles.h"

#include <CLI/CLI.hpp>
#include <map>

namespace vlt {

// Where the user stands unless told otherwise: on the western apron of the invented airport.
constexpr FieldPoint kUserPlace{-900, -60};

// Values that need a look at others before they are the options.
struct RawOptions {
    double userHeadingDeg = kDayRunwayHeadingDeg;
    std::optional<double> userAltitude;
    bool onGround = false;
    std::optional<double> elevation;
    std::optional<uint16_t> httpPort;
    std::filesystem::path serve;
    std::string fault = "none";
    std::string faultPath;
    bool noPipe = false;
    std::vector<std::string> faults;
};

static void lf_addFeed(CLI::App& app, StandinOptions& options)
{
    const std::string group = "Feed";
    app.add_option("--recording", options.recording, "play this recording; else the built-in day")
        ->check(CLI::ExistingFile)
        ->group(group);
    app.add_flag("--no-feed", options.noFeed, "play nothing")->group(group);
    app.add_option("--seed", options.seed, "of the built-in day")->group(group);
    app.add_option("--from", options.feed.from, "seconds of the feed to begin at")->group(group);
    app.add_option("--qnh", options.feed.qnh, "hectopascal")->capture_default_str()->group(group);
    app.add_option("--realtraffic-port", options.realTrafficPort,
                   "be RealTraffic for the position server on this port")
        ->group(group);
    app.add_option("--write-recording", options.writeRecording,
                   "write the first --seconds of the feed to this file, and end")
        ->group(group);
}

static void lf_addUser(CLI::App& app, StandinOptions& options, RawOptions& raw)
{
    const std::string group = "User";
    UserState& user = options.simulator.user;
    app.add_option("--user-lat", user.lat)->check(CLI::Range(-90.0, 90.0))->group(group);
    app.add_option("--user-lon", user.lon)->check(CLI::Range(-180.0, 180.0))->group(group);
    app.add_option("--user-alt", raw.userAltitude, "feet; on the ground if not given")->group(group);
    app.add_option("--user-heading", raw.userHeadingDeg, "degrees true")->group(group);
    app.add_option("--user-speed", user.speed, "knots over the ground")->group(group);
    app.add_flag("--user-on-ground", raw.onGround, "whatever --user-alt says")->group(group);
    app.add_option("--user-model", options.simulator.userKind.model, "its ATC MODEL")->group(group);
    app.add_option("--user-title", options.simulator.userKind.title)->group(group);
}

static void lf_addSimulator(CLI::App& app, StandinOptions& options, RawOptions& raw)
{
    const std::string group = "Simulator";
    app.add_option("--ground-elevation", raw.elevation, "feet")->group(group);
    app.add_option("--ipv4-port", options.server.ipv4Port, "0 picks one")->group(group);
    app.add_option("--ipv6-port", options.server.ipv6Port, "0 picks one")->group(group);
    app.add_flag("--no-pipe", raw.noPipe)->group(group);
    app.add_option("--no-simulator-for", options.noSimulatorFor, "seconds before it is there")->group(group);
}

static void lf_addFiles(CLI::App& app, RawOptions& raw)
{
    const std::string group = "File server";
    app.add_option("--http-port", raw.httpPort, "0 picks one")->group(group);
    app.add_option("--serve", raw.serve, "folder")->check(CLI::ExistingDirectory)->group(group);
    app.add_option("--http-fault", raw.fault, "what goes wrong")
        ->check(CLI::IsMember({"none", "404", "500", "cut", "not-a-zip", "silent", "slow"}))
        ->group(group);
    app.add_option("--http-fault-path", raw.faultPath, "only for paths that contain this")->group(group);
}

static void lf_resolve(StandinOptions& options, const RawOptions& raw)
{
    UserState& user = options.simulator.user;
    user.heading = raw.userHeadingDeg * kRadPerDeg;
    user.onGround = raw.onGround || !raw.userAltitude;
    user.altitude = raw.userAltitude.value_or(0);
    Terrain& terrain = options.simulator.terrain;
    terrain.originLat = user.lat;
    terrain.elevation = raw.elevation.value_or(options.recording.empty() ? kDayElevation : 0);
    if (raw.noPipe) {
        options.server.pipe.clear();
    }
    if (raw.httpPort || !raw.serve.empty()) {
        options.files = FileServerOptions{raw.serve, raw.httpPort.value_or(0),
                                          gf_fileFault(raw.fault).value_or(FileFault::None), raw.faultPath};
    }
    for (const std::string& fault : raw.faults) {
        options.faults.push_back(*gf_plannedFault(fault));
    }
    options.simulator.titles = gf_readTitles(options.world / "titles.csv");
}

std::optional<StandinOptions> gf_standinOptions(int argc, const char* const* argv, int& exitCode)
{
    StandinOptions options;
    RawOptions raw;
    const LatLon place = gf_fieldPosition(kUserPlace);
    options.simulator.user.lat = place.lat;
    options.simulator.user.lon = place.lon;
    CLI::App app{"The world outside for a run on one machine: simulator, traffic feed, file server."};
    app.add_option("--world", options.world, "folder with titles.csv and registrations.csv")
        ->capture_default_str();
    app.add_option("--seconds", options.seconds, "of the run; without end if not given");
    app.add_flag("--quit-at-end", options.quitAtEnd, "the simulator says quit before it goes");
    app.add_option("--out", options.out, "folder for summary.json, tracks.csv and traffic.svg");
    lf_addFeed(app, options);
    lf_addUser(app, options, raw);
    lf_addSimulator(app, options, raw);
    lf_addFiles(app, raw);
    app.add_option("--fault", raw.faults,
                   "WORD@SECOND: what goes wrong, and when; also as a word on standard input:\n" +
                       gf_faultWords())
        ->check([](const std::string& text) {
            return gf_plannedFault(text) ? std::string() : "there is no fault \"" + text + "\"";
        });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = app.exit(e);
        return std::nullopt;
    }
    lf_resolve(options, raw);
    return options;
}

}  // namespace vlt
