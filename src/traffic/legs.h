// The legs of an aircraft: from one sample of its stream to the next, in the air and on the ground.
//
// When the front sample is due, the leg to the second one is set up: its arrival time, the phase changes
// that it brings, and the rates that every tick adds up until then. Worker thread, no state.
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

LatLon gf_positionOf(const PosSample& sample);
bool gf_samePosition(const PosSample& a, const PosSample& b);

// The front sample is due: sets up the next leg, extends the stream, or removes the aircraft. Logs an
// exception and passes it on.
void nextPosMain(LiveAc& ac);

// Sets up the leg from the front to the second sample and drops the front.
void nextPos(LiveAc& ac);

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

}  // namespace vlt
