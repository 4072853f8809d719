// Out of the simulator: every reason for a removal ends here, and so do the simulator's answers about
// objects that went or never came. Worker thread.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>
#include <string_view>

namespace vlt {

// Takes a live or static aircraft out of the simulator, whatever its state: its record goes once the
// simulator has confirmed, or in this cycle if there is no object. A live one's stand becomes free. `why`
// is a literal, a few words.
void removeAircraftFromSim(StaticAc& ac, std::string_view why);

// A new aircraft is not to appear: as above, and logged.
void gf_turnAway(LiveAc& ac, std::string_view why);

// The simulator confirms that the object is gone: erases its record, or brings it back to the buffer if
// it only changes its livery.
void onObjectRemoved(uint32_t objectid);

// The simulator refused to create an aircraft: its livery isn't tried again, and its record is erased.
// Throws UserErrorException when too many were refused.
void gf_onCreateRefused(uint32_t hexid);

// Removes the active aircraft that is furthest from the user and more than 0.1 nm further than `distance`
// nm. False if there is none.
bool makeRoom(double distance);
// It would find one.
bool gf_canMakeRoom(double distance);

// Removes the furthest aircraft until no more than MAX_LIVE are active: it may have been lowered.
void gf_keepWithinMaxLive();

// Exchanges the object for one with another livery, or another identity, at the same place.
void liveryRespawn(LiveAc& ac);

// The record is done with: nothing of it is in the simulator, or ever will be.
inline bool gf_isMarked(const StaticAc& ac)
{
    return ac.eraseNow || ac.eraseCancelled;
}
// Erases all such records, live and static; the others keep their order.
void gf_eraseMarked();

// The distance from the user to a sample, nm.
double gf_distanceToUser(const PosSample& sample);

}  // namespace vlt
