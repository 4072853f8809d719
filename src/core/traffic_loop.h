// The traffic loop: 10 ms passes on an absolute deadline, locked on to the simulator's second.
//
// Worker thread. Here stand the lists of what a tick, a second and the longer periods do; the steps are
// those of the rooms below.
#pragma once

namespace vlt {

// Runs passes until one says that it is over. Opens the intake.
void trafficLoop();

// One pass; false to end the loop.
bool trafficPass();

// The 10 ms work.
void trafficTick();

// The once-a-second work.
void secondTick();

// What is due less often than once a second: the periodic job every 15 s, and the looks in between.
void gf_longerPeriods();

// Looks whether the feeds have brought anything since the last look, for who shows their states.
void gf_refreshFeedState();

}  // namespace vlt
