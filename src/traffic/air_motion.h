// Motion in the air: at each sample the rates of the leg to the next one are fixed; in between every tick
// adds them up, so motion is linear per leg. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// Rates, configuration and lights of the air leg from the front to the second sample, `ticks` long.
void airSettings(LiveAc& ac, int32_t ticks);

// Pitch in radians that goes with a vertical speed in feet per minute.
double gf_pitchForVs(double vs);

}  // namespace vlt
