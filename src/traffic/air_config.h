// How an aircraft in the air is configured, which no report says: gear, flaps, throttle and lights by height
// and vertical speed. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Gear, flaps, throttle and lights by altitude and vertical speed of the front sample.
void gf_airConfig(LiveAc& ac);

}  // namespace vlt
