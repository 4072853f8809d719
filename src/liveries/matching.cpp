#include "liveries/matching.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/regcodes.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace vlt {

constexpr int32_t kSummaryWidth = 100;  // columns
constexpr std::string_view kSimulatorName = "P3D";
constexpr std::string_view kFsltlMark = "FSLTL_";

// One question to the ladder.
struct Query {
    AcBase& ac;
    bool parked;                     // of any category may be what it is given
    const RegRecord* row = nullptr;  // what the data base knows of the registration
    bool rowKnown = false;           // `row` has been looked up
};

static bool lf_isRefused(std::string_view title)
{
    return std::ranges::find(refusedTitles, title) != refusedTitles.end();
}

// One of the titles, but none that the simulator has refused: its neighbours may be sound.
static void lf_pick(AcBase& ac, const TitleViews& titles)
{
    if (refusedTitles.empty() || std::ranges::none_of(titles, lf_isRefused)) {
        ac.title = titles[randomIndex(titles.size())];
        return;
    }
    TitleViews sound;
    std::ranges::remove_copy_if(titles, std::back_inserter(sound), lf_isRefused);
    if (!sound.empty()) {
        ac.title = sound[randomIndex(sound.size())];
    }
}

static void lf_pickOfModel(AcBase& ac, std::string_view model)
{
    const auto& index = byModel[ac.cargo ? 1 : 0];
    if (const auto titles = index.find(model); titles != index.end()) {
        lf_pick(ac, titles->second);
    }
}

template <typename Value>
static const Value* lf_find(const PerAirlineAndModel<Value>& index, std::string_view airline,
                            std::string_view model)
{
    const auto models = index.find(airline);
    if (models == index.end()) {
        return nullptr;
    }
    const auto value = models->second.find(model);
    return value == models->second.end() ? nullptr : &value->second;
}

// A freighter prefers a freighter's livery and takes a passenger one of the same airline and model.
static void lf_try(AcBase& ac, std::string_view airline, std::string_view model)
{
    const size_t first = ac.cargo ? 1 : 0;
    for (size_t use = first + 1; use-- > 0 && ac.title.empty();) {
        if (const TitleViews* titles = lf_find(byAirlineModel[use], airline, model)) {
            lf_pick(ac, *titles);
        }
    }
}

static const RegRecord* lf_row(Query& query)
{
    if (!query.rowKnown) {
        query.row = findRegcode(query.ac.regcode);
        query.rowKnown = true;
    }
    return query.row;
}

static void lf_trySimilar(const Query& query, std::string_view airline)
{
    AcBase& ac = query.ac;
    const auto models = similarPerAirline.find(std::string_view(ac.airline));
    if (models == similarPerAirline.end()) {
        return;
    }
    const auto similar = models->second.find(std::string_view(ac.model));
    if (similar == models->second.end()) {
        return;
    }
    gf_shuffle(similar->second);
    for (const std::string& model : similar->second) {
        if (query.parked || categoryOf(model) == ac.category) {
            lf_try(ac, airline, model);
            if (!ac.title.empty()) {
                return;
            }
        }
    }
}

static const std::vector<std::string>* lf_categoryModels(AcCategory category)
{
    switch (category) {
    case AcCategory::Light:
        return &lightModels;
    case AcCategory::Buzjets:
        return &buzjetModels;
    case AcCategory::Rotorcraft:
        return &rotorcraftModels;
    case AcCategory::Large:
    case AcCategory::Heavy:
    case AcCategory::HighPerf:
        break;
    }
    return nullptr;
}

// Conditions of the rungs.

static bool lf_hasRegcode(Query& query)
{
    return !query.ac.regcode.empty();
}

static bool lf_isPrivate(Query& query)
{
    return query.ac.airline == kPrivateAirline;
}

static bool lf_hasAirline(Query& query)
{
    return !query.ac.airline.empty();
}

static bool lf_isOperatedForOwner(Query& query)
{
    const RegRecord* row = lf_row(query);
    return row != nullptr && !row->opr.empty();
}

static bool lf_isAnything(Query&)
{
    return true;
}

static bool lf_isSmall(Query& query)
{
    return lf_categoryModels(query.ac.category) != nullptr;
}

static bool lf_isSmallNotPrivate(Query& query)
{
    return lf_isSmall(query) && !lf_isPrivate(query);
}

// Lookups of the rungs: each sets the title if it has one.

static void lf_ownRegcode(Query& query)
{
    const std::string_view title = findRegcodeTitle(query.ac.regcode);
    if (!lf_isRefused(title)) {
        query.ac.title = title;
    }
}

static void lf_generic(Query& query)
{
    lf_try(query.ac, kGenericAirline, query.ac.model);
}

static void lf_ofAirline(Query& query)
{
    lf_try(query.ac, query.ac.airline, query.ac.model);
}

static void lf_ofOwner(Query& query)
{
    lf_try(query.ac, lf_row(query)->airl, query.ac.model);
}

static void lf_similarOfAirline(Query& query)
{
    lf_trySimilar(query, query.ac.airline);
}

static void lf_similarOfOwner(Query& query)
{
    lf_trySimilar(query, lf_row(query)->airl);
}

static void lf_anyOfModel(Query& query)
{
    lf_pickOfModel(query.ac, query.ac.model);
}

static void lf_anyOfSimilar(Query& query)
{
    AcBase& ac = query.ac;
    if (const auto similar = similarWithLiveries.find(ac.model); similar != similarWithLiveries.end()) {
        gf_shuffle(similar->second);
        for (const std::string& model : similar->second) {
            lf_pickOfModel(ac, model);
            if (!ac.title.empty()) {
                return;
            }
        }
        return;
    }
    const std::vector<std::string>* models = lf_categoryModels(categoryOf(ac.model));
    if (models != nullptr && !models->empty()) {
        lf_pickOfModel(ac, (*models)[randomIndex(models->size())]);
    }
}

// The ladder. A rung is tried when MATCHING_DEPTH reaches it and its condition holds; the first that
// sets a title answers, and counts as its step.
struct Rung {
    std::string_view name;
    int32_t step;
    int32_t depth;
    std::string_view condition;
    bool (*applies)(Query&);
    void (*lookUp)(Query&);
};

// clang-format off
constexpr std::array<Rung, 10> kLadder{{
    {"own registration",            1, 1, "with a registration",                       lf_hasRegcode,         lf_ownRegcode},
    {"generic for private",         4, 2, "airline PVT",                               lf_isPrivate,          lf_generic},
    {"airline and model",           2, 2, "with an airline",                           lf_hasAirline,         lf_ofAirline},
    {"owner and model",             2, 2, "operated for its owner",                    lf_isOperatedForOwner, lf_ofOwner},
    {"airline and similar model",   3, 3, "with an airline",                           lf_hasAirline,         lf_similarOfAirline},
    {"owner and similar model",     3, 3, "operated for its owner",                    lf_isOperatedForOwner, lf_similarOfOwner},
    {"generic",                     4, 4, "always",                                    lf_isAnything,         lf_generic},
    {"generic for small aircraft",  4, 3, "Light, Buzjets, Rotorcraft; airline not PVT", lf_isSmallNotPrivate, lf_generic},
    {"any of the model",            5, 3, "Light, Buzjets, Rotorcraft",                lf_isSmall,            lf_anyOfModel},
    {"any of a similar model",      6, 3, "Light, Buzjets, Rotorcraft",                lf_isSmall,            lf_anyOfSimilar},
}};
// clang-format on

// The step that set the title, 0 when none did. `observe` is told of each rung looked at.
template <typename Observer>
static int32_t lf_climb(Query query, const Observer& observe)
{
    const int32_t depth = MATCHING_DEPTH.value;
    query.ac.title = {};
    for (const Rung& rung : kLadder) {
        if (depth < rung.depth) {
            observe(rung, RungOutcome::BeyondDepth);
        } else if (!rung.applies(query)) {
            observe(rung, RungOutcome::NotApplicable);
        } else {
            rung.lookUp(query);
            if (!query.ac.title.empty()) {
                observe(rung, RungOutcome::Answered);
                return rung.step;
            }
            observe(rung, RungOutcome::Nothing);
        }
    }
    return 0;
}

static void lf_observeNothing(const Rung&, RungOutcome) {}

// As lf_climb; a match is logged.
static int32_t lf_climbAndLog(const Query& query)
{
    AcBase& ac = query.ac;
    const int32_t step = lf_climb(query, lf_observeNothing);
    if (step > 0 && LOG.value) {
        logLine(format("          {} ={}= {}", logName(ac), step, ac.title));
    }
    return step;
}

// The code that lands the object must know the family, whichever way the title came.
static void lf_noteFamily(AcBase& ac)
{
    ac.fsltl = ac.title.find(kFsltlMark) != std::string_view::npos;
}

void matchLive(AcBase& ac)
{
    const int32_t step = lf_climbAndLog({.ac = ac, .parked = false});
    if (step > 0) {
        ++matchCounters[static_cast<size_t>(step) - 1];
        ac.titleStep = step;
        lf_noteFamily(ac);
    }
}

bool titleForHexid(AcBase& ac)
{
    if (!ac.title.empty()) {
        return true;
    }
    if (const auto remembered = titleCache.find(ac.hexid); remembered != titleCache.end()) {
        if (!lf_isRefused(remembered->second)) {
            ac.title = remembered->second;
            lf_noteFamily(ac);
            return true;
        }
        titleCache.erase(remembered);
    }
    matchLive(ac);
    if (ac.title.empty()) {
        return false;
    }
    titleCache[ac.hexid] = ac.title;
    return true;
}

bool matchStatic(AcBase& ac, bool standCargo, std::string_view standName)
{
    if (!ac.title.empty()) {
        if (LOG.value) {
            logLine(format("          {} =s= {}", logName(ac), ac.title));
        }
        return true;
    }
    ac.cargo = standCargo;
    const int32_t step = lf_climbAndLog({.ac = ac, .parked = true});
    if (step == 0 && LOG.value) {
        logLine(format("{:8}: {} no livery match ...", standName, logName(ac)));
    }
    return step > 0;
}

void gf_noteRefusedTitle(const AcBase& ac)
{
    showMessage(format("{} \"{}\" could not be created by your Sim!", ac.callsign, ac.title), true);
    if (!lf_isRefused(ac.title)) {
        refusedTitles.push_back(ac.title);
    }
    refusedAircraft.insert(format("{} {}", ac.model, ac.airline));
    if (refusedTitles.size() >= kMostRefusedTitles) {
        const std::string text =
            format("there are too many liveries that could not be created by {}!", kSimulatorName);
        logLine(format("\n===> Error 81, {}\n", text));
        throw UserErrorException(81, format("{}, see Log.txt", text));
    }
}

void writeMatchingSummary()
{
    if (!LOG.value) {
        return;
    }
    logBanner("live traffic livery matching summary", kSummaryWidth);
    logLine("Matches at step: ");
    for (size_t i = 0; i < matchCounters.size(); ++i) {
        logLine(format("  {}: {}", i + 1, matchCounters[i]));
    }
    if (!refusedAircraft.empty()) {
        logLine(format("\nCould not be created by {}:", kSimulatorName));
        std::for_each(refusedAircraft.begin(), refusedAircraft.end(), logLine);
    }
    logBanner("", kSummaryWidth);
}

void writeUnmatchedList()
{
    if (!LOG.value || failedLiveries.empty()) {
        return;
    }
    logLine("\nNo match found for:");
    std::for_each(failedLiveries.begin(), failedLiveries.end(), logLine);
    logLine("");
}

MatchTrace gf_explainMatch(AcBase& ac, bool parked)
{
    MatchTrace trace;
    trace.step = lf_climb({.ac = ac, .parked = parked}, [&trace](const Rung& rung, RungOutcome outcome) {
        trace.rungs.push_back({rung.name, rung.condition, rung.step, rung.depth, outcome});
    });
    if (trace.step == 0 && !refusedTitles.empty()) {
        const TitleViews refused = std::exchange(refusedTitles, {});
        trace.refused = lf_climb({.ac = ac, .parked = parked}, lf_observeNothing) > 0;
        ac.title = {};
        refusedTitles = refused;
    }
    return trace;
}

}  // namespace vlt
