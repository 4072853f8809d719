#include "tools/plan.h"

#include "airports/loading.h"
#include "airports/parking/planner.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "liveries/liveries.h"
#include "liveries/match_index.h"
#include "liveries/matching.h"
#include "standin/learned_folder.h"
#include "standin/world.h"
#include "traffic/performance.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <vector>

namespace vlt {

static void lf_setParameters(const PlanOptions& options)
{
    parking_percentage.value = options.percentage;
    MAX_FIT.value = options.maxFit;
    WEEK.value = options.week;
    PARK_SOFT.value = options.soft;
    PARK_FAKE.value = false;
    RANDOM.value = !options.inOrder;
    LOG.value = false;
}

static Planning lf_planning(const PlanOptions& options)
{
    Planning planning;
    planning.now = {options.day, options.slot};
    if (!options.heard.empty()) {
        std::ifstream file(options.heard);
        if (!file) {
            throw std::runtime_error(options.heard + " can't be read");
        }
        for (std::string callsign; file >> callsign;) {
            planning.heard.insert(callsign);
        }
    }
    return planning;
}

static bool lf_hasLivery(const PlanEntry& entry, const ParkPos& stand)
{
    StaticAc ac;
    ac.airline = entry.airline;
    gf_setModel(ac, entry.type);
    ac.regcode = entry.reg;
    return matchStatic(ac, stand.cargo, stand.id);
}

static nlohmann::ordered_json lf_row(const ParkPos& stand, const Planning& planning)
{
    const auto entry = std::ranges::find(parkPlan, stand.index, &PlanEntry::stand);
    if (entry == parkPlan.end()) {
        const std::string_view why = planning.why.empty() ? "none wanted" : planning.why[stand.index - 1];
        return {{"stand", stand.id}, {"empty", std::string(why)}};
    }
    if (!lf_hasLivery(*entry, stand)) {
        return {{"stand", stand.id}, {"empty", "no livery"}};
    }
    return {{"stand", stand.id},           {"offset", entry->offset},   {"airline", entry->airline},
            {"type", entry->type},         {"reg", entry->reg},         {"callsign", entry->callsign},
            {"coupled", entry->coupledCs}, {"shown", lf_detcs(*entry)}, {"real", entry->real},
            {"stays", entry->stays}};
}

static Planning lf_planOnce(const PlanOptions& options, uint64_t seed)
{
    gf_seedRandom(seed);
    Planning planning = lf_planning(options);
    parkPlan.clear();
    gf_renumberOptions();
    gf_planPasses(planning, wantedCount(), 0);
    return planning;
}

static void lf_print(const nlohmann::ordered_json& row)
{
    std::cout << row.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

static void lf_printOnePlan(const PlanOptions& options)
{
    const Planning planning = lf_planOnce(options, options.seed);
    for (const ParkPos& stand : parkApf.stands) {
        lf_print(lf_row(stand, planning));
    }
}

static void lf_printCounts(const PlanOptions& options)
{
    std::vector<std::map<std::string, int32_t>> chosen(parkApf.stands.size());
    for (int32_t n = 0; n < options.plans; ++n) {
        lf_planOnce(options, options.seed + static_cast<uint64_t>(n));
        for (const PlanEntry& entry : parkPlan) {
            ++chosen[entry.stand - 1][entry.reg];
        }
    }
    for (const ParkPos& stand : parkApf.stands) {
        lf_print({{"stand", stand.id}, {"chosen", chosen[stand.index - 1]}});
    }
}

int gf_plan(const PlanOptions& options)
{
    lf_setParameters(options);
    gf_loadWorld(options.world);
    AirportLoad load = gf_readApfAlone(options.airportFile, "XXXX");
    if (!load.failed.empty()) {
        throw std::runtime_error(options.airportFile.string() + ": " + load.failed);
    }
    gf_layLearnedOver(options.airports, options.airportFile.stem().string(), load);
    parkApf = std::move(load.apf);
    if (options.plans > 1) {
        lf_printCounts(options);
    } else {
        lf_printOnePlan(options);
    }
    return 0;
}

}  // namespace vlt
