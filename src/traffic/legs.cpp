#include "traffic/legs.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/air_motion.h"
#include "traffic/ground_motion.h"
#include "traffic/removal.h"
#include "traffic/stream_end.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vlt {

LatLon gf_positionOf(const PosSample& sample)
{
    return {sample.lat, sample.lon};
}

bool gf_samePosition(const PosSample& a, const PosSample& b)
{
    return a.lat == b.lat && a.lon == b.lon;
}

// --- the limits of the arrival time

void gf_narrowTimeLimits(LiveAc& ac)
{
    constexpr int32_t kStep = 100;  // ticks
    ac.lagLimit = std::max(ac.lagLimit - kStep, kNormalTimeLimit);
    ac.leadLimit = std::max(ac.leadLimit - kStep, kNormalTimeLimit);
}

void gf_widenTimeLimits(LiveAc& ac)
{
    ac.lagLimit = kWidestTimeLimit;
    ac.leadLimit = ac.takeOff ? kTakeOffTimeLimit : kWidestTimeLimit;
}

void gf_endExtension(LiveAc& ac)
{
    ac.extendCount = 0;
    gf_widenTimeLimits(ac);
}

// --- arrival times

int32_t gf_legTicks(const LiveAc& ac)
{
    return std::max(ac.stream[1].time - tick, kShortestLeg);
}

// The mean of both ends, or what the leg's length and times tell when both stand still.
double gf_legSpeed(const LiveAc& ac, double dist)
{
    constexpr double kShortestTime = 0.25 * kTicksPerSecond;
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    const double mean = (front.speed + next.speed) / 2;
    if (mean > 0) {
        return mean;
    }
    const double ticks = std::max(static_cast<double>(next.time) - front.time, kShortestTime);
    return std::max(dist * kTicksPerHour / ticks, 1.0);
}

void gf_arriveIn(LiveAc& ac, double ticks)
{
    constexpr double kLatest = 2e9;  // ticks, within the range of a time
    PosSample& next = ac.stream[1];
    const double now = tick.load();
    double eta = now + ticks;
    if (ac.extendCount < 1) {
        eta = std::clamp(eta, static_cast<double>(next.time) - ac.lagLimit,
                         static_cast<double>(next.time) + ac.leadLimit);
    }
    next.time = static_cast<int32_t>(std::clamp(eta, now, kLatest));
}

void gf_setArrivalTime(LiveAc& ac, double speed)
{
    const double dist = distNm(gf_positionOf(ac.stream[0]), gf_positionOf(ac.stream[1]));
    const double knots = speed > 0 ? speed : gf_legSpeed(ac, dist);
    gf_arriveIn(ac, std::max(std::round(dist * kTicksPerHour / knots), double{kShortestLeg}));
}

// --- the leg

static void lf_setRates(LiveAc& ac)
{
    const PosSample& next = ac.stream[1];
    if (next.stationary) {
        ac.dLat = 0;
        ac.dLon = 0;
        if (!ac.landingRoll && !ac.takeOff) {
            gf_narrowTimeLimits(ac);
        }
        return;
    }
    // From where the aircraft is, not from the front sample: so every leg ends at its sample.
    const int32_t ticks = gf_legTicks(ac);
    ac.dLat = (next.lat - ac.lat) / ticks;
    ac.dLon = std::remainder(next.lon - ac.lon, 360.0) / ticks;
    if (ac.onGround) {
        groundSettings(ac, ticks);
    } else {
        airSettings(ac, ticks);
    }
}

void nextPos(LiveAc& ac)
{
    ac.curve = Curve{};
    const PosSample& front = ac.stream[0];
    PosSample& next = ac.stream[1];
    if (!next.stationary && gf_samePosition(front, next)) {
        next.stationary = true;
    }
    if (!next.stationary) {
        ac.trackTarget = bearing(gf_positionOf(front), gf_positionOf(next));
    }
    if (ac.onGround) {
        nextPosGround(ac);
    } else {
        nextPosAir(ac);
    }
    if (ac.stream.size() < 2) {
        removeAircraftFromSim(ac, "no leg left");
        throw std::runtime_error(format("{} {} fs:{}, st:{} stream at the end is empty?", "nextPos",
                                        logName(ac), stateWord(ac.fs), stateWord(ac.st)));
    }
    lf_setRates(ac);
    ac.stream.pop_front();
}

// An aircraft in the air doesn't stand still.
static bool lf_standsInAir(const LiveAc& ac)
{
    return !ac.onGround && ac.stream[1].stationary && ac.category != AcCategory::Rotorcraft;
}

static void lf_nextPosMain(LiveAc& ac)
{
    while (true) {
        if (ac.stream.size() >= 2) {
            if (!lf_standsInAir(ac)) {
                nextPos(ac);
                return;
            }
            ac.stream.erase(ac.stream.begin() + 1);
        } else if (!extendStream(ac)) {
            removeAircraftFromSim(ac, "reports ended");
            return;
        }
    }
}

void nextPosMain(LiveAc& ac)
{
    try {
        lf_nextPosMain(ac);
    } catch (const std::exception& e) {
        logLine(format("{}: {} {}, sz:{}, fs:{}, st:{}", "nextPosMain", e.what(), logName(ac),
                       ac.stream.size(), stateWord(ac.fs), stateWord(ac.st)));
        throw;
    }
}

}  // namespace vlt
