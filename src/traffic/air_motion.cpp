#include "traffic/air_motion.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/air_config.h"
#include "traffic/geodesy.h"
#include "traffic/ground_motion.h"
#include "traffic/leg_time.h"
#include "traffic/object_commands.h"
#include "traffic/performance.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vlt {

static constexpr double kSettledClimb = 601;  // feet per minute; beyond it a vertical speed counts as meant

// --- the arrival

static void lf_nextPosAir(LiveAc& ac)
{
    constexpr double kLandingSpeed = 100;  // knots, where the report has none
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    if (next.stationary) {
        if (ac.category == AcCategory::Rotorcraft) {
            legTime(ac);
        }
    } else if (ac.approach && !next.airborne) {
        gf_setArrivalTime(ac, front.speed > 0 ? front.speed : kLandingSpeed);
    } else {
        gf_setArrivalTime(ac);
    }
}

void nextPosAir(LiveAc& ac)
{
    try {
        lf_nextPosAir(ac);
    } catch (const std::exception& e) {
        logLine(format("nextPosAir: {}, {}, sz:{}", e.what(), logName(ac), ac.stream.size()));
        throw;
    }
}

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
    constexpr double kLeastClimb = 0.2;   // feet per tick
    constexpr double kFrozenVs = 100;     // feet per minute
    constexpr double kSinks = -250;       // feet per minute, a descent that is meant
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    const double rate = (next.altitude - ac.alt) / ticks;
    if (!ac.approach) {
        const bool mayDescend = ac.agl > kNearGround || next.vs <= kSinks;
        ac.altRate = std::min(mayDescend ? rate : std::max(rate, kLeastClimb), ac.maxClimbRate);
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
        lf_flyVs(ac, currentQnh <= kStandardQnh ? -kSettledClimb : lf_touchdownVs(ac));
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
            gf_setArrivalTime(ac);
            const int32_t ticks = gf_legTicks(ac);
            ac.dLat = (ac.stream[1].lat - ac.lat) / ticks;
            ac.dLon = std::remainder(ac.stream[1].lon - ac.lon, 360.0) / ticks;
            lf_climbAway(ac, ticks);
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

// The heading change over the leg: to the reported heading near the ground, else to the leg after it.
static double lf_headingChange(const LiveAc& ac)
{
    constexpr double kHeadingBelow = 1000;          // feet
    constexpr double kHeadingBelowApproach = 2000;  // feet
    const PosSample& next = ac.stream[1];
    const bool low = ac.agl < (ac.approach ? kHeadingBelowApproach : kHeadingBelow);
    if (low && next.attitudeGiven && next.rollValid && next.headingValid) {
        return angleDiff(ac.hdg, next.heading);
    }
    if (ac.stream.size() < 3 || gf_samePosition(next, ac.stream[2])) {
        // Nothing is known of the leg after it: the nose comes to this one's own direction.
        return gf_placeOf(ac) == gf_placeOf(next)
                   ? 0
                   : angleDiff(ac.hdg, bearing(gf_placeOf(ac), gf_placeOf(next)));
    }
    return angleDiff(ac.hdg, bearing(gf_placeOf(next), gf_placeOf(ac.stream[2])));
}

void airSettings(LiveAc& ac, int32_t ticks)
{
    if (ac.st != StState::TakeOff) {
        gf_setSt(ac, StState::Flying);
    }
    ac.speedOut = ac.stream[1].tas;
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
    ac.hdgRate = delta / legTicks;
    if (next.rollValid) {
        ac.bankRate = (next.roll - ac.bank) / legTicks;
    } else {
        const double target = lf_limited(-delta, gf_maxBank(ac.category));
        ac.bankRate = lf_limited((target - ac.bank) / legTicks, gf_maxBankRate(ac.category));
    }
    gf_airConfig(ac);
}

}  // namespace vlt
