// velatra-tool: opens the engine's parts to people and tests.
//
// The command lines stand here; what a subcommand does stands in the file of its name beside this one.
#include "tools/bgl.h"
#include "tools/decode.h"
#include "tools/match.h"
#include "tools/picture.h"
#include "tools/plan.h"
#include "tools/publish.h"
#include "tools/replay.h"
#include "tools/scan.h"
#include "tools/stand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace vlt;

// A subcommand, and the record that its options fill, which lives as long as the subcommand.
template <typename Options>
struct Command {
    CLI::App& app;
    std::shared_ptr<Options> options;
};

template <typename Options>
static Command<Options> lf_add(CLI::App& tool, const char* name, const char* what, int (*run)(const Options&))
{
    CLI::App* app = tool.add_subcommand(name, what);
    const auto options = std::make_shared<Options>();
    app->callback([options, run] {
        if (const int code = run(*options); code != 0) {
            throw CLI::RuntimeError(code);
        }
    });
    return {*app, options};
}

static void lf_addDecode(CLI::App& tool)
{
    const auto [app, options] = lf_add(
        tool, "decode", "feed lines from standard input: the record, or why it was dropped", gf_decode);
    app.add_option("--user", options->user,
                   "the user's latitude and longitude; without it every line is in range")
        ->expected(2);
    app.add_option("--park", options->park, "the park airport's latitude, longitude and elevation in feet")
        ->expected(3);
    app.add_option("--range", options->range, "traffic radius, nm")->capture_default_str();
    app.add_flag("--here", options->here, "RealTraffic is on this PC: a repeated datagram counts again");
}

static std::vector<CLI::Option*> lf_addQuery(CLI::App& app, MatchQuery& query)
{
    return {
        app.add_option("--airline", query.airline),
        app.add_option("--model", query.model),
        app.add_option("--regcode", query.regcode),
        app.add_option("--callsign", query.callsign),
        app.add_flag("--cargo", query.cargo),
        app.add_flag("--static", query.parked),
        app.add_option("--depth", query.depth, "MATCHING_DEPTH, 1 to 4")
            ->check(CLI::Range(MATCHING_DEPTH.min, MATCHING_DEPTH.max)),
        app.add_option("--hexid", query.hexid, "ask as for a live aircraft that may have been here before"),
        app.add_option("--refused", query.refused, "titles that the simulator has refused")};
}

static void lf_addMatch(CLI::App& tool)
{
    const auto command = lf_add(
        tool, "match",
        "ask the livery ladder; without a query in the options, JSON lines from standard input with the "
        "same keys",
        gf_match);
    MatchOptions& options = *command.options;
    CLI::App& app = command.app;
    app.add_option("--dbase", options.dbase, "dbase.zip or the document in it; default: from the server");
    app.add_option("--liveries", options.liveries, "LiveriesScanned.xml")->required();
    app.add_option("--regcodes", options.regcodes, "AIG-regcodes.zip or the document in it");
    app.add_option("--my-regcodes", options.myRegcodes, "a regcode file of the user");
    app.add_flag("--no-random", options.noRandom, "always the first of a list");
    app.add_option("--seed", options.seed, "of the random choice");
    const auto query = std::make_shared<MatchQuery>();
    app.parse_complete_callback([&options, query, asked = lf_addQuery(app, *query)] {
        if (std::any_of(asked.begin(), asked.end(), [](const CLI::Option* o) { return o->count() > 0; })) {
            options.query = *query;
        }
    });
}

static void lf_addPicture(CLI::App& tool)
{
    const auto [app, options] =
        lf_add(tool, "picture", "draw how aircraft moved in a replay of the built-in day", gf_picture);
    app.add_option("--world", options->world, "folder of the plain tables")->capture_default_str();
    app.add_option("--out", options->out, "folder of the pictures")->capture_default_str();
    app.add_option("--seconds", options->seconds, "of the replay")->capture_default_str();
}

// A subcommand that makes a file from the world folder in the out folder.
static void lf_addWorldCommand(CLI::App& publish, const char* name, const char* what,
                               int (*run)(const PublishOptions&))
{
    const auto [app, options] = lf_add(publish, name, what, run);
    app.add_option("--world", options->world, "folder of the plain tables")->capture_default_str();
    app.add_option("--out", options->out, "folder to write to")->capture_default_str();
}

static void lf_addCatalogue(CLI::App& publish)
{
    const auto [app, options] =
        lf_add(publish, "catalogue",
               "airports_p3d.xml from a JSON list of airports, or from another one and a world's airports",
               gf_publishCatalogue);
    CLI::Option* in = app.add_option("--in", options->in, "the JSON file");
    CLI::Option* base = app.add_option("--base", options->base, "the airports_p3d.xml to begin with");
    app.add_option("--world", options->world, "folder of the plain tables")
        ->needs(base)
        ->capture_default_str();
    app.add_option("--out", options->out, "the file to write")->required();
    in->excludes(base);
    app.parse_complete_callback([in, base] {
        if (in->empty() && base->empty()) {
            throw CLI::RequiredError("--in or --base");
        }
    });
}

static void lf_addAirportFile(CLI::App& publish)
{
    const auto [app, options] = lf_add(publish, "airport-file",
                                       "one archived airport file from a table of stands", gf_publishAirport);
    app.add_option("--stands", options->in, "the table: id,lat,lon,heading,radius_m,kind")->required();
    app.add_option("--name", options->name, "the airport's name")->required();
    app.add_option("--elevation", options->elevation, "feet")->required();
    app.add_option("--out", options->out, "the file to write")->required();
}

static void lf_addPublish(CLI::App& tool)
{
    CLI::App& publish = *tool.add_subcommand("publish", "make the download server's files from plain tables");
    publish.require_subcommand(1);
    lf_addWorldCommand(publish, "dbase", "dbase.zip", gf_publishDbase);
    lf_addWorldCommand(publish, "regcodes", "AIG-regcodes.zip", gf_publishRegcodes);
    lf_addWorldCommand(publish, "liveries", "LiveriesScanned.xml, as if the liveries had been scanned",
                       gf_publishLiveries);
    lf_addWorldCommand(publish, "livery-tree", "the same liveries as an add-on package, to be scanned",
                       gf_publishLiveryTree);
    lf_addWorldCommand(publish, "scenery-tree", "the world's airports as add-on sceneries, to be scanned",
                       gf_publishSceneryTree);
    lf_addWorldCommand(publish, "airport-files", "the archive of airport files, archive/stock",
                       gf_publishAirports);
    lf_addCatalogue(publish);
    lf_addAirportFile(publish);
}

static void lf_addScanKind(CLI::App& scan, const char* name, const char* what, int (*run)(const ScanOptions&))
{
    const auto [app, options] = lf_add(scan, name, what, run);
    app.add_option("folders", options->folders, "the folders to be searched, in their order")->required();
    app.add_option("--out", options->out, "folder for results, reports and the log")->capture_default_str();
    app.add_option("--dbase", options->dbase, "dbase.zip or the document in it; default: from the server");
    app.add_option("--threads", options->threads,
                   "files read at a time; default: as many as the hardware can");
    app.add_flag("--prioritize", options->prioritize, "liveries: earlier folders win");
}

static void lf_addBgl(CLI::App& tool)
{
    const auto [app, options] = lf_add(tool, "bgl", "what a scenery file decodes to, as JSON lines", gf_bgl);
    app.add_option("file", options->file, "the BGL file")->required();
}

static void lf_addScan(CLI::App& tool)
{
    CLI::App& scan = *tool.add_subcommand("scan", "scan folders as the program does at its start");
    scan.require_subcommand(1);
    lf_addScanKind(scan, "liveries", "LiveriesScanned.xml and the reports on aircraft.cfg files",
                   gf_scanLiveries);
    lf_addScanKind(scan, "scenery", "links and generated airport files of add-on sceneries", gf_scanScenery);
}

static void lf_addReplayPlace(CLI::App& app, ReplayToolOptions& options)
{
    ReplayOptions& replay = options.replay;
    app.add_option("--user", options.user, "latitude and longitude")->expected(2);
    app.add_option("--user-altitude", options.userAltitude, "feet; else on the ground");
    app.add_option("--user-heading", options.userHeadingDeg, "degrees true")->capture_default_str();
    app.add_option("--user-speed", replay.user.speed, "knots")->capture_default_str();
    app.add_option("--range", replay.rangeNm, "nm")->capture_default_str();
    app.add_option("--ground", options.elevation, "elevation of the ground at the user's latitude, feet");
    app.add_option("--slope", options.slopePercent, "percent by which the ground rises northwards");
    app.add_option("--qnh", replay.qnh, "hPa")->capture_default_str();
    app.add_flag("--pressure-altitudes", replay.pressureAltitudes,
                 "the altitudes as an altimeter set to 1013 hPa shows them");
}

static void lf_addReplay(CLI::App& tool)
{
    const auto command =
        lf_add(tool, "replay",
               "a recording through the whole engine; exit code 2 if something was that must never be",
               gf_replayToFiles);
    CLI::App& app = command.app;
    ReplayToolOptions& options = *command.options;
    ReplayOptions& replay = options.replay;
    app.add_option("--recording", options.recording, "one datagram per line; else the built-in day")
        ->check(CLI::ExistingFile);
    app.add_option("--out", options.out, "folder of the results")->capture_default_str();
    app.add_option("--world", replay.world, "folder of the plain tables")->capture_default_str();
    app.add_option("--airport-file", replay.airportFile, "the park airport's; else none, or the day's own")
        ->check(CLI::ExistingFile);
    app.add_option("--airport", replay.airportCode, "its code")->capture_default_str();
    app.add_option("--airports", replay.airportsFolder,
                   "folder of learned files: read, and written at the end");
    app.add_option("--from", replay.from, "seconds of the feed to begin at")->capture_default_str();
    app.add_option("--seconds", replay.seconds, "of the replay")->capture_default_str();
    lf_addReplayPlace(app, options);
    app.add_option("--seed", replay.seed)->capture_default_str();
    CLI::Option* seeds =
        app.add_option("--seeds", options.seeds, "the built-in day with the seeds 1 to this, and one table");
    app.add_option("--repeat", options.repeat,
                   "times that the stretch is played in one run, which is watched for what grows")
        ->check(CLI::Range(1, 200))
        ->excludes(seeds);
    app.add_option("--every", options.every, "ticks between the rows of tracks.csv")->capture_default_str();
    app.add_flag("--no-events", options.noEvents, "no events.csv");
}

static void lf_addPlan(CLI::App& tool)
{
    const auto [app, options] = lf_add(
        tool, "plan",
        "the static aircraft that an airport gets at a half hour, and why other stands stay empty", gf_plan);
    app.add_option("--airport-file", options->airportFile, "the airport file")->required();
    app.add_option("--airports", options->airports,
                   "folder of learned files; its file of that name is laid over");
    app.add_option("--day", options->day, "1 Monday to 7 Sunday")->required()->check(CLI::Range(1, 7));
    app.add_option("--slot", options->slot, "half hour of the UTC day")->required()->check(CLI::Range(0, 47));
    app.add_option("--percentage", options->percentage, "wanted share of the stands")->capture_default_str();
    app.add_option("--max-fit", options->maxFit, "half hours to search back")
        ->check(CLI::Range(0, 47))
        ->capture_default_str();
    app.add_flag("--week", options->week, "weekdays don't count");
    app.add_flag("--soft", options->soft, "inferred options too");
    app.add_flag("--in-order", options->inOrder, "no chance: the first option of a stand");
    app.add_option("--heard", options->heard, "call signs of flights in the air, one a line");
    app.add_option("--world", options->world, "folder of the plain tables")->capture_default_str();
    app.add_option("--plans", options->plans, "so many, with the seeds that follow: how often each is chosen")
        ->check(CLI::PositiveNumber);
    app.add_option("--seed", options->seed)->capture_default_str();
}

static void lf_addStand(CLI::App& tool)
{
    const auto [app, options] = lf_add(
        tool, "stand", "feed lines from standard input: the stand that each report on the ground leads to",
        gf_findStands);
    app.add_option("--airport-file", options->airportFile, "the airport file with the stands")->required();
    app.add_option("--span", options->spanM, "the aircraft's wing span, metres")->capture_default_str();
    app.add_option("--radius", options->radiusM, "how far a stand may be, metres")->capture_default_str();
    app.add_flag("--far", options->allowFar, "also take a stand whose history knows the flight");
    app.add_option("--category", options->category, "Large or Rotorcraft")->capture_default_str();
}

int main(int argc, char** argv)
{
    try {
        CLI::App tool("Velatra's tool box");
        tool.require_subcommand(1);
        lf_addDecode(tool);
        lf_addMatch(tool);
        lf_addPicture(tool);
        lf_addPlan(tool);
        lf_addPublish(tool);
        lf_addScan(tool);
        lf_addBgl(tool);
        lf_addReplay(tool);
        lf_addStand(tool);
        CLI11_PARSE(tool, argc, argv);
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "velatra-tool: " << e.what() << '\n';
        return 1;
    }
}
