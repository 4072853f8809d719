#include "traffic/leg_time.h"

#include <algorithm>
#include <cmath>

namespace vlt {

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
    const double dist = distNm(gf_placeOf(ac.stream[0]), gf_placeOf(ac.stream[1]));
    const double knots = speed > 0 ? speed : gf_legSpeed(ac, dist);
    gf_arriveIn(ac, std::max(std::round(dist * kTicksPerHour / knots), double{kShortestLeg}));
}

// --- midpoints

void insertMidpoint(LiveAc& ac)
{
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    PosSample mid = front;
    mid.lat = (front.lat + next.lat) / 2;
    mid.lon = std::remainder(front.lon + std::remainder(next.lon - front.lon, 360.0) / 2, 360.0);
    mid.speed = (front.speed + next.speed) / 2;
    mid.altitude = (front.altitude + next.altitude) / 2;
    mid.time = static_cast<int32_t>((int64_t{front.time} + next.time) / 2);
    mid.airborne = mid.altitude > 0;
    mid.altitude = std::max(mid.altitude, 0.0);
    mid.stationary = false;
    ac.stream.insert(ac.stream.begin() + 1, mid);
}

}  // namespace vlt
