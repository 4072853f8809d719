#include "liveries/match_index.h"

#include "core/base/log.h"
#include "liveries/database.h"
#include "liveries/regcodes.h"

#include <algorithm>
#include <tuple>
#include <unordered_set>

namespace vlt {

void gf_sortLiveries()
{
    liveries.sort([](const Livery& a, const Livery& b) {
        return std::tie(a.airline, a.model, a.title) < std::tie(b.airline, b.model, b.title);
    });
}

static void lf_dropUnusable()
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

static void lf_buildAirlineLiveries()
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

static void lf_buildByAirlineModel()
{
    byAirlineModel = {};
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            for (const LiveryEntry& entry : entries) {
                byAirlineModel[entry.cargo ? 1 : 0][airline][model].push_back(entry.title);
            }
        }
    }
}

static void lf_buildByModel()
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

static void lf_buildSimilarWithLiveries()
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

static void lf_buildSimilarPerAirline()
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

static std::vector<std::string> lf_modelsOfCategory(AcCategory category)
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

static void lf_buildCategoryModels()
{
    lightModels = lf_modelsOfCategory(AcCategory::Light);
    buzjetModels = lf_modelsOfCategory(AcCategory::Buzjets);
    rotorcraftModels = lf_modelsOfCategory(AcCategory::Rotorcraft);
}

// A special title is reached through its registration only: the ladder's lists don't hold it, and a list of
// special titles alone isn't there.
static void lf_leaveSpecialTitlesOut()
{
    const std::unordered_set<std::string_view, Fnv1a, std::equal_to<>> special(specialTitles.begin(),
                                                                               specialTitles.end());
    const auto clean = [&special](TextMap<TitleViews>& models) {
        for (auto& [model, titles] : models) {
            std::erase_if(titles, [&special](std::string_view title) { return special.contains(title); });
        }
        std::erase_if(models, [](const auto& entry) { return entry.second.empty(); });
    };
    if (special.empty()) {
        return;
    }
    for (size_t use = 0; use < byModel.size(); ++use) {
        clean(byModel[use]);
        for (auto& [airline, models] : byAirlineModel[use]) {
            clean(models);
        }
    }
}

void buildMatchIndexes(const std::function<void()>& bindRegcodes)
{
    lf_dropUnusable();
    lf_buildAirlineLiveries();
    collectInlineRegcodes();
    if (bindRegcodes) {
        bindRegcodes();
    }
    logLine(format("{} registration codes", regcodeTitles.size()));
    lf_buildByAirlineModel();
    lf_buildByModel();
    logLine(format("{} airlines, {} pax aircraft models and {} cargo aircraft models", airlineLiveries.size(),
                   byModel[0].size(), byModel[1].size()));
    lf_leaveSpecialTitlesOut();
    lf_buildSimilarWithLiveries();
    lf_buildSimilarPerAirline();
    lf_buildCategoryModels();
}

void gf_clearMatchIndexes()
{
    for (TitleViews* views : {&specialTitles, &refusedTitles}) {
        views->clear();
    }
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
