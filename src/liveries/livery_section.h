// One section of an aircraft.cfg: its keys in file order, and what they make.
//
// Any thread; a section's state lives as long as its reading.
#pragma once

#include "liveries/aircraft_cfg.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// What the sections of one file share.
struct CfgFile {
    const CfgPlace& place;
    std::filesystem::path folder;
    std::string shownFolder;
    int32_t folderNumber = 0;
    bool ivao = false;
    std::string model;  // type designator
    std::map<std::string, bool, std::less<>>
        known;  // paths looked for below the folder, and whether they are there
};

// Reads the section's lines, which aren't empty, and adds a livery, or what is wrong, to `scan`.
void lf_procesFltSimSection(const std::vector<std::string_view>& lines, CfgFile& file, CfgScan& scan);

}  // namespace vlt
