// On the runway: the take-off run and the rotation, the landing roll, and the landing that is broken off.
//
// What an aircraft does there the reports tell late; these functions judge it from the samples ahead and
// configure the object. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr double kTakeOffRunSpeed = 43;  // knots; taxiing aircraft stay below

// The take-off run begins.
void takeOffStart(LiveAc& ac);
// Throttle of a leg of the take-off run, by its speeds.
void gf_throttleOfTakeOffRun(LiveAc& ac);
// On the last leg on the ground, before its time is fixed: a sample is inserted at which the aircraft has to
// rotate to be in the air when it is due there.
void gf_rotateWhenDue(LiveAc& ac);
// During the run, on a leg of `ticks`: rotates once the samples ahead climb, or are fast enough and
// airborne.
void gf_judgeRotation(LiveAc& ac, int32_t ticks);
// The nose comes up.
void rotationStart(LiveAc& ac);

// Flaps, spoilers and lights of a leg of the landing roll, which ends when the aircraft turns off.
void rollOutConfig(LiveAc& ac);
// Back into the air out of the landing roll.
void gf_rejectLanding(LiveAc& ac);

}  // namespace vlt
