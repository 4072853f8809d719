// The steps of the traffic cycle: 10 ms of all aircraft, and what is due once a second. Worker thread.
//
// The loop that paces them, and the jobs of the rooms above, stand in core/traffic_loop.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Advances one aircraft by a tick; true if its record is to be erased. An exception is logged and the
// cycle goes on.
bool updateLiveAc(LiveAc& ac);

// All aircraft, and erases the records that are done with.
void gf_updateLiveAcs();

// Gives this tick's positions to the frame. A simulator that runs slowly gets fewer and fresher ones.
void gf_handOverPositions();

// Gives removals and creations to the simulator one by one, at their pace.
void gf_meterRequests();
inline constexpr int32_t kTicksPerRemoval = 10;
// Gives the next removal, if there is one.
void gf_sendNextRemoval();

// Takes at most two records of the feed.
void gf_takeFeed();

// The request of the spawn stack's top.
void gf_makeNextRequest();

// Asks for the data of the objects around, every second, or five times in a flare.
void gf_requestObjectData();
// The same, whatever the tick.
void gf_askForObjectData();

// Asks for the user's aircraft anew, and copies the latest that arrived.
void gf_copyUser();

// The stand changes that wait for their second.
void gf_serviceStandChange();

}  // namespace vlt
