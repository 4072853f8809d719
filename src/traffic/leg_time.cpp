#include "traffic/leg_time.h"

#include "traffic/way.h"

#include <algorithm>
#include <cmath>

namespace vlt {

bool gf_samePosition(const PosSample& a, const PosSample& b)
{
    return a.lat == b.lat && a.lon == b.lon;
}

int32_t gf_legTicks(const LiveAc& ac)
{
    return std::max(ac.stream[1].time - tick, kShortestLeg);
}

// Knots: the mean of what both ends report. 0 when both stand still.
static double lf_reportedSpeed(const LiveAc& ac)
{
    constexpr double kLandingSpeed = 100;  // knots, where the report has none
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    if (!ac.onGround && ac.approach && !next.airborne) {
        return front.speed > 0 ? front.speed : kLandingSpeed;
    }
    const double last = gf_stopsAfterLeg(ac) && front.speed > 0 ? 0 : next.speed;
    return std::max((front.speed + last) / 2, 0.0);
}

// Knots at which the places follow each other: between two reports it may have been much faster than at both.
static double lf_speedOfPlaces(const LiveAc& ac)
{
    constexpr int32_t kShortest = 100;  // ticks; what comes in one burst tells no speed
    const PosSample& next = ac.stream[1];
    const int32_t ticks = next.time - (ac.frontDue == 0 ? ac.stream[0].time : ac.frontDue);
    return ticks < kShortest || gf_goesBackwards(ac)
               ? 0
               : distNm(gf_placeOf(ac.stream[0]), gf_placeOf(next)) * kTicksPerHour / ticks;
}

// Knots: as reported, as long as the places agree roughly.
static double lf_naturalSpeed(const LiveAc& ac)
{
    constexpr double kStands = 0.5;            // knots
    constexpr double kMostWithoutReport = 20;  // knots, on the ground
    constexpr double kMargin = 1.2;
    constexpr double kMarginKnots = 20;      // slow ones are further from where they say
    constexpr double kMarginOnGround = 1.1;  // taxi speeds are reported up to a third too low
    const double reported = lf_reportedSpeed(ac);
    const double places = lf_speedOfPlaces(ac);
    if (places == 0) {
        return reported;
    }
    if (reported < kStands) {
        return ac.onGround ? std::min(places, kMostWithoutReport) : places;
    }
    const double margin = ac.onGround ? kMarginOnGround : kMargin;
    const double knots = ac.onGround ? 0 : kMarginKnots;
    const double least = std::min({places / margin, places - knots, 2 * reported + kMostWithoutReport});
    const double most = std::max(places * margin, places + knots);
    return std::max(ac.stream[0].stationary ? reported : std::min(reported, most), least);
}

double gf_naturalTicks(const LiveAc& ac)
{
    constexpr double kLeastSpeed = 0.5;  // knots
    const double dist = distNm(gf_placeOf(ac), gf_placeOf(ac.stream[1]));
    const double speed = lf_naturalSpeed(ac);
    double ticks =
        speed > kLeastSpeed ? dist * kTicksPerHour / speed : std::max(ac.stream[1].time - tick, kShortestLeg);
    if (ac.onGround && ac.st != StState::PushingBack && ac.turnRateNominal > 0) {
        const double first = gf_ticksOfTurn(ac);
        ticks = first > 0 ? ticks + first : std::max(ticks, gf_turnOfLeg(ac) / gf_fastestTurn(ac));
    }
    return std::max(std::round(ticks), double{kShortestLeg});
}

// By how much a leg may be hurried or stretched: the further off its time the aircraft is, the more.
struct Leeway {
    double faster, slower;
};

static Leeway lf_leeway(const LiveAc& ac, double early)
{
    constexpr double kUsualInAir = 0.03;
    constexpr double kUsualOnGround = 0.10;
    constexpr double kCreeping = 0.8;
    const double seconds = early / kTicksPerSecond;
    const auto grown = [seconds](double usual, double from, double perSecond, double most) {
        return usual + std::clamp((std::abs(seconds) - from) * perSecond, 0.0, most - usual);
    };
    if (gf_goesBackwards(ac)) {
        return {kUsualOnGround, kCreeping};  // a tug doesn't hurry
    }
    if (!ac.onGround) {
        const double both = grown(kUsualInAir, 3, 0.01, 0.4);
        return {both, both};
    }
    // One that is early on the ground may creep; nobody would see it.
    return {grown(kUsualOnGround, 3, 0.02, 0.5), grown(kUsualOnGround, 1, 0.2, kCreeping)};
}

void legTime(LiveAc& ac)
{
    constexpr double kLatest = 2e9;           // ticks, within the range of a time
    constexpr double kMadeGoodPerLeg = 0.25;  // in the air, where reports are never quite where they say
    PosSample& next = ac.stream[1];
    const double now = tick;
    const double due = next.time - now;
    if (next.stationary) {
        next.time = static_cast<int32_t>(now + std::max(due, double{kShortestLeg}));
        return;
    }
    if (next.turned) {
        return;
    }
    const double natural = gf_naturalTicks(ac);
    const Leeway leeway = lf_leeway(ac, due - natural);
    const double aim = ac.onGround ? due : std::lerp(natural, due, kMadeGoodPerLeg);
    const double ticks = std::clamp(aim, natural / (1 + leeway.faster), natural / (1 - leeway.slower));
    next.time = static_cast<int32_t>(std::min(std::round(now + ticks), kLatest));
}

// --- samples in between

void gf_insertSample(LiveAc& ac, double share)
{
    const PosSample& front = ac.stream[0];
    const PosSample& next = ac.stream[1];
    PosSample mid = front;
    mid.lat = std::lerp(front.lat, next.lat, share);
    mid.lon = std::remainder(front.lon + std::remainder(next.lon - front.lon, 360.0) * share, 360.0);
    mid.speed = std::lerp(front.speed, next.speed, share);
    mid.altitude = std::lerp(front.altitude, next.altitude, share);
    mid.time = static_cast<int32_t>(std::lerp(double(front.time), double(next.time), share));
    mid.airborne = mid.altitude > 0;
    mid.altitude = std::max(mid.altitude, 0.0);
    mid.stationary = false;
    ac.stream.insert(ac.stream.begin() + 1, mid);
}

void insertMidpoint(LiveAc& ac)
{
    gf_insertSample(ac, 0.5);
}

}  // namespace vlt
