// Identity: what a change of call sign, route or registration does, ghosts and doubles, and static aircraft
// that stand for a flight that is here live.
//
// A ghost is a second report of one flight; its call sign ends in "_", that of its twin doesn't. Worker
// thread; the state is `ghostCallsigns`.
#pragma once

#include "traffic/traffic.h"

#include <string>
#include <string_view>

namespace vlt {

// What a record adds to the identity of its aircraft, which may change its livery or its object for it.
// False if the sample is to be dropped.
bool identityUpdate(LiveAc& ac, const FeedRecord& record);

// The call sign ends in "_".
bool gf_isGhost(std::string_view callsign);
// The call sign without its last character.
std::string_view gf_withoutMark(std::string_view callsign);

// Removes the ghost of this call sign for good.
void ghostCheck(const std::string& callsign);

// The call sign, without its last character, is in liveAcs.
bool hasTwin(std::string_view callsign);

// A new aircraft may come although one in the simulator, or on its way there, has its call sign or its
// registration: there is none such, or all are parked, or ghosts.
bool gf_doublesMakeWay(const LiveAc& newcomer);
// Removes them.
void gf_removeDoubles(const LiveAc& newcomer);

// Removes the first static aircraft that is the same flight as the live one, and logs why.
void gf_removeSameFlight(const LiveAc& ac);
// The look at all live aircraft on the ground: the first static twin of each is removed.
void gf_removeStaticTwins();

}  // namespace vlt
