#include "liveries/match_index.h"

#include "core/base/log.h"
#include "liveries/database.h"

#include <algorithm>
#include <tuple>
#include <unordered_set>

namespace vlt {

// What is known of specialTitles beyond the vector itself. Brought up to date on the first question
// after the vector has changed.
struct SpecialLookup {
    std::unordered_set<std::string_view, Fnv1a, std::equal_to<>> titles;  // the same as the vector's
    std::unordered_map<const TitleViews*, TitleViews> freeTitles;         // by list: those not special
    size_t taken = 0;            // how many of the vector's titles are in
    const void* last = nullptr;  // the text of the last one taken
};
static SpecialLookup specialLookup;  // [worker]

void gf_sortLiveries()
{
    liveries.sort([](const Livery& a, const Livery& b) {
        return std::tie(a.airline, a.model, a.title) < std::tie(b.airline, b.model, b.title);
    });
}

void gf_dropUnusableLiveries()
{
    liveries.remove_if([](const Livery& livery) {
        const bool incomplete = livery.airline.empty() || livery.model.empty() || livery.title.empty();
        const bool tooLong = livery.title.size() > kLongestTitle;
        if (incomplete || tooLong) {
            logLine(format("livery \"{}\" of {} {} left out: {}", livery.title, livery.airline, livery.model,
                           tooLong ? "its title is too long for the simulator" : "it is incomplete"));
        }
        return incomplete || tooLong;
    });
}

void gf_buildAirlineLiveries()
{
    airlineLiveries.clear();
    for (const Livery& livery : liveries) {
        airlineLiveries[livery.airline][livery.model].push_back({livery.title, livery.cargo});
    }
    // From here on nothing moves: views point into these texts.
    for (auto& [airline, models] : airlineLiveries) {
        for (auto& [model, entries] : models) {
            entries.shrink_to_fit();
        }
    }
}

void gf_buildByAirlineModel()
{
    byAirlineModel = {};
    specialLookup = {};
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            for (const LiveryEntry& entry : entries) {
                byAirlineModel[entry.cargo ? 1 : 0][airline][model].push_back(entry.title);
            }
        }
    }
}

void gf_buildByModel()
{
    struct Installed {
        std::string_view model, airline, title;
        bool cargo;
    };
    std::vector<Installed> all;
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            for (const LiveryEntry& entry : entries) {
                all.push_back({model, airline, entry.title, entry.cargo});
            }
        }
    }
    // The hash tables have no order of their own: by airline and title the first of a model, which is
    // the one that counts without chance, is the same on every machine.
    std::sort(all.begin(), all.end(), [](const Installed& a, const Installed& b) {
        return std::tie(a.model, a.airline, a.title) < std::tie(b.model, b.airline, b.title);
    });
    byModel = {};
    specialLookup = {};
    for (const Installed& livery : all) {
        byModel[livery.cargo ? 1 : 0][std::string(livery.model)].push_back(livery.title);
    }
}

static bool lf_hasLivery(std::string_view model)
{
    return byModel[0].contains(model) || byModel[1].contains(model);
}

// A model, followed by its look-alikes with a livery.
using LookAlikes = std::vector<std::string>;

static void lf_addLookAlikes(const std::vector<std::string>& group, std::vector<LookAlikes>& all)
{
    std::vector<std::string> installed;
    std::copy_if(group.begin(), group.end(), std::back_inserter(installed), lf_hasLivery);
    installed.erase(std::unique(installed.begin(), installed.end()), installed.end());
    for (const std::string& member : group) {
        LookAlikes list{member};
        std::copy_if(installed.begin(), installed.end(), std::back_inserter(list),
                     [&member](const std::string& other) { return other != member; });
        if (list.size() > 1) {
            all.push_back(std::move(list));
        }
    }
}

void gf_buildSimilarWithLiveries()
{
    std::vector<LookAlikes> all;
    for (const std::vector<std::string>& group : dbase.similarTypes) {
        lf_addLookAlikes(group, all);
    }
    std::sort(all.begin(), all.end());
    similarWithLiveries.clear();
    for (const LookAlikes& list : all) {
        similarWithLiveries.try_emplace(list.front(), list.begin() + 1, list.end());
    }
    logLine(format("{} similar model definitions", similarWithLiveries.size()));
}

void gf_buildSimilarPerAirline()
{
    similarPerAirline.clear();
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, lookAlikes] : similarWithLiveries) {
            if (models.contains(model)) {
                continue;
            }
            std::vector<std::string> own;
            std::copy_if(
                lookAlikes.begin(), lookAlikes.end(), std::back_inserter(own),
                [&installed = models](const std::string& other) { return installed.contains(other); });
            if (!own.empty()) {
                similarPerAirline[airline].emplace(model, std::move(own));
            }
        }
    }
}

std::vector<std::string> gf_modelsOfCategory(AcCategory category)
{
    std::set<std::string> models;
    for (const auto& index : byModel) {
        for (const auto& [model, titles] : index) {
            if (categoryOf(model) == category) {
                models.insert(model);
            }
        }
    }
    return {models.begin(), models.end()};
}

void gf_buildCategoryModels()
{
    lightModels = gf_modelsOfCategory(AcCategory::Light);
    buzjetModels = gf_modelsOfCategory(AcCategory::Buzjets);
    rotorcraftModels = gf_modelsOfCategory(AcCategory::Rotorcraft);
}

void buildMatchIndexes()
{
    gf_dropUnusableLiveries();
    gf_buildAirlineLiveries();
    gf_buildByAirlineModel();
    gf_buildByModel();
    gf_buildSimilarWithLiveries();
    gf_buildSimilarPerAirline();
    gf_buildCategoryModels();
}

static const SpecialLookup& lf_specials()
{
    SpecialLookup& lookup = specialLookup;
    const void* last = specialTitles.empty() ? nullptr : specialTitles.back().data();
    if (lookup.taken != specialTitles.size() || lookup.last != last) {
        lookup.titles = {specialTitles.begin(), specialTitles.end()};
        lookup.freeTitles.clear();
        lookup.taken = specialTitles.size();
        lookup.last = last;
    }
    return lookup;
}

bool gf_isSpecialTitle(std::string_view title)
{
    return !specialTitles.empty() && lf_specials().titles.contains(title);
}

const TitleViews& gf_freeTitles(const TitleViews& titles)
{
    const SpecialLookup& lookup = lf_specials();
    const auto [place, added] = specialLookup.freeTitles.try_emplace(&titles);
    if (added) {
        std::copy_if(titles.begin(), titles.end(), std::back_inserter(place->second),
                     [&lookup](std::string_view title) { return !lookup.titles.contains(title); });
    }
    return place->second;
}

void gf_clearMatchIndexes()
{
    for (TitleViews* views : {&specialTitles, &refusedTitles}) {
        views->clear();
    }
    specialLookup = {};
    regcodeTitles.clear();
    titleCache.clear();
    failedLiveries.clear();
    refusedAircraft.clear();
    matchCounters = {};
    similarWithLiveries.clear();
    similarPerAirline.clear();
    for (std::vector<std::string>* models : {&lightModels, &buzjetModels, &rotorcraftModels}) {
        models->clear();
    }
    byModel = {};
    byAirlineModel = {};
    airlineLiveries.clear();
}

}  // namespace vlt
