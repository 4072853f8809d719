#include "sim/frame.h"

#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"

#include <span>

namespace vlt {

std::vector<PendingCreate> pendingCreates;

static void lf_sendPositions()
{
    constexpr size_t kValues = 8;
    for (const PositionRecord& p : sendBuffer) {
        if (p.objectid > userObjectId) {
            const double values[kValues] = {p.lat, p.lon, p.pitch, p.bank, p.hdg, p.alt, p.vsOut, p.tasOut};
            SimConnect_SetDataOnSimObject(simHandle, kDefPosition, p.objectid,
                                          std::as_bytes(std::span(values)));
        }
    }
    sendBuffer.clear();
}

static void lf_sendEvents()
{
    for (const QueuedEvent& e : eventQueue) {
        const bool flaps = e.event == FLAPS_SET;
        if (flaps) {
            SimConnect_AIReleaseControl(simHandle, e.objectid, kReqReleaseControl);
        }
        if (SimConnect_TransmitClientEvent(simHandle, e.objectid, e.event, e.value, kEventGroup, 0) !=
            kSimOk) {
            logLine(format("SimConnect TransmitClientEvent: {} fails", e.event));
        } else if (flaps) {
            SimConnect_AIReleaseControl(simHandle, e.objectid, kReqReleaseControl);
        }
    }
    eventQueue.clear();
}

// The following two answer whether a call failed: the error is raised once the lock is free.

static bool lf_sendCreations()
{
    bool failed = false;
    for (const CreateRequest& c : createQueue) {
        const SimInitialPosition position{c.lat,  c.lon,     c.altitude,           c.pitch,
                                          c.bank, c.heading, c.onGround ? 1U : 0U, 0};
        if (SimConnect_AICreateNonATCAircraft(simHandle, c.title, c.tailNumber, position, kReqCreate) !=
            kSimOk) {
            logLine(format("! Simcon call to create ac in sim failed, hexid:{}, liv: \"{}\", callsign: {}",
                           c.hexid, c.title, c.tailNumber));
            failed = true;
            continue;
        }
        uint32_t sendId = 0;
        if (SimConnect_GetLastSentPacketID(simHandle, &sendId) != kSimOk) {
            logLine("GetLastSentPacketID");
        }
        pendingCreates.push_back({sendId, c.hexid, c.tailNumber});
    }
    createQueue.clear();
    return failed;
}

static bool lf_sendRemovals()
{
    bool failed = false;
    for (const uint32_t objectid : removeQueue) {
        if (objectid <= userObjectId) {
            logLine(format("Simconnect call to remove ac with objectid {}", objectid));
        } else if (SimConnect_AIRemoveObject(simHandle, objectid, kReqRemove) != kSimOk) {
            logLine(format("===> !Simconnect call to remove AI ac from sim failed, id {}?", objectid));
            failed = true;
        }
    }
    removeQueue.clear();
    return failed;
}

void gf_onFrame()
{
    if (simRequestFailed) {
        gf_emptyQueues();
        return;
    }
    bool failed = false;
    {
        const std::unique_lock lock(simCallMutex, std::try_to_lock);
        if (!lock || simHandle == nullptr) {
            return;
        }
        lf_sendPositions();
        lf_sendEvents();
        failed = lf_sendCreations();
        failed = lf_sendRemovals() || failed;
    }
    if (failed) {
        raiseRequestError();
    }
}

void gf_resetFrame()
{
    pendingCreates.clear();
}

}  // namespace vlt
