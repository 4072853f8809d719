// Motion on the ground: bends, push-back, and the way to a stand.
//
// Reports on the ground are sparse; these functions give a taxiing aircraft its curves and turn rate and
// slow it in bends. Called per leg. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// The leg from the front to the second sample of an aircraft on the ground: phase, curve, arrival time.
// The second sample may be another one afterwards. Logs an exception and passes it on.
void nextPosGround(LiveAc& ac);

// Throttle, attitude and speed of a leg with a moving second sample, `ticks` long; the rotation.
void groundSettings(LiveAc& ac, int32_t ticks);

}  // namespace vlt
