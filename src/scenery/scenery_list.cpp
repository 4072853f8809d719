#include "scenery/scenery_list.h"

#include "core/base/cfg_entries.h"
#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/sim_folders.h"
#include "core/base/text.h"
#include "core/base/text_files.h"
#include "platform/folders.h"

#include <algorithm>
#include <filesystem>

namespace vlt {

// clang-format off
constexpr std::string_view kStock[] = {
    "\\Cities", "\\CITIES", "\\cities", "\\World", "\\BASE",
    "\\0006", "\\0007", "\\0103", "\\0106", "\\0107", "\\0206", "\\0207", "\\0307", "\\0407", "\\0505", "\\0506",
    "\\0507", "\\0606", "\\0607", "\\0706", "\\0707", "\\0805", "\\0806", "\\0807", "\\0900", "\\0906", "\\0907",
    "\\1000", "\\1006", "\\1007", "\\1100", "\\1102", "\\1107",
    "\\AFRI", "\\ASIA", "\\AUST", "\\EURE", "\\EURW", "\\NAMC", "\\NAME", "\\NAMW", "\\OCEN", "\\SAME",
    "\\Global", "\\Bathymetry"};
// clang-format on

bool gf_isStockScenery(std::string_view path)
{
    return std::ranges::any_of(
        kStock, [path](std::string_view part) { return path.find(part) != std::string_view::npos; });
}

std::vector<std::string> gf_areasOf(const std::vector<std::string>& lines)
{
    std::vector<std::string> paths;
    for (const CfgEntry& entry : gf_cfgEntries(lines)) {
        const std::string_view local = gf_cfgValue(entry, "Local");
        if (gf_upperCase(entry.head).starts_with("AREA") && !local.empty() &&
            gf_upperCase(gf_cfgValue(entry, "Active")) == "TRUE") {
            paths.push_back(gf_belowSimulator(local));
        }
    }
    return paths;
}

std::vector<std::string> gf_addOnPathsOf(const std::vector<std::string>& lines)
{
    std::vector<std::string> paths;
    for (const CfgTag& tag : gf_cfgTags(lines)) {
        if (tag.name == "PATH" && !tag.text.empty()) {
            paths.push_back(tag.text);
        }
    }
    return paths;
}

static void lf_readSceneryCfg(const std::filesystem::path& path, std::vector<std::string>& folders)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        logLine(format("{} not found!", gf_shown(path)));
        return;
    }
    logLine(format("\nReading: {} for airport add-ons ...", gf_shown(path)));
    size_t count = 0;
    for (std::string& folder : gf_areasOf(readExtTextFile(path).lines)) {
        if (!gf_isStockScenery(folder)) {
            logLine(format("found:{}", folder));
            folders.push_back(std::move(folder));
            ++count;
        }
    }
    logLine(format("{} scenery add-on paths found\n", count));
}

static void lf_readAddOns(const std::filesystem::path& path, std::vector<std::string>& folders)
{
    std::error_code error;
    logLine(format("\nReading {} for add-on airport ...", gf_shown(path)));
    if (!std::filesystem::exists(path, error)) {
        logLine(format("{} not found!", gf_shown(path)));
        return;
    }
    std::vector<std::string> found = gf_addOnPathsOf(readExtTextFile(path).lines);
    for (const std::string& folder : found) {
        logLine(format("found path:{}", folder));
        folders.push_back(folder);
    }
    logLine(format("{} scenery add-on paths found\n", found.size()));
}

std::vector<std::string> gf_sceneryFolders()
{
    std::vector<std::string> folders;
    if (AFG_AUTOMATIC.value) {
        const std::filesystem::path lists = gf_programDataFolder() / gf_simFolderBelow();
        lf_readSceneryCfg(lists / "scenery.cfg", folders);
        lf_readAddOns(lists / "scenery_add-ons.xml", folders);
        return folders;
    }
    for (const StringParameter& folder : afolders) {
        const std::string path = folder.value;
        if (gf_isStockScenery(path)) {
            showMessage(
                format("parameter {} points to stock airports instead of add-on airports!", folder.name),
                true);
        } else if (!path.empty()) {
            folders.push_back(path);
        }
    }
    if (folders.empty()) {
        throw UserErrorException(kPlainUserError,
                                 "Set afolder parameter(-s) to your add-on airports first, see Manual 6.1");
    }
    return folders;
}

}  // namespace vlt
