// One run's stages: preparation, traffic, and putting its state back. Worker thread.
#pragma once

namespace vlt {

// Folders, settings, the data base, and the detection of the simulator and of RealTraffic.
void prepareRun();

// Starts the link to the simulator, waits for the user's aircraft, starts the readers and runs the traffic
// until a stop is requested.
void runTraffic();

// Asks the simulator client and the readers to end, without waiting for them.
void gf_askRunThreadsToStop();
// Ends and joins them. The worker, or the user thread once the worker was joined.
void gf_joinRunThreads();

// Everything as at the start of a run: why it ends, what was heard, the client, the tables, the park airport,
// the window. False, and nothing is changed, once the user has closed the window. No thread of a run may be
// alive.
[[nodiscard]] bool gf_resetRun();

// Joins the run's threads and puts all state of the run back. False, with the state as it is, if the user
// has closed the window.
[[nodiscard]] bool resetState();

}  // namespace vlt
