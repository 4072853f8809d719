// Every lock of the program, with what it guards.
//
// A thread that holds one of them takes a second only along these arrows:
//   feedMutex      -> simCallMutex -> logMutex
//   displayMutex   -> logMutex
//   parameterMutex -> logMutex
// Below all of them stand the lock inside run_state.cpp and that of each SharedText, under which nothing is
// taken. The SimClient thread takes messageMutex only while it doesn't hold simCallMutex.
#pragma once

#include <mutex>

namespace vlt {

inline std::mutex feedMutex;       // feedQueue, intakeOpen, callsignsHeard
inline std::mutex simCallMutex;    // SimConnect requests, the outgoing queues, the position buffers
inline std::mutex messageMutex;    // simMessages
inline std::mutex displayMutex;    // the message and the error line
inline std::mutex parameterMutex;  // parameters.xml
inline std::mutex logMutex;        // the log's stream

}  // namespace vlt
