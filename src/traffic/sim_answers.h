// The simulator's answers: what came back since the last tick, and the created objects on their way from the
// acknowledgement to being driven. Worker thread; the state is `ackWait`.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// What came back from the simulator since the last tick, worked through and emptied. Takes messageMutex.
void gf_handleSimMessages();
void handleSimMessage(const SimMessage& message);

// The created objects that wait for their set-up: one tick further.
void gf_stepAckWaits();

}  // namespace vlt
