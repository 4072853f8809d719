// Stops: jitter told from motion, a short stop cut out, and a stand that is left for good.
//
// Worker thread. No state beside the aircraft's.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Tells jitter from motion; true if the sample, which may be changed, is to be kept. The stream isn't empty.
bool filterStop(const LiveAc& ac, PosSample& sample);

// A moving sample follows a stop: cuts the stop out if it wasn't one.
void removeSmallStop(LiveAc& ac, const PosSample& sample);

// A report of an aircraft that is parking or parked; true if it is to be kept, because the aircraft leaves
// its stand. It must report from outside its stand, or move away again and again.
bool checkAtStand(LiveAc& ac, PosSample& sample);

}  // namespace vlt
