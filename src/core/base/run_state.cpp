#include "core/base/run_state.h"

#include <array>
#include <condition_variable>
#include <mutex>
#include <unordered_map>

namespace vlt {

static std::mutex wakeMutex;  // every writer of the state and every wait below; nothing is taken inside
static std::condition_variable wakeStop;  // [wakeMutex]

std::string_view gf_exitReasonText(ExitReason reason)
{
    static const std::unordered_map<ExitReason, std::string_view> texts{
        {ExitReason::NotYetSet, "NOT YET SET"},         {ExitReason::SimWasClosed, "SIM WAS CLOSED"},
        {ExitReason::NewFlight, "NEW FLIGHT"},          {ExitReason::NewSettings, "NEW SETTINGS"},
        {ExitReason::UserClosedSim, "USER CLOSED SIM"}, {ExitReason::SimConnectError, "SIMCONNECT ERROR"},
        {ExitReason::ReaderError, "READER ERROR"},      {ExitReason::SystemError, "SYSTEM ERROR"},
    };
    return texts.at(reason);
}

bool gf_requestStop(ExitReason reason, int32_t delaySeconds)
{
    const std::scoped_lock lock(wakeMutex);
    if (stopRequested || exitReason != ExitReason::NotYetSet) {
        return false;
    }
    exitReason = reason;
    restartDelaySeconds = delaySeconds;
    stopRequested = true;
    wakeStop.notify_all();
    return true;
}

void gf_requestClose()
{
    const std::scoped_lock lock(wakeMutex);
    closeRequested = true;
    stopRequested = true;
    if (exitReason == ExitReason::NotYetSet) {
        exitReason = ExitReason::UserClosedSim;
    }
    wakeStop.notify_all();
}

void gf_noteSystemError()
{
    const std::scoped_lock lock(wakeMutex);
    exitReason = ExitReason::SystemError;
    restartDelaySeconds = 0;
}

bool gf_sleepUnlessStopping(std::chrono::milliseconds time)
{
    std::unique_lock lock(wakeMutex);
    return !wakeStop.wait_for(lock, time, gf_stopping);
}

bool gf_sleepUnlessClosing(std::chrono::milliseconds time)
{
    std::unique_lock lock(wakeMutex);
    return !wakeStop.wait_for(lock, time, [] { return closeRequested.load(); });
}

bool gf_resetRunState()
{
    const std::scoped_lock lock(wakeMutex);
    if (closeRequested) {
        return false;
    }
    simRunning = false;
    simRequestFailed = false;
    settingsOpen = true;
    stopRequested = false;
    exitReason = ExitReason::NotYetSet;
    restartDelaySeconds = 0;
    return true;
}

}  // namespace vlt
