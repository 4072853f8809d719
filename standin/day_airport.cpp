#include "standin/day_airport.h"

#include "core/base/text.h"

#include <cmath>

namespace vlt {

constexpr double kFeetPerMetre = kFeetPerNm / kMetresPerNm;
constexpr double kWideRadius = 36;    // metres, every fourth stand takes a wide-body
constexpr double kNarrowRadius = 22;  // metres

EastNorth gf_eastNorth(FieldPoint point)
{
    const double heading = kDayRunwayHeadingDeg * kRadPerDeg;
    return {point.along * std::sin(heading) - point.left * std::cos(heading),
            point.along * std::cos(heading) + point.left * std::sin(heading)};
}

LatLon gf_positionAround(double east, double north)
{
    return destination(kDayAirport, std::atan2(east, north), std::hypot(east, north) * kFeetPerMetre);
}

LatLon gf_fieldPosition(FieldPoint point)
{
    const EastNorth at = gf_eastNorth(point);
    return gf_positionAround(at.east, at.north);
}

double gf_standAlong(int n)
{
    return (n - (kStandsPerSide - 1) / 2.0) * kStandSpacing;
}

// `side` 1 for the northern side, whose noses point south, -1 for the southern one.
static double lf_noseDeg(int side)
{
    return std::fmod(kDayRunwayHeadingDeg + (side > 0 ? 90 : 270), 360);
}

static void lf_addGates(std::vector<DayStand>& stands, int side)
{
    for (int n = 0; n < kStandsPerSide; ++n) {
        const FieldPoint at{gf_standAlong(n), side * kStandsLeft};
        stands.push_back({format("{}{}", side > 0 ? 'N' : 'S', n + 1), at, lf_noseDeg(side),
                          n % 4 == 0 ? kWideRadius : kNarrowRadius, StandKind::Gate});
    }
}

static void lf_addApron(std::vector<DayStand>& stands)
{
    constexpr double kFirst = -640;  // metres along
    constexpr double kSpacing = 50;
    for (int n = 0; n < kApronStands; ++n) {
        stands.push_back({format("W{}", n + 1),
                          {kFirst - n * kSpacing, kStandsLeft},
                          lf_noseDeg(1),
                          kWideRadius,
                          StandKind::Gate});
    }
}

static void lf_addRamp(std::vector<DayStand>& stands)
{
    constexpr double kFirst = 620;  // metres along
    constexpr double kSpacing = 45;
    constexpr double kRadius = 15;
    for (int n = 0; n < kRampStands; ++n) {
        stands.push_back({format("R{}", n + 1),
                          {kFirst + n * kSpacing, kStandsLeft},
                          lf_noseDeg(1),
                          kRadius,
                          StandKind::Ramp});
    }
}

double gf_cargoAlong(int n)
{
    constexpr double kFirst = 620;  // metres along
    constexpr double kSpacing = 80;
    return kFirst + n * kSpacing;
}

static void lf_addCargo(std::vector<DayStand>& stands)
{
    for (int n = 0; n < kCargoStands; ++n) {
        stands.push_back({format("C{}", n + 1),
                          {gf_cargoAlong(n), -kStandsLeft},
                          lf_noseDeg(-1),
                          n % 3 == 2 ? kNarrowRadius : kWideRadius,
                          StandKind::Cargo});
    }
}

static void lf_addHelipads(std::vector<DayStand>& stands)
{
    constexpr double kBeside = 60;  // metres
    constexpr double kRadius = 15;
    for (int n = 0; n < 2; ++n) {
        stands.push_back({format("H{}", n + 1),
                          {kDayHelipad.along + n * kBeside, kDayHelipad.left},
                          kDayRunwayHeadingDeg,
                          kRadius,
                          StandKind::Helipad});
    }
}

std::vector<DayStand> gf_dayStands()
{
    std::vector<DayStand> stands;
    lf_addGates(stands, 1);
    lf_addGates(stands, -1);
    lf_addApron(stands);
    lf_addRamp(stands);
    lf_addCargo(stands);
    lf_addHelipads(stands);
    return stands;
}

}  // namespace vlt
