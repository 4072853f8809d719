// Which airport the park airport is: the looks whether one comes in sight, or goes out of it.
//
// Worker thread. A look is due every 16 s; what comes in sight is loaded at the next one. State: where the
// user was at the last look, and what was looked for in vain.
#pragma once

namespace vlt {

// The regular look: loads the airport that came in sight, or looks whether one comes or goes.
void parkAirportCheck();
// Goes on with a look that waits for the server once that has answered. True while it waits.
bool gf_goOnLooking();

// As at the start of a run.
void gf_forgetLooks();

}  // namespace vlt
