// RealTraffic in a run: when it is waited for, what it is told, and what follows when it goes.
//
// Worker thread. The position server (link/position_server.h) speaks with it.
#pragma once

namespace vlt {

// Opens the position server and waits for RealTraffic; without it on this PC, or where the Aerowinx PSX
// simulator serves it, it counts as connected. False if a stop ended the wait. Throws std::runtime_error if
// the server can't be opened.
bool gf_meetRealTraffic();

// Tells RealTraffic the user's position, once a second. If it has gone, all live aircraft go too; from then
// on the call waits until it is back, in which the simulator's answers and the removals go on.
void gf_tellPosition();
// Tells it the simulator's time, every 15 s.
void gf_tellTime();

// RealTraffic has gone: nothing of its feed is taken in until it is back.
bool gf_realTrafficGone();

// A wait has held up the worker since the last call.
bool gf_waitHeldUp();

// Forgets what the feeds have told.
void gf_forgetFeeds();

}  // namespace vlt
