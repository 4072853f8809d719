#include "airports/learned_file.h"

#include "airports/airport_file.h"
#include "core/base/log.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <pugixml.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace vlt {

// --- the stands

// Who an option tells of: two of the same that share a half hour are one.
using OptionKey = std::tuple<int32_t, bool, std::string, std::string, std::string>;

static OptionKey lf_keyOf(const StandOption& option)
{
    return {option.day, option.real, option.reg, option.airline, option.type};
}

// Lays a `parkpos` element over the stand of the same id: its changes, and the options that are new.
static void mergeLearnedStand(const pugi::xml_node& node, ParkPos& stand)
{
    if (node.attribute("radius_change").as_bool()) {
        const double radius = gf_decimal(node, "radius") / kMetresPerNm;
        if (gf_isStandRadius(radius)) {
            stand.radius = radius;
            stand.radiusChanged = true;
        } else {
            logLine(format("Parking position {} has an impossible radius, skipped", stand.id));
        }
    }
    if (node.attribute("cargo_change").as_bool()) {
        stand.cargo = node.attribute("cargo").as_bool();
        stand.cargoChanged = true;
    }
    int32_t sequence = stand.options.empty() ? 1 : stand.options.back().sequence + 1;
    std::map<OptionKey, HoursSet> known;
    for (const StandOption& option : stand.options) {
        known[lf_keyOf(option)] |= option.hours;
    }
    for (const pugi::xml_node& element : node.children("opt")) {
        StandOption option = gf_readOption(element, false, sequence);
        HoursSet& hours = known[lf_keyOf(option)];
        if ((hours & option.hours).none()) {
            hours |= option.hours;
            stand.options.push_back(std::move(option));
            ++sequence;
        }
    }
}

static void lf_addManual(const pugi::xml_node& node, const std::string& shown, std::vector<ParkPos>& stands)
{
    const std::string id = node.attribute("id").as_string();
    if (std::ranges::find(stands, id, &ParkPos::id) != stands.end()) {
        logLine(format("manually created standid {} already exists in {}", id, shown));
        return;
    }
    if (stands.size() >= kMostStands) {
        logLine(format("manually created standid {} in {} is one too many", id, shown));
        return;
    }
    const LatLon position{gf_decimal(node, "latitude"), gf_decimal(node, "longitude")};
    if (gf_isNullPosition(position) || gf_decimal(node, "radius") == 0) {
        logLine(format("manually created standid {} misses correct attributes in {}", id, shown));
        return;
    }
    if (readParkPos(node, id, false, stands)) {
        stands.back().manual = true;
    }
}

static void lf_mergeStands(const pugi::xml_document& document, const std::string& shown,
                           std::vector<ParkPos>& stands)
{
    for (const pugi::xml_node& node : gf_parkPositions(document)) {
        if (node.attribute("manual").as_bool()) {
            lf_addManual(node, shown, stands);
            continue;
        }
        const std::string id = node.attribute("id").as_string();
        if (const auto stand = std::ranges::find(stands, id, &ParkPos::id); stand != stands.end()) {
            mergeLearnedStand(node, *stand);
        } else {
            logLine(format("learned stand {} in {} not found?", id, shown));
        }
    }
}

// --- the file

static void lf_compareName(const pugi::xml_document& document, const Apf& apf)
{
    const std::string name = gf_textParameter(document, "airport_name").value_or("");
    if (name != apf.name) {
        logLine(format("Warning: learned file airport name: \"{}\" differs from archived file airport name: "
                       "\"{}\"",
                       name, apf.name));
    }
}

// Keeps the file out of the way, so that a fresh one can grow.
static void lf_moveAside(const std::filesystem::path& path, const std::string& shown, const char* why)
{
    if (!gf_putAside(path).empty()) {
        logLine(format("{} found, but could not be loaded, saved as *.0.xml: {}", shown, why));
    }
}

static void lf_merge(const pugi::xml_document& document, const std::string& shown, Apf& apf)
{
    lf_compareName(document, apf);
    if (!gf_boolParameter(document, "handmade").value_or(false)) {
        std::vector<ParkPos> stands = apf.stands;
        lf_mergeStands(document, shown, stands);
        apf.stands = std::move(stands);
        return;
    }
    std::vector<ParkPos> stands;
    gf_readParkPositions(document, stands);
    std::set<std::string_view> manual;
    for (const pugi::xml_node& node : gf_parkPositions(document)) {
        if (node.attribute("manual").as_bool()) {
            manual.insert(node.attribute("id").as_string());
        }
    }
    for (ParkPos& stand : stands) {
        stand.manual = manual.contains(stand.id);
    }
    apf.handmade = true;
    apf.stands = std::move(stands);
}

std::string lf_readLearned(const std::filesystem::path& path, const std::string& shown, Apf& apf,
                           std::optional<ParkingSettings>& settings)
{
    try {
        pugi::xml_document document;
        const pugi::xml_parse_result parsed = document.load_file(path.c_str());
        if (!parsed) {
            lf_moveAside(path, shown, parsed.description());
            return {};
        }
        logLine(format("Read from learned airport file: \"{}\"", shown));
        settings = gf_readParkingSettings(document);
        lf_merge(document, shown, apf);
        return gf_decimalComma(document);
    } catch (const std::exception& e) {
        logLine(format("lf_readLearned: {}", e.what()));
    }
    return {};
}

}  // namespace vlt
