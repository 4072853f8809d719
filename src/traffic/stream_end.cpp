#include "traffic/stream_end.h"

#include "core/base/parameters.h"
#include "traffic/arrival.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/stand_holding.h"

#include <algorithm>

namespace vlt {

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

// --- holding

static bool lf_waitsOnGround(const LiveAc& ac)
{
    return ac.st == StState::PushedBack || (ac.st == StState::Taxi && !ac.takeOff && !ac.landingRoll);
}

// Another aircraft taxies so near that this one would stand in its way.
static bool lf_isInTheWay(const LiveAc& ac)
{
    constexpr double kMargin = 1.2;
    return std::ranges::any_of(liveAcs, [&ac](const LiveAc& other) {
        return other.fs == FsState::Active && other.onGround && other.st == StState::Taxi &&
               other.objectid != ac.objectid &&
               (ac.radius + other.radius) * kMargin >= distNm(gf_placeOf(ac), gf_placeOf(other));
    });
}

static bool lf_hold(LiveAc& ac)
{
    constexpr int32_t kStep = 300;  // ticks
    if (lf_isInTheWay(ac)) {
        ac.holding = false;
        return false;
    }
    if (!ac.holding) {
        ac.holding = true;
        ac.holdStart = tick;
    } else if (tick - ac.holdStart > MAX_HOLDING_MINUTES.value * kTicksPerMinute) {
        return false;
    }
    PosSample sample = ac.stream.front();
    sample.time += kStep;
    sample.speed = 0;
    sample.stationary = true;
    ac.extendCount = 1;
    ac.stream.push_back(sample);
    return true;
}

// --- extension

// How many samples may be invented for an aircraft in the air: none at the rim of the range, where it has
// simply left the area of the feed.
static int32_t lf_countInAir(const LiveAc& ac)
{
    constexpr int32_t kInvented = 8;
    constexpr double kRim = 0.5;  // nm
    const LatLon user = gf_placeOf(userNow);
    const bool inside = gf_isNullPosition(user) || distNm(gf_placeOf(ac), user) < LATERAL_RANGE.value - kRim;
    return inside ? kInvented : 0;
}

static int32_t lf_count(const LiveAc& ac)
{
    constexpr int32_t kInventedOnGround = 10;
    if (!ac.onGround) {
        return lf_countInAir(ac);
    }
    return ac.st == StState::Parked ? 1 : kInventedOnGround;
}

bool extendStream(LiveAc& ac)
{
    if (ac.stream.empty()) {
        return false;
    }
    if (ac.st == StState::Parking) {
        arrivedAtStand(ac);
    } else if (lf_waitsOnGround(ac)) {
        return lf_hold(ac);
    }
    if (ac.extendCount < 0) {
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
    const int32_t count = gf_categoryAccepted(ac.category) ? lf_count(ac) : 0;
    if (count < 1) {
        return false;
    }
    extrapolate(ac, count);
    return true;
}

// --- invented samples

static void lf_inventTakeOff(PosSample& sample)
{
    struct Row {
        double upTo, next;  // knots
        double vs;          // feet per minute
    };
    static constexpr Row kRows[] = {{30, 40, 0},     {60, 80, 0},      {100, 110, 0},
                                    {140, 150, 600}, {160, 170, 1200}, {1e9, 180, 2400}};
    for (const Row& row : kRows) {
        if (sample.speed <= row.upTo) {
            sample.speed = row.next;
            sample.vs = row.vs > 0 ? row.vs : sample.vs;
            return;
        }
    }
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

static void lf_inventInAir(const LiveAc& ac, PosSample& sample, int32_t count)
{
    constexpr int32_t kSpeedKeptBelow = 4;  // samples still to come
    if (ac.approach && count < kSpeedKeptBelow) {
        return;
    }
    sample.speed = std::max(sample.speed * (ac.approach ? 0.90 : 0.95), 1.0);
}

static void lf_inventSpeed(const LiveAc& ac, PosSample& sample, int32_t count)
{
    const bool rolls = ac.landingRoll || ac.takeOff;
    if (sample.stationary || ac.st == StState::Parked || (ac.onGround && !rolls)) {
        sample.stationary = true;
        sample.speed = 0;
    } else if (!ac.onGround) {
        lf_inventInAir(ac, sample, count);
    } else if (ac.takeOff) {
        lf_inventTakeOff(sample);
    } else {
        sample.speed = lf_rollOutSpeed(sample.speed);
        sample.vs = 0;
    }
}

static void lf_moveAhead(const LiveAc& ac, PosSample& sample, double seconds)
{
    constexpr double kDescentFtPerS = 10.005;
    constexpr double kDescentVs = -667;  // feet per minute
    constexpr double kClimbFtPerS = 25;
    constexpr double kClimbVs = 1500;  // feet per minute
    constexpr double kSecondsPerHour = 3600;
    const LatLon from = gf_placeOf(sample);
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
    const bool parked = ac.st == StState::Parked;
    const int32_t step = ac.onGround ? kSecondsOnGround : kSecondsInAir;
    PosSample sample = ac.stream.front();
    lf_inventSpeed(ac, sample, count);
    if (sample.speed > 0) {
        lf_moveAhead(ac, sample, step);
    }
    // A long wait doesn't run over the end of the tick's range.
    const int64_t time = int64_t{sample.time} + (parked ? kParkedAheadTicks : step * kTicksPerSecond);
    sample.time = static_cast<int32_t>(std::min<int64_t>(time, 2'000'000'000));
    if (parked) {
        ac.liveAtStand = false;
        gf_releaseStand(ac);
    }
    ac.stream.push_back(sample);
}

}  // namespace vlt
