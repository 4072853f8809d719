// Arrival and parking of live aircraft: the stand that an aircraft has reached is cleared and taken, until
// the aircraft leaves it.
//
// Worker thread, no state.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <string>

namespace vlt {

// The stream ends in a stop: looks for the stand there, and drives the aircraft onto it. `wide` allows for
// 55 m between stop and stand, else 20 m.
void try2Park(LiveAc& ac, bool wide);

// Removes static aircraft from the stand and those beside it that would touch.
void clearStandForLive(const LiveAc& ac, const ParkPos& stand);

// A parking aircraft has reached the end of its stream: parked, or taxiing on if it isn't at its stand.
void arrivedAtStand(LiveAc& ac);

// The reports lead away from the stand.
void leaveStand(LiveAc& ac);

}  // namespace vlt
