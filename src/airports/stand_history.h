// How a stand's history grows: an option for who was seen there, and the half hours between two sightings.
//
// Worker thread, no state beside the stand's.
#pragma once

#include "airports/airports.h"

#include <cstdint>
#include <string>

namespace vlt {

// By what an option knows an aircraft: its registration, else its call sign; empty for one without a name.
const std::string& gf_optionKey(const LiveAc& ac);

// Adds the aircraft with this one half hour. The new option's sequence number, or 0: there is nothing to add.
int32_t addOption(ParkPos& stand, const LiveAc& ac, bool real, HourStamp stamp);

// Who was here at `seen` and is here now may have been here all the time between: it isn't too long a time.
bool gf_isOneStay(HourStamp now, HourStamp seen, const LiveAc& ac);

// It was here before and is here now, so it was here all the time between: the half hours from the sighting
// to `now` are filled, over midnight in an option of today, and the sighting becomes this one. False if that
// isn't believable, after too long a time.
bool fillGap(HourStamp now, ParkPos& stand, Sighting& sighting, const LiveAc& ac, bool real);

}  // namespace vlt
