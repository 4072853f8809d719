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

// The id of the stand of an aircraft, "unknown" if it isn't known, "sid==0?" if it has none.
std::string gf_standName(const StaticAc& ac);

// The two aircraft would touch on these stands.
bool gf_wouldTouch(double halfSpan, const ParkPos& stand, double otherHalfSpan, const ParkPos& otherStand);

// The stand is the reserved one, or the one at which the user is.
bool gf_keptForUser(const ParkPos& stand);

// The aircraft takes the stand: its place becomes the aircraft's.
void gf_takeStand(LiveAc& ac, const ParkPos& stand);

// From now on the aircraft is parked, and its reports are watched for a departure.
void gf_restartStandWatch(LiveAc& ac);

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
