// Builds aircraft for tests of the engine's rooms.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// An airborne sample at 47 N 8 E, 10000 ft, 300 kt eastwards, due at `time`.
PosSample gf_airSample(int32_t time);

// The same `nm` further east.
PosSample gf_eastOf(const PosSample& sample, double nm);

// Adds to liveAcs, and gives, a new A319 of British Airways in the buffer: two airborne samples, the first
// due at the present tick, the second ten seconds later at its speed's distance.
LiveAc& gf_addBuffered(uint32_t hexid, const char* callsign);

// Adds to liveAcs, and gives, an aircraft that flies along those samples as the object 100 + its place in
// the table.
LiveAc& gf_addFlying(uint32_t hexid, const char* callsign);

}  // namespace vlt
