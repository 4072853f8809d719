#include "standin/sim_object.h"

#include "traffic/geodesy.h"

#include <algorithm>

namespace vlt {

constexpr double kTouchFeet = 0.2;            // the wheels count as touching within this
constexpr double kGravity = 32.2;             // feet per second squared
constexpr double kHighestFallSpeed = 200;     // feet per second
constexpr double kGlideSpeed = 60;            // knots, of an AI aircraft without a pilot
constexpr double kRollSpeed = 2;              // knots, of one on the ground
constexpr double kRollAfter = 2;              // seconds until its engines run
constexpr double kBankRate = 2 * kRadPerDeg;  // per second, of one whose attitude isn't frozen
constexpr double kSteepestBank = 60 * kRadPerDeg;

double gf_groundElevation(const Terrain& terrain, double lat)
{
    return terrain.elevation + (lat - terrain.originLat) * 60 * terrain.slopeFtPerNm;
}

bool gf_onGround(const SimObject& object, double groundElevation)
{
    return object.altitude <= groundElevation + object.kind.cgFt + kTouchFeet;
}

static void lf_fall(SimObject& object, double groundElevation, double seconds)
{
    const double before = object.fallSpeed;
    object.fallSpeed = std::min(before + kGravity * seconds, kHighestFallSpeed);
    object.altitude -= (before + object.fallSpeed) / 2 * seconds;
    const double standing = groundElevation + object.kind.cgFt;
    if (object.altitude <= standing) {
        object.altitude = standing;
        object.fallSpeed = 0;
    }
}

static void lf_drift(SimObject& object, bool onGround, double now, double seconds)
{
    if (onGround && now - object.createdAt < kRollAfter) {
        return;
    }
    const double knots = onGround ? kRollSpeed : std::max(object.tas, kGlideSpeed);
    const LatLon to =
        destination(gf_placeOf(object), object.heading, knots * kFeetPerSecondPerKnot * seconds);
    object.lat = to.lat;
    object.lon = to.lon;
}

void gf_moveUnfrozen(SimObject& object, double groundElevation, double now, double seconds)
{
    const bool onGround = gf_onGround(object, groundElevation);
    if (!object.frozenPosition) {
        lf_drift(object, onGround, now, seconds);
    }
    if (!object.frozenAltitude) {
        lf_fall(object, groundElevation, seconds);
    }
    if (!object.frozenAttitude && !onGround) {
        object.bank = std::min(object.bank + kBankRate * seconds, kSteepestBank);
    }
}

TrackPoint gf_trackPoint(const SimObject& object, double groundElevation, double now)
{
    return {.time = now,
            .lat = object.lat,
            .lon = object.lon,
            .altitude = object.altitude,
            .heading = object.heading,
            .pitch = object.pitch,
            .bank = object.bank,
            .tas = object.tas,
            .agl = object.altitude - groundElevation,
            .onGround = gf_onGround(object, groundElevation),
            .gearDown = object.gearDown,
            .flaps = object.flaps,
            .lights = object.lights};
}

}  // namespace vlt
