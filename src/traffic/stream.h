// The stream of an aircraft's reports: which new samples are believed, and what they tell of its phase.
//
// Worker thread. No state beside the aircraft's.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

inline constexpr size_t kLongestStream = 200;  // samples; an aircraft with more is removed

// Takes a sample of a known aircraft into its stream, or drops it. Logs an exception and passes it on.
void decodeExisting(LiveAc& ac, PosSample sample);

}  // namespace vlt
