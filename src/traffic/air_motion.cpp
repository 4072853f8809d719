#include "traffic/air_motion.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/air_config.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/object_commands.h"
#include "traffic/performance.h"
#include "traffic/way.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vlt {

static constexpr double kSettledClimb = 601;  // feet per minute; beyond it a vertical speed counts as meant

// --- rates of a leg

static double lf_limited(double value, double limit)
{
    return std::clamp(value, -limit, limit);
}

// Vertical speed in feet per minute with which to touch down.
static double lf_touchdownVs(const LiveAc& ac)
{
    constexpr double kLowAgl = 100;          // feet
    constexpr double kGentle = -600;         // feet per minute
    constexpr double kVsPerHectopascal = 6;  // an altitude that isn't corrected for pressure misleads by this
    if (ac.agl <= kLowAgl) {
        return kGentle;
    }
    const double mean = (ac.stream[0].vs + ac.stream[1].vs) / 2;
    return std::min(mean - (currentQnh - kStandardQnh) * kVsPerHectopascal, -kSettledClimb);
}

double gf_pitchForVs(double vs)
{
    constexpr double kLevelPitchDeg = -3.0;
    constexpr double kPitchDegPer600 = 2.2;
    const double limited = vs < 0 ? std::max(vs, -3000.0) / 2 : std::min(vs, 2400.0);
    return (kLevelPitchDeg - kPitchDegPer600 * limited / 600) * kRadPerDeg;
}

// The leg's vertical speed, in feet per minute, is ours and not the report's.
static void lf_flyVs(LiveAc& ac, double vs)
{
    ac.stream[1].vs = vs;
    ac.targetVs = vs;
    ac.altRate = vs / kTicksPerMinute;
}

static void lf_climbRate(LiveAc& ac, int32_t ticks)
{
    constexpr double kNearGround = 1000;  // feet
    constexpr double kLeastClimb = 0.2;   // feet per tick, of one that takes off
    constexpr double kFastestDescent = -1.0;
    constexpr double kFrozenVs = 100;  // feet per minute
    constexpr double kSinks = -250;    // feet per minute, a descent that is meant
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    const double rate = (next.altitude - ac.alt) / ticks;
    if (!ac.approach) {
        const bool climbsOut =
            ac.agl <= kNearGround && (ac.st == StState::TakeOff || (ac.takeOff && next.vs > kSinks));
        ac.altRate = std::clamp(rate, climbsOut ? kLeastClimb : kFastestDescent, ac.maxClimbRate);
    } else if (front.altitude == next.altitude && ac.agl <= kNearGround && front.vs + next.vs <= kFrozenVs) {
        lf_flyVs(ac, lf_touchdownVs(ac));
    } else {
        ac.altRate = rate;
    }
}

static void lf_lastLegBeforeTouchdown(LiveAc& ac, int32_t ticks)
{
    if (parkAirport && currentQnh <= kStandardQnh) {
        ac.altRate = (parkAirport->elevation - ac.alt) / ticks;
    } else {
        const double vs = currentQnh <= kStandardQnh ? -kSettledClimb : lf_touchdownVs(ac);
        // Down where its reports are, not before.
        lf_flyVs(ac, std::max(vs, -std::max(ac.agl - ac.staticCg, 0.0) / ticks * kTicksPerMinute));
    }
    gf_commandGear(ac, true);
}

static void lf_climbAway(LiveAc& ac, int32_t ticks)
{
    const double altitude = ac.stream[1].altitude;
    ac.altRate = altitude > ac.alt ? std::min((altitude - ac.alt) / ticks, ac.maxClimbRate) : 0;
}

// The stream is about to climb: goes straight for the first airborne sample, if there is one near.
static void lf_climbOutOfStream(LiveAc& ac)
{
    constexpr size_t kLookAhead = 10;
    const size_t last = std::min(ac.stream.size() - 1, kLookAhead);
    for (size_t n = 3; n <= last; ++n) {
        if (ac.stream[n - 1].airborne) {
            ac.stream.erase(ac.stream.begin() + 1, ac.stream.begin() + static_cast<std::ptrdiff_t>(n) - 1);
            legTime(ac);
            gf_layWay(ac, gf_legTicks(ac));
            lf_climbAway(ac, gf_legTicks(ac));
            return;
        }
    }
    lf_flyVs(ac, std::max(ac.stream[1].vs, kSettledClimb));
}

// Reports on the ground while the object is in the air.
static void lf_groundedInAir(LiveAc& ac)
{
    constexpr double kClimbingStream = 100;  // feet per minute
    double vsOfStream = 0;
    for (const PosSample& sample : ac.stream) {
        vsOfStream += sample.vs;
    }
    if (!ac.approach && vsOfStream > kClimbingStream) {
        lf_climbOutOfStream(ac);
    } else {
        lf_flyVs(ac, lf_touchdownVs(ac));
    }
    gf_commandGear(ac, true);
}

static void lf_setVertical(LiveAc& ac, int32_t ticks)
{
    const bool frontAir = ac.stream[0].airborne;
    const bool nextAir = ac.stream[1].airborne;
    if (frontAir && nextAir) {
        lf_climbRate(ac, ticks);
    } else if (frontAir) {
        lf_lastLegBeforeTouchdown(ac, ticks);
    } else if (nextAir) {
        lf_climbAway(ac, ticks);
    } else {
        lf_groundedInAir(ac);
    }
}

// Near the ground a reported heading shows how the wind is met.
static bool lf_takesHeading(const LiveAc& ac)
{
    constexpr double kBelow = 1000;          // feet
    constexpr double kBelowApproach = 2000;  // feet
    const PosSample& next = ac.stream[1];
    return ac.agl < (ac.approach ? kBelowApproach : kBelow) && next.attitudeGiven && next.rollValid &&
           next.headingValid;
}

// The heading change over the leg: to the reported heading, or to where the way leads at the leg's end.
static double lf_headingChange(const LiveAc& ac)
{
    if (!ac.followsCourse) {
        return angleDiff(ac.hdg, ac.stream[1].heading);
    }
    const Metres end = ac.way.terms[0] + 2.0 * ac.way.terms[1] + 3.0 * ac.way.terms[2];
    return end == Metres{} ? 0 : angleDiff(ac.hdg, std::arg(end));
}

void airSettings(LiveAc& ac, int32_t ticks)
{
    if (ac.st != StState::TakeOff) {
        gf_setSt(ac, StState::Flying);
    }
    ac.speedOut = ac.stream[1].tas;
    ac.followsCourse = !lf_takesHeading(ac);
    ac.targetVs = ac.stream[1].vs;
    if (ac.flareStage == 0) {
        lf_setVertical(ac, ticks);
    }
    const PosSample& next = ac.stream[1];
    const int32_t legTicks = gf_legTicks(ac);  // the vertical may have dropped samples
    if (ac.st != StState::TakeOff && ac.flareStage == 0) {
        ac.pitchRate =
            lf_limited((gf_pitchForVs(next.vs) - ac.pitch) / legTicks, gf_maxPitchRate(ac.category));
    }
    const double delta = lf_headingChange(ac);
    ac.hdgRate = ac.followsCourse ? 0 : delta / legTicks;
    if (next.rollValid) {
        ac.bankRate = (next.roll - ac.bank) / legTicks;
    } else {
        const double target = lf_limited(-delta, gf_maxBank(ac.category));
        ac.bankRate = lf_limited((target - ac.bank) / legTicks, gf_maxBankRate(ac.category));
    }
    gf_airConfig(ac);
}

}  // namespace vlt
