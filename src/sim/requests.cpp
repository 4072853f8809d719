#include "sim/requests.h"

#include "core/base/display.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "sim/wire/ids.h"

namespace vlt {

static constexpr int32_t kRequestErrorDelay = 9;  // seconds to the restart

SimHandle simHandle = nullptr;
std::atomic<uint32_t> userObjectId{kFirstUserObject};
std::atomic<bool> simHasQuit{false};
UserAc userRaw;
std::vector<PositionRecord> sendBuffer;
std::vector<QueuedEvent> eventQueue;
std::vector<CreateRequest> createQueue;
std::vector<uint32_t> removeQueue;

void gf_reserveRequests()
{
    constexpr size_t kRoom = 256;
    const std::scoped_lock lock(simCallMutex);
    sendBuffer.reserve(kRoom);
    eventQueue.reserve(kRoom);
    createQueue.reserve(kRoom);
    removeQueue.reserve(kRoom);
}

void gf_emptyQueues()
{
    const std::scoped_lock lock(simCallMutex);
    sendBuffer.clear();
    eventQueue.clear();
    createQueue.clear();
    removeQueue.clear();
}

void gf_resetRequests()
{
    gf_emptyQueues();
    const std::scoped_lock lock(simCallMutex);
    userRaw = UserAc{};
    userObjectId = kFirstUserObject;
}

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
                                                       kSimPeriodOnce) != kSimOk;
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
    return SimConnect_RequestDataOnSimObject(simHandle, request, definition, kSimUserObject, period) ==
           kSimOk;
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
    return simHandle == nullptr || SimConnect_RequestDataOnSimObjectType(
                                       simHandle, kReqAircraftInRange, kDefAircraft,
                                       static_cast<uint32_t>(radiusM), kSimObjectTypeAircraft) == kSimOk;
}

bool gf_requestStaticData(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || SimConnect_RequestDataOnSimObject(simHandle, kReqStaticData, kDefStatic,
                                                                     objectid, kSimPeriodOnce) == kSimOk;
}

bool gf_toggleAllLights(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    return simHandle == nullptr || SimConnect_TransmitClientEvent(simHandle, objectid, ALL_LIGHTS_TOGGLE, 0,
                                                                  kEventGroup, 0) == kSimOk;
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
                                                                 std::as_bytes(std::span(values))) == kSimOk;
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
    if (simHasQuit) {
        return;
    }
    simRequestFailed = true;
    showMessage("SimConnect request error", true);
    gf_requestStop(ExitReason::SimConnectError, kRequestErrorDelay);
}

void gf_mustSend(bool sent, std::string_view what)
{
    if (!sent) {
        logLine(what);
        raiseRequestError();
    }
}

}  // namespace vlt
