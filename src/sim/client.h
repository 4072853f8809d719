// The simulator client: owns the whole conversation with the simulator.
//
// Its thread, the SimClient, opens the connection, keeps trying while the simulator isn't there, and
// dispatches the simulator's messages. What the engine asks goes through queues that are drained on the
// simulator's frame event, so that objects move in step with its frames and the worker never waits for
// it. The functions for other rooms take simCallMutex; what comes back is posted to simMessages.
#pragma once

#include "sim/wire/simconnect.h"
#include "traffic/traffic.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vlt {

// The user's aircraft as the simulator reports it: twelve values in the order of their definition.
struct UserAc {
    double lat = 0;  // degrees
    double lon = 0;
    double pitch = 0;  // radians
    double bank = 0;
    double heading = 0;
    double altitude = 0;   // feet
    double agl = 0;        // feet
    double speed = 0;      // knots over the ground
    int64_t zuluTime = 0;  // seconds of the day
    int64_t zuluDay = 0;   // of the year
    int64_t zuluYear = 0;
    int64_t lights = 0;  // mask
};
static_assert(sizeof(UserAc) == 96, "twelve values as they come over the wire");

// One event to be sent to an object.
struct QueuedEvent {
    uint32_t objectid = kNoObject;
    uint32_t event = 0;
    uint32_t value = 0;
};

// A creation that was sent and has not shown up yet.
struct PendingCreate {
    uint32_t sendId = 0;
    uint32_t hexid = 0;
    std::string tailNumber;
};

inline constexpr uint32_t kFirstUserObject = 2;  // the user's object until the simulator has told

extern SimHandle simHandle;                        // [simCallMutex] nullptr without a connection
extern std::atomic<int32_t> wantedSimVersion;      // [atomic] worker: 5 or 6
extern std::atomic<uint32_t> userObjectId;         // [atomic] SimClient; ids up to it are no AI objects
extern std::atomic<bool> userOnGroundKnown;        // [atomic] SimClient: the first report has arrived
extern std::atomic<bool> noteStandRequested;       // [atomic] SimClient: the user's stand is to be noted
extern UserAc userRaw;                             // [simCallMutex] latest report
extern std::vector<PositionRecord> sendBuffer;     // [simCallMutex] positions of the next frame
extern std::vector<QueuedEvent> eventQueue;        // [simCallMutex]
extern std::vector<CreateRequest> createQueue;     // [simCallMutex]
extern std::vector<uint32_t> removeQueue;          // [simCallMutex]
extern std::vector<uint32_t> addedObjects;         // [simClient] announced, not yet seen in a data reply
extern std::vector<PendingCreate> pendingCreates;  // [simClient]

// Sets the wanted version and makes room in the queues, once per run.
void startSimClient(int32_t version);
// The SimClient thread; ends when its token is asked to stop, or with the run.
std::jthread gf_startSimClientThread();

// The version digit that the waiting message shows: from SIM_INSTALL_PATH, else P3D_VERSION. Throws
// UserErrorException if neither tells.
std::string gf_expectedSimVersion();

// One connection, by hand: for runs without the SimClient thread, on a virtual clock.
//
// Opens and defines everything; false while the simulator isn't there.
bool gf_openSim();
// Gives the waiting messages to the handlers. False once the connection is lost.
bool gf_dispatchSim();
// Closes the connection.
void gf_closeSim();

// Empties the queues and forgets the user's aircraft, as at the start of a run.
void gf_resetSimClient();

// Asks for the user's data anew and gives the latest that arrived.
UserAc requestUserPosition();
// The latest user data that arrived.
UserAc gf_userRaw();

// Requests. False if the simulator's link failed; the caller says what failed and raises the error. Without
// a connection nothing is asked, and nothing has failed: only a flight plan then isn't loaded.
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

// The end of every failed request: no more of them, and the run restarts.
void raiseRequestError();

// Subscribes, defines and maps everything that the conversation needs. The lock is held by the caller.
bool gf_defineEverything(SimHandle handle);

// Forgets the positions seen, as at the start of a run.
void gf_forgetUserTrack();

// Asks the worker to note the user's stand, if the user stands: the flight ends, or another begins.
void gf_requestNoteStand();

// One message from the simulator. Throws UserErrorException where the user must read why we stop.
void gf_dispatchMessage(std::span<const std::byte> message);

// Sends what is queued, on the simulator's frame event. A busy lock costs one frame, never a wait.
void gf_onFrame();

}  // namespace vlt
