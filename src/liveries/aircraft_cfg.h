// One aircraft.cfg or sim.cfg turned into liveries, with what is wrong in it.
//
// Any number of threads at once, each on its own file: nothing is shared but the data base and the titles not
// to be used, which are only read. Whatever a file has to tell comes back with its liveries; the caller puts
// the files' lists together, in their order, and decides who owns a title that several offer.
#pragma once

#include "liveries/cfg_scan.h"

#include <cstdint>
#include <string_view>

namespace vlt {

// The liveries of one file; `folderNumber` goes into each. A file that is gone gives nothing.
CfgScan lf_searchLiveriesinFile(int32_t folderNumber, const CfgPlace& place, const PathSet& onDisk = {});

// The same for packages of IVAO, whose files tell the type by the name of their folder, and the airline by
// the first three letters of the title.
CfgScan lf_searchLiveriesinIvaoFile(int32_t folderNumber, const CfgPlace& place, const PathSet& onDisk = {});
bool gf_isIvaoFile(std::string_view shown);

// The same from a text in UTF-8.
CfgScan gf_scanCfgText(int32_t folderNumber, const CfgPlace& place, std::string_view text, bool ivao,
                       const PathSet& onDisk = {});

}  // namespace vlt
