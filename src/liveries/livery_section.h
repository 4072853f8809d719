// One section of an aircraft.cfg: its keys in file order, and what they make.
//
// Any thread; a section's state lives as long as its reading.
#pragma once

#include "liveries/cfg_scan.h"

#include <string_view>
#include <vector>

namespace vlt {

// Reads the section's lines, which aren't empty, and adds a livery, or what is wrong, to `scan`.
void lf_procesFltSimSection(const std::vector<std::string_view>& lines, CfgFile& file, CfgScan& scan);

}  // namespace vlt
