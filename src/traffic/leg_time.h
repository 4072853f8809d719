// The time of a leg: when the aircraft arrives at the second sample of its stream, and how far that may
// differ from its report.
//
// A leg leads from the front to the second sample; the stream holds both. Worker thread, no state.
#pragma once

#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr double kTicksPerHour = 360000.0;
inline constexpr int32_t kShortestLeg = 25;         // ticks
inline constexpr int32_t kNormalTimeLimit = 1000;   // ticks by which an arrival may differ from its report
inline constexpr int32_t kWidestTimeLimit = 3000;   // ticks, after a change of course of events
inline constexpr int32_t kTakeOffTimeLimit = 5000;  // ticks, the same during a take-off

bool gf_samePosition(const PosSample& a, const PosSample& b);

// Ticks to the second sample's time, at least kShortestLeg.
int32_t gf_legTicks(const LiveAc& ac);

// The speed in knots at which the leg from the front to the second sample, `dist` nm long, is covered.
double gf_legSpeed(const LiveAc& ac, double dist);

// The arrival `ticks` from now becomes the second sample's time: within the limits by which it may differ
// from its report unless the stream is being extended, and never before now.
void gf_arriveIn(LiveAc& ac, double ticks);

// The arrival of the leg by the reported speeds; with `speed` above 0, at that many knots.
void gf_setArrivalTime(LiveAc& ac, double speed = 0);

// Brings the limits of the arrival time back towards the normal, one step.
void gf_narrowTimeLimits(LiveAc& ac);
// Opens them wide, wider still during a take-off.
void gf_widenTimeLimits(LiveAc& ac);
// An extended stream goes back to its reports: wide limits, no more invented samples.
void gf_endExtension(LiveAc& ac);

// Inserts a sample halfway between the first two.
void insertMidpoint(LiveAc& ac);

}  // namespace vlt
