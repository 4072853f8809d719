#include "liveries/scan_store.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/livery_search.h"
#include "liveries/match_index.h"
#include "liveries/regcodes.h"
#include "liveries/report_file.h"
#include "liveries/scan_results.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace vlt {

namespace fs = std::filesystem;

void liveryDbCorrection(Livery& livery, std::vector<std::string>& conversions)
{
    const RegRecord* record = findRegcode(livery.atcid);
    if (record == nullptr) {
        return;
    }
    if (record->cargo != livery.cargo) {
        conversions.push_back(
            format("{:80} {} cargo {} => {}", livery.title, livery.atcid, livery.cargo, record->cargo));
        livery.cargo = record->cargo;
    }
    const std::string& airline = record->opr.empty() ? record->airl : record->opr;
    if (airline != livery.airline) {
        conversions.push_back(
            format("{:80} {} airl {} => {}", livery.title, livery.atcid, livery.airline, airline));
        livery.airline = airline;
    }
    if (record->type != livery.model) {
        conversions.push_back(
            format("{:80} {} model {} => {}", livery.title, livery.atcid, livery.model, record->type));
        livery.model = record->type;
    }
}

// --- what a scan found

// Takes liveries out that a folder of a lower number has for the same airline and model; a line for each.
static std::vector<std::string> lf_prioritize()
{
    std::map<std::pair<std::string, std::string>, int32_t> first;
    for (const Livery& livery : liveries) {
        const auto place = first.try_emplace({livery.airline, livery.model}, livery.folder).first;
        place->second = std::min(place->second, livery.folder);
    }
    std::vector<std::string> skipped;
    std::erase_if(liveries, [&](const Livery& livery) {
        const bool later = livery.folder > first.at({livery.airline, livery.model});
        if (later) {
            skipped.push_back(format("{} {} \"{}\" of folder {}", livery.airline, livery.model, livery.title,
                                     livery.folder));
        }
        return later;
    });
    return skipped;
}

static bool lf_sameLivery(const Livery& a, const Livery& b)
{
    return std::tie(a.title, a.airline, a.model, a.atcid, a.cargo) ==
           std::tie(b.title, b.airline, b.model, b.atcid, b.cargo);
}

// --- reports

// A list, its file, and how the log tells of it: the count comes before `what`.
struct Report {
    const std::vector<std::string>& lines;
    fs::path path;
    std::string_view what;
    bool plural = false;  // with "s" behind it unless there is one line
};

static void lf_write(const Report& report)
{
    if (report.lines.empty()) {
        return;
    }
    gf_writeReport(report.path, report.lines);
    const auto count = static_cast<int64_t>(report.lines.size());
    logLine(format("{} {}{}, see {}", count, report.what, report.plural ? gf_plural(count) : "",
                   gf_shown(report.path)));
}

static void lf_removeOldReports()
{
    try {
        for (const char* name : {"AircraftCfgWithNoFltsimSection.txt", "AirlineModelConversions.txt",
                                 "LiveriesSkippedOnPriority.txt"}) {
            fs::remove(kInfoFolder / name);
        }
        fs::remove_all(kErrorsFolder);
    } catch (const std::exception& e) {
        logLine(format("problems with removing previous files: {}", e.what()));
    }
}

static void lf_writeReports(CfgReports& lists, const std::vector<std::string>& conversions,
                            const std::vector<std::string>& skipped)
{
    lf_removeOldReports();
    std::sort(lists.withoutSections.begin(), lists.withoutSections.end());
    const Report errors[] = {
        {lists.airlineCodes, kErrorsFolder / "InvalidAirlineCodes.txt", "invalid airline code", true},
        {lists.modelCodes, kErrorsFolder / "InvalidAircraftCodes.txt", "invalid model code", true},
        {lists.fixes, kErrorsFolder / "Fixes.txt", "code fixes"},
        {lists.invalidFiles, kErrorsFolder / "InvalidAircraftCfgFiles.txt", "invalid aircraft.cfg files"},
        {lists.incomplete, kErrorsFolder / "IncompleFltsimSections.txt", "incomplete [fltsim.x] sections"}};
    const bool none = std::ranges::all_of(errors, [](const Report& report) { return report.lines.empty(); });
    logLine(none ? "\nNo errors" : "\nErrors:");
    std::ranges::for_each(errors, lf_write);
    logLine("\nInformation:");
    lf_write({lists.withoutSections, kInfoFolder / "AircraftCfgWithNoFltsimSection.txt",
              "empty aircraft.cfg files"});
    lf_write({conversions, kInfoFolder / "AirlineModelConversions.txt",
              "liveries updated with real live data from dbase"});
    lf_write({skipped, kInfoFolder / "LiveriesSkippedOnPriority.txt", "liveries skipped on priority"});
}

// --- the whole

static void lf_scanFolders(const std::vector<std::string>& folders, LiveryScanLists& lists)
{
    ScanProgress progress("liveries");
    int32_t folderNumber = 0;
    for (const std::string& folder : folders) {
        if (gf_stopping()) {
            return;
        }
        gf_searchListEntry(folder, folderNumber, lists, progress);
    }
}

LiveryScan scanAndStoreLiveries(const std::vector<std::string>& folders)
{
    LiveryScanLists lists;
    liveries.clear();
    dontUseTitles.clear();
    readDontUseTitles();
    lf_scanFolders(folders, lists);
    if (gf_stopping()) {
        liveries.clear();
        return LiveryScan::Stopped;
    }
    if (liveries.empty()) {
        display.liveriesCount = 0;
        lf_writeReports(lists.reports, {}, {});
        return LiveryScan::NothingFound;
    }
    if (folders.size() > 1) {
        logLine(format("{} in total", liveries.size()));
    }
    std::vector<std::string> conversions;
    for (Livery& livery : liveries) {
        liveryDbCorrection(livery, conversions);
    }
    const std::vector<std::string> skipped =
        LIG_PRIORITIZE.value ? lf_prioritize() : std::vector<std::string>();
    gf_sortLiveries();
    liveries.unique(lf_sameLivery);
    const bool stored = writeLiveriesScanned();
    if (stored) {
        logLine(format("{} liveries in {}", liveries.size(), gf_shown(kLiveriesScannedFile)));
        lf_writeReports(lists.reports, conversions, skipped);
    }
    liveries.clear();
    return stored ? LiveryScan::Stored : LiveryScan::NotStored;
}

}  // namespace vlt
