// The dispatch: one handler per message of the simulator.
//
// SimClient thread. Takes simCallMutex for the user's record and for setting up a new object, and
// messageMutex, never both at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vlt {

extern std::atomic<int32_t> wantedSimVersion;  // [atomic] worker: 5 or 6
extern std::atomic<bool> userOnGroundKnown;    // [atomic] SimClient: the first report has arrived
extern std::atomic<bool> noteStandRequested;   // [atomic] SimClient: the user's stand is to be noted
extern std::atomic<bool> tooManyObjects;       // [atomic] SimClient sets, the worker clears
extern std::vector<uint32_t> addedObjects;     // [simClient] announced, not yet seen in a data reply

extern bool simHasOpened;  // [simClient] the connection's opening message has come

// One message from the simulator. Throws UserErrorException where the user must read why we stop.
void gf_dispatchMessage(std::span<const std::byte> message);

// Asks the worker to note the user's stand, if the user stands: the flight ends, or another begins.
void gf_requestNoteStand();

// A new connection: neither opening nor quit message has come.
void gf_beginConversation();

// The flight runs, or stands still; the window shows it.
void gf_noteSimRunning(bool running);

// As at the start of a run.
void gf_resetDispatch();

}  // namespace vlt
