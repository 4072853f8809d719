// Main control: the order in which everything of a run is started and stopped, and what follows from the
// reason why it ended.
//
// `mainControl` is the body of the worker thread, one per run. At its end it asks the user thread by a
// message for a fresh run or for the end of the program.
#pragma once

namespace vlt {

// A whole run, from its preparation to its closing down.
void mainControl();

// The last run has ended without asking for anything: only the user can end the program now.
bool gf_runEndedInError();

}  // namespace vlt
