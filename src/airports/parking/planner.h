// The planner: which aircraft of the stands' history are to stand on the park airport now.
//
// A stand gets an aircraft that its history knows at this weekday and half hour; stands without one are
// searched half an hour further back each time, until the wanted share is reached. Worker thread. It works
// on the stand list in place (`planned`, `neighbourPlanned`, and options that are switched off by the
// sequence number 0) and adds to `parkPlan`; it reads `staticAcs` and changes nothing else.
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

// How many parked aircraft are wanted; shown, and taken over as the limit for live ones. 0 without stands.
int32_t wantedCount();

// Clears what the planning before left on the stands: flags, and options that are switched off.
void gf_renumberOptions();
// The stand has an aircraft, so its neighbours get none.
void gf_markPlanned(ParkPos& stand);

// Searches offset by offset and adds to the plan until that and the `have` aircraft that stand already are
// as many as wanted. Of the offset that brought too many the surplus goes, by chance.
void planPass(Planning& planning, int32_t wanted, int32_t have, bool real);

// The real pass, and if that isn't enough, the soft one where the user allows it.
void gf_planPasses(Planning& planning, int32_t wanted, int32_t have);

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
