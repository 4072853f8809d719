// Into the simulator: the gate that decides that an aircraft may appear, and its initial state. Worker
// thread, no state.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Each tick of an aircraft in the buffer: nothing, one sample dropped, erased, or spawned.
void spawnGate(LiveAc& ac);

// Matches a livery, fixes the initial state from the front sample and puts the aircraft on the spawn stack.
void spawnLiveAc(LiveAc& ac);

}  // namespace vlt
