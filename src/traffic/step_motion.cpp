#include "traffic/step_motion.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/object_commands.h"
#include "traffic/way.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

// The climb builds up over three seconds after the nose has come up.
static constexpr int32_t kClimbBuiltUp = -300;  // ticks, counted down from rotation

static constexpr double kFlareBelow = 400;                // feet above ground
static constexpr double kFlarePitch = -4.0 * kRadPerDeg;  // the nose comes up to this

// The nose of a parking aircraft follows the way until the time left just allows the turn to the stand.
static double lf_parkingTarget(const LiveAc& ac)
{
    const double left = std::max(ac.stream.front().time - tick, 0) * gf_fastestTurn(ac);
    const bool turnsIn = std::abs(angleDiff(ac.hdg, ac.standHeading)) >= left;
    return turnsIn ? ac.standHeading : gf_noseOnWay(ac);
}

static void lf_stepLateral(LiveAc& ac)
{
    if (ac.st == StState::PushedBack) {
        return;
    }
    gf_stepWay(ac);
    if (ac.followsCourse) {
        const bool parks = ac.st == StState::Parking;
        gf_turnTowards(ac, parks ? lf_parkingTarget(ac) : gf_noseOnWay(ac), gf_fastestTurn(ac));
    } else {
        ac.hdg = gf_normalAngle(ac.hdg + ac.hdgRate);
    }
}

static void lf_stepBlend(LiveAc& ac)
{
    ac.pitch += ac.pitchRate;
    if (ac.pitch > ac.staticPitch) {
        ac.pitch = ac.staticPitch;
        ac.pitchRate = 0;
        ac.bank = 0;
        ac.bankRate = 0;
        ac.flareStage = 0;
        ac.touchdownBlend = false;
    }
    ac.bank += ac.bankRate;
}

static void lf_stepPitch(LiveAc& ac)
{
    const double before = ac.pitch;
    ac.pitch += ac.pitchRate;
    // The flare ends at its pitch, from whichever side it came.
    const bool passed = (before - kFlarePitch) * (ac.pitch - kFlarePitch) <= 0;
    if (ac.flareStage != 0 && passed) {
        ac.pitch = kFlarePitch;
        ac.pitchRate = 0;
    }
}

// One tick of rotation and initial climb, of an aircraft taking off.
static void takeOffStep(LiveAc& ac)
{
    constexpr double kClearOfGround = 800;  // feet
    --ac.phaseTicks;
    if (ac.phaseTicks >= 1) {
        ac.onGround = false;
        if (ac.pitch > ac.rotatePitch) {
            ac.pitch += ac.pitchRate;
        }
        return;
    }
    ac.bank += ac.bankRate;
    if (ac.pitch > ac.climbPitch) {
        ac.pitch += (ac.climbPitch - ac.rotatePitch) / ac.initialClimbTicks;
    }
    if (ac.phaseTicks <= kClimbBuiltUp) {
        ac.alt += ac.altRate;
    } else if (ac.phaseTicks < 0) {
        static constexpr std::array<double, 3> kShare{10, 5, 2};
        ac.alt += ac.altRate / kShare[static_cast<size_t>(-ac.phaseTicks / kTicksPerSecond)];
    }
    if (ac.phaseTicks == kClimbBuiltUp) {
        gf_commandGear(ac, false);
    }
    if (ac.phaseTicks < kClimbBuiltUp && ac.pitch <= ac.climbPitch) {
        ac.pitchRate = 0;
        if (ac.agl >= kClearOfGround) {
            gf_commandThrottle(ac, kThrottleClimb);
            gf_setSt(ac, StState::Flying);
            ac.phaseTicks = 1;
        }
    }
}

static void lf_stepAttitude(LiveAc& ac)
{
    if (ac.st == StState::TakeOff) {
        takeOffStep(ac);
        return;
    }
    if (ac.agl <= kFlareBelow && ac.approach && !ac.onGround) {
        flareStep(ac);
    }
    if (ac.touchdownBlend) {
        lf_stepBlend(ac);
    } else if (ac.flareStage == 0 && ac.onGround) {
        ac.pitch = ac.staticPitch;
        ac.bank = 0;
    } else {
        lf_stepPitch(ac);
        ac.bank += ac.bankRate;
        ac.alt += ac.altRate;
    }
}

void stepMotion(LiveAc& ac)
{
    lf_stepLateral(ac);
    lf_stepAttitude(ac);
    ac.lon = std::remainder(ac.lon, 360.0);
}

// The height from which the flare's beginning is judged: over the ground under the airport, if known.
static double lf_flareHeight(LiveAc& ac)
{
    if (!ac.groundElev && parkAirport) {
        ac.groundElev = parkAirport->elevation;
    }
    return ac.groundElev ? ac.alt - *ac.groundElev : ac.agl;
}

static void lf_enterFlare(LiveAc& ac, uint32_t stage, double altRate, double vs)
{
    ac.flareStage = stage;
    ac.altRate = altRate;
    ac.stream[0].vs = vs;
}

void flareStep(LiveAc& ac)
{
    // Feet above the resting height at which a stage is left, the sink rate in feet per tick from there
    // on, and the vertical speed that goes with it in feet per minute.
    struct Stage {
        double height, altRate, vs;
    };
    static constexpr std::array<Stage, 4> kStages{
        {{30, -0.1, -601}, {20, -0.075, -450}, {10, -0.05, -300}, {3, -0.025, -150}}};
    constexpr uint32_t kIdleFrom = 2;
    if (ac.flareStage >= kStages.size()) {
        return;
    }
    const uint32_t left = ac.flareStage;
    const Stage& stage = kStages[left];
    double height = ac.agl;
    if (left == 0) {
        ac.flareHeight = lf_flareHeight(ac);
        height = std::min(ac.agl, ac.flareHeight);
    }
    if (height > ac.staticCg + stage.height) {
        return;
    }
    lf_enterFlare(ac, left + 1, stage.altRate, stage.vs);
    if (left == 0) {
        ac.pitchRate = (kFlarePitch - ac.pitch) / ac.flareTicks;
        flareActive = true;
        return;
    }
    ac.groundElev.reset();
    if (left == kIdleFrom) {
        gf_commandThrottle(ac, kThrottleIdle, kThrottleIdle);
    }
}

static void lf_beginRollOut(LiveAc& ac)
{
    ac.touchdownBlend = true;
    ac.landingRoll = true;
    flareActive = false;
    ac.landingHdg = ac.hdg;
    ac.approach = false;
    ac.landed = true;
    gf_commandBrakes(ac, true);
    if (ac.derotateTicks > 0) {
        ac.bankRate = -ac.bank / ac.derotateTicks;
        ac.pitchRate = (ac.staticPitch - ac.pitch) / ac.derotateTicks;
    } else {
        logLine(format("{} ! onGround slots {:.1F}", logName(ac), static_cast<double>(ac.derotateTicks)));
        ac.pitchRate = ac.staticPitch;
        ac.bankRate = 0;
    }
    standChangeList.push_back(ac.hexid);
}

// The initial climb is over, and the reports are on the ground again: nothing else would keep the object
// from sinking into it. Before that the wheels may still touch.
static bool lf_takeOffHasFailed(const LiveAc& ac)
{
    const auto onGround = [](const PosSample& sample) { return !sample.airborne; };
    return ac.phaseTicks < kClimbBuiltUp && std::ranges::all_of(ac.stream, onGround);
}

void onTouchdown(LiveAc& ac)
{
    if (ac.fs == FsState::RemovingFromSim) {
        return;
    }
    if (ac.st == StState::TakeOff) {
        if (!lf_takeOffHasFailed(ac)) {
            return;
        }
        gf_setSt(ac, StState::Taxi);
        ac.takeOff = false;
        gf_commandGear(ac, true);
        lf_beginRollOut(ac);
    } else if (ac.flareStage != 0 || ac.approach) {
        lf_beginRollOut(ac);
    }
    ac.onGround = true;
    ac.altRate = 0;
    ac.phaseTicks = 1;
}

}  // namespace vlt
