// States that can't be: what the phases and flags of a live aircraft exclude. docs/motion.md has the table of
// who sets and clears them.
#pragma once

#include "traffic/traffic.h"

#include <string_view>

namespace vlt {

// What is wrong with the record of a driven aircraft, between two ticks; empty if all fits.
std::string_view gf_impossible(const LiveAc& ac);

}  // namespace vlt
