// The record of one planning, and the terms in which plans are told: half hours of the week and call signs.
//
// Pure but for the parameter WEEK; worker thread.
#pragma once

#include "airports/airports.h"
#include "traffic/stays.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// The half hours in which a stand's history knows anyone at all, of the two days that a search reaches.
struct KnownHours {
    HoursSet today;
    HoursSet yesterday;
};

// One planning.
struct Planning {
    HourStamp now;
    std::set<std::string, std::less<>> heard;  // call signs of flights that are in the air
    std::vector<ParkedStay> liveStayers;
    int32_t maxFitReal = -1;  // the furthest offset that was searched; -1: not searched
    int32_t maxFitSoft = -1;
    std::vector<std::string_view> why;  // by stand: why it has no aircraft, a literal
    std::vector<KnownHours> known;      // by stand, in the pass under way
};

// The call sign under which the aircraft stands: the flight that leaves next, with "*" behind it.
std::string lf_detcs(const PlanEntry& entry);

// The two call signs name one flight; the "*" of a static aircraft doesn't count, and empty ones name none.
bool gf_isSameCallsign(std::string_view a, std::string_view b);

// The stamp so many half hours before.
HourStamp gf_halfHoursBefore(HourStamp stamp, int32_t halfHours);
// The option is one of that day, or days don't count.
bool gf_isOfDay(const StandOption& option, uint32_t day);
// An aircraft of this airline and type still stands there in the next half hour, by this option of today.
bool gf_runsOn(const ParkPos& stand, const StandOption& option, HourStamp now);

}  // namespace vlt
