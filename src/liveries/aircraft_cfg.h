// One aircraft.cfg or sim.cfg turned into liveries, with what is wrong in it.
//
// Any number of threads at once, each on its own file: nothing is shared but the data base and the titles not
// to be used, which are only read. Whatever a file has to tell comes back with its liveries; the caller puts
// the files' lists together, in their order, and decides who owns a title that several offer.
#pragma once

#include "liveries/liveries.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// A line each, as the reports for the user have them.
struct CfgReports {
    std::vector<std::string> withoutSections;  // files
    std::vector<std::string> invalidFiles;
    std::vector<std::string> incomplete;  // sections
    std::vector<std::string> airlineCodes;
    std::vector<std::string> modelCodes;
    std::vector<std::string> fixes;
};

// A livery with the line that is due if its title belongs to another.
struct ScannedLivery {
    Livery livery;
    std::string doubled;
};

struct CfgScan {
    std::vector<ScannedLivery> found;
    CfgReports reports;
    std::vector<std::string> log;
};

// The file's path, as the system calls it and in the Windows form.
struct CfgPlace {
    std::filesystem::path path;
    std::string shown;
};

// The liveries of one file; `folderNumber` goes into each. A file that is gone gives nothing.
CfgScan lf_searchLiveriesinFile(int32_t folderNumber, const CfgPlace& place);

// The same for packages of IVAO, whose files tell the type by the name of their folder, and the airline by
// the first three letters of the title.
CfgScan lf_searchLiveriesinIvaoFile(int32_t folderNumber, const CfgPlace& place);
bool gf_isIvaoFile(std::string_view shown);

// The same from a text in UTF-8.
CfgScan gf_scanCfgText(int32_t folderNumber, const CfgPlace& place, std::string_view text, bool ivao);

}  // namespace vlt
