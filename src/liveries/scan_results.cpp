#include "liveries/scan_results.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/xml_file.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/match_index.h"
#include "liveries/regcodes.h"

#include <pugixml.hpp>

#include <algorithm>

namespace vlt {

constexpr size_t kModelsPerLine = 20;

static Livery lf_livery(const pugi::xml_node& node)
{
    return {.airline = node.attribute("airl").as_string(),
            .model = node.attribute("type").as_string(),
            .title = node.attribute("title").as_string(),
            .atcid = node.attribute("atcid").as_string(),
            .folder = 0,
            .cargo = gf_isTrue(node.attribute("cargo").as_string())};
}

void readLiveriesScanned(const std::filesystem::path& path)
{
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        throw UserErrorException(51, format("File {} not found", gf_shown(path)));
    }
    const pugi::xml_node root = document.child("liveries");
    if (!root) {
        throw UserErrorException(52, format("{} does not contain a <liveries> section", gf_shown(path)));
    }
    liveries.clear();
    for (const pugi::xml_node& node : root.children("liv")) {
        liveries.push_back(lf_livery(node));
    }
    if (liveries.empty()) {
        throw UserErrorException(533, format("{} does not contain liveries", gf_shown(path)));
    }
    gf_sortLiveries();
    logLine(format("{} liveries read from {}", liveries.size(), gf_shown(path)));
}

void readLiveriesScanned()
{
    readLiveriesScanned(kLiveriesScannedFile);
}

static void lf_append(pugi::xml_node& root, const Livery& livery)
{
    pugi::xml_node node = root.append_child("liv");
    node.append_attribute("airl").set_value(livery.airline.c_str());
    node.append_attribute("type").set_value(livery.model.c_str());
    if (livery.cargo) {
        node.append_attribute("cargo").set_value("true");
    }
    node.append_attribute("title").set_value(livery.title.c_str());
    if (!livery.atcid.empty()) {
        node.append_attribute("atcid").set_value(livery.atcid.c_str());
    }
}

bool writeLiveriesScanned(const std::filesystem::path& path)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("liveries");
    for (const Livery& livery : liveries) {
        lf_append(root, livery);
    }
    return saveXml(document, path);
}

bool writeLiveriesScanned()
{
    return writeLiveriesScanned(kLiveriesScannedFile);
}

static void lf_reportGeneric()
{
    std::set<std::string_view> models;
    if (const auto generic = airlineLiveries.find(kGenericAirline); generic != airlineLiveries.end()) {
        for (const auto& [model, entries] : generic->second) {
            models.insert(model);
        }
    }
    if (models.empty()) {
        logLine("No generic liveries");
        return;
    }
    logLine(format("{} model{} have a generic livery", models.size(),
                   gf_plural(static_cast<int64_t>(models.size()))));
    logLine(format("{}", fmt::join(models, ",")));
}

// What is installed of a category, special liveries too.
struct InstalledCategory {
    std::vector<std::string> models;  // sorted
    int64_t pax = 0;
    int64_t cargo = 0;
};

static InstalledCategory lf_installed(AcCategory category)
{
    InstalledCategory installed;
    std::set<std::string> names;
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            if (categoryOf(model) == category) {
                names.insert(model);
                const auto cargo = std::ranges::count(entries, true, &LiveryEntry::cargo);
                installed.cargo += cargo;
                installed.pax += std::ssize(entries) - cargo;
            }
        }
    }
    installed.models.assign(names.begin(), names.end());
    return installed;
}

static void lf_logModels(const std::vector<std::string>& models)
{
    for (size_t first = 0; first < models.size(); first += kModelsPerLine) {
        const size_t count = std::min(kModelsPerLine, models.size() - first);
        const auto begin = models.begin() + static_cast<std::ptrdiff_t>(first);
        logLine(format("  {}", fmt::join(begin, begin + static_cast<std::ptrdiff_t>(count), ",")));
    }
}

// An option that a category without liveries takes away.
struct CategoryOption {
    AcCategory category;
    BoolParameter& option;
    std::string_view aircraft;
};

static void lf_judgeOption(AcCategory category, bool installed)
{
    const CategoryOption options[] = {{AcCategory::Light, LIGHT_AIRCRAFT, "light aircraft"},
                                      {AcCategory::HighPerf, HIGH_PERF_AIRCRAFT, "High Perf aircraft"},
                                      {AcCategory::Rotorcraft, HELICOPTERS, "Helicopters"}};
    categoryInstalled[static_cast<size_t>(category)] = installed;
    for (const CategoryOption& o : options) {
        if (o.category == category && !installed && o.option.value) {
            o.option.value = false;
            saveParameter(o.option);
            showMessage(format("{} temporary switched off because you do not have {} installed",
                               o.option.name, o.aircraft),
                        true);
        }
    }
}

void gf_reportCategory(AcCategory category)
{
    const size_t number = static_cast<size_t>(category);
    const auto [models, pax, cargo] = lf_installed(category);
    if (models.empty()) {
        logLine(format("Category {}: No livery found", kCategoryNames[number]));
    } else {
        std::string text =
            format("Category {}: {} pax liverie{}", kCategoryNames[number], pax, gf_plural(pax));
        if (cargo > 0) {
            text += format(" and {} cargo liverie{}", cargo, gf_plural(cargo));
        }
        logLine(text);
        lf_logModels(models);
    }
    lf_judgeOption(category, !models.empty());
}

void processScannedLiveries()
{
    if (liveriesProcessed) {
        logLine("Processing scanned liveries skipped; already done in previous start-up");
        liveries.clear();
        return;
    }
    readLiveriesScanned();
    display.liveriesCount = static_cast<int32_t>(liveries.size());
    buildMatchIndexes(processRegcodeFiles);
    lf_reportGeneric();
    for (size_t i = 0; i < kCategoryCount; ++i) {
        gf_reportCategory(static_cast<AcCategory>(i));
    }
    liveriesProcessed = true;
    liveries.clear();
}

}  // namespace vlt
