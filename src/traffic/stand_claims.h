// Who may have a stand: a new aircraft against the one that holds it, or stands beside it.
//
// Worker thread, no state.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// A new aircraft wants the stand: the aircraft that holds it is removed or keeps it. True if the new one
// may have it.
bool standConflict(const LiveAc& newcomer, uint32_t standId);

// An aircraft on an adjacent stand would touch the new one there.
bool gf_adjacentBlocked(const LiveAc& newcomer, const ParkPos& stand);

}  // namespace vlt
