#include "traffic/stops.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/arrival.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <cmath>
#include <exception>

namespace vlt {

// --- jitter

// A standing position has no place in the stream of an object that flies.
static bool lf_mayStand(const LiveAc& ac, const PosSample& sample)
{
    return !sample.airborne && !(ac.fs == FsState::Active && !ac.onGround);
}

static bool lf_stopsTakeOff(const LiveAc& ac, const PosSample& sample, double fromSpeed)
{
    return ac.takeOff && sample.speed > 0 && ac.stream.back().speed >= fromSpeed;
}

static bool lf_keepSamePosition(const LiveAc& ac, PosSample& sample)
{
    constexpr double kRunSpeed = 30;  // knots
    if (!lf_mayStand(ac, sample) || lf_stopsTakeOff(ac, sample, kRunSpeed)) {
        return false;
    }
    sample.speed = std::min(sample.speed, 0.0);
    return true;
}

static bool lf_keepJitter(const LiveAc& ac, PosSample& sample)
{
    constexpr double kRunSpeed = 50;  // knots
    if (!lf_mayStand(ac, sample) || lf_stopsTakeOff(ac, sample, kRunSpeed)) {
        return false;
    }
    const int32_t due = sample.time;
    sample = ac.stream.back();
    sample.time = due;  // a stop made of jitter lasts as long as its reports
    sample.speed = 0;
    sample.stationary = true;
    return true;
}

bool filterStop(const LiveAc& ac, PosSample& sample)
{
    constexpr double kJitterDeg = 0.00015;
    constexpr double kRunSpeed = 50;  // knots
    const PosSample& last = ac.stream.back();
    sample.stationary = gf_samePosition(sample, last);
    if (ac.category == AcCategory::Rotorcraft) {
        return true;
    }
    if (sample.stationary) {
        return lf_keepSamePosition(ac, sample);
    }
    if (std::abs(sample.lat - last.lat) <= kJitterDeg && std::abs(sample.lon - last.lon) <= kJitterDeg) {
        return lf_keepJitter(ac, sample);
    }
    return sample.speed != 0 || (!ac.takeOff && !sample.airborne) || last.speed < kRunSpeed;
}

// --- short stops

// Judges the stop that began at the `num`th sample from the end: one of less than 15 s, or one that ends
// within 22 m of where it began, is none, and the samples after the first are cut off.
static void lf_checkStops(LiveAc& ac, size_t num, const PosSample& sample)
{
    constexpr double kTrueStop = 15;  // seconds
    constexpr double kElsewhere = 22.0 / kMetresPerNm;
    const PosSample& first = ac.stream.at(ac.stream.size() - num);
    const double seconds = static_cast<double>(ac.stream.back().time - first.time) / kTicksPerSecond;
    if (seconds >= kTrueStop && distNm(gf_placeOf(first), gf_placeOf(sample)) > kElsewhere) {
        return;
    }
    ac.stream.resize(ac.stream.size() - (num - 1));
}

static void checkStops(LiveAc& ac, size_t num, const PosSample& sample)
{
    try {
        lf_checkStops(ac, num, sample);
    } catch (const std::exception& e) {
        logLine(format("checkStops: num:{} {}", num, e.what()));
    }
}

static void lf_removeSmallStop(LiveAc& ac, const PosSample& sample)
{
    constexpr size_t kFewest = 3;
    constexpr size_t kMost = 7;
    for (size_t n = kFewest; n <= kMost && n <= ac.stream.size(); ++n) {
        const size_t place = ac.stream.size() - n + 1;
        if (!ac.stream.at(place).stationary) {
            checkStops(ac, n - 1, sample);
            return;
        }
    }
}

void removeSmallStop(LiveAc& ac, const PosSample& sample)
{
    try {
        lf_removeSmallStop(ac, sample);
    } catch (const std::exception& e) {
        logLine(format("removeSmallStop: {}", e.what()));
    }
}

// --- at a stand

static constexpr double kStep = 3.0 / kMetresPerNm;  // nm; closer than that is noise

// The sample leads away; the stand is free.
static bool lf_leave(LiveAc& ac, PosSample& sample)
{
    sample.stationary = false;
    ac.pullOutPending = true;
    if (ac.prevSt != StState::Parked) {
        leaveStand(ac);
        gf_setSt(ac, StState::Parked);
    }
    return true;
}

static bool lf_takeOutsideStand(LiveAc& ac, PosSample& sample, double dist)
{
    constexpr double kFarOff = 200.0 / kMetresPerNm;
    if (ac.st == StState::Parking) {
        gf_setSt(ac, StState::Taxi);
        sample.stationary = false;
        return true;
    }
    if (dist <= kFarOff) {
        ac.leavesAt = ac.growingDist > 0 ? ac.leavesAt : sample.time;
        return lf_leave(ac, sample);
    }
    if (ac.fs == FsState::Active) {
        removeAircraftFromSim(ac, "reported far from its stand");
        return false;
    }
    return true;
}

// True if the reports have moved away often enough, or far enough, to be believed. The latest is `due` then.
static bool lf_growsAway(LiveAc& ac, double dist, int32_t due)
{
    constexpr int32_t kBelieved = 3;  // reports in a row
    if (dist <= ac.standDistLast - kStep) {
        ac.growingDist = 0;
        return false;
    }
    if (dist < ac.standDistLast + kStep) {
        return false;
    }
    if (++ac.growingDist == 1) {
        ac.leavesAt = due;
    }
    ac.standDistLast = dist;
    const double moved = dist - ac.standDistFirst;
    return moved > ac.radius || (ac.growingDist >= kBelieved && moved >= ac.radius / 2);
}

bool checkAtStand(LiveAc& ac, PosSample& sample)
{
    constexpr double kLimit = 85.0 / kMetresPerNm;
    constexpr double kLimitAfterArrival = 170.0 / kMetresPerNm;
    ac.liveAtStand = true;
    const double dist = distNm(gf_placeOf(sample), gf_standPlace(ac));
    if (dist > (ac.prevSt == StState::Parking ? kLimitAfterArrival : kLimit)) {
        return lf_takeOutsideStand(ac, sample, dist);
    }
    ac.parkedSince = tick;
    if (ac.standDistLast == 0) {
        ac.standDistFirst = dist;
        ac.standDistLast = dist;
        ac.growingDist = 0;
        ac.pullOutPending = false;
        return false;
    }
    if (lf_growsAway(ac, dist, sample.time)) {
        return lf_leave(ac, sample);
    }
    ac.pullOutPending = false;
    return false;
}

}  // namespace vlt
