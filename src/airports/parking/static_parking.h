// Static parking at the park airport: planned when it comes in sight, placed one aircraft every half
// second, ended when the plan is empty.
//
// Worker thread. The call signs of flights in the air come from the Traffic Reader, under its lock.
#pragma once

#include "airports/parking/planner.h"

#include <functional>
#include <set>
#include <string>

namespace vlt {

extern bool planningRuns;  // [worker] from the preparations until the last aircraft was placed

// From now on the flights in the air are noted, for the planning that follows.
void gf_preparePlanning();
// The time line of a planning, and what was heard since the preparations; nothing more is noted.
Planning gf_beginPlanning();

// The first planning at the airport whose stands have just been loaded.
void initialPlanning();

// Places the plan's last entry, or drops it if the stand, or one beside it, was taken meanwhile.
void planStep();

// The plan may have been placed: true if that ended the planning.
bool gf_endIfPlaced();
// There is nothing to place any more.
void gf_endPlanning();

// The simulator takes no more objects: the rest of the plan waits for the next renewal.
void gf_pausePlanning();

}  // namespace vlt
