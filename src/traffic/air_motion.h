// Motion in the air: from the stream of reports to a position for every tick.
//
// At each sample the rates of the leg to the next one are fixed; in between every tick adds them up, so
// motion is linear per leg, and a leg always ends at its sample. Beside it stands what a real aircraft
// does that no report says: gear, flaps, throttle, lights, rotation and flare. Worker thread.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr int32_t kShortestLeg = 25;         // ticks
inline constexpr int32_t kWidestTimeLimit = 3000;   // ticks, after a change of course of events
inline constexpr int32_t kTakeOffTimeLimit = 5000;  // ticks, the same during a take-off

// The front sample is due: sets up the next leg, extends the stream, or removes the aircraft. Logs an
// exception and passes it on.
void nextPosMain(LiveAc& ac);

// The arrival time of the leg from the front to the second sample becomes the second's `time`, by the
// reported speeds and within the limits by which it may differ from its report. With `speed` above 0,
// that many knots.
void gf_setArrivalTime(LiveAc& ac, double speed = 0);

// Rates, configuration and lights of the air leg from the front to the second sample, `ticks` long.
void airSettings(LiveAc& ac, int32_t ticks);

// Gear, flaps, throttle and lights by altitude and vertical speed of the front sample.
void gf_airConfig(LiveAc& ac);

// Vertical speed in feet per minute with which to touch down.
double gf_touchdownVs(const LiveAc& ac);

// Pitch in radians that goes with a vertical speed in feet per minute.
double gf_pitchForVs(double vs);

// One tick of motion.
void stepMotion(LiveAc& ac);
// One tick of rotation and initial climb, of an aircraft taking off.
void takeOffStep(LiveAc& ac);
// One tick of the flare's judgement.
void flareStep(LiveAc& ac);
// The simulator reports a flying object on the ground.
void onTouchdown(LiveAc& ac);

// Brings the limits of the arrival time back towards the normal, one step.
void gf_narrowTimeLimits(LiveAc& ac);

}  // namespace vlt
