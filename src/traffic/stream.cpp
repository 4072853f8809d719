#include "traffic/stream.h"

#include "core/log.h"
#include "core/parameters.h"
#include "core/text.h"
#include "traffic/air_motion.h"
#include "traffic/geodesy.h"
#include "traffic/removal.h"

#include <algorithm>
#include <cmath>

namespace vlt {

static LatLon lf_position(const PosSample& sample)
{
    return {sample.lat, sample.lon};
}

bool gf_categoryAccepted(AcCategory category)
{
    switch (category) {
    case AcCategory::Light:
        return LIGHT_AIRCRAFT.value;
    case AcCategory::HighPerf:
        return HIGH_PERF_AIRCRAFT.value;
    case AcCategory::Rotorcraft:
        return HELICOPTERS.value;
    case AcCategory::Buzjets:
    case AcCategory::Large:
    case AcCategory::Heavy:
        return true;
    }
    return true;
}

// --- new samples

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
    sample = ac.stream.back();
    sample.speed = 0;
    sample.stationary = true;
    return true;
}

bool filterStop(const LiveAc& ac, PosSample& sample)
{
    constexpr double kJitterDeg = 0.00015;
    constexpr double kRunSpeed = 50;  // knots
    const PosSample& last = ac.stream.back();
    sample.stationary = sample.lat == last.lat && sample.lon == last.lon;
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

bool checkExtendingSituations(LiveAc& ac, const PosSample& sample)
{
    constexpr double kBehind = 100 * kRadPerDeg;
    if (ac.stream.empty()) {
        logLine(format("{} empty sz?", "checkExtendingSituations"));
        return false;
    }
    const double ahead = bearing(lf_position(ac.stream.back()), lf_position(sample));
    if (!ac.onGround && std::abs(angleDiff(ac.hdg, ahead)) >= kBehind) {
        return false;
    }
    ac.extendCount = 0;
    ac.lagLimit = kWidestTimeLimit;
    ac.leadLimit = ac.takeOff ? kTakeOffTimeLimit : kWidestTimeLimit;
    ac.stream.front().time = tick + 1;
    ac.holding = false;
    return true;
}

static void lf_append(LiveAc& ac, PosSample sample)
{
    if (!ac.stream.empty()) {
        sample.time = std::max(sample.time, ac.stream.back().time + 1);
    }
    ac.stream.push_back(sample);
    // Just come to rest: the next leg starts at once.
    if (ac.st != StState::Birth && ac.stream.size() == 2 && ac.stream[0].stationary &&
        ac.stream[1].stationary) {
        ac.stream[0].time = tick + 1;
        ac.stream[0].speed = ac.stream[1].speed;
    }
}

static void lf_decodeExisting(LiveAc& ac, PosSample& sample)
{
    if (ac.stream.size() > kLongestStream) {
        removeAircraftFromSim(ac);
    }
    if (ac.stream.empty() || !filterStop(ac, sample)) {
        return;
    }
    if (ac.st != StState::Birth && ac.extendCount > 0 && !checkExtendingSituations(ac, sample)) {
        return;
    }
    lf_append(ac, sample);
}

void decodeExisting(LiveAc& ac, PosSample sample)
{
    try {
        lf_decodeExisting(ac, sample);
    } catch (const std::exception& e) {
        logLine(format("{} exception {}", "decodeExisting", e.what()));
        throw;
    }
}

// --- the end of a stream

// How many samples may be invented for an aircraft in the air: none at the rim of the range, where it has
// simply left the area of the feed.
static int32_t lf_countInAir(const LiveAc& ac)
{
    constexpr int32_t kInvented = 8;
    constexpr double kRim = 0.5;  // nm
    const LatLon user{userNow.lat, userNow.lon};
    const bool inside =
        gf_isNullPosition(user) || distNm({ac.lat, ac.lon}, user) < LATERAL_RANGE.value - kRim;
    return inside ? kInvented : 0;
}

bool extendStream(LiveAc& ac)
{
    constexpr int32_t kInventedOnGround = 10;
    if (ac.stream.empty() || ac.extendCount < 0) {
        return false;
    }
    if (ac.extendCount == 1) {
        ac.extendCount = -1;
        return false;
    }
    if (ac.extendCount > 1) {
        extrapolate(ac, ac.extendCount - 1);
        return true;
    }
    if (!gf_categoryAccepted(ac.category)) {
        return false;
    }
    const int32_t count = ac.onGround ? kInventedOnGround : lf_countInAir(ac);
    if (count < 1) {
        return false;
    }
    extrapolate(ac, count);
    return true;
}

// Speeds of a roll-out whose reports have stopped.
static double lf_rollOutSpeed(double speed)
{
    struct Brake {
        double from, next;
    };
    static constexpr Brake kBrakes[] = {{140, 100}, {100, 80}, {80, 60}, {60, 30}};
    for (const Brake& brake : kBrakes) {
        if (speed >= brake.from) {
            return brake.next;
        }
    }
    return 20;
}

static void lf_inventOnGround(const LiveAc& ac, PosSample& sample)
{
    if (ac.landingRoll) {
        sample.speed = lf_rollOutSpeed(sample.speed);
        sample.vs = 0;
    } else {
        sample.stationary = true;
        sample.speed = 0;
    }
}

static void lf_inventInAir(const LiveAc& ac, PosSample& sample, int32_t count)
{
    constexpr int32_t kSpeedKeptBelow = 4;  // samples still to come
    if (ac.approach && count < kSpeedKeptBelow) {
        return;
    }
    sample.speed = std::max(sample.speed * (ac.approach ? 0.90 : 0.95), 1.0);
}

static void lf_moveAhead(const LiveAc& ac, PosSample& sample, double seconds)
{
    constexpr double kDescentFtPerS = 10.005;
    constexpr double kDescentVs = -667;  // feet per minute
    constexpr double kClimbFtPerS = 25;
    constexpr double kClimbVs = 1500;  // feet per minute
    constexpr double kSecondsPerHour = 3600;
    const LatLon from = lf_position(sample);
    const LatLon to = destination(from, ac.hdg, seconds * sample.speed * kFeetPerNm / kSecondsPerHour);
    sample.lat = to.lat;
    sample.lon = to.lon;
    sample.stationary = to == from;
    if (ac.approach && ac.flareStage == 0) {
        sample.vs = kDescentVs;
        sample.altitude = std::max(sample.altitude - kDescentFtPerS * seconds, 0.0);
        sample.airborne = sample.altitude > 0;
    } else if (!ac.approach && ac.st == StState::TakeOff) {
        sample.vs = kClimbVs;
        sample.altitude += kClimbFtPerS * seconds;
    }
}

void extrapolate(LiveAc& ac, int32_t count)
{
    constexpr int32_t kSecondsOnGround = 3;
    constexpr int32_t kSecondsInAir = 8;
    ac.extendCount = count;
    const int32_t seconds = ac.onGround ? kSecondsOnGround : kSecondsInAir;
    PosSample sample = ac.stream.front();
    if (sample.stationary) {
        sample.speed = 0;
    } else if (ac.onGround) {
        lf_inventOnGround(ac, sample);
    } else {
        lf_inventInAir(ac, sample, count);
    }
    if (sample.speed > 0) {
        lf_moveAhead(ac, sample, seconds);
    }
    sample.time += seconds * kTicksPerSecond;
    ac.stream.push_back(sample);
}

}  // namespace vlt
