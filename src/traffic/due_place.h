// Where an aircraft is due by its reports: one that appears late begins there, and not where it was due
// first. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// Heading of an aircraft between two of its samples: as reported while it stands or creeps, for it may be
// pushed.
double gf_headingBetween(const PosSample& front, const PosSample& next);

// Puts a taxiing or flying aircraft, its place, height and heading, where it is due at the tick `when` by the
// reports heard until now: as far as they lead without leaving the ground or touching it.
void gf_placeWhereDue(LiveAc& ac, int32_t when);

// The same for now; what it has missed goes from its stream.
void gf_beginWhereDue(LiveAc& ac);

}  // namespace vlt
