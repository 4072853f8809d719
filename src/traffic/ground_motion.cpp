#include "traffic/ground_motion.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/arrival.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/object_commands.h"
#include "traffic/runway.h"
#include "traffic/stand_holding.h"
#include "traffic/stand_moves.h"
#include "traffic/way.h"

#include <algorithm>
#include <cmath>

namespace vlt {

// --- the leg by phase

static void lf_beginTurnOfPushBack(LiveAc& ac)
{
    if (!ac.pushTurnKnown || ac.stream.size() < 3) {
        if (ac.stream.size() > 2) {
            ac.stream.pop_back();
        }
        return;
    }
    if (ac.pushTurnRight) {
        ac.stream.back() = ac.pushExitSample;
    }
    makeCurve(ac);
}

static void lf_endPushBack(LiveAc& ac)
{
    constexpr double kFar = 900;  // nm: every report is nearer
    ac.trackTarget = ac.hdg;
    gf_commandEngines(ac, true);
    gf_commandThrottle(ac, kThrottleIdle);
    gf_commandFlaps(ac, 1);
    gf_setSt(ac, StState::PushedBack);
    ac.pushStage = kPushTurns;
    ac.pushedBackDist = kFar;
    ac.extendCount = 0;
    ac.pullOutPending = false;
}

static void lf_pushOn(LiveAc& ac)
{
    --ac.pushStage;
    if (ac.pushStage == kPushTurns) {
        lf_beginTurnOfPushBack(ac);
    } else if (ac.pushStage < kPushTurns) {
        lf_endPushBack(ac);
    }
}

// Forwards if the reports lead away in front of the stand, else backwards.
static void lf_leaveParked(LiveAc& ac)
{
    constexpr long kSideways = 90;  // degrees
    if (!ac.pullOutPending) {
        return;
    }
    const double away = bearing(gf_standPlace(ac), gf_placeOf(ac.stream.back()));
    const long deg = std::lround(angleDiff(ac.standHeading, away) * kDegPerRad);
    if (std::abs(deg) < kSideways) {
        pullOut(ac);
    } else {
        pushBack(ac);
    }
}

// An aircraft that comes from a stand doesn't look for one, unless it is towed.
static bool lf_mayPark(const LiveAc& ac)
{
    const bool fromTraffic = ac.prevSt > StState::PushedBack && ac.prevSt != StState::Parked;
    return ac.stream.back().stationary && ac.st == StState::Taxi && parkAirport && (ac.towed || fromTraffic);
}

static void lf_tryToPark(LiveAc& ac)
{
    constexpr double kSlow = 5;  // knots
    if (ac.extendCount > 0) {
        try2Park(ac, ac.landed);
    } else if (ac.stream[1].speed <= kSlow &&
               distNm(gf_placeOf(ac), gf_placeOf(ac.stream.back())) <= kStopsNear) {
        try2Park(ac, false);
    }
}

// One that stands and would arrive too soon waits where it is.
static void lf_waitUntilDue(LiveAc& ac)
{
    constexpr double kWorthIt = 100;  // ticks
    const PosSample& next = ac.stream[1];
    const double early = next.time - tick - gf_naturalTicks(ac);
    if (!gf_stands(ac) || ac.landingRoll || early < kWorthIt) {
        gf_turnFirst(ac);
        return;
    }
    PosSample wait = ac.stream.front();
    wait.time = tick + static_cast<int32_t>(early);
    wait.speed = 0;
    wait.stationary = true;
    ac.stream.insert(ac.stream.begin() + 1, wait);
}

static void lf_taxiOn(LiveAc& ac)
{
    if (!ac.stream[1].stationary) {
        gf_rotateWhenDue(ac);
        lf_waitUntilDue(ac);
    }
    if (lf_mayPark(ac)) {
        lf_tryToPark(ac);
    }
}

static void lf_nextPosGround(LiveAc& ac)
{
    if (ac.st == StState::PushingBack) {
        lf_pushOn(ac);
    } else if (ac.st == StState::Parked) {
        lf_leaveParked(ac);
    } else if (ac.st != StState::PushedBack) {
        lf_taxiOn(ac);
    }
}

void nextPosGround(LiveAc& ac)
{
    try {
        lf_nextPosGround(ac);
    } catch (const std::exception& e) {
        logLine(format("nextPosGround: {}, {}, sz:{}", e.what(), logName(ac), ac.stream.size()));
        throw;
    }
}

// --- the settings of a leg

void groundSettings(LiveAc& ac, int32_t ticks)
{
    if (ac.st == StState::Flying || ac.st == StState::Parked) {
        gf_setSt(ac, StState::Taxi);
    } else if (ac.takeOff) {
        gf_throttleOfTakeOffRun(ac);
    } else if (ac.landingRoll) {
        rollOutConfig(ac);
    } else {
        gf_commandThrottle(ac, kThrottleIdle);
    }
    if (ac.flareStage == 0 && ac.st != StState::TakeOff) {
        ac.pitch = ac.staticPitch;
        ac.pitchRate = 0;
        ac.bank = 0;
        ac.bankRate = 0;
    }
    ac.followsCourse = true;
    ac.speedOut = ac.st == StState::PushingBack ? -ac.stream[1].speed : ac.stream[1].speed;
    ac.targetVs = 0;
    gf_judgeRotation(ac, ticks);
}

}  // namespace vlt
