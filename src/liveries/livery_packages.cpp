#include "liveries/livery_packages.h"

#include "core/base/cfg_entries.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/sim_folders.h"
#include "core/base/text.h"
#include "core/base/text_files.h"
#include "platform/folders.h"
#include "platform/ini_text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <optional>

namespace vlt {

static bool lf_contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

std::vector<std::string> gf_simobjectFolders(const std::vector<std::string>& lines,
                                             const std::string& package)
{
    constexpr std::string_view kCategories[] = {"SimObjects", "SIMOBJECTS", "Simobjects", "simobjects"};
    constexpr std::string_view kNotForTraffic[] = {"Lights Reborn", "Aerosoft Geneva Professional"};
    std::vector<std::string> folders;
    bool open = false;
    for (const CfgTag& tag : gf_cfgTags(lines)) {
        const auto inText = [&tag](std::string_view part) { return lf_contains(tag.text, part); };
        if (tag.name == "CATEGORY") {
            open = std::ranges::any_of(kCategories, inText);
        } else if (tag.name == "PATH" && open) {
            if (!tag.text.empty() && std::ranges::none_of(kNotForTraffic, inText)) {
                folders.push_back(gf_belowFolder(package, tag.text));
            }
            open = false;
        } else if (tag.name == "/ADDON.COMPONENT") {
            open = false;
        }
    }
    return folders;
}

static void lf_explore(const std::string& package, std::vector<std::string>& searchList)
{
    const std::string shown = gf_belowFolder(package, "add-on.xml");
    const std::filesystem::path path = gf_toNativeForm(shown);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        logLine(format("{} not found!", shown));
        return;
    }
    logLine(format("   exploring {}", shown));
    for (std::string& folder : gf_simobjectFolders(readExtTextFile(path).lines, package)) {
        logLine(format("      Simobjects found:{}", folder));
        searchList.push_back(std::move(folder));
    }
}

// The entries of a list of the simulator whose heads contain `head`; none, with a log line, without the file.
static std::optional<std::vector<CfgEntry>> lf_entries(const std::filesystem::path& path,
                                                       std::string_view head)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        logLine(format("{} not found!", gf_shown(path)));
        return std::nullopt;
    }
    std::vector<CfgEntry> entries = gf_cfgEntries(readExtTextFile(path).lines);
    std::erase_if(entries, [head](const CfgEntry& entry) {
        return !lf_contains(gf_upperCase(entry.head), head) || gf_cfgValue(entry, "Path").empty();
    });
    return entries;
}

static void lf_readAddOns(std::vector<std::string>& searchList)
{
    const std::filesystem::path path = gf_appDataFolder() / gf_simFolderBelow() / "add-ons.cfg";
    logLine(format("\nReading {} for AI add-on packages...", gf_shown(path)));
    const std::optional<std::vector<CfgEntry>> entries = lf_entries(path, "PACKAGE");
    if (!entries) {
        return;
    }
    for (const CfgEntry& entry : *entries) {
        const std::string package(gf_cfgValue(entry, "Path"));
        logLine(format("path found:{}", package));
        lf_explore(package, searchList);
    }
    logLine(format("{} AI add-on package{} found", entries->size(),
                   gf_plural(static_cast<int64_t>(entries->size()))));
}

void lf_readP3DAddOnsAircraft(std::vector<std::string>& searchList)
{
    try {
        lf_readAddOns(searchList);
    } catch (const std::exception& e) {
        logLine(format("sys error exception {} in {}, no AI add-on packages found", e.what(),
                       "lf_readP3DAddOnsAircraft"));
    }
}

static bool lf_isStock(std::string_view path)
{
    constexpr std::string_view kStock[] = {"Airplanes", "Avatars",        "Rotorcraft", "GroundVehicles",
                                           "Boats",     "Animals",        "Misc",       "Submersible",
                                           "Weapons",   "Countermeasures"};
    return lf_contains(path, "SimObjects") &&
           std::ranges::any_of(kStock, [path](std::string_view name) { return lf_contains(path, name); });
}

void readSimobjectsCfg(std::vector<std::string>& searchList)
{
    const std::filesystem::path path = gf_programDataFolder() / gf_simFolderBelow() / "simobjects.cfg";
    logLine(format("\nReading {} for AI add-on packages...", gf_shown(path)));
    const std::optional<std::vector<CfgEntry>> entries = lf_entries(path, "ENTRY");
    if (!entries) {
        return;
    }
    int64_t count = 0;
    for (const CfgEntry& entry : *entries) {
        const std::string_view folder = gf_cfgValue(entry, "Path");
        if (!lf_isStock(folder)) {
            logLine(format("path found:{}", folder));
            searchList.push_back(gf_belowSimulator(folder));
            ++count;
        }
    }
    logLine(format("{} AI add-on packages found", count));
}

}  // namespace vlt
