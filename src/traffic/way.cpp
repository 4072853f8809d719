#include "traffic/way.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vlt {

static constexpr double kMetresPerDegree = 111132.95;  // of latitude
static constexpr double kStands = 0.1 * kMetresPerTickPerKnot;

static double lf_metresPerDegreeOfLongitude(double lat)
{
    return std::cos(lat * kRadPerDeg) * kMetresPerDegree;
}

Metres gf_metres(LatLon from, LatLon to)
{
    return {(to.lat - from.lat) * kMetresPerDegree,
            std::remainder(to.lon - from.lon, 360.0) * lf_metresPerDegreeOfLongitude(from.lat)};
}

static Way lf_wayFrom(const LiveAc& ac)
{
    Way way;
    way.from = gf_placeOf(ac);
    way.degreesPerMetreEast = 1 / lf_metresPerDegreeOfLongitude(ac.lat);
    way.share = 0;
    return way;
}

double gf_fastestTurn(const LiveAc& ac)
{
    constexpr double kTightest = 1.4;                                // times the nominal rate
    constexpr double kFastest = 9.8 * kRadPerDeg / kTicksPerSecond;  // anything faster looks like a toy
    return std::min(kTightest * ac.turnRateNominal, kFastest);
}

bool gf_goesBackwards(const LiveAc& ac)
{
    constexpr double kFastest = 6;  // knots
    constexpr double kLooksBack = 120 * kRadPerDeg;
    const PosSample& next = ac.stream[1];
    if (ac.st != StState::Taxi) {
        return ac.st == StState::PushingBack;
    }
    return ac.onGround && next.headingValid && !next.turned && !ac.takeOff && !ac.landingRoll &&
           std::max(ac.stream[0].speed, next.speed) <= kFastest &&
           std::abs(angleDiff(next.heading, bearing(gf_placeOf(ac), gf_placeOf(next)))) > kLooksBack;
}

// Where the nose looks on a leg that leads to `course`.
static double lf_noseFor(double course, bool backwards)
{
    return backwards ? gf_normalAngle(course + std::numbers::pi) : course;
}

// --- a turn from standing

bool gf_stands(const LiveAc& ac)
{
    return ac.velocity == Metres{} && (ac.stream[0].stationary || ac.stream[0].speed < 1);
}

// The nose's way round to the leg ahead, signed.
static double lf_turnBeforeLeg(const LiveAc& ac)
{
    constexpr double kFarOff = 45 * kRadPerDeg;
    const LatLon here = gf_placeOf(ac);
    const LatLon end = gf_placeOf(ac.stream[1]);
    if (!ac.onGround || ac.st != StState::Taxi || !gf_stands(ac) || here == end) {
        return 0;
    }
    const double off = angleDiff(ac.hdg, lf_noseFor(bearing(here, end), gf_goesBackwards(ac)));
    return std::abs(off) > kFarOff ? off : 0;
}

double gf_ticksOfTurn(const LiveAc& ac)
{
    constexpr double kEven = 0.9;  // of the fastest: a cubic doesn't turn quite evenly
    return std::abs(lf_turnBeforeLeg(ac)) / (kEven * gf_fastestTurn(ac));
}

void gf_turnFirst(LiveAc& ac)
{
    constexpr double kSpeed = 2.5;  // knots
    const double turn = lf_turnBeforeLeg(ac);
    if (turn == 0) {
        return;
    }
    const double ticks = gf_ticksOfTurn(ac);
    const double radius = kSpeed * kMetresPerTickPerKnot * ticks / std::abs(turn);
    const double chord = 2 * radius * std::sin(std::abs(turn) / 2);
    const LatLon end = destination(gf_placeOf(ac), ac.hdg + turn / 2, chord / kMetresPerNm * kFeetPerNm);
    PosSample sample = ac.stream.front();
    sample.lat = end.lat;
    sample.lon = end.lon;
    sample.speed = kSpeed;
    sample.heading = gf_normalAngle(ac.hdg + turn);
    sample.time = tick + static_cast<int32_t>(ticks);
    sample.stationary = false;
    sample.turned = true;
    ac.stream.insert(ac.stream.begin() + 1, sample);
}

// --- the velocities at both ends

bool gf_stopsAfterLeg(const LiveAc& ac)
{
    return ac.onGround && ac.st != StState::Parking && ac.stream.size() >= 3 && ac.stream[2].stationary;
}

// The stand lies so far ahead that the way can end in its direction.
static bool lf_entersStand(const LiveAc& ac, Metres leg)
{
    constexpr double kShortest = 5;  // metres
    constexpr double kAhead = 70 * kRadPerDeg;
    return ac.st == StState::Parking && std::abs(leg) > kShortest &&
           std::abs(angleDiff(std::arg(leg), ac.standHeading)) < kAhead;
}

// As on the circle through the leg's ends and the sample after them.
static double lf_courseAtEnd(const LiveAc& ac, Metres leg)
{
    const double course = std::arg(leg);
    if (ac.stream[1].turned) {
        return ac.stream[1].heading;
    }
    if (lf_entersStand(ac, leg)) {
        return ac.standHeading;
    }
    if (ac.st == StState::PushingBack || ac.stream.size() < 3 || ac.stream[2].stationary ||
        gf_placeOf(ac.stream[1]) == gf_placeOf(ac.stream[2])) {
        return course;
    }
    const Metres after = gf_metres(gf_placeOf(ac.stream[1]), gf_placeOf(ac.stream[2]));
    const double turn = angleDiff(course, std::arg(after));
    return course + turn * std::abs(leg) / (std::abs(leg) + std::abs(after));
}

// How much of the leg's mean speed is left at one of its ends, by what is reported for both.
static double lf_shareOfSpeed(const LiveAc& ac, const PosSample& end)
{
    constexpr double kMost = 2;  // where the speed changes steadily from or to nothing
    const double mean = (ac.stream[0].speed + ac.stream[1].speed) / 2;
    return mean > 0 ? std::clamp(end.speed / mean, 0.0, kMost) : 1;
}

static Metres lf_velocityAtEnd(const LiveAc& ac, Metres leg, double speed)
{
    constexpr double kSlowest = 0.35;  // of the speed, round a sharp bend
    if (gf_stopsAfterLeg(ac)) {
        return {};
    }
    const double course = lf_courseAtEnd(ac, leg);
    if (ac.stream[1].turned) {
        return std::polar(speed, course);
    }
    const double bend = std::max(std::cos(angleDiff(std::arg(leg), course)), kSlowest);
    return std::polar(speed * lf_shareOfSpeed(ac, ac.stream[1]) * bend, course);
}

// One that stands begins slowly, with its nose ahead; one that appears moves already.
static Metres lf_velocityAtStart(const LiveAc& ac, Metres leg, double speed)
{
    constexpr double kFirstSpeed = 5 * kMetresPerTickPerKnot;
    constexpr double kMost = 2.5;  // of the mean speed; more would overshoot the end
    if (ac.st == StState::PushingBack) {
        return std::polar(speed, std::arg(leg));
    }
    if (std::abs(ac.velocity) > 0) {
        const double now = std::abs(ac.velocity);
        return ac.velocity * std::min(1.0, kMost * speed / now);
    }
    if (ac.onGround && (gf_stands(ac) || ac.stream[1].turned)) {
        return std::polar(ac.stream[1].turned ? speed : std::min(speed / 2, kFirstSpeed),
                          lf_noseFor(ac.hdg, gf_goesBackwards(ac)));
    }
    return std::polar(speed * lf_shareOfSpeed(ac, ac.stream[0]), std::arg(leg));
}

double gf_turnOfLeg(const LiveAc& ac)
{
    const Metres leg = gf_metres(gf_placeOf(ac), gf_placeOf(ac.stream[1]));
    if (leg == Metres{}) {
        return 0;
    }
    return std::abs(angleDiff(ac.hdg, lf_noseFor(std::arg(leg), gf_goesBackwards(ac)))) +
           std::abs(angleDiff(std::arg(leg), lf_courseAtEnd(ac, leg)));
}

// --- the way

// How much longer than its chord the way is: an arc, if it turns first.
static double lf_bow(const LiveAc& ac, Metres leg)
{
    const double half = std::abs(angleDiff(ac.hdg, std::arg(leg)));
    return ac.stream[1].turned && half > 0 ? half / std::sin(half) : 1;
}

void gf_layWay(LiveAc& ac, int32_t ticks)
{
    constexpr double kStraight = 0.2 * kRadPerDeg;
    const Metres leg = gf_metres(gf_placeOf(ac), gf_placeOf(ac.stream[1]));
    const double speed = std::abs(leg) / ticks * lf_bow(ac, leg);
    const Metres start = lf_velocityAtStart(ac, leg, speed) * static_cast<double>(ticks);
    const Metres end = lf_velocityAtEnd(ac, leg, speed) * static_cast<double>(ticks);
    const auto off = [&leg](Metres velocity) {
        return velocity == Metres{} ? 0 : std::abs(angleDiff(std::arg(leg), std::arg(velocity)));
    };
    Way way = lf_wayFrom(ac);
    way.terms = {start, 3.0 * leg - 2.0 * start - end, start + end - 2.0 * leg};
    way.course = gf_normalAngle(std::arg(leg));
    way.bends = off(start) > kStraight || off(end) > kStraight;
    ac.way = way;
}

void makeCurve(LiveAc& ac)
{
    const Metres control = gf_metres(gf_placeOf(ac), gf_placeOf(ac.stream[1]));
    const Metres end = gf_metres(gf_placeOf(ac), gf_placeOf(ac.stream[2]));
    Way way = lf_wayFrom(ac);
    way.terms = {2.0 * control, end - 2.0 * control, Metres{}};
    way.bends = true;
    ac.way = way;
    ac.stream.erase(ac.stream.begin() + 1);
}

bool gf_isLaid(const Way& way)
{
    return way.share < 1;
}

void gf_stepWay(LiveAc& ac)
{
    Way& way = ac.way;
    if (!gf_isLaid(way)) {
        return;  // its first report isn't due yet
    }
    const double u = way.share = std::min(way.share + way.perTick, 1.0);
    const auto& [linear, square, cube] = way.terms;
    const Metres at = u * (linear + u * (square + u * cube));
    ac.velocity = (linear + u * (2.0 * square + 3.0 * u * cube)) * way.perTick;
    ac.lat = way.from.lat + at.real() / kMetresPerDegree;
    ac.lon = way.from.lon + at.imag() * way.degreesPerMetreEast;
}

double gf_noseOnWay(const LiveAc& ac)
{
    if (!ac.way.bends) {
        return lf_noseFor(ac.way.course, ac.backwards);
    }
    if (std::norm(ac.velocity) < kStands * kStands) {
        return ac.hdg;
    }
    return lf_noseFor(gf_normalAngle(std::arg(ac.velocity)), ac.backwards);
}

void gf_turnTowards(LiveAc& ac, double target, double rate)
{
    if (ac.hdg != target) {
        ac.hdg = gf_normalAngle(ac.hdg + std::clamp(angleDiff(ac.hdg, target), -rate, rate));
    }
}

}  // namespace vlt
