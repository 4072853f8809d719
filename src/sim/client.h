// The simulator client: owns the connection and the thread that serves it.
//
// Its thread, the SimClient, opens the connection, keeps trying while the simulator isn't there, and
// dispatches the simulator's messages (dispatch.h). What the engine asks goes through queues (requests.h)
// that are drained on the simulator's frame event (frame.h), so that objects move in step with its frames and
// the worker never waits for it.
#pragma once

#include <cstdint>
#include <string>
#include <thread>

namespace vlt {

// Sets the wanted version and makes room in the queues, once per run.
void startSimClient(int32_t version);
// The SimClient thread; ends when its token is asked to stop, or with the run.
std::jthread gf_startSimClientThread();

// The version digit that the waiting message shows: from SIM_INSTALL_PATH, else P3D_VERSION. Throws
// UserErrorException if neither tells.
std::string gf_expectedSimVersion();

// One connection, by hand: for runs without the SimClient thread, on a virtual clock.
//
// Opens and defines everything; false while the simulator isn't there.
bool gf_openSim();
// Gives the waiting messages to the handlers. False once the connection is lost.
bool gf_dispatchSim();
// Closes the connection.
void gf_closeSim();

// The client as at the start of a run: nothing queued, awaited or known of the user. No SimClient may be
// alive.
void gf_resetSimClient();

}  // namespace vlt
