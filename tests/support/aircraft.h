// Builds aircraft for tests of the engine's rooms.
#pragma once

#include "airports/airports.h"
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

// A sample on the ground, `metresEast` and `metresNorth` of 47 N 8 E, due at `time`, at `speed` knots.
PosSample gf_groundSample(double metresEast, double metresNorth, double speed, int32_t time);

// Adds to liveAcs, and gives, an A319 that stands on the ground at 47 N 8 E, heading east, its only sample
// stationary and due at the present tick.
LiveAc& gf_addOnGround(uint32_t hexid, const char* callsign, StState st);

// Adds a stand to the park airport, which becomes XTST at 47 N 8 E if there is none. `metresEast` and
// `metresNorth` of there, heading in degrees; 40 m wide. Neighbours aren't looked for.
ParkPos& gf_addStand(const char* id, double metresEast, double metresNorth, double headingDeg);
}  // namespace vlt
