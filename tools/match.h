// velatra-tool match: asks the livery ladder, and tells what it tried.
#pragma once

#include "core/base/parameters.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

struct MatchQuery {
    std::string airline;
    std::string model;
    std::string regcode;
    std::optional<std::string> callsign;  // tells the airline where none is given
    bool cargo = false;
    bool parked = false;  // for a static aircraft
    int32_t depth = MATCHING_DEPTH.def;
    uint32_t hexid = 0;                // not 0: as for a live aircraft that may have been here before
    std::vector<std::string> refused;  // titles
};

struct MatchOptions {
    std::string dbase;       // dbase.zip or dbase.xml; empty: from the server
    std::string liveries;    // LiveriesScanned.xml
    std::string regcodes;    // AIG-regcodes.zip or .xml; empty: none
    std::string myRegcodes;  // a .TXT file of the user; empty: none
    bool noRandom = false;
    std::optional<uint64_t> seed;
    std::optional<MatchQuery> query;  // none: JSON lines from standard input
};

// Prints a JSON line for each query: title, step and the rungs of the ladder. The exit code; throws if a
// file can't be read.
int gf_match(const MatchOptions& options);

}  // namespace vlt
