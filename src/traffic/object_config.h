// The configuration of an object that has just appeared, or has just parked: engines, lights, throttle and
// flaps. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Engines, lights, throttle and flaps of a new object; from now on it is driven.
void setUpLiveAc(LiveAc& ac);
// The configuration of a parked aircraft.
void parkedConfig(StaticAc& ac);

}  // namespace vlt
