// The invented airport of the built-in day: two parallel runways, a terminal between them, stands.
//
// Constants and pure functions; any thread. Places at the airport are told in metres along and to
// the left of the runways' direction 08.
#pragma once

#include "traffic/geodesy.h"

#include <string>
#include <vector>

namespace vlt {

inline constexpr LatLon kDayAirport{47.6, 11.5};
inline constexpr const char* kDayAirportCode = "XVEL";
inline constexpr const char* kDayAirportIata = "XVL";
inline constexpr double kDayElevation = 1600;  // feet
inline constexpr double kDayRunwayHeadingDeg = 80;

// A place at the airport, in metres.
struct FieldPoint {
    double along = 0;  // towards 080
    double left = 0;   // towards 350
};

struct DayRunway {
    const char* name = "";
    FieldPoint west;  // the end where 08 begins
    FieldPoint east;  // the end where 26 begins
};

// Landings on the first, departures and circuits on the second.
inline constexpr DayRunway kDayRunways[2] = {{"08L/26R", {-1600, 800}, {1600, 800}},
                                             {"08R/26L", {-1400, -800}, {1400, -800}}};

enum class StandKind { Gate, Ramp, Cargo, Helipad };

struct DayStand {
    std::string id;
    FieldPoint at;
    double headingDeg = 0;  // of the nose, true
    double radiusM = 0;
    StandKind kind = StandKind::Gate;
};

inline constexpr int kStandsPerSide = 17;
inline constexpr double kStandSpacing = 65;   // metres
inline constexpr double kStandsLeft = 150;    // of the northern row; the southern row lies at the negative
inline constexpr double kTaxilaneLeft = 300;  // of the lane before the northern row
inline constexpr int kRampStands = 16;        // R1 to R16, east of the northern row, for light aircraft
inline constexpr int kApronStands = 6;   // W1 to W6, west of the northern row: too near for two wide aircraft
inline constexpr int kCargoStands = 10;  // C1 to C10, east of the southern row
inline constexpr FieldPoint kDayHelipad{950, 0};  // H1; H2 lies beside it

LatLon gf_fieldPosition(FieldPoint point);

// The place `metres` east and north of the airport.
LatLon gf_positionAround(double east, double north);

// Metres east and north of the airport.
struct EastNorth {
    double east = 0;
    double north = 0;
};
EastNorth gf_eastNorth(FieldPoint point);

// The along value of the nth stand of a row, n from 0.
double gf_standAlong(int n);
double gf_cargoAlong(int n);  // of the cargo stands

// Northern row first, then the southern row, apron, ramp, cargo, helipads.
std::vector<DayStand> gf_dayStands();

}  // namespace vlt
