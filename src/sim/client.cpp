#include "sim/client.h"

#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "platform/timer.h"
#include "sim/definitions.h"
#include "sim/dispatch.h"
#include "sim/frame.h"
#include "sim/requests.h"
#include "sim/user_aircraft.h"

#include <chrono>
#include <string_view>
#include <utility>

namespace vlt {

static constexpr std::chrono::seconds kRetryPause(1);
static constexpr std::chrono::milliseconds kPollPause(1);

void startSimClient(int32_t version)
{
    wantedSimVersion = version;
    gf_reserveRequests();
}

void gf_resetSimClient()
{
    gf_resetRequests();
    gf_resetFrame();
    gf_resetDispatch();
    gf_resetUserAircraft();
}

// --- the connection

bool gf_openSim()
{
    gf_beginConversation();
    SimHandle handle = nullptr;
    if (SimConnect_Open(&handle, kProgramName, 0) != kSimOk) {
        return false;
    }
    const std::scoped_lock lock(simCallMutex);
    simHandle = handle;
    return gf_defineEverything(handle);
}

static SimHandle lf_handle()
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle;
}

bool gf_dispatchSim()
{
    const auto handler = [](std::span<const std::byte> message, void*) { gf_dispatchMessage(message); };
    return SimConnect_CallDispatch(lf_handle(), handler, nullptr) == kSimOk;
}

static SimHandle lf_takeHandle()
{
    const std::scoped_lock lock(simCallMutex);
    return std::exchange(simHandle, nullptr);
}

void gf_closeSim()
{
    if (const SimHandle handle = lf_takeHandle(); handle != nullptr) {
        logLine(SimConnect_Close(handle) == kSimOk ? "SimConnect closed ok" : "Closing SimConnect failed?!");
    }
}

// --- the SimClient thread

std::string gf_expectedSimVersion()
{
    const std::string path = SIM_INSTALL_PATH.value;
    for (const std::string_view mark : {"v5", "V5", "v6", "V6"}) {
        if (path.find(mark) != std::string::npos) {
            return std::string(mark.substr(1));
        }
    }
    constexpr int32_t kOldestVersion = 5;
    if (P3D_VERSION.value < kOldestVersion) {
        throw UserErrorException(
            kPlainUserError,
            format("P3D install path does not contain v5 or v6? Use hidden parameter {}, set it at 5 or 6",
                   P3D_VERSION.name));
    }
    return std::to_string(P3D_VERSION.value);
}

// The loop itself has failed.
static void lf_connectionLost()
{
    gf_noteSimRunning(false);
    showMessage(
        format("{} Flight Simulator no longer connected, {} will stop ...", timeOfDayString(), kProgramName),
        true);
    gf_requestStop(ExitReason::SimWasClosed, 0);
}

// The connection is broken. While the flight runs the worker's next request fails, and tells; after the
// simulator's quit nothing is asked, and nothing is missing. In between nobody else would ever notice.
static void lf_onBroken()
{
    if (!simRunning && !simRequestFailed) {
        raiseRequestError();
    }
}

// Dispatches until the token stops it. False if the connection broke before its opening message: as good as
// none.
static bool lf_dispatchLoop(const std::stop_token& token)
{
    const FineTimer oneMillisecond;
    while (!token.stop_requested()) {
        if (!gf_dispatchSim()) {
            if (!simHasOpened) {
                return false;
            }
            lf_onBroken();
        }
        std::this_thread::sleep_for(kPollPause);
    }
    return true;
}

// After an attempt that came to nothing. The next one follows in a second, so the reason is told once.
static void lf_giveUp(bool& told)
{
    const SimHandle handle = lf_takeHandle();
    if (handle == nullptr) {
        return;
    }
    SimConnect_Close(handle);
    if (!std::exchange(told, true)) {
        logLine("no connection to the simulator: it hangs up before its first message");
    }
}

static void lf_clientLoop(const std::stop_token& token)
{
    bool told = false;
    bool hangUpTold = false;
    while (!gf_stopping() && !token.stop_requested()) {
        if (!told) {
            showMessage(format("Waiting for Prepar3Dv{} ...", gf_expectedSimVersion()), true);
            told = true;
        }
        if (!gf_openSim() || !lf_dispatchLoop(token)) {
            lf_giveUp(hangUpTold);
            gf_sleepUnlessStopping(kRetryPause);
        }
    }
}

static void lf_failed(std::string_view text)
{
    showError(text);
    lf_connectionLost();
}

static void lf_threadBody(const std::stop_token& token)
{
    try {
        lf_clientLoop(token);
    } catch (const UserErrorException& e) {
        // The text must stay readable: without a running flight the worker waits until the user closes.
        showError(e.what());
        gf_noteSimRunning(false);
    } catch (const std::exception& e) {
        lf_failed(e.what());
    } catch (...) {
        lf_failed("Exception in SimClient");
    }
    gf_requestNoteStand();
    display.sim.connected = false;
    gf_closeSim();
}

std::jthread gf_startSimClientThread()
{
    return std::jthread(lf_threadBody);
}

}  // namespace vlt
