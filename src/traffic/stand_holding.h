// Who holds which stand, and why. Worker thread, no state beside the aircraft's and the stands'.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

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

// The stand of a live aircraft isn't held by it any more.
void gf_releaseStand(const StaticAc& ac);

// The aircraft has no stand any more.
void gf_clearStandFields(StaticAc& ac);

}  // namespace vlt
