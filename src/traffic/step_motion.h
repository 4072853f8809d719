// One tick of motion, in the air and on the ground: sums only, no bearing or distance.
//
// Take-off, flare and touchdown are the places where the engine knows better than the reports. Worker thread;
// the state beside the aircraft's is `flareActive`.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// One tick of motion.
void stepMotion(LiveAc& ac);
// One tick of the flare's judgement.
void flareStep(LiveAc& ac);
// The simulator reports a flying object on the ground.
void onTouchdown(LiveAc& ac);

}  // namespace vlt
