// The request for an aircraft's object, from the stack of those that are wanted to the queue that the cycle
// empties at its pace. Worker thread; the state is `spawnStack` and the two queues.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

// Builds the request for the live aircraft's object and queues it.
void makeCreateRequest(uint32_t hexid);

// Queues the request for a static aircraft on its stand.
void gf_requestStatic(const StaticAc& ac);

// Takes the aircraft's request back while it still waits for its turn. False if the simulator has it already.
bool gf_takeRequestBack(const StaticAc& ac);

}  // namespace vlt
