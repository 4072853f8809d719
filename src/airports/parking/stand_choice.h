// Which aircraft of a stand's history is to stand there: the candidates of a half hour, the choice among
// them, and whether the one chosen may.
//
// Worker thread. It reads the plan, the static aircraft and what was heard, and changes nothing.
#pragma once

#include "airports/parking/planning.h"

#include <string_view>
#include <vector>

namespace vlt {

// The options that hold at that time. `why` becomes the reason for leaving out the last one that was.
std::vector<StandOption*> gf_candidates(ParkPos& stand, bool real, HourStamp when, std::string_view& why);

// One of the candidates, of which there is one at least: who stands there already comes first, else chance
// decides.
StandOption& gf_choose(const ParkPos& stand, std::vector<StandOption*>& candidates);

// The verdict on an option; `off`: it isn't tried again in this planning.
struct Refusal {
    std::string_view why;  // a literal; empty: it may
    bool off = true;
};
// `out` is what the search under way has found so far.
Refusal gf_test(const Planning& planning, const ParkPos& stand, const StandOption& option,
                const std::vector<PlanEntry>& out);

}  // namespace vlt
