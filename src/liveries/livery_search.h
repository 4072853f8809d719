// One livery folder searched: all its aircraft.cfg files, read at once and put together in their order.
//
// Worker thread, which alone fills the lists; the tasks that read the files share nothing with it.
#pragma once

#include "core/base/scan_progress.h"
#include "liveries/aircraft_cfg.h"

#include <cstdint>
#include <set>
#include <string>
#include <unordered_set>

namespace vlt {

// The folder number counts up to here.
inline constexpr int32_t kMostFolderNumbers = 10;

// What a whole scan gathers beside the list `liveries`.
struct LiveryScanLists {
    CfgReports reports;
    std::unordered_set<std::string, Fnv1a, std::equal_to<>>
        usedTitles;                   // the first file that offers one owns it
    std::set<std::string> filesSeen;  // a folder may lie in another one of the search list
};

// Scans one entry of the search list, in the Windows form, and appends what it finds to `liveries`. The
// number of the last folder goes up by one unless the entry is no folder, which is logged, or it has reached
// its most.
void gf_searchListEntry(const std::string& entry, int32_t& folderNumber, LiveryScanLists& lists,
                        ScanProgress& progress);

}  // namespace vlt
