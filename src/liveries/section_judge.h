// A section's end: whether its keys make a livery, and whose.
//
// Any thread; a section's state lives as long as its reading.
#pragma once

#include "liveries/cfg_scan.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vlt {

// A section on its way.
struct LiverySection {
    LiverySection(CfgFile& itsFile, CfgScan& itsScan, std::string first)
        : file(itsFile), scan(itsScan), firstLine(std::move(first))
    {
    }

    CfgFile& file;
    CfgScan& scan;
    std::string firstLine;
    std::string title, airline, types, atcid;
    std::optional<std::string> model, sim, texture;
    bool hasTitle = false, hasCodes = false, hasTypes = false, hasIds = false;
};

// Adds the line to the incomplete sections; gives false, for the end of the section.
bool gf_incomplete(LiverySection& section, std::string line);

// Whether the section has all its files, a title that may be used, and an airline, which it gets here if it
// names none. What is missing is reported.
bool gf_isSoundSection(LiverySection& section);

// The hash of a path in the Windows form, as it is compared, for a PathSet; one more for a folder.
uint64_t gf_pathHash(std::string_view shown);

}  // namespace vlt
