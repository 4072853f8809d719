#include "tools/match.h"

#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/match_index.h"
#include "liveries/matching.h"
#include "liveries/regcodes.h"
#include "liveries/scan_results.h"
#include "tools/dbase_source.h"

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace vlt {

using nlohmann::json;

static void lf_bindRegcodes(const MatchOptions& options)
{
    std::vector<std::string> results;
    if (!options.regcodes.empty()) {
        pugi::xml_document document;
        gf_parseDocument(document, options.regcodes);
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
    gf_loadDbase(options.dbase);
    readLiveriesScanned(options.liveries);
    buildMatchIndexes([&options] { lf_bindRegcodes(options); });
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

static MatchQuery lf_queryOf(const json& line)
{
    MatchQuery query;
    query.airline = line.value("airline", "");
    query.model = line.value("model", "");
    query.regcode = line.value("regcode", "");
    if (line.contains("callsign")) {
        query.callsign = line.value("callsign", "");
    }
    query.cargo = line.value("cargo", false);
    query.parked = line.value("static", false);
    query.depth = line.value("depth", query.depth);
    query.hexid = line.value("hexid", 0U);
    query.refused = line.value("refused", query.refused);
    return query;
}

static AcBase lf_aircraftOf(const MatchQuery& query)
{
    AcBase ac;
    ac.airline = query.airline;
    ac.model = query.model;
    ac.regcode = query.regcode;
    ac.callsign = query.callsign.value_or("");
    ac.cargo = query.cargo;
    ac.hexid = query.hexid;
    if (ac.airline.empty() && query.callsign) {
        ac.airline = gf_airlineOfCallsign(ac.callsign);
        if (ac.airline.empty()) {
            ac.airline = kPrivateAirline;
        }
    }
    ac.category = categoryOf(ac.model);
    return ac;
}

// These titles count as refused, as far as they are installed.
static void lf_refuse(const std::vector<std::string>& refused)
{
    refusedTitles.clear();
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

static json lf_answer(const MatchQuery& query)
{
    MATCHING_DEPTH.value = query.depth;
    lf_refuse(query.refused);
    AcBase ac = lf_aircraftOf(query);
    json answer = ac.hexid != 0 ? lf_spawned(ac) : lf_explained(ac, query.parked);
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
        return lf_dump(lf_answer(lf_queryOf(json::parse(line))));
    } catch (const json::exception& e) {
        return lf_dump({{"error", e.what()}});
    }
}

int gf_match(const MatchOptions& options)
{
    lf_load(options);
    if (options.query) {
        std::cout << lf_dump(lf_answer(*options.query)) << '\n';
        return 0;
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!gf_trimmed(line).empty()) {
            std::cout << lf_answerText(line) << '\n';
        }
    }
    return 0;
}

}  // namespace vlt
