// Who may have a stand: a new aircraft against the one that holds it, or stands beside it.
//
// Worker thread, no state.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// A new aircraft wants the stand: true if it may have it, for nobody holds it, or who does must go.
bool standConflict(const LiveAc& newcomer, uint32_t standId);
// Removes who holds it.
void gf_removeHolder(const LiveAc& newcomer, uint32_t standId);

// An aircraft on an adjacent stand would touch the new one there, or nobody knows where that stand is.
bool gf_adjacentBlocked(const LiveAc& newcomer, const ParkPos& stand);

}  // namespace vlt
