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
#include "traffic/taxi_curve.h"

#include <algorithm>
#include <cmath>

namespace vlt {

static double lf_legLength(const LiveAc& ac)
{
    return distNm(gf_placeOf(ac.stream[0]), gf_placeOf(ac.stream[1]));
}

static double lf_turnToDeg(const LiveAc& ac, double direction)
{
    return std::abs(angleDiff(ac.hdg, direction)) * kDegPerRad;
}

// --- midpoints

// Inserts a midpoint on a long leg with a change of speed, so that the speed changes in two steps.
static void maybeMidpoint(LiveAc& ac)
{
    constexpr double kSpeedStep = 5;                   // knots
    constexpr double kLongLeg = 100.0 / kMetresPerNm;  // nm
    const double from = ac.stream[0].speed;
    const double to = ac.stream[1].speed;
    if ((from > 0 || to > 0) && std::abs(from - to) > kSpeedStep && lf_legLength(ac) >= kLongLeg) {
        insertMidpoint(ac);
    }
}

// --- bends

// A sharp bend after a long, slow leg: its first half stays straight.
static bool lf_bendWaits(const LiveAc& ac, double deg)
{
    constexpr double kSharp = 45;
    constexpr double kLongLeg = 50.0 / kMetresPerNm;  // nm
    constexpr int32_t kLongTime = 600;                // ticks
    return deg > kSharp && lf_legLength(ac) > kLongLeg && ac.stream[0].speed <= kTakeOffRunSpeed &&
           ac.stream[1].time - ac.stream[0].time >= kLongTime;
}

static void lf_bend(LiveAc& ac)
{
    constexpr double kStraight = 3;     // degrees
    constexpr double kTurnsBack = 160;  // degrees, no curve is that sharp
    const bool third = ac.stream.size() >= 3;
    const double deg = third && !ac.stream[2].stationary
                           ? lf_turnToDeg(ac, bearing(gf_placeOf(ac.stream[1]), gf_placeOf(ac.stream[2])))
                           : 0;
    if (deg > kStraight && lf_bendWaits(ac, deg)) {
        insertMidpoint(ac);
    } else if (deg > kStraight && deg <= kTurnsBack && !gf_samePosition(ac.stream[0], ac.stream[2])) {
        makeCurve(ac);
        ac.curveAngle = deg;
    } else if (third || ac.extendCount < 1) {
        maybeMidpoint(ac);
    }
}

static void lf_judgeTurning(LiveAc& ac)
{
    constexpr double kStraight = 3;  // degrees
    if (gf_hasCurve(ac.curve)) {
        ac.turning = false;
        return;
    }
    ac.turnDeg = lf_turnToDeg(ac, ac.trackTarget);
    ac.turning = ac.turnDeg > kStraight;
}

// --- the time of a leg

// How many times longer than its turn the leg is decides how fast the aircraft turns.
static void lf_fitTurnRate(LiveAc& ac, double deg, double ticks, double dist)
{
    constexpr double kGentle = 45;
    constexpr double kRightAngle = 90;
    constexpr double kMetre = 1.0 / kMetresPerNm;
    constexpr double kRoom = 1.2;
    constexpr double kTightest = 1.5;         // times the usual rate
    constexpr int32_t kTurnTimeLimit = 2000;  // ticks
    const double turnTicks = std::max(std::round(deg / ac.turnRate / 100), 1.0);
    if (deg == 0 || dist <= 0) {
        return;
    }
    const double ratio = ticks / turnTicks;
    if (deg > kGentle) {
        ac.turnRate *= std::min({ratio, std::min(kRightAngle, deg) / 30, kTightest});
        if (deg >= kRightAngle) {
            ac.lagLimit = std::max(ac.lagLimit, kTurnTimeLimit);
            ac.leadLimit = std::max(ac.leadLimit, kTurnTimeLimit);
        }
        return;
    }
    const double divisor =
        ratio >= kRoom ? std::min({ratio * 10 / deg, ratio * 30 * kMetre / dist, ratio}) : ratio;
    if (divisor != 0) {
        ac.turnRate /= divisor;
    }
}

void legTime(LiveAc& ac)
{
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    if (next.stationary) {
        const double span = std::max(static_cast<double>(next.time) - front.time, double{kShortestLeg});
        gf_arriveIn(ac, std::max(static_cast<double>(front.time) - tick + span, double{kShortestLeg}));
        return;
    }
    ac.turnRate = ac.turnRateNominal;
    const double dist = lf_legLength(ac);
    const double ticks =
        std::max(std::round(dist * kTicksPerHour / gf_legSpeed(ac, dist)), double{kShortestLeg});
    if (gf_hasCurve(ac.curve) || ac.turning) {
        lf_fitTurnRate(ac, ac.turning ? ac.turnDeg : ac.curveAngle, ticks, dist);
    }
    gf_arriveIn(ac, ticks);
}

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
    ac.curveAngle = 90;
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
    gf_widenTimeLimits(ac);
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

static void lf_taxiOn(LiveAc& ac)
{
    if (!ac.stream[1].stationary) {
        lf_bend(ac);
    }
    lf_judgeTurning(ac);
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
    legTime(ac);
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
    if (!ac.landingRoll && !ac.takeOff) {
        gf_narrowTimeLimits(ac);
    }
    if (ac.flareStage == 0 && ac.st != StState::TakeOff) {
        ac.pitch = ac.staticPitch;
        ac.pitchRate = 0;
        ac.bank = 0;
        ac.bankRate = 0;
    }
    ac.curve.dt = 1.0 / ticks;
    ac.speedOut = ac.st == StState::PushingBack ? -ac.stream[1].speed : ac.stream[1].speed;
    ac.targetVs = 0;
    gf_judgeRotation(ac, ticks);
}

}  // namespace vlt
