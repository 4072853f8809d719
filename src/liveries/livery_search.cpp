#include "liveries/livery_search.h"

#include "core/base/log.h"
#include "core/base/ordered_tasks.h"
#include "core/base/text.h"
#include "core/base/tree_walk.h"
#include "liveries/section_judge.h"
#include "platform/ini_text.h"
#include "platform/paths_form.h"

#include <algorithm>

namespace vlt {

// Folders of sceneries hold no aircraft, and paths beyond this length can't be used by the simulator.
static bool lf_enters(std::string_view shown)
{
    constexpr size_t kTooLong = 250;  // characters
    static const std::u32string kAirport = gf_comparedForm("airport");
    const std::u32string path = gf_comparedForm(shown);
    return path.size() < kTooLong && path.find(kAirport) == std::u32string::npos;
}

static bool lf_isAircraftCfg(std::string_view name)
{
    return gf_sameIgnoringCase(name, "aircraft.cfg") || gf_sameIgnoringCase(name, "sim.cfg");
}

template <typename T>
static void lf_moveTo(std::vector<T>& all, std::vector<T>& more)
{
    std::move(more.begin(), more.end(), std::back_inserter(all));
}

static void lf_take(CfgScan scan, LiveryScanLists& lists, ScanProgress& progress)
{
    for (const std::string& line : scan.log) {
        logLine(line);
    }
    int64_t added = 0;
    for (ScannedLivery& found : scan.found) {
        if (lists.usedTitles.insert(found.livery.title).second) {
            liveries.push_back(std::move(found.livery));
            ++added;
        } else {
            scan.reports.incomplete.push_back(std::move(found.doubled));
        }
    }
    lf_moveTo(lists.reports.withoutSections, scan.reports.withoutSections);
    lf_moveTo(lists.reports.invalidFiles, scan.reports.invalidFiles);
    lf_moveTo(lists.reports.incomplete, scan.reports.incomplete);
    lf_moveTo(lists.reports.airlineCodes, scan.reports.airlineCodes);
    lf_moveTo(lists.reports.modelCodes, scan.reports.modelCodes);
    lf_moveTo(lists.reports.fixes, scan.reports.fixes);
    progress.found(added);
}

static void searchFolder(int32_t folderNumber, const std::filesystem::path& folder, const std::string& shown,
                         LiveryScanLists& lists, ScanProgress& progress)
{
    progress.enter(shown);
    PathSet onDisk;
    const TreeRules rules{lf_enters,
                          [](std::string_view name, std::string_view) { return lf_isAircraftCfg(name); },
                          [&](std::string_view path, bool isFolder) {
                              if (isFolder || path.ends_with(".air")) {
                                  onDisk.hashes.insert(gf_pathHash(path) + (isFolder ? 1 : 0));
                              }
                              if (!isFolder) {
                                  progress.seen();
                              }
                          }};
    FoundFiles found = gf_walkTree(folder, rules);
    for (const std::string& line : found.unreadable) {
        logLine(format("liveries search in folder {} aborted because of iterator problem: {}", shown, line));
    }
    std::erase_if(found.files, [&lists](const FoundFile& file) {
        return !lists.filesSeen.insert(file.path.string()).second;
    });
    const auto scan = [&](size_t i) {
        const FoundFile& file = found.files[i];
        const CfgPlace place{file.path, file.shown};
        return gf_isIvaoFile(file.shown) ? lf_searchLiveriesinIvaoFile(folderNumber, place, onDisk)
                                         : lf_searchLiveriesinFile(folderNumber, place, onDisk);
    };
    gf_resultsInOrder(found.files.size(), scan,
                      [&](size_t, CfgScan& result) { lf_take(std::move(result), lists, progress); });
}

void gf_searchListEntry(const std::string& entry, int32_t& folderNumber, LiveryScanLists& lists,
                        ScanProgress& progress)
{
    std::error_code error;
    const std::filesystem::path folder = gf_toNativeForm(entry);
    if (!std::filesystem::exists(folder, error)) {
        logLine(format("{} does not exist, skipped!", entry));
        return;
    }
    if (!std::filesystem::is_directory(folder, error)) {
        logLine(format("{} is not a folder name, skipped!", entry));
        return;
    }
    folderNumber = std::min(folderNumber + 1, kMostFolderNumbers);
    const size_t before = liveries.size();
    try {
        searchFolder(folderNumber, folder, entry, lists, progress);
    } catch (const std::exception& e) {
        logLine(format("liveries search in {} aborted, cause: {}", entry, e.what()));
    }
    const auto count = static_cast<int64_t>(liveries.size() - before);
    logLine(count > 0 ? format("{} liverie{} found in {}", count, gf_plural(count), entry)
                      : format("No liveries found in {}", entry));
}

}  // namespace vlt
