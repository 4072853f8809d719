// The end of a stream: an aircraft that has reached its last report holds, flies on, or goes.
//
// Worker thread. No state beside the aircraft's.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// The aircraft has reached the last sample of its stream. True if one was invented, false if it has to go.
bool extendStream(LiveAc& ac);

// Adds one invented sample, after which `count` - 1 more may follow.
void extrapolate(LiveAc& ac, int32_t count);

// The user accepts aircraft of this category.
bool gf_categoryAccepted(AcCategory category);

}  // namespace vlt
