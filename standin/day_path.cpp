#include "standin/day_path.h"

#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>

namespace vlt {

constexpr double kMetresPerSecondPerKnot = kMetresPerNm / 3600;
constexpr double kGravityMetric = 9.81;                    // metres per second squared
constexpr double kCreep = 0.5;                             // knots; nothing that moves is slower
constexpr double kBankSeconds = 2;                         // time constant of rolling in and out
constexpr double kTurnStep = 15 * kRadPerDeg * kPathStep;  // of a nose that turns on the spot
constexpr double kStraight = 1e-6;                         // radians
constexpr double kAirborneFeet = 3;                        // below this there is no bank

// A piece of the way: straight with a curvature of 0, else an arc.
struct Piece {
    double east, north, heading;  // at its beginning
    double length = 0;            // metres
    double curvature = 0;         // per metre, positive to the right
};

struct Way {
    std::vector<Piece> pieces;
    std::vector<double> marks;  // metres from the beginning to each route point
    double length = 0;
};

static double lf_heading(const RoutePoint& a, const RoutePoint& b)
{
    return std::atan2(b.east - a.east, b.north - a.north);
}

static double lf_distance(const RoutePoint& a, const RoutePoint& b)
{
    return std::hypot(b.east - a.east, b.north - a.north);
}

static void lf_add(Way& way, double length, double curvature)
{
    Piece next = way.pieces.back();
    Piece& last = way.pieces.back();
    last.length = length;
    last.curvature = curvature;
    const double turn = length * curvature;
    if (std::abs(curvature) < 1e-12) {
        next.east += length * std::sin(last.heading);
        next.north += length * std::cos(last.heading);
    } else {
        next.heading = last.heading + turn;
        next.east += (std::cos(last.heading) - std::cos(next.heading)) / curvature;
        next.north += (std::sin(next.heading) - std::sin(last.heading)) / curvature;
    }
    way.length += length;
    way.pieces.push_back(next);
}

// Straight to every corner, round it, and on. The last piece has no length: it is where the next
// would begin.
static Way lf_way(const std::vector<RoutePoint>& points)
{
    Way way;
    way.pieces.push_back({points[0].east, points[0].north, lf_heading(points[0], points[1])});
    way.marks.push_back(0);
    double used = 0;  // of the present segment, by the arc before
    for (size_t i = 1; i < points.size(); ++i) {
        const double segment = lf_distance(points[i - 1], points[i]);
        double turn = 0;
        double tangent = 0;
        if (i + 1 < points.size()) {
            turn = angleDiff(lf_heading(points[i - 1], points[i]), lf_heading(points[i], points[i + 1]));
            const double room = std::min(segment - used, lf_distance(points[i], points[i + 1]) / 2);
            tangent = std::min(points[i].radius * std::tan(std::abs(turn) / 2), std::max(room, 0.0));
        }
        lf_add(way, std::max(segment - used - tangent, 0.0), 0);
        if (std::abs(turn) > kStraight && tangent > 0) {
            const double radius = tangent / std::tan(std::abs(turn) / 2);
            way.marks.push_back(way.length + radius * std::abs(turn) / 2);
            lf_add(way, radius * std::abs(turn), (turn > 0 ? 1 : -1) / radius);
        } else {
            way.marks.push_back(way.length);
        }
        used = tangent;
    }
    return way;
}

static Piece lf_place(const Way& way, double at)
{
    size_t i = 0;
    while (i + 2 < way.pieces.size() && at > way.pieces[i].length) {
        at -= way.pieces[i].length;
        ++i;
    }
    Way step;
    step.pieces.push_back(way.pieces[i]);
    lf_add(step, std::min(at, way.pieces[i].length), way.pieces[i].curvature);
    Piece place = step.pieces.back();
    place.curvature = way.pieces[i].curvature;
    return place;
}

struct Profile {
    double knots = 0;
    double feet = 0;
    double slope = 0;  // feet per metre
};

static Profile lf_profile(const std::vector<RoutePoint>& points, const Way& way, double at)
{
    size_t i = 1;
    while (i + 1 < points.size() && at > way.marks[i]) {
        ++i;
    }
    const RoutePoint& a = points[i - 1];
    const RoutePoint& b = points[i];
    const double span = std::max(way.marks[i] - way.marks[i - 1], 1e-6);
    const double part = std::clamp((at - way.marks[i - 1]) / span, 0.0, 1.0);
    // Constant acceleration: the square of the speed grows evenly along the way.
    const double square = a.knots * a.knots + (b.knots * b.knots - a.knots * a.knots) * part;
    return {std::max(std::sqrt(square), kCreep), a.feet + (b.feet - a.feet) * part, (b.feet - a.feet) / span};
}

// Stands still; a nose that points elsewhere turns to where the way goes on, as a helicopter's can.
static void lf_pause(std::vector<PathState>& journey, const PathState& still, double& clock, double seconds)
{
    for (const double end = clock + seconds; clock < end; clock += kPathStep) {
        PathState state = still;
        const double from = journey.empty() ? still.heading : journey.back().heading;
        const double turn = std::clamp(angleDiff(from, still.heading), -kTurnStep, kTurnStep);
        state.heading = gf_normalAngle(from + turn);
        state.time = clock;
        state.knots = 0;
        state.climb = 0;
        state.bank = 0;
        journey.push_back(state);
    }
}

static PathState lf_state(const RouteLeg& leg, const Way& way, double at, double clock)
{
    const Piece place = lf_place(way, at);
    const Profile profile = lf_profile(leg.points, way, at);
    const double speed = profile.knots * kMetresPerSecondPerKnot;
    PathState state;
    state.time = clock;
    state.east = place.east;
    state.north = place.north;
    state.feet = profile.feet;
    state.track = gf_normalAngle(place.heading);
    state.heading = gf_normalAngle(place.heading + (leg.backwards ? kTwoPi / 2 : 0));
    state.knots = profile.knots;
    state.climb = profile.slope * speed * 60;
    state.bank =
        profile.feet > kAirborneFeet ? std::atan(speed * speed * place.curvature / kGravityMetric) : 0;
    return state;
}

static void lf_smoothBank(std::vector<PathState>& journey)
{
    double bank = journey.empty() ? 0 : journey.front().bank;
    for (PathState& state : journey) {
        bank += (state.bank - bank) * kPathStep / kBankSeconds;
        state.bank = state.feet > kAirborneFeet ? bank : 0;
    }
}

std::vector<PathState> gf_journey(const std::vector<RouteLeg>& legs)
{
    std::vector<PathState> journey;
    double clock = 0;
    for (const RouteLeg& leg : legs) {
        const Way way = lf_way(leg.points);
        lf_pause(journey, lf_state(leg, way, 0, clock), clock, leg.pauseBefore);
        double at = 0;
        while (at < way.length) {
            const PathState state = lf_state(leg, way, at, clock);
            journey.push_back(state);
            // The speed in the middle of the step, so that an even acceleration comes out exact.
            const double half = at + state.knots * kMetresPerSecondPerKnot * kPathStep / 2;
            at += lf_profile(leg.points, way, half).knots * kMetresPerSecondPerKnot * kPathStep;
            clock += kPathStep;
        }
        lf_pause(journey, lf_state(leg, way, way.length, clock), clock, leg.pauseAfter);
    }
    lf_smoothBank(journey);
    return journey;
}

PathState gf_stateAt(const std::vector<PathState>& journey, double time)
{
    const double position =
        std::clamp((time - journey.front().time) / kPathStep, 0.0, static_cast<double>(journey.size() - 1));
    const auto index = static_cast<size_t>(position);
    const PathState& a = journey[index];
    if (index + 1 >= journey.size()) {
        return a;
    }
    const PathState& b = journey[index + 1];
    const double part = position - static_cast<double>(index);
    PathState state = a;
    state.time = time;
    state.east += (b.east - a.east) * part;
    state.north += (b.north - a.north) * part;
    state.feet += (b.feet - a.feet) * part;
    state.heading = gf_normalAngle(a.heading + angleDiff(a.heading, b.heading) * part);
    state.track = gf_normalAngle(a.track + angleDiff(a.track, b.track) * part);
    state.knots += (b.knots - a.knots) * part;
    state.bank += (b.bank - a.bank) * part;
    return state;
}

}  // namespace vlt
