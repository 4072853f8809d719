// Every lock of the program, with what it guards.
//
// A thread that holds one of them takes a second only along these arrows:
//   feedMutex    -> simCallMutex -> logMutex
//   messageMutex -> simCallMutex -> logMutex
//   messageMutex -> displayMutex -> logMutex
// Below all of them stands the lock inside run_state.cpp, under which nothing is taken.
// The SimClient thread takes messageMutex only while it doesn't hold simCallMutex.
#pragma once

#include <mutex>

namespace vlt {

inline std::mutex feedMutex;     // feedQueue, intakeOpen, callsignsHeard
inline std::mutex simCallMutex;  // SimConnect requests, the outgoing queues, the position buffers
inline std::mutex messageMutex;  // simMessages
inline std::mutex displayMutex;  // the texts of the window
inline std::mutex logMutex;      // the log's stream

}  // namespace vlt
