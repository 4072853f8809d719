// The position server: tells RealTraffic where the user is, so that it sends the traffic around that place.
//
// RealTraffic is a client of the position protocol of the Aerowinx PSX simulator: text lines over TCP. All
// flows out, but for one reply to the question for its version. One client is served at a time.
// Worker thread only; sockets never block it but in the waits, which do the worker's `WaitingWork` every
// 10 ms and end with a stop of the run.
#pragma once

#include "traffic/traffic.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace vlt {

extern std::atomic<bool> clientConnected;  // [atomic] worker: a client is accepted

// What the worker goes on doing while it waits for a client.
using WaitingWork = void (*)();
inline constexpr int32_t kWaitingWorkMs = 10;

// Listens on the port, IPv4, every network. Throws std::runtime_error with what failed.
void openServer(const std::string& port);
// The port on which it listens, 0 if it doesn't.
uint16_t gf_serverPort();

// Waits for a client and asks for its version. False if a stop ended the wait, or nobody listens.
bool waitForRealTraffic(WaitingWork work);

// What a call found out about the client.
enum class ClientNews {
    None,
    Came,  // it is back
    Gone,  // it has left just now
};

// Sends the position, unless it is the null position. Without a client it waits for one instead; the position
// follows at the next call.
ClientNews sendPosition(const UserAc& user, WaitingWork work);

// Sends the simulator's time, in seconds since 1970, if there are a client and a time.
void sendSimTime(int64_t seconds);

// Sends the whole text. False after a failure, for which not being read for a second counts; the connection
// is closed then.
bool sendToClient(std::string_view text);

// Says "exit" to a client, and closes everything.
void closeServer();

// The line with the position: angles in radians (pitch and bank times 100000), altitude and speed times 1000.
std::string gf_positionText(const UserAc& user);
// The simulator's time in seconds since 1970, of the Gregorian calendar; 0 while it has told none.
int64_t gf_simTime(const UserAc& user);

}  // namespace vlt
