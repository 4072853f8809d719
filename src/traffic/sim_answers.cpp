#include "traffic/sim_answers.h"

#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "sim/requests.h"
#include "traffic/due_place.h"
#include "traffic/flight_plan.h"
#include "traffic/geodesy.h"
#include "traffic/object_config.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"
#include "traffic/step_motion.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vlt {

static void lf_loadPlan(LiveAc& ac)
{
    if (!ac.origin.empty() && !ac.destination.empty()) {
        loadFlightPlan(ac);
    }
}

static void lf_parks(LiveAc& ac)
{
    ac.stamp = hourNow;
    logLine(format("{:8}: {:8} parks", gf_standName(ac), ac.callsign));
    std::erase_if(parkPlan, [&ac](const PlanEntry& entry) { return entry.stand == ac.standId; });
    if (StaticAc* parked = gf_staticHolder(ac.standId)) {
        logLine(format("{:8}: {:8} parks over static {} ? static will be removed ...", gf_standName(ac),
                       ac.callsign, parked->callsign));
        removeAircraftFromSim(*parked, "makes way for a live aircraft");
    }
}

// The object exists. False if its id can't be one of ours.
static bool lf_onLiveObject(LiveAc& ac, const SimMessage& message)
{
    constexpr uint32_t kFirstObject = 3;
    if (message.objectid < kFirstObject) {
        return false;
    }
    ac.objectid = message.objectid;
    ac.agl = message.y;
    if (!ac.stream.empty() && !ac.stream.front().airborne) {
        ac.onGround = true;
        ac.altRate = 0;
        ac.phaseTicks = 1;
        if (ac.st == StState::Parked) {
            lf_parks(ac);
        }
    }
    lf_loadPlan(ac);
    gf_mustSend(gf_requestStaticData(ac.objectid), "SimConnect request StaticCG fails");
    return true;
}

static void lf_onObjectData(LiveAc& ac, const SimMessage& message)
{
    constexpr int32_t kInPhase = 2;  // ticks left of a rotation
    const bool reportsGround = message.a == 1;
    if (reportsGround && !ac.onGround && ac.phaseTicks < kInPhase) {
        onTouchdown(ac);
    }
    ac.agl = message.y;
    if (ac.onGround || ac.phaseTicks >= kInPhase) {
        ac.alt = ac.staticCg + message.x;
    }
}

static void lf_onStaticData(LiveAc& ac, const SimMessage& message)
{
    constexpr double kLowestCg = 1;  // feet
    constexpr double kHighestCg = 35;
    constexpr double kSteepestUp = -1.0 * kRadPerDeg;
    constexpr double kSteepestDown = 2.5 * kRadPerDeg;
    constexpr double kUsualPitch = 0.7 * kRadPerDeg;
    if (message.x >= kLowestCg && message.x <= kHighestCg) {
        ac.staticCg = message.x;
    } else {
        logLine(format("{}: static CG {:.1F}ft wrong?", logName(ac), message.x));
    }
    const bool believable = message.y > kSteepestUp && message.y <= kSteepestDown;
    ac.staticPitch = believable ? message.y : kUsualPitch;
}

void handleSimMessage(const SimMessage& message)
{
    LiveAc* ac = nullptr;
    switch (message.kind) {
    case SimMessageKind::LiveObject:
        if ((ac = gf_liveByHexid(message.a)) != nullptr && lf_onLiveObject(*ac, message)) {
            ackWait.push_back(message);
        }
        break;
    case SimMessageKind::StaticObject:
        ackWait.push_back(message);
        break;
    case SimMessageKind::ObjectRemoved:
        onObjectRemoved(message.objectid);
        break;
    case SimMessageKind::ObjectData:
        if ((ac = gf_liveByObject(message.objectid)) != nullptr) {
            lf_onObjectData(*ac, message);
        }
        break;
    case SimMessageKind::StaticData:
        if ((ac = gf_liveByObject(message.objectid)) != nullptr) {
            lf_onStaticData(*ac, message);
        }
        break;
    case SimMessageKind::CreationRefused:
        gf_onCreateRefused(message.a);
        break;
    }
}

// The handlers write files and log lines: meanwhile the SimClient thread goes on posting.
void gf_handleSimMessages()
{
    static std::vector<SimMessage> taken;  // [worker] keeps its room from tick to tick
    taken.clear();
    {
        const std::scoped_lock lock(messageMutex);
        std::swap(taken, simMessages);
    }
    for (const SimMessage& message : taken) {
        handleSimMessage(message);
    }
}

// --- two seconds from the acknowledgement to the set-up

static void lf_setUpLive(const SimMessage& message)
{
    LiveAc* ac = gf_liveByHexid(message.a);
    if (ac == nullptr || ac->objectid != message.objectid) {
        return;
    }
    setUpLiveAc(*ac);
    gf_beginWhereDue(*ac);
    if (ac->removeWhenAdded) {
        ac->removeWhenAdded = false;
        removeAircraftFromSim(*ac, ac->goesBecause);
    }
}

static void lf_setUpStatic(const SimMessage& message)
{
    const auto ac = std::ranges::find(staticAcs, message.a, &StaticAc::hexid);
    if (ac == staticAcs.end()) {
        removeWaitQueue.push_back(message.objectid);  // given up before the simulator had answered
        return;
    }
    ac->fs = FsState::Active;
    ac->objectid = message.objectid;
    parkedConfig(*ac);
    logLine(format("{:8}: {:8} parked", gf_standName(*ac), ac->callsign));
    if (ac->removeWhenAdded) {
        ac->removeWhenAdded = false;
        removeAircraftFromSim(*ac, ac->goesBecause);
    }
}

static constexpr uint32_t kSetUpAfter = 200;  // ticks

static void lf_stepAckWait(SimMessage& message)
{
    constexpr uint32_t kToggles[] = {50, 100};
    const bool live = message.kind == SimMessageKind::LiveObject;
    if (live && std::ranges::find(kToggles, message.b) != std::end(kToggles)) {
        gf_mustSend(gf_toggleAllLights(message.objectid), "SimConnect gf_allLightsToggle fails");
    }
    if (message.b == kSetUpAfter) {
        live ? lf_setUpLive(message) : lf_setUpStatic(message);
    }
    ++message.b;
}

void gf_stepAckWaits()
{
    for (SimMessage& message : ackWait) {
        lf_stepAckWait(message);
    }
    std::erase_if(ackWait, [](const SimMessage& message) { return message.b > kSetUpAfter; });
}

}  // namespace vlt
