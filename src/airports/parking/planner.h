// The planner: which aircraft of the stands' history are to stand on the park airport now.
//
// A stand gets an aircraft that its history knows at this weekday and half hour; stands without one are
// searched half an hour further back each time, until the wanted share is reached. Worker thread. It works
// on the stand list in place (`planned`, `neighbourPlanned`, and options that are switched off by the
// sequence number 0) and adds to `parkPlan`; it reads `staticAcs` and changes nothing else.
#pragma once

#include "airports/parking/planning.h"

#include <cstdint>

namespace vlt {

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

}  // namespace vlt
