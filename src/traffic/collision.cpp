#include "traffic/collision.h"

#include "core/base/parameters.h"
#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "sim/user_aircraft.h"
#include "traffic/geodesy.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <cmath>

namespace vlt {

std::atomic<bool> blockChanged{false};

static LatLon lastUserPosition;  // [worker] at the last look for static aircraft in the user's way

// --- the user in the air

static bool lf_meetsOnRunway(const LiveAc& ac, double dist)
{
    constexpr double kLow = 500;     // feet above ground
    constexpr double kNear = 1;      // nm
    constexpr double kOffLine = 50;  // feet
    return userNow.agl < kLow && dist <= kNear &&
           std::abs(gf_offLineFeet(gf_placeOf(userNow), userNow.heading, gf_placeOf(ac))) <= kOffLine;
}

static bool lf_meetsInAir(const LiveAc& ac, double dist)
{
    constexpr double kNear = 4;       // nm
    constexpr double kLevel = 1000;   // feet
    constexpr double kOffLine = 700;  // feet
    return dist <= kNear && std::abs(ac.alt - userNow.altitude) <= kLevel &&
           std::abs(gf_offLineFeet(gf_placeOf(userNow), ac.hdg, gf_placeOf(ac))) <= kOffLine;
}

static bool collisionUserAir(const LiveAc& ac)
{
    const double dist = distNm(gf_placeOf(userNow), gf_placeOf(ac));
    return ac.onGround ? lf_meetsOnRunway(ac, dist) : lf_meetsInAir(ac, dist);
}

static void lf_checkUserInAir()
{
    const auto found = std::ranges::find_if(
        liveAcs, [](const LiveAc& ac) { return ac.fs == FsState::Active && collisionUserAir(ac); });
    if (found != liveAcs.end()) {
        removeAircraftFromSim(*found, "in the user's way in the air");
    }
}

// --- the user on the ground

static bool lf_meetsUserOnGround(double halfSpan, LatLon place, double margin)
{
    return (userHalfSpan + halfSpan) * margin >= distNm(gf_placeOf(userNow), place);
}

static void lf_checkUserOnGround()
{
    constexpr double kLiveMargin = 1.15;
    constexpr double kStaticMargin = 1.1;
    const auto live = std::ranges::find_if(liveAcs, [](const LiveAc& ac) {
        return ac.onGround && ac.fs == FsState::Active &&
               lf_meetsUserOnGround(ac.radius, gf_placeOf(ac), kLiveMargin);
    });
    if (live != liveAcs.end()) {
        removeAircraftFromSim(*live, "in the user's way on the ground");
        return;
    }
    if (gf_placeOf(userNow) == lastUserPosition) {
        return;
    }
    lastUserPosition = gf_placeOf(userNow);
    const auto parked = std::ranges::find_if(staticAcs, [](const StaticAc& s) {
        return s.fs == FsState::Active && lf_meetsUserOnGround(s.radius, gf_standPlace(s), kStaticMargin);
    });
    if (parked != staticAcs.end()) {
        removeAircraftFromSim(*parked, "in the user's way on the ground");
    }
}

// --- live against static

static bool lf_taxies(const LiveAc& ac)
{
    return ac.onGround && (ac.st == StState::Taxi || ac.st == StState::Parking) && ac.fs == FsState::Active &&
           !ac.landingRoll && !ac.takeOff;
}

static void lf_removeStaticInWay(const LiveAc& ac)
{
    constexpr double kMargin = 1.1;
    const auto parked = std::ranges::find_if(staticAcs, [&ac](const StaticAc& s) {
        return s.fs == FsState::Active &&
               (ac.radius + s.radius) * kMargin >= distNm(gf_placeOf(ac), gf_standPlace(s));
    });
    if (parked == staticAcs.end()) {
        return;
    }
    logTalkative(format("{:8}: {:8} removed for collision avoidance with live {}", gf_standName(*parked),
                        parked->callsign, ac.callsign));
    removeAircraftFromSim(*parked, "in the way of a live aircraft");
}

static void lf_checkLiveAgainstStatic()
{
    for (LiveAc& ac : liveAcs) {
        if (lf_taxies(ac) && (ac.lat != ac.lastCheckLat || ac.lon != ac.lastCheckLon)) {
            ac.lastCheckLat = ac.lat;
            ac.lastCheckLon = ac.lon;
            lf_removeStaticInWay(ac);
        }
    }
}

// --- all of it

void gf_checkCollisions()
{
    const bool userKnown = !gf_isNullPosition(gf_placeOf(userNow));
    if (userKnown && userOnGround && COLLISION_USER_GND.value) {
        lf_checkUserOnGround();
    } else if (userKnown && !userOnGround && COLLISION_USER_AIR.value) {
        lf_checkUserInAir();
    }
    if (COLLISION_LIVE_PARKED_GND.value && !staticAcs.empty()) {
        lf_checkLiveAgainstStatic();
    }
}

void gf_serviceBlock()
{
    const bool changed = blockChanged.exchange(false);  // first: a change that comes now is for the next look
    blockedCallsign = BLOCK_CALLSIGN.value;
    if (!changed || blockedCallsign.empty()) {
        return;
    }
    const auto found = std::ranges::find_if(
        liveAcs, [](const LiveAc& ac) { return ac.fs == FsState::Active && ac.callsign == blockedCallsign; });
    if (found != liveAcs.end()) {
        removeAircraftFromSim(*found, "blocked by the user");
    }
}

void gf_forgetCollisions()
{
    lastUserPosition = {};
    blockChanged = false;
}

}  // namespace vlt
