// A new aircraft on the ground: whether it stands at a stand, and whether it may have it. Worker thread.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Fixes the phase of a new aircraft whose front sample is on the ground: parked at its stand, or taxiing.
// False if it isn't to be spawned now: it is erased, or waits for a clearer picture.
bool gf_birthOnGround(LiveAc& ac);

}  // namespace vlt
