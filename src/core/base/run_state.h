// The state of a run that every thread looks at: why it ends, and that it must.
//
// All flags are atomic and cross threads without a lock. Whoever wants a run to end calls
// `gf_requestStop`, which lets the first reason win. Waits go through `gf_sleepUnlessStopping`, so a
// stop wakes them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string_view>

namespace vlt {

enum class ExitReason : int32_t {
    NotYetSet = 0,
    SimWasClosed = 1,
    NewFlight = 2,
    NewSettings = 3,
    UserClosedSim = 4,
    SimConnectError = 5,
    ReaderError = 6,
    SystemError = 7,
};

inline std::atomic<ExitReason> exitReason{ExitReason::NotYetSet};  // [atomic] first writer wins
inline std::atomic<int32_t> restartDelaySeconds{0};  // [atomic] written by whoever sets exitReason
inline std::atomic<bool> stopRequested{false};       // [atomic] the run must end
inline std::atomic<bool> closeRequested{false};      // [atomic] the user closed the window
inline std::atomic<bool> simRunning{false};          // [atomic] SimClient: the simulator flies
inline std::atomic<bool> simRequestFailed{false};    // [atomic] a simulator request failed; no more of them
inline std::atomic<bool> settingsOpen{
    true};  // [atomic] until RealTraffic is there, settings may restart the run
inline std::atomic<bool> realTrafficHere{false};  // [atomic] worker: RealTraffic is installed on this PC

// The reason's word for the log, "NEW FLIGHT" for example.
std::string_view gf_exitReasonText(ExitReason reason);

// Ends the run for `reason`, to be followed by a countdown of `delaySeconds` if it leads to a restart.
// Nothing happens when a stop is already under way. True if this call was the one.
bool gf_requestStop(ExitReason reason, int32_t delaySeconds);

// The user closed the window: ends the run and the program; a reason given before stays.
void gf_requestClose();

// A failure that reached the top of the worker: overrides whatever reason there was.
void gf_noteSystemError();

[[nodiscard]] inline bool gf_stopping()
{
    return stopRequested || closeRequested;
}

// Sleeps, and wakes at once when a stop or close is requested. True if the whole time passed.
bool gf_sleepUnlessStopping(std::chrono::milliseconds time);

// Sleeps, and wakes at once when the user closes the window; a stop of the run alone doesn't wake it.
bool gf_sleepUnlessClosing(std::chrono::milliseconds time);

// All of the above as at the start of a run. False, and nothing is changed, once the user has closed.
[[nodiscard]] bool gf_resetRunState();

}  // namespace vlt
