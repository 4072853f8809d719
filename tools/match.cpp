#include "tools/match.h"

#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "core/base/zip_archive.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/match_index.h"
#include "liveries/matching.h"
#include "liveries/regcodes.h"
#include "liveries/scan_results.h"

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>

namespace vlt {

using nlohmann::json;

struct MatchOptions {
    std::string dbase;       // dbase.zip or dbase.xml; empty: from the server
    std::string liveries;    // LiveriesScanned.xml
    std::string regcodes;    // AIG-regcodes.zip or .xml; empty: none
    std::string myRegcodes;  // a .TXT file of the user; empty: none
    bool noRandom = false;
    std::optional<uint64_t> seed;
    json query = json::object();  // of the command line; empty: from standard input
};

constexpr uint64_t kLargestDocument = 1U << 30;

static void lf_parse(pugi::xml_document& document, const std::string& path)
{
    pugi::xml_parse_result parsed;
    if (path.ends_with(".zip")) {
        std::string text;
        const ZipArchive archive(path);
        for (const std::string& entry : archive.entries()) {
            archive.read(entry, kLargestDocument,
                         [&text](std::span<const char> piece) { text.append(piece.data(), piece.size()); });
        }
        parsed = document.load_buffer(text.data(), text.size());
    } else {
        parsed = document.load_file(path.c_str());
    }
    if (!parsed) {
        throw std::runtime_error(format("{}: {}", path, parsed.description()));
    }
}

static void lf_loadDbase(const std::string& path)
{
    if (path.empty()) {
        readDbase();
        return;
    }
    pugi::xml_document document;
    lf_parse(document, path);
    gf_readDbaseSections(document, path);
}

static void lf_loadRegcodes(const MatchOptions& options)
{
    std::vector<std::string> results;
    if (!options.regcodes.empty()) {
        pugi::xml_document document;
        lf_parse(document, options.regcodes);
        std::vector<RegcodeEntry> entries;
        gf_readRegcodeDocument(document, options.regcodes, entries);
        gf_processRegcodeEntries(entries, results);
    }
    if (!options.myRegcodes.empty()) {
        std::vector<RegcodeEntry> entries;
        gf_readRegcodeText(options.myRegcodes, entries);
        gf_processRegcodeEntries(entries, results);
    }
}

static void lf_load(const MatchOptions& options)
{
    LOG.value = false;
    RANDOM.value = !options.noRandom;
    if (options.seed) {
        gf_seedRandom(*options.seed);
    }
    lf_loadDbase(options.dbase);
    readLiveriesScanned(options.liveries);
    buildMatchIndexes();
    collectInlineRegcodes();
    lf_loadRegcodes(options);
    liveries.clear();
}

static std::string_view lf_outcomeText(RungOutcome outcome)
{
    switch (outcome) {
    case RungOutcome::BeyondDepth:
        return "beyond the matching depth";
    case RungOutcome::NotApplicable:
        return "does not apply";
    case RungOutcome::Nothing:
        return "nothing found";
    case RungOutcome::Answered:
        return "answered";
    }
    return "";
}

static AcBase lf_aircraftOf(const json& query)
{
    AcBase ac;
    ac.airline = query.value("airline", "");
    ac.model = query.value("model", "");
    ac.regcode = query.value("regcode", "");
    ac.callsign = query.value("callsign", "");
    ac.cargo = query.value("cargo", false);
    ac.hexid = query.value("hexid", 0U);
    if (ac.airline.empty() && query.contains("callsign")) {
        ac.airline = gf_airlineOfCallsign(ac.callsign);
        if (ac.airline.empty()) {
            ac.airline = kPrivateAirline;
        }
    }
    ac.category = categoryOf(ac.model);
    return ac;
}

// The titles that the query wants to count as refused, as far as they are installed.
static void lf_refuse(const json& query)
{
    refusedTitles.clear();
    const std::vector<std::string> refused = query.value("refused", std::vector<std::string>{});
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            for (const LiveryEntry& entry : entries) {
                if (std::find(refused.begin(), refused.end(), entry.title) != refused.end()) {
                    refusedTitles.push_back(entry.title);
                }
            }
        }
    }
}

static json lf_tried(const MatchTrace& trace)
{
    json tried = json::array();
    for (const RungTrace& rung : trace.rungs) {
        tried.push_back({{"rung", rung.rung},
                         {"step", rung.step},
                         {"from_depth", rung.depth},
                         {"when", rung.condition},
                         {"outcome", lf_outcomeText(rung.outcome)}});
    }
    return tried;
}

// By the road of a live aircraft that may have been here before: what it got then is remembered, and a
// new match is counted.
static json lf_spawned(AcBase& ac)
{
    const auto before = matchCounters;
    titleForHexid(ac);
    const auto counted = std::mismatch(before.begin(), before.end(), matchCounters.begin()).first;
    const bool matched = counted != before.end();
    return {{"step", matched ? counted - before.begin() + 1 : 0},
            {"remembered", !matched && !ac.title.empty()},
            {"matches", matchCounters}};
}

static json lf_explained(AcBase& ac, bool parked)
{
    const MatchTrace trace = gf_explainMatch(ac, parked);
    return {{"step", trace.step}, {"refused", trace.refused}, {"tried", lf_tried(trace)}};
}

static json lf_answer(const json& query)
{
    MATCHING_DEPTH.value = query.value("depth", MATCHING_DEPTH.def);
    lf_refuse(query);
    AcBase ac = lf_aircraftOf(query);
    json answer = ac.hexid != 0 ? lf_spawned(ac) : lf_explained(ac, query.value("static", false));
    answer["airline"] = ac.airline;
    answer["model"] = ac.model;
    answer["regcode"] = ac.regcode;
    answer["cargo"] = ac.cargo;
    answer["category"] = kCategoryNames[static_cast<size_t>(ac.category)];
    answer["title"] = ac.title.empty() ? json(nullptr) : json(ac.title);
    return answer;
}

// As text, whatever bytes a title holds.
static std::string lf_dump(const json& answer)
{
    return answer.dump(-1, ' ', false, json::error_handler_t::replace);
}

static std::string lf_answerText(const std::string& line)
{
    try {
        return lf_dump(lf_answer(json::parse(line)));
    } catch (const json::exception& e) {
        return lf_dump({{"error", e.what()}});
    }
}

static void lf_run(const MatchOptions& options)
{
    lf_load(options);
    if (!options.query.empty()) {
        std::cout << lf_dump(lf_answer(options.query)) << '\n';
        return;
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!gf_trimmed(line).empty()) {
            std::cout << lf_answerText(line) << '\n';
        }
    }
}

static void lf_addQueryOptions(CLI::App& command, json& query)
{
    constexpr std::array kTexts{"airline", "model", "regcode", "callsign"};
    constexpr std::array kFlags{"cargo", "static"};
    for (const char* key : kTexts) {
        command.add_option_function<std::string>(
            format("--{}", key), [&query, key](const std::string& value) { query[key] = value; });
    }
    for (const char* key : kFlags) {
        command.add_flag_callback(format("--{}", key), [&query, key] { query[key] = true; });
    }
    command
        .add_option_function<int32_t>(
            "--depth", [&query](int32_t depth) { query["depth"] = depth; }, "MATCHING_DEPTH, 1 to 4")
        ->check(CLI::Range(MATCHING_DEPTH.min, MATCHING_DEPTH.max));
    command.add_option_function<uint32_t>(
        "--hexid", [&query](uint32_t hexid) { query["hexid"] = hexid; },
        "ask as for a live aircraft that may have been here before");
    command.add_option_function<std::vector<std::string>>(
        "--refused", [&query](const std::vector<std::string>& titles) { query["refused"] = titles; },
        "titles that the simulator has refused");
}

void gf_addMatchCommand(CLI::App& tool)
{
    CLI::App* command = tool.add_subcommand(
        "match",
        "ask the livery ladder; without a query in the options, JSON lines from standard input with the "
        "same keys");
    const auto options = std::make_shared<MatchOptions>();
    command->add_option("--dbase", options->dbase,
                        "dbase.zip or the document in it; default: from the server");
    command->add_option("--liveries", options->liveries, "LiveriesScanned.xml")->required();
    command->add_option("--regcodes", options->regcodes, "AIG-regcodes.zip or the document in it");
    command->add_option("--my-regcodes", options->myRegcodes, "a regcode file of the user");
    command->add_flag("--no-random", options->noRandom, "always the first of a list");
    command->add_option("--seed", options->seed, "of the random choice");
    lf_addQueryOptions(*command, options->query);
    command->callback([options] { lf_run(*options); });
}

}  // namespace vlt
