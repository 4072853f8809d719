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
#include "sim/user_aircraft.h"
#include "sim/wire/ids.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string_view>

namespace vlt {

static constexpr size_t kQueueRoom = 256;
static constexpr int32_t kRequestErrorDelay = 9;  // seconds to the restart
static constexpr std::chrono::seconds kRetryPause(1);
static constexpr std::chrono::milliseconds kPollPause(1);

SimHandle simHandle = nullptr;
std::atomic<int32_t> wantedSimVersion{5};
std::atomic<uint32_t> userObjectId{kFirstUserObject};
std::atomic<bool> userOnGroundKnown{false};
std::atomic<bool> noteStandRequested{false};
UserAc userRaw;
std::vector<PositionRecord> sendBuffer;
std::vector<QueuedEvent> eventQueue;
std::vector<CreateRequest> createQueue;
std::vector<uint32_t> removeQueue;
std::vector<uint32_t> addedObjects;
std::vector<PendingCreate> pendingCreates;

void startSimClient(int32_t version)
{
    wantedSimVersion = version;
    const std::scoped_lock lock(simCallMutex);
    sendBuffer.reserve(kQueueRoom);
    eventQueue.reserve(kQueueRoom);
    createQueue.reserve(kQueueRoom);
    removeQueue.reserve(kQueueRoom);
    addedObjects.reserve(kQueueRoom);
    pendingCreates.reserve(kQueueRoom);
}

void gf_resetSimClient()
{
    const std::scoped_lock lock(simCallMutex);
    sendBuffer.clear();
    eventQueue.clear();
    createQueue.clear();
    removeQueue.clear();
    addedObjects.clear();
    pendingCreates.clear();
    userRaw = UserAc{};
    userObjectId = kFirstUserObject;
    userOnGroundKnown = false;
    noteStandRequested = false;
    gf_forgetUserTrack();
    gf_resetUserAircraft();
}

// --- requests of other rooms

UserAc gf_userRaw()
{
    const std::scoped_lock lock(simCallMutex);
    return userRaw;
}

UserAc requestUserPosition()
{
    UserAc latest;
    bool failed = false;
    {
        const std::scoped_lock lock(simCallMutex);
        if (simHandle != nullptr && !simRequestFailed) {
            failed = SimConnect_RequestDataOnSimObject(simHandle, kReqUser, kDefUser, kSimUserObject,
                                                       kSimPeriodOnce) < 0;
        }
        latest = userRaw;
    }
    if (failed) {
        raiseRequestError();
    }
    return latest;
}

static bool lf_requestUser(uint32_t request, uint32_t definition, uint32_t period)
{
    return SimConnect_RequestDataOnSimObject(simHandle, request, definition, kSimUserObject, period) >= 0;
}

bool gf_requestUserOnGround()
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || lf_requestUser(kReqUserOnGround, kDefUserOnGround, kSimPeriodSecond);
}

bool gf_requestUserTitleAndModel()
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || (lf_requestUser(kReqTitle, kDefTitle, kSimPeriodOnce) &&
                                    lf_requestUser(kReqModel, kDefModel, kSimPeriodOnce));
}

bool gf_requestAircraftInRange(int32_t radiusM)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr ||
           SimConnect_RequestDataOnSimObjectType(simHandle, kReqAircraftInRange, kDefAircraft,
                                                 static_cast<uint32_t>(radiusM), kSimObjectTypeAircraft) >= 0;
}

bool gf_requestStaticData(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || SimConnect_RequestDataOnSimObject(simHandle, kReqStaticData, kDefStatic,
                                                                     objectid, kSimPeriodOnce) >= 0;
}

bool gf_toggleAllLights(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr ||
           SimConnect_TransmitClientEvent(simHandle, objectid, ALL_LIGHTS_TOGGLE, 0, kEventGroup, 0) >= 0;
}

bool gf_setFlightPlan(uint32_t objectid, const std::string& path)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle != nullptr &&
           SimConnect_AISetAircraftFlightPlan(simHandle, objectid, path, kReqFlightPlan) == kSimOk;
}

bool gf_setSpoilersAndThrottles(uint32_t objectid, double spoilers, double throttles)
{
    const double values[] = {spoilers, throttles, throttles};
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || SimConnect_SetDataOnSimObject(simHandle, kDefSpoilersThrottles, objectid,
                                                                 std::as_bytes(std::span(values))) >= 0;
}

void queueEvent(uint32_t objectid, uint32_t event, uint32_t value)
{
    const std::pair<uint32_t, uint32_t> one[] = {{event, value}};
    gf_queueEvents(objectid, one);
}

void gf_queueEvents(uint32_t objectid, std::span<const std::pair<uint32_t, uint32_t>> events)
{
    const std::scoped_lock lock(simCallMutex);
    for (const auto& [event, value] : events) {
        eventQueue.push_back({objectid, event, value});
    }
}

void queueCreate(const CreateRequest& request)
{
    const std::scoped_lock lock(simCallMutex);
    createQueue.push_back(request);
}

void queueRemove(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    removeQueue.push_back(objectid);
}

void gf_postSimMessage(const SimMessage& message)
{
    const std::scoped_lock lock(messageMutex);
    simMessages.push_back(message);
}

void raiseRequestError()
{
    simRequestFailed = true;
    showMessage("SimConnect request error", true);
    gf_requestStop(ExitReason::SimConnectError, kRequestErrorDelay);
}

// --- the connection

bool gf_openSim()
{
    SimHandle handle = nullptr;
    if (SimConnect_Open(&handle, kProgramName, 0) < 0) {
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
    return SimConnect_CallDispatch(lf_handle(), handler, nullptr) >= 0;
}

void gf_closeSim()
{
    SimHandle handle = nullptr;
    {
        const std::scoped_lock lock(simCallMutex);
        std::swap(handle, simHandle);
    }
    if (handle != nullptr) {
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

static void lf_noteStandstill()
{
    simRunning = false;
    display.simRunningIndicator = false;
}

static void lf_connectionLost()
{
    lf_noteStandstill();
    showMessage(
        format("{} Flight Simulator no longer connected, {} will stop ...", timeOfDayString(), kProgramName),
        true);
    gf_requestStop(ExitReason::SimWasClosed, 0);
}

// Dispatches until the token stops it or the connection breaks.
static void lf_dispatchLoop(const std::stop_token& token)
{
    const FineTimer oneMillisecond;
    while (!token.stop_requested()) {
        if (!gf_dispatchSim()) {
            lf_connectionLost();
            return;
        }
        std::this_thread::sleep_for(kPollPause);
    }
}

static void lf_clientLoop(const std::stop_token& token)
{
    bool told = false;
    while (!gf_stopping() && !token.stop_requested()) {
        if (!told) {
            showMessage(format("Waiting for Prepar3Dv{} ...", gf_expectedSimVersion()), true);
            told = true;
        }
        if (gf_openSim()) {
            lf_dispatchLoop(token);
        } else {
            gf_closeSim();
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
        lf_noteStandstill();
    } catch (const std::exception& e) {
        lf_failed(e.what());
    } catch (...) {
        lf_failed(format("Exception in {}", "SimClient"));
    }
    gf_requestNoteStand();
    display.simIndicator = false;
    gf_closeSim();
}

std::jthread gf_startSimClientThread()
{
    return std::jthread(lf_threadBody);
}

}  // namespace vlt
