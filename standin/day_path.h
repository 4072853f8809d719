// From a list of points to a motion in time: how the aircraft of the built-in day move.
//
// Corners are rounded by arcs, speed changes evenly between points, height too. So speed, heading,
// bank and rate of climb fit each other at every moment. Pure functions; any thread.
#pragma once

#include <vector>

namespace vlt {

// A point of a route, in metres east and north of the airport.
struct RoutePoint {
    double east = 0;
    double north = 0;
    double radius = 0;  // metres, of the arc that rounds the corner here
    double knots = 0;   // speed when passing
    double feet = 0;    // above the airport
};

// A part of a journey between two stops, or from the beginning or to the end.
struct RouteLeg {
    std::vector<RoutePoint> points;  // two or more
    bool backwards = false;          // pushed: the nose points against the way
    double pauseBefore = 0;          // seconds at the first point
    double pauseAfter = 0;           // seconds at the last
};

struct PathState {
    double time = 0;  // seconds since the journey's beginning
    double east = 0;
    double north = 0;
    double feet = 0;
    double heading = 0;  // radians true, of the nose
    double track = 0;    // radians true, of the way
    double knots = 0;
    double climb = 0;  // feet per minute
    double bank = 0;   // radians, positive right wing down
};

inline constexpr double kPathStep = 0.5;  // seconds

// The states of a journey, one each kPathStep. Legs begin where the last one ends. An impossible
// corner gets the largest arc that fits between its neighbours.
std::vector<PathState> gf_journey(const std::vector<RouteLeg>& legs);

// The state at a time, between the two nearest; the first or last outside.
PathState gf_stateAt(const std::vector<PathState>& journey, double time);

}  // namespace vlt
