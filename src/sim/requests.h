// The doors to the simulator: what other rooms ask of it, and the queues that its next frame empties.
//
// Any thread. Every function here takes simCallMutex, but for the message to the worker, which takes
// messageMutex; none waits for the simulator.
#pragma once

#include "sim/wire/simconnect.h"
#include "traffic/traffic.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vlt {

// One event to be sent to an object.
struct QueuedEvent {
    uint32_t objectid = kNoObject;
    uint32_t event = 0;
    uint32_t value = 0;
};

inline constexpr uint32_t kFirstUserObject = 2;  // the user's object until the simulator has told

extern SimHandle simHandle;                     // [simCallMutex] nullptr without a connection
extern std::atomic<uint32_t> userObjectId;      // [atomic] SimClient; ids up to it are no AI objects
extern std::atomic<bool> simHasQuit;            // [atomic] SimClient: the simulator has said that it goes
extern UserAc userRaw;                          // [simCallMutex] latest report
extern std::vector<PositionRecord> sendBuffer;  // [simCallMutex] positions of the next frame
extern std::vector<QueuedEvent> eventQueue;     // [simCallMutex]
extern std::vector<CreateRequest> createQueue;  // [simCallMutex]
extern std::vector<uint32_t> removeQueue;       // [simCallMutex]

// Makes room in the queues, once per run.
void gf_reserveRequests();
// Empties the queues.
void gf_emptyQueues();
// Empties the queues and forgets the user's aircraft, as at the start of a run.
void gf_resetRequests();

// Asks for the user's data anew and gives the latest that arrived.
UserAc requestUserPosition();
// The latest user data that arrived.
UserAc gf_userRaw();

// Requests. False if the simulator's link failed: see gf_mustSend. Without a connection nothing is asked, and
// nothing has failed: only a flight plan then isn't loaded.
bool gf_requestUserOnGround();       // from now on every second
bool gf_requestUserTitleAndModel();  // once
bool gf_requestAircraftInRange(int32_t radiusM);
bool gf_requestStaticData(uint32_t objectid);
bool gf_toggleAllLights(uint32_t objectid);
bool gf_setFlightPlan(uint32_t objectid, const std::string& path);
// Spoilers handle and both throttle levers, percent.
bool gf_setSpoilersAndThrottles(uint32_t objectid, double spoilers, double throttles);

void queueEvent(uint32_t objectid, uint32_t event, uint32_t value);
// Several for one object, (event, value) in order, under one lock.
void gf_queueEvents(uint32_t objectid, std::span<const std::pair<uint32_t, uint32_t>> events);
void queueCreate(const CreateRequest& request);
void queueRemove(uint32_t objectid);

// Appends a message for the worker.
void gf_postSimMessage(const SimMessage& message);

// The end of every failed request: no more of them, and the run restarts. After the simulator's goodbye
// nothing is missing, and nothing happens.
void raiseRequestError();
// Unless the request was sent: logs what failed, and raises the error.
void gf_mustSend(bool sent, std::string_view what);

}  // namespace vlt
