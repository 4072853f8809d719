#include "traffic/stream.h"

#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/removal.h"
#include "traffic/runway.h"
#include "traffic/stand_holding.h"
#include "traffic/stops.h"

#include <algorithm>
#include <cmath>

namespace vlt {

// --- samples that end an extension

static void lf_endHolding(LiveAc& ac)
{
    ac.holding = false;
    ac.holdStart = 0;
}

// A sample ends an extension of the stream; true if it is to be kept, false if it lies behind the aircraft.
static bool checkExtendingSituations(LiveAc& ac, const PosSample& sample)
{
    constexpr double kBehind = 100 * kRadPerDeg;
    if (ac.stream.empty()) {
        logLine("checkExtendingSituations empty sz?");
        return false;
    }
    const double ahead = bearing(gf_placeOf(ac.stream.back()), gf_placeOf(sample));
    if (!ac.onGround && std::abs(angleDiff(ac.hdg, ahead)) >= kBehind) {
        return false;
    }
    ac.extendCount = 0;
    ac.stream.front().time = tick + 1;
    lf_endHolding(ac);
    return true;
}

// Degrees between the aircraft's heading and the way from one of its samples to a new one.
static double lf_offHeading(const LiveAc& ac, const PosSample& from, const PosSample& sample)
{
    return std::abs(angleDiff(ac.hdg, bearing(gf_placeOf(from), gf_placeOf(sample)))) * kDegPerRad;
}

// The only sample left lies behind: on approach the new one is dropped, on the ground the object waits where
// it is.
static bool lf_leadsBackFromLastSample(LiveAc& ac, const PosSample& sample)
{
    constexpr double kBehind = 90;
    constexpr double kFarBehind = 150;
    PosSample& last = ac.stream.back();
    const double off = lf_offHeading(ac, last, sample);
    if (ac.approach) {
        return off >= kBehind;
    }
    if (off < kFarBehind) {
        return false;
    }
    if (ac.extendCount > 0) {
        return true;
    }
    last.lat = ac.lat;
    last.lon = ac.lon;
    last.time = tick + 1;
    return false;
}

static bool lf_dropSamplesBehind(LiveAc& ac, const PosSample& sample)
{
    constexpr double kBehind = 90;
    if (ac.stream.size() < 2) {
        return !lf_leadsBackFromLastSample(ac, sample);
    }
    for (int i = 0; i < 2 && ac.stream.size() >= 2; ++i) {
        if (lf_offHeading(ac, ac.stream.back(), sample) < kBehind) {
            break;
        }
        ac.stream.pop_back();
    }
    return true;
}

// A sample during the approach or the landing roll, where reports lag behind the object; true if it is to
// be kept. Drops samples of the stream from which the new one would lead back.
static bool checkNewPosDuringLanding(LiveAc& ac, PosSample& sample)
{
    constexpr double kTaxiSpeed = 40;  // knots
    constexpr double kClimbing = 256;  // feet per minute, more than that
    if (ac.stream.empty()) {
        logLine("checkNewPosDuringLanding empty sz?");
        return false;
    }
    if (gf_samePosition(sample, ac.stream.back()) || !lf_dropSamplesBehind(ac, sample)) {
        return false;
    }
    ac.extendCount = std::min(ac.extendCount, 0);
    const PosSample& last = ac.stream.back();
    sample.stationary = gf_samePosition(sample, last);
    // A landing aircraft doesn't speed up, unless it goes round.
    const bool goesRound = ac.takeOff || sample.vs > kClimbing;
    if (!sample.stationary && !goesRound && sample.speed > last.speed && sample.speed > kTaxiSpeed) {
        sample.speed = last.speed;
    }
    return true;
}

// --- a sample by the aircraft's phase. True if it goes on to the stream.

static bool lf_duringPushBack(LiveAc& ac, const PosSample& sample)
{
    if (STRAIGHT_PBS_ONLY.value || ac.pushStage != kPushStraight) {
        return false;
    }
    if (sample.headingValid || sample.track != 0) {
        const double direction = sample.headingValid ? sample.heading : sample.track * kRadPerDeg;
        ac.pushTurnRight = angleDiff(ac.hdg, direction) > 0;
        ac.pushTurnKnown = true;
    }
    return false;
}

static bool lf_afterPushBack(LiveAc& ac, PosSample& sample)
{
    constexpr double kStarted = 2.75;  // half spans
    constexpr double kFarOff = 6;
    const double dist = distNm(gf_placeOf(sample), gf_placeOf(ac));
    const bool movesOff = dist > kStarted * ac.radius && dist > ac.pushedBackDist;
    if (!movesOff && dist <= kFarOff * ac.radius) {
        if (!ac.holding) {
            ac.holding = true;
            ac.holdStart = tick;
        }
        ac.pushedBackDist = dist;
        return false;
    }
    sample.stationary = false;
    if (ac.extendCount > 0) {
        ac.stream.front().time = tick + 1;
        ac.extendCount = 0;
    }
    ac.pushTurnKnown = false;
    ac.pushStage = kNotPushed;
    gf_setSt(ac, StState::Taxi);
    gf_forgetStand(ac);
    lf_endHolding(ac);
    return true;
}

static bool lf_underWay(LiveAc& ac, PosSample& sample)
{
    if (ac.approach || ac.landingRoll) {
        return checkNewPosDuringLanding(ac, sample);
    }
    return filterStop(ac, sample) && (ac.extendCount < 1 || checkExtendingSituations(ac, sample));
}

static bool lf_byPhase(LiveAc& ac, PosSample& sample)
{
    switch (ac.st) {
    case StState::Birth:
        return filterStop(ac, sample);
    case StState::Parking:
    case StState::Parked:
        return ac.fs != FsState::Buffer && ac.fs != FsState::Adding2Sim && checkAtStand(ac, sample);
    case StState::PushingBack:
        return lf_duringPushBack(ac, sample);
    case StState::PushedBack:
        return lf_afterPushBack(ac, sample);
    case StState::Taxi:
    case StState::TakeOff:
    case StState::Flying:
        return lf_underWay(ac, sample);
    }
    return false;
}

// --- the stream's end

static void lf_mendStop(LiveAc& ac, const PosSample& sample)
{
    if (sample.airborne || !ac.stream.back().stationary) {
        return;
    }
    if (!sample.stationary) {
        removeSmallStop(ac, sample);
    } else if (std::ranges::all_of(ac.stream, &PosSample::stationary)) {
        ac.stream.resize(1);  // a standing aircraft needs no history
    }
}

// What the new sample and the last one together tell of an aircraft on the runway.
static void lf_judgeRunway(LiveAc& ac, const PosSample& sample)
{
    constexpr double kRejected = 30;  // knots; slower ones have given the run up
    const PosSample& last = ac.stream.back();
    if (!ac.onGround || ac.fs != FsState::Active) {
        return;
    }
    if (ac.takeOff) {
        const bool slow = std::max(sample.speed, last.speed) < kRejected;
        const bool ground = !sample.airborne && !last.airborne;
        ac.takeOff = !(slow && ground && ac.st == StState::Taxi);
        return;
    }
    if (ac.landingRoll) {
        if (last.airborne && sample.airborne) {
            gf_rejectLanding(ac);
        }
        return;
    }
    const bool runs = sample.speed >= kTakeOffRunSpeed && last.speed >= kTakeOffRunSpeed;
    if ((sample.airborne || runs) && ac.st == StState::Taxi) {
        takeOffStart(ac);
    }
}

static void lf_append(LiveAc& ac, const PosSample& sample)
{
    ac.stream.push_back(sample);
    // Just come to rest: the next leg starts at once.
    if (ac.stream.size() == 2 && ac.stream[0].stationary && ac.stream[1].stationary) {
        ac.stream[0].time = tick + 1;
        ac.stream[0].speed = ac.stream[1].speed;
    }
}

// The object waits at the end of its reports, and is reported elsewhere.
static bool lf_heldElsewhere(const LiveAc& ac, const PosSample& sample)
{
    const double metres = distNm(gf_placeOf(sample), gf_placeOf(ac.stream.front())) * kMetresPerNm;
    return ac.holding && metres > HOLDING_THRESHOLD_METERS.value;
}

// One that is shown without a phase, for its stand wasn't its to have, or because it keeps its object under
// another identity, goes on in the phase that suits it.
static void lf_endBirth(LiveAc& ac)
{
    if (ac.st == StState::Birth && ac.fs == FsState::Active) {
        gf_forgetStand(ac);
        gf_setSt(ac, ac.onGround ? StState::Taxi : StState::Flying);
    }
}

static void lf_decodeExisting(LiveAc& ac, PosSample& sample)
{
    if (ac.stream.size() > kLongestStream) {
        removeAircraftFromSim(ac, "more reports than it can follow");
    }
    if (ac.stream.empty()) {
        return;
    }
    if (lf_heldElsewhere(ac, sample)) {
        lf_endHolding(ac);
        removeAircraftFromSim(ac, "reported elsewhere while it was held");  // it comes back there
        return;
    }
    lf_endBirth(ac);
    const bool isNew = ac.st == StState::Birth;
    if (!lf_byPhase(ac, sample)) {
        return;
    }
    if (!isNew) {
        lf_mendStop(ac, sample);
    }
    sample.time = std::max(sample.time, ac.stream.back().time + 1);
    if (isNew) {
        ac.stream.push_back(sample);
        return;
    }
    lf_judgeRunway(ac, sample);
    lf_append(ac, sample);
}

void decodeExisting(LiveAc& ac, PosSample sample)
{
    try {
        lf_decodeExisting(ac, sample);
    } catch (const std::exception& e) {
        logLine(format("decodeExisting exception {}", e.what()));
        throw;
    }
}

}  // namespace vlt
