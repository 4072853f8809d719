// One run's stages: preparation, traffic, and putting its state back. Worker thread.
#pragma once

namespace vlt {

extern bool restarting;  // [worker] the last run ended in a restart

// Folders, settings, the data base, and the detection of the simulator and of RealTraffic.
void prepareRun();

// Starts the link to the simulator, waits for the user's aircraft, starts the reader and runs the traffic
// until a stop is requested.
void runTraffic();

// Asks the simulator client and the reader to end, without waiting for them.
void gf_askRunThreadsToStop();

// Joins the run's threads and puts all state of the run back. False, with the state as it is, if the user
// has closed the window.
[[nodiscard]] bool resetState();

}  // namespace vlt
