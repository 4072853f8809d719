// Motion in the air, and the tick of motion of every aircraft.
//
// At each sample the rates of the leg to the next one are fixed; in between every tick adds them up, so
// motion is linear per leg. Beside it stands what a real aircraft does that no report says: gear, flaps,
// throttle, lights, rotation and flare. Worker thread.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// The arrival time of the leg from the front to the second sample, for an aircraft in the air.
void nextPosAir(LiveAc& ac);

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

}  // namespace vlt
