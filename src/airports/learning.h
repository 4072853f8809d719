// Learning: what live aircraft do at the park airport's stands becomes the stands' history.
//
// Two kinds of options are learned: real ones of aircraft that were seen at a stand, and soft ones of those
// that the feed shows only in the air nearby. All of it stays in memory until the airport is left. Worker
// thread. State: the stands' sightings, and the list of aircraft lately looked at for soft learning.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// The aircraft arrived at the stand, or appeared on it, or with `leaving` left it. True when that was
// something new. Whoever has neither registration nor call sign teaches nothing.
bool lf_addRealStandOption(uint32_t standIndex, const LiveAc& ac, HourStamp stamp, bool leaving);

// The same for a stand that was chosen for it; `known`: it was recorded there before.
bool lf_addSoftStandOption(uint32_t standIndex, const LiveAc& ac, bool known, HourStamp stamp, bool leaving);

// The aircraft came to its stand, or leaves it: recorded if it has an airline and the stand is for its
// kind. True if it is so, whether it taught something or not.
bool gf_registerStandUse(const LiveAc& ac, bool leaving);

// A live aircraft comes to its end, or takes off: if it stood nowhere, a stand is guessed for it.
void offerSoftLearning(const LiveAc& ac, bool stillOnGround);

// The aircraft has parked: a freighter's stand is one for freighters.
void noteCargoStand(LiveAc& ac);

// As before the first aircraft of a visit.
void gf_forgetSoftLearning();

}  // namespace vlt
