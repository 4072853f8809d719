#include "traffic/cycle.h"

#include "airports/stand_search.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "sim/requests.h"
#include "traffic/create_request.h"
#include "traffic/geodesy.h"
#include "traffic/identity.h"
#include "traffic/intake.h"
#include "traffic/legs.h"
#include "traffic/removal.h"
#include "traffic/spawn.h"
#include "traffic/step_motion.h"
#include "traffic/way.h"

#include <algorithm>
#include <cmath>

namespace vlt {

static void lf_fillPosition(LiveAc& ac)
{
    if (ac.objectid != kNoObject) {
        fillBuffer.push_back(
            {ac.objectid, ac.lat, ac.lon, ac.pitch, ac.bank, ac.hdg, ac.alt, ac.vsOut, ac.tasOut});
        return;
    }
    logLine(format("updateLiveAc objectid=0? hexid: {},cs:{}, reg:{}, aimo:{} sz:{}", ac.hexid, ac.callsign,
                   ac.regcode, aimo(ac), ac.stream.size()));
    removeAircraftFromSim(ac, "no object");
}

// On the ground the speed of the object, in the air the reported one, unless the object moves much faster.
static void lf_showSpeed(LiveAc& ac)
{
    constexpr double kMuchFaster = 1.08;
    constexpr double kFastest = 1200;  // knots, that the simulator may be told
    const double knots = std::min(std::sqrt(std::norm(ac.velocity)) / kMetresPerTickPerKnot, kFastest);
    if (ac.onGround || ac.st == StState::TakeOff) {
        ac.tasOut = ac.backwards ? -knots : knots;
    } else {
        ac.tasOut = std::max(ac.speedOut, knots / kMuchFaster);
    }
}

static void lf_updateActive(LiveAc& ac)
{
    constexpr double kSecondsPerMinute = 60;
    if (ac.stream.empty()) {
        logLine(format("updateLiveAc stream empty ? {}, hexid:{}, objectid:{}, alt:{:.0f} ft, "
                       "lalo:{:.6f},{:.6f}, TAS:{:.0f}",
                       logName(ac), ac.hexid, ac.objectid, ac.alt, ac.lat, ac.lon, ac.tasOut));
        removeAircraftFromSim(ac, "no report left");
        return;
    }
    if (tick >= ac.stream.front().time) {
        nextPosMain(ac);
        ac.vsOut = ac.targetVs / kSecondsPerMinute;
        ac.tasOut = ac.stream.empty() || ac.stream.front().stationary ? 0 : ac.speedOut;
    }
    if (ac.fs != FsState::Active) {
        return;
    }
    if (!ac.stream.front().stationary) {
        stepMotion(ac);
        lf_showSpeed(ac);
    }
    lf_fillPosition(ac);
}

bool updateLiveAc(LiveAc& ac)
{
    try {
        if (ac.fs == FsState::Buffer) {
            spawnGate(ac);
        } else if (ac.fs == FsState::Active) {
            lf_updateActive(ac);
        }
    } catch (const std::exception& e) {
        logLine(format("updateLiveAc: {} {}, sz:{}, fs:{}, st:{}", e.what(), logName(ac), ac.stream.size(),
                       stateWord(ac.fs), stateWord(ac.st)));
    }
    return gf_isMarked(ac);
}

void gf_updateLiveAcs()
{
    bool erase = false;
    for (LiveAc& ac : liveAcs) {
        erase = updateLiveAc(ac) || erase;
    }
    if (erase || std::ranges::any_of(staticAcs, gf_isMarked)) {
        gf_eraseMarked();
    }
}

void gf_handOverPositions()
{
    constexpr float kFastFrames = 50;  // per second
    std::unique_lock lock(simCallMutex, std::try_to_lock);
    if (!lock && frameRate > kFastFrames) {
        lock.lock();
    }
    if (lock) {
        std::swap(fillBuffer, sendBuffer);
    }
    fillBuffer.clear();
}

void gf_sendNextRemoval()
{
    if (!removeWaitQueue.empty()) {
        queueRemove(removeWaitQueue.front());
        removeWaitQueue.pop_front();
    }
}

void gf_meterRequests()
{
    constexpr int32_t kCreateEvery = 50;  // ticks
    if (tick % kTicksPerRemoval == 0) {
        gf_sendNextRemoval();
    }
    if (tick % kCreateEvery != 0) {
        return;
    }
    for (auto* queue : {&liveCreateQueue, &staticCreateQueue}) {
        if (!queue->empty()) {
            queueCreate(queue->front());
            queue->pop_front();
            return;
        }
    }
}

void gf_takeFeed()
{
    constexpr int kRecordsPerTick = 2;
    for (int i = 0; i < kRecordsPerTick && feedIntake(); ++i) {
    }
}

void gf_makeNextRequest()
{
    if (!spawnStack.empty()) {
        const uint32_t hexid = spawnStack.back();
        spawnStack.pop_back();
        makeCreateRequest(hexid);
    }
}

// The range in force, and farther as long as an object is awaited there: one that is never seen in an answer
// would never be taken over. The range may have shrunk since the object was asked for.
static int32_t lf_dataRadius()
{
    constexpr double kMargin = 2.0 * kMetresPerNm;  // the object moves until it is taken over
    constexpr double kWidest = 200000;              // metres, the simulator's own limit
    double radius = lateralRangeMetres;
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs == FsState::Adding2Sim) {
            const double metres = distNm(gf_placeOf(userNow), gf_placeOf(ac)) * kMetresPerNm;
            radius = std::max(radius, std::min(metres + kMargin, kWidest));
        }
    }
    return static_cast<int32_t>(radius);
}

void gf_askForObjectData()
{
    gf_mustSend(gf_requestAircraftInRange(lf_dataRadius()), "SimConnect request ac within range fails");
}

void gf_requestObjectData()
{
    constexpr int32_t kFlareEvery = 20;  // ticks
    if (!simRequestFailed && tick % (flareActive ? kFlareEvery : kTicksPerSecond) == 0) {
        gf_askForObjectData();
    }
}

void gf_copyUser()
{
    userNow = requestUserPosition();
}

void gf_serviceStandChange()
{
    if (standChangeList.empty()) {
        return;
    }
    // An entry whose aircraft is gone has nothing left to tell.
    LiveAc* ac = gf_liveByHexid(standChangeList.front());
    standChangeList.pop_front();
    if (ac == nullptr) {
        return;
    }
    if (!ac->coupledSearched) {
        lf_searchForCoupledCsAroundThisTime(hourNow, *ac);
        ac->coupledSearched = true;
    }
    gf_removeSameFlight(*ac);
}

}  // namespace vlt
