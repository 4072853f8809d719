// What the conversation with the simulator needs beforehand: system events, data definitions, client events.
// SimClient thread, once per connection; tables only.
#pragma once

#include "sim/wire/simconnect.h"

namespace vlt {

// Subscribes, defines and maps everything that the conversation needs. The caller holds simCallMutex. False
// once a request fails.
bool gf_defineEverything(SimHandle handle);

}  // namespace vlt
