// The legs of an aircraft: from one sample of its stream to the next, in the air and on the ground.
//
// When the front sample is due, the leg to the second one is set up: its arrival time, the phase changes
// that it brings, and the rates that every tick adds up until then. Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// The front sample is due: sets up the next leg, extends the stream, or removes the aircraft. Logs an
// exception and passes it on.
void nextPosMain(LiveAc& ac);

// Sets up the leg from the front to the second sample and drops the front.
void nextPos(LiveAc& ac);

}  // namespace vlt
