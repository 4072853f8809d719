// The time of a leg: when the aircraft arrives at the second sample of its stream.
//
// It aims at the sample's own due time, 30 s behind the report. What it is off, because it began late, had to
// turn first or flew on without reports, it makes good slowly, so that it never goes much faster or slower
// than it is reported. Worker thread, no state.
#pragma once

#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr double kTicksPerHour = 360000.0;
inline constexpr int32_t kShortestLeg = 25;  // ticks

bool gf_samePosition(const PosSample& a, const PosSample& b);

// Ticks to the second sample's time, at least kShortestLeg.
int32_t gf_legTicks(const LiveAc& ac);

// Ticks that the leg ahead takes at the reported speeds, the turn that it needs on the ground included.
double gf_naturalTicks(const LiveAc& ac);

// The arrival time at the second sample replaces its due time.
void legTime(LiveAc& ac);

// Inserts a sample between the first two, at a share of the leg.
void gf_insertSample(LiveAc& ac, double share);
// Inserts a sample halfway between the first two.
void insertMidpoint(LiveAc& ac);

}  // namespace vlt
