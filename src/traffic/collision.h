// Collisions: objects have no physics, so who would drive through the user, or through a parked aircraft,
// is removed. Once a second, worker thread.
#pragma once

#include "traffic/traffic.h"

#include <atomic>

namespace vlt {

// BLOCK_CALLSIGN is new.
extern std::atomic<bool> blockChanged;  // [atomic] the worker clears

// The checks of a second, as far as they are switched on.
void gf_checkCollisions();

// Takes the call sign that the user blocks over, once a second; if it has changed, its aircraft goes.
void gf_serviceBlock();

// As at the start of a run.
void gf_forgetCollisions();

}  // namespace vlt
