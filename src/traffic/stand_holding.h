// Who holds which stand, and why: the one place that knows when a stand is somebody's.
//
// A live aircraft claims a stand as soon as it is born there, until its reports end or it leaves;
// `occupiedByLive` keeps whose claim that is, so that nobody frees somebody else's. Static aircraft hold
// theirs by being there. Worker thread, no state beside the aircraft's and the stands'.
#pragma once

#include "airports/airports.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <string>

namespace vlt {

// An aircraft whose reports end so near, nm, and that creeps there, is about to stop.
inline constexpr double kStopsNear = 35.0 / kMetresPerNm;

// Phases in which a live aircraft is at its stand, to be combined.
enum Holding : uint32_t { kParks = 1, kParked = 2, kPushes = 4, kPushed = 8 };

// The aircraft is parked, and in the simulator.
bool gf_isParked(const LiveAc& ac);
// The place of its stand; meaningless without one.
LatLon gf_standPlace(const StaticAc& ac);

// The active aircraft is at the stand, in one of the phases.
bool gf_holds(const LiveAc& ac, uint32_t standId, uint32_t phases);

// The first aircraft at the stand in one of the phases, other than `but`; nullptr for none.
LiveAc* gf_liveHolder(uint32_t standId, uint32_t phases, const LiveAc* but = nullptr);
// The first static aircraft at the stand, with `coming` also one whose object has been asked for; nullptr for
// none.
StaticAc* gf_staticHolder(uint32_t standId, bool coming = false);

// Another live aircraft has a claim to the stand, or is parked there.
bool gf_isHeldByOther(const ParkPos& stand, const LiveAc& ac);

// The stand's place becomes the aircraft's; nothing is claimed yet.
void gf_takeStand(LiveAc& ac, const ParkPos& stand);
// The aircraft has a claim to its stand.
void gf_claimStand(const LiveAc& ac);
// It has no claim any more, if it had one.
void gf_releaseStand(const StaticAc& ac);
// It has neither claim nor stand any more.
void gf_forgetStand(StaticAc& ac);

// From now on the aircraft is parked, and its reports are watched for a departure.
void gf_restartStandWatch(LiveAc& ac);

// The stand is the one that the user has reserved.
bool gf_isReserved(const ParkPos& stand);
// The stand is that one, or the one above which or at which the user is.
bool gf_keptForUser(const ParkPos& stand);

// The two aircraft would touch on these stands.
bool gf_wouldTouch(double halfSpan, const ParkPos& stand, double otherHalfSpan, const ParkPos& otherStand);

// The id of the stand of an aircraft, "unknown" if it isn't known, "sid==0?" if it has none.
std::string gf_standName(const StaticAc& ac);

}  // namespace vlt
