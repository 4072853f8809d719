// Stand search: the feed doesn't report stands, these functions tell which one an aircraft is at.
//
// Worker thread, no lock. They look at the stands of the park airport; kNoStand stands for none.
// `nearestStandId` keeps its last answer.
#pragma once

#include "airports/airports.h"
#include "traffic/geodesy.h"

#include <cstdint>
#include <string>

namespace vlt {

// The id of the stand nearest to a position of the user, empty for none within 55 m, an empty list and the
// null position. The same position again gives the last answer without a search.
const std::string& nearestStandId(LatLon position);
// Forgets that answer: the stands have changed.
void gf_forgetNearestStand();

// The stand with this id, nullptr for none.
ParkPos* gf_standById(const std::string& id);

// The index of the stand that an aircraft at `position` has reached, within `searchRadius` nm of its
// centre. With `allowFar` one whose history knows the flight may be farther off.
//
// Learns: a stand too small, but right under the aircraft, grows to fit it.
uint32_t standAtPosition(LatLon position, const LiveAc& ac, double searchRadius, bool allowFar);

// The index of a stand that the flight would plausibly have used at this half hour, where the feed doesn't
// show it at one. `firstCall` allows a look at the next half hour at a small airport.
uint32_t chooseStand(HourStamp stamp, const LiveAc& ac, bool firstCall);

// Fills the aircraft's two coupled call signs if the history of a stand knows its flight around this time.
void lf_searchForCoupledCsAroundThisTime(HourStamp stamp, LiveAc& ac);

}  // namespace vlt
