// The frame handler: sends what the engine queued, in step with the simulator's frames.
//
// SimClient thread; tries simCallMutex and leaves at once if it is busy. Only after a request has failed,
// when nothing is sent any more, does it wait for the lock, to empty the queues.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

// A creation that was sent and has not shown up yet.
struct PendingCreate {
    uint32_t sendId = 0;
    uint32_t hexid = 0;
    std::string tailNumber;
};

extern std::vector<PendingCreate> pendingCreates;  // [simClient]

// Sends what is queued, on the simulator's frame event. A busy lock costs one frame, never a wait.
// Once a request has failed, the queues are emptied instead.
void gf_onFrame();

// As at the start of a run.
void gf_resetFrame();

}  // namespace vlt
