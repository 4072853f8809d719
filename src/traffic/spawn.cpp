#include "traffic/spawn.h"

#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/liveries.h"
#include "liveries/matching.h"
#include "sim/wire/simconnect.h"
#include "traffic/air_motion.h"
#include "traffic/due_place.h"
#include "traffic/geodesy.h"
#include "traffic/identity.h"
#include "traffic/performance.h"
#include "traffic/removal.h"
#include "traffic/stand_spawn.h"

#include <algorithm>
#include <cmath>

namespace vlt {

// --- the gate

enum class Gate { Pass, Drop, Erase, Wait };

constexpr std::string_view kNoReports = "no second report came in time";
constexpr std::string_view kNoRoom = "MAX_LIVE is reached, and nobody is further away";

// What the gate decides about an aircraft.
struct Judgement {
    Gate gate = Gate::Pass;
    std::string_view why;  // it is erased, a literal
};

static Judgement lf_erase(std::string_view why)
{
    return {Gate::Erase, why};
}

// The aircraft may show up a little before its first sample is due.
static bool lf_isDue(const PosSample& front)
{
    constexpr int32_t kLead = 100;  // ticks
    constexpr int32_t kLeadMovingOnGround = 300;
    const bool movingOnGround = !front.airborne && front.speed != 0;
    return tick >= front.time - (movingOnGround ? kLeadMovingOnGround : kLead);
}

static bool lf_changesGround(const LiveAc& ac)
{
    const bool airborne = ac.stream.front().airborne;
    return std::ranges::any_of(ac.stream, [airborne](const PosSample& s) { return s.airborne != airborne; });
}

// The user flies over an airport where the aircraft would appear on the ground.
static Gate lf_gateGroundForFlyingUser(LiveAc& ac)
{
    constexpr double kNear = 1.5;     // nm
    constexpr double kLow = 1000;     // feet above ground
    constexpr double kOffLine = 500;  // feet off the line of the user's heading
    if (ac.heldForUser) {
        return Gate::Drop;
    }
    // An aircraft back from a respawn is where its object was, a new one where its first sample is.
    const LatLon user = gf_placeOf(userNow);
    const LatLon spawned = gf_placeOf(ac);
    const PosSample& front = ac.stream.front();
    const LatLon place = spawned == LatLon{} ? gf_placeOf(front) : spawned;
    if (distNm(user, place) <= kNear && userNow.agl < kLow &&
        std::abs(gf_offLineFeet(user, userNow.heading, place)) <= kOffLine) {
        ac.heldForUser = true;
        return Gate::Drop;
    }
    return Gate::Pass;
}

static Gate lf_gateAirForFlyingUser(LiveAc& ac)
{
    constexpr double kNear = 6;        // nm
    constexpr double kLevel = 3000;    // feet
    constexpr double kOffLine = 4000;  // feet off the line of the aircraft's track
    // A new aircraft has no leg yet: its report tells where it goes.
    const PosSample& front = ac.stream.front();
    const LatLon place = gf_placeOf(front);
    const double track = ac.st == StState::Birth ? front.track * kRadPerDeg : ac.trackTarget;
    if (gf_distanceToUser(front) <= kNear && std::abs(front.altitude - userNow.altitude) <= kLevel &&
        std::abs(gf_offLineFeet(place, track, gf_placeOf(userNow))) <= kOffLine) {
        ac.heldForUser = true;
        return Gate::Drop;
    }
    return Gate::Pass;
}

static Gate lf_gateForTaxiingUser(const LiveAc& ac)
{
    constexpr double kTaxiSpeed = 8;  // knots
    constexpr double kHeldRange = 500 / kMetresPerNm;
    constexpr double kRange = 150 / kMetresPerNm;
    const PosSample& front = ac.stream.front();
    const double distance = gf_distanceToUser(front);
    if (ac.heldForUser) {
        if (userNow.speed > kTaxiSpeed) {
            return Gate::Drop;
        }
        if (!front.airborne && (front.speed > kTaxiSpeed || distance < kHeldRange)) {
            return Gate::Drop;
        }
    }
    return front.airborne || !COLLISION_USER_GND.value || distance >= kRange ? Gate::Pass : Gate::Drop;
}

static Judgement lf_gateForUser(LiveAc& ac)
{
    if (userOnGround) {
        return {lf_gateForTaxiingUser(ac), {}};
    }
    if (!COLLISION_USER_AIR.value) {
        return {};
    }
    return {ac.stream.front().airborne ? lf_gateAirForFlyingUser(ac) : lf_gateGroundForFlyingUser(ac), {}};
}

static bool lf_needsRoom()
{
    const auto coming = gf_activeCount() + std::ssize(spawnStack) + std::ssize(liveCreateQueue);
    return MAX_LIVE.value >= 0 && coming >= MAX_LIVE.value;
}

static Judgement lf_gateForNumber(LiveAc& ac)
{
    constexpr size_t kLongestQueue = 11;  // requests
    if (liveCreateQueue.size() >= kLongestQueue && ac.st == StState::Birth) {
        return {Gate::Drop, {}};
    }
    if (lf_needsRoom() && !gf_canMakeRoom(gf_distanceToUser(ac.stream.front()))) {
        return lf_erase(kNoRoom);
    }
    return {};
}

static bool lf_isUsable(std::string_view callsign)
{
    constexpr size_t kTooLong = 9;
    return !callsign.empty() && callsign != "@@@@@@@@" && callsign.size() < kTooLong;
}

// What the data base knows of the registration wins over what the feed tells.
static void lf_takeRegistration(LiveAc& ac)
{
    if (ac.regcode.empty()) {
        return;
    }
    if (const RegRecord* known = findRegcode(ac.regcode)) {
        ac.airline = gf_airlineOf(*known);
        gf_setModel(ac, known->type);
        ac.cargo = known->cargo;
    }
    if (!lf_isUsable(ac.callsign)) {
        ac.callsign = ac.regcode;
    }
}

static Judgement lf_gateForIdentity(LiveAc& ac)
{
    if (!blockedCallsign.empty() && blockedCallsign == ac.callsign) {
        return lf_erase("its call sign is blocked");
    }
    lf_takeRegistration(ac);
    if (!lf_isUsable(ac.callsign)) {
        return lf_erase("no usable call sign");
    }
    if (ac.airline.empty()) {
        ac.airline = gf_airlineOfCallsign(ac.callsign);
    }
    if (ac.airline.empty()) {
        ac.airline = kPrivateAirline;
    }
    if (failedLiveries.contains(gf_failedKey(ac))) {
        return lf_erase("no livery fitted before");
    }
    if (gf_isGhost(ac.callsign) && hasTwin(ac.callsign)) {
        return lf_erase("a ghost, its twin is here");
    }
    return gf_doublesMakeWay(ac) ? Judgement{} : lf_erase("reported elsewhere");
}

static Judgement lf_judge(LiveAc& ac)
{
    if (ac.stream.empty()) {
        return lf_erase(kNoReports);
    }
    if (!lf_isDue(ac.stream.front())) {
        return {Gate::Wait, {}};
    }
    if (ac.stream.size() == 1) {
        return lf_erase(kNoReports);
    }
    if (gf_isGhost(ac.callsign) && std::ranges::find(ghostCallsigns, ac.callsign) != ghostCallsigns.end()) {
        return lf_erase("a known ghost");
    }
    if (lf_changesGround(ac)) {
        return {Gate::Drop, {}};
    }
    for (const auto gate : {lf_gateForUser, lf_gateForNumber, lf_gateForIdentity}) {
        if (const Judgement judged = gate(ac); judged.gate != Gate::Pass) {
            return judged;
        }
    }
    return {};
}

void spawnGate(LiveAc& ac)
{
    const Judgement judged = lf_judge(ac);
    switch (judged.gate) {
    case Gate::Pass:
        spawnLiveAc(ac);
        break;
    case Gate::Drop:
        ac.stream.pop_front();
        break;
    case Gate::Erase:
        gf_turnAway(ac, judged.why);
        break;
    case Gate::Wait:
        break;
    }
}

// --- the initial state

// An aircraft that stands at its second sample stands from the start.
static void lf_markStanding(LiveAc& ac)
{
    PosSample& front = ac.stream[0];
    PosSample& second = ac.stream[1];
    front.stationary = second.stationary;
    if (!second.stationary) {
        return;
    }
    front.speed = 0;
    second.speed = 0;
    if (ac.stream.size() > 2 && ac.stream[2].stationary) {
        ac.stream[2].speed = 0;
    }
}

// False if there is none for it, which ends it.
static bool lf_giveLivery(LiveAc& ac)
{
    if (titleForHexid(ac)) {
        return true;
    }
    if (!ac.regcode.empty()) {
        failedLiveries.insert(gf_failedKey(ac));
    }
    gf_turnAway(ac, "no livery fits");
    return false;
}

static double lf_initialHeading(const LiveAc& ac)
{
    if (ac.st == StState::Parked) {
        return gf_normalAngle(ac.standHeading);
    }
    return gf_headingBetween(ac.stream[0], ac.stream[1]);
}

static void lf_fixInitialState(LiveAc& ac)
{
    constexpr double kGroundPitch = 0.6 * kRadPerDeg;
    constexpr double kSecondsPerMinute = 60;
    const PosSample& front = ac.stream.front();
    ac.lat = front.lat;
    ac.lon = front.lon;
    ac.alt = front.altitude;
    ac.tasOut = front.tas;
    ac.vsOut = front.vs / kSecondsPerMinute;
    ac.bank = front.rollValid ? front.roll : 0;
    ac.pitch = front.airborne ? gf_pitchForVs(front.vs) : kGroundPitch;
    ac.hdg = lf_initialHeading(ac);
}

// Its first phase. False if it doesn't appear, or not yet.
static bool lf_beginPhase(LiveAc& ac)
{
    if (!ac.stream.front().airborne) {
        return gf_birthOnGround(ac);
    }
    gf_setSt(ac, StState::Flying);
    return true;
}

// One that took off while it had no object comes back in the air, whatever it did before.
static void lf_takeOffUnseen(LiveAc& ac)
{
    gf_setSt(ac, StState::Flying);
    ac.onGround = false;
    ac.landingRoll = false;
}

// Another one goes for it only now that it is sure to come. False if nobody can, which ends it.
static bool lf_takeRoom(LiveAc& ac)
{
    if (!lf_needsRoom() || makeRoom(gf_distanceToUser(ac.stream.front()))) {
        return true;
    }
    gf_turnAway(ac, kNoRoom);
    return false;
}

void spawnLiveAc(LiveAc& ac)
{
    if (ac.stream.size() < 2) {
        logLine(format("spawnLiveAc sz:{}", ac.stream.size()));
        return;
    }
    lf_markStanding(ac);
    const bool isNew = ac.st == StState::Birth;
    if (isNew && !lf_giveLivery(ac)) {
        return;
    }
    gf_removeDoubles(ac);
    if ((isNew && !lf_beginPhase(ac)) || !lf_takeRoom(ac)) {
        return;
    }
    if (ac.onGround && ac.stream.front().airborne) {
        lf_takeOffUnseen(ac);
    }
    standChangeList.push_back(ac.hexid);
    lf_fixInitialState(ac);
    ac.fs = FsState::Adding2Sim;
    ac.heldForUser = false;
    spawnStack.push_back(ac.hexid);
    if (!gf_isGhost(ac.callsign)) {
        ghostCheck(ac.callsign);
    }
}

}  // namespace vlt
