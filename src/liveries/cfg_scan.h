// The records of a scanned aircraft.cfg: what comes of a file, and what its sections share on the way.
//
// Plain values; a file's records belong to the thread that reads it.
#pragma once

#include "liveries/liveries.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
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

// Folders and files that the walk of a livery folder has seen: the hashes of their paths as they are
// compared. Asking it spares most questions to the disk.
struct PathSet {
    std::unordered_set<uint64_t> hashes;
};

// What the sections of one file share.
struct CfgFile {
    const CfgPlace& place;
    const PathSet& onDisk;
    std::filesystem::path folder;
    std::string shownFolder;
    int32_t folderNumber = 0;
    bool ivao = false;
    std::string model;  // type designator
    std::map<std::string, bool, std::less<>>
        known;  // paths looked for below the folder, and whether they are there
};

}  // namespace vlt
