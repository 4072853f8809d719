// The moves at a stand: pulled out forwards, pushed back, and driven onto it.
//
// Each lays new samples into the aircraft's stream, in place of its reports. Worker thread, no state.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

namespace vlt {

// Forwards out of the stand, two half spans far.
void pullOut(LiveAc& ac);

// Backwards out of the stand: straight at first, then to one side, unless what is reported meanwhile says
// otherwise.
void pushBack(LiveAc& ac);

// Appends the last leg, to the stand's centre, and the stop there.
void drive2Stand(LiveAc& ac, const ParkPos& stand);

}  // namespace vlt
