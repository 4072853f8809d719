#include "scenery/airports_scan.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/ordered_tasks.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/scan_progress.h"
#include "core/base/text.h"
#include "core/base/tree_walk.h"
#include "liveries/liveries.h"
#include "liveries/report_file.h"
#include "platform/paths_form.h"
#include "scenery/bgl.h"
#include "scenery/generated_airports.h"
#include "scenery/offline_learning.h"
#include "scenery/scenery_list.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace vlt {

static bool lf_contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

std::string publisherOfFile(std::string_view shown)
{
    if (lf_contains(gf_upperCase(shown), "ORBX")) {
        return std::string(kSimaddon);
    }
    for (const std::vector<std::string>& names : dbase.publishers) {
        const bool ours = std::ranges::any_of(
            names, [shown](const std::string& name) { return !name.empty() && lf_contains(shown, name); });
        if (ours) {
            return names.front();
        }
    }
    return std::string(kUnknownPublisher);
}

// --- one airport, one file, one folder

static void lf_takeAirport(const BglAirport& decoded, AirportScan& scan)
{
    Apf apf = decoded.apf;
    apf.publisher = publisherOfFile(apf.bglPath);
    if (apf.publisher == kSimaddon) {
        gf_tell(scan, format("from filename => publisher  {}", apf.publisher));
    }
    const LinkOutcome link = linkOrGenerate(apf, scan);
    const bool more = link.archivedStands && apf.stands.size() > *link.archivedStands;
    if (more && apf.publisher != kSimaddon) {
        gf_tell(scan, format("===> {} has {} parkpos while archived one has {}", apf.code, apf.stands.size(),
                             *link.archivedStands));
    }
    if (!link.linked || (more && apf.publisher != kSimaddon)) {
        generateAirport(std::move(apf), scan);
    }
}

static bool lf_mayHoldAirports(std::string_view name, std::string_view shown)
{
    return (name.ends_with(".BGL") || name.ends_with(".bgl")) && !lf_contains(shown, "statics") &&
           !lf_contains(shown, "_heliports");
}

// What a scan carries from folder to folder.
struct SceneryWalk {
    AirportScan scan;
    std::set<std::string> filesSeen;  // a folder may lie in another one of the list
    ScanProgress progress{"airports"};
};

static void searchFolder(const std::filesystem::path& folder, const std::string& shown, SceneryWalk& walk)
{
    showMessage(format("Scanning for addon airports in {}", shown), false);
    walk.progress.enter(shown);
    const TreeRules rules{[](std::string_view) { return true; }, lf_mayHoldAirports,
                          [&walk](std::string_view, bool isFolder) {
                              if (!isFolder) {
                                  walk.progress.seen();
                              }
                          }};
    FoundFiles found = gf_walkTree(folder, rules);
    for (const std::string& line : found.unreadable) {
        gf_tell(walk.scan, format("===> airports search in folder {} aborted because of iterator problem: {}",
                                  shown, line));
    }
    std::erase_if(found.files, [&walk](const FoundFile& file) {
        return !walk.filesSeen.insert(file.path.string()).second;
    });
    const auto decode = [&found](size_t i) {
        const FoundFile& file = found.files[i];
        return holdsAirports(file.path) ? decodeBglFile(file.path, file.shown) : BglFile{};
    };
    gf_resultsInOrder(found.files.size(), decode, [&walk](size_t, const BglFile& file) {
        for (const std::string& line : file.log) {
            gf_tell(walk.scan, line);
        }
        for (const BglAirport& airport : file.airports) {
            lf_takeAirport(airport, walk.scan);
        }
        walk.scan.airports += std::ssize(file.airports);
        walk.progress.found(std::ssize(file.airports));
    });
}

static void lf_searchEntry(const std::string& entry, SceneryWalk& walk)
{
    std::error_code error;
    const std::filesystem::path folder = gf_toNativeForm(entry);
    if (!std::filesystem::exists(folder, error)) {
        gf_tell(walk.scan, format("{} does not exist, skipped!", entry));
    } else if (!std::filesystem::is_directory(folder, error)) {
        gf_tell(walk.scan, format("{} is not a folder name, skipped!", entry));
    } else if (gf_isStockScenery(entry)) {
        walk.scan.stock.push_back(entry);
    } else {
        try {
            searchFolder(folder, entry, walk);
        } catch (const std::exception& e) {
            gf_tell(walk.scan,
                    format("===> airports search in folder {} aborted, cause: {}", entry, e.what()));
        }
    }
}

// --- the scan

static void lf_writeLogs(const AirportScan& scan)
{
    gf_writeReport(kInfoFolder / "AirportsScanLog.txt", scan.told);
    gf_writeReport(kInfoFolder / "StockAirportsLog.txt", scan.stock);
}

bool gf_scanSceneries(const std::vector<std::string>& folders)
{
    gf_beginResults();
    SceneryWalk walk;
    for (const std::string& folder : folders) {
        if (!gf_stopping()) {
            lf_searchEntry(folder, walk);
        }
    }
    if (gf_stopping() || walk.scan.unwritten || !gf_placeResults()) {
        gf_dropResults();
        return false;
    }
    if (walk.scan.airports == 0) {
        showMessage("Warning: Scan has not found any add-on airports", true);
    }
    gf_packOfflineLearning(walk.scan);
    lf_writeLogs(walk.scan);
    return true;
}

void scanAirports()
{
    showMessage("Scanning for addon airports ...", false);
    logLine(format("\n++++++++++++++++++++++++ airports scan {} starts +++++++++++++++++++++++++++++",
                   AFG_AUTOMATIC.value ? "automatic " : "manual "));
    if (gf_scanSceneries(gf_sceneryFolders())) {
        showMessage("Airports scan successful", true);
        SCAN_AIRPORTS.value = false;
        saveParameter(SCAN_AIRPORTS);
    } else if (!gf_stopping()) {
        showMessage("The airports found could not be stored, see the Log.txt", true);
    }
    logLine("-------------------------- airports scan ends    ----------------------------\n");
}

}  // namespace vlt
