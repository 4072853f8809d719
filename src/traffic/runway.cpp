#include "traffic/runway.h"

#include "airports/learning.h"
#include "core/base/log.h"
#include "core/base/text.h"
#include "sim/wire/ids.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/object_commands.h"
#include "traffic/performance.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

// --- take-off

static void lf_beginTakeOff(LiveAc& ac, uint32_t throttleLevel, uint32_t spoilers)
{
    ac.takeOff = true;
    gf_commandThrottle(ac, throttleLevel);
    gf_commandSpoilers(ac, spoilers);
    gf_commandFlaps(ac, 1);
    ac.approach = false;
    ac.landed = false;
    ac.climbConfigured = false;
    gf_commandLights(ac, kLightsTakeOff);
}

void takeOffStart(LiveAc& ac)
{
    if (ac.towed) {
        logLine(format("towed aircraft takes-off? {}", logName(ac)));
    }
    lf_beginTakeOff(ac, kThrottleIdle, 0);
    if (!ac.airline.empty()) {
        offerSoftLearning(ac, true);
    }
}

void gf_throttleOfTakeOffRun(LiveAc& ac)
{
    struct Row {
        double front, next;  // knots, either suffices
        uint32_t level;
    };
    static constexpr std::array<Row, 3> kRows{{{25, 30, 4}, {20, 25, 2}, {15, 20, 1}}};
    const auto fits = [&ac](const Row& row) {
        return ac.stream[0].speed >= row.front || ac.stream[1].speed >= row.next;
    };
    const auto row = std::ranges::find_if(kRows, fits);
    gf_commandThrottle(ac, row == kRows.end() ? kThrottleIdle : row->level);
}

enum class Lift { None, Climbs, Fast };

static bool lf_allAhead(const LiveAc& ac, auto holds)
{
    return std::all_of(ac.stream.begin() + 1, ac.stream.end(), holds);
}

// What all samples ahead together tell.
static Lift lf_liftAhead(const LiveAc& ac)
{
    constexpr double kClimbing = 256;  // feet per minute, more than that
    // A helicopter needs no run.
    const double least = ac.category == AcCategory::Rotorcraft ? 0 : kTakeOffRunSpeed;
    if (!ac.takeOff || ac.st == StState::TakeOff || ac.stream[0].speed < least) {
        return Lift::None;
    }
    if (lf_allAhead(ac, [](const PosSample& s) { return s.vs > kClimbing; })) {
        return Lift::Climbs;
    }
    const double rotateSpeed = gf_forCategory(kRotateSpeed, ac.category);
    const auto fast = [rotateSpeed](const PosSample& s) { return s.airborne && s.speed >= rotateSpeed; };
    return lf_allAhead(ac, fast) ? Lift::Fast : Lift::None;
}

void gf_rotateWhenDue(LiveAc& ac)
{
    const PosSample& next = ac.stream[1];
    const double ticks = next.time - tick;
    if (ticks <= ac.rotateTicks + kShortestLeg || lf_liftAhead(ac) == Lift::None) {
        return;
    }
    gf_insertSample(ac, 1 - ac.rotateTicks / ticks);
    PosSample& rotation = ac.stream[1];
    rotation.airborne = false;
    rotation.altitude = 0;
    rotation.vs = 0;
}

void gf_judgeRotation(LiveAc& ac, int32_t ticks)
{
    constexpr double kLeastRise = 0.1;  // feet over the leg
    const Lift lift = lf_liftAhead(ac);
    if (lift == Lift::None) {
        return;
    }
    const bool airborne = lf_allAhead(ac, [](const PosSample& s) { return s.airborne; });
    ac.altRate = lift == Lift::Climbs && airborne
                     ? std::max(ac.stream[1].altitude - ac.alt, kLeastRise) / ticks
                     : ac.maxClimbRate;
    rotationStart(ac);
}

void rotationStart(LiveAc& ac)
{
    ac.phaseTicks = ac.rotateTicks;
    ac.bank = 0;
    ac.bankRate = 0;
    ac.pitchRate = (ac.rotatePitch - ac.pitch) / ac.rotateTicks;
    if (!ac.takeOff) {
        takeOffStart(ac);
    }
    gf_setSt(ac, StState::TakeOff);
    ac.hdgRate = 0;
    ac.touchdownBlend = false;  // a touch and go may rotate before its nose was down
    ac.flareStage = 0;
    if (ac.landingRoll) {
        ac.landingRoll = false;
        ac.approach = false;
        ac.landed = false;
        gf_commandThrottle(ac, kThrottleFull);
        gf_commandSpoilers(ac, kSpoilersOut);
        gf_commandFlaps(ac, 1);
    }
}

// --- landing

void rollOutConfig(LiveAc& ac)
{
    constexpr double kTurnedOff = 15;    // degrees off the runway
    constexpr double kBrakesUntil = 90;  // knots
    const double offDeg = std::abs(angleDiff(ac.landingHdg, ac.hdg)) * kDegPerRad;
    if (offDeg >= kTurnedOff) {
        gf_commandFlaps(ac, 0);
        ac.landingRoll = false;
        ac.landingHdg = 0;
        gf_commandThrottle(ac, kThrottleIdle);
        gf_commandBrakes(ac, false);
        gf_commandLights(ac, kLightsAfterLanding);
    } else if (ac.stream[0].speed <= kBrakesUntil) {
        gf_commandBrakes(ac, false);
        gf_commandFlaps(ac, 1);
    }
}

void gf_rejectLanding(LiveAc& ac)
{
    ac.st = StState::Taxi;  // prevSt stays: nothing was left
    lf_beginTakeOff(ac, kThrottleClimb, kSpoilersOut);
}

}  // namespace vlt
