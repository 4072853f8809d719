// The locks that rooms share, with what they guard. Those of one room stand in it: the transport's, which are
// taken below simCallMutex, and the user thread's messages.
//
// A thread that holds one of them takes a second only along these arrows:
//   simCallMutex   -> logMutex
//   displayMutex   -> logMutex
//   parameterMutex -> logMutex
// Below all of them stand the locks inside run_state.cpp and parameters.cpp (the range) and that of each
// SharedText, under which nothing is taken. feedMutex and messageMutex are held for moving records only.
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
