// Finds the installed livery that comes closest to a real aircraft: the ladder, from the aircraft's own
// registration down to any aircraft of a similar type.
//
// Worker thread, inside the traffic cycle; no lock but the log's. A query is a handful of hash lookups.
// State: the indexes of liveries.h, and there `refusedTitles`, `titleCache` and `matchCounters`, which
// grow during the program's run.
#pragma once

#include "liveries/liveries.h"
#include "traffic/traffic.h"

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

inline constexpr size_t kMostRefusedTitles = 20;  // at so many the installation is considered broken

// Climbs the ladder for a live aircraft. Sets `title`, or clears it when nothing fits that the
// simulator hasn't refused. A match is counted and sets `fsltl`. Puts the similar lists in random order.
void matchLive(AcBase& ac);

// The title that this hexid had before in this run, else a new match, which is remembered. True when
// `title` is set afterwards; a title that is set already stays.
bool titleForHexid(AcBase& ac);

// Climbs the ladder for an aircraft parked on a stand, of which `standCargo` is the use and `standName`
// the name. True when `title` is set afterwards; a title that is set already stays.
bool matchStatic(AcBase& ac, bool standCargo, std::string_view standName);

// The simulator could not create the aircraft's title: shows it, and keeps the title out of every later
// match. Throws UserErrorException 81 when too many have been refused.
void gf_noteRefusedTitle(const AcBase& ac);

// The matches per step and the refused aircraft, into the log if LOG is on.
void writeMatchingSummary();

// The aircraft that no livery fits, into the log if LOG is on and there are any.
void writeUnmatchedList();

enum class RungOutcome {
    BeyondDepth,    // MATCHING_DEPTH doesn't reach it
    NotApplicable,  // its condition isn't met
    Nothing,        // tried without a match
    Answered,       // its title was taken
};

// What became of one rung of the ladder.
struct RungTrace {
    std::string_view rung;       // its name
    std::string_view condition;  // when it is tried
    int32_t step = 0;            // the step that its answers count as
    int32_t depth = 0;           // the MATCHING_DEPTH that it needs
    RungOutcome outcome = RungOutcome::Nothing;
};

struct MatchTrace {
    std::vector<RungTrace> rungs;  // in the order looked at, up to the one that answered
    int32_t step = 0;              // 0: no match
    bool refused = false;          // there would be a match, had the simulator not refused titles
};

// As matchLive, or with `parked` as matchStatic with the aircraft's own `cargo`, but tells how it came
// about instead of counting and logging.
MatchTrace gf_explainMatch(AcBase& ac, bool parked);

}  // namespace vlt
