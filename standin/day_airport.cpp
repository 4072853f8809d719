#include "standin/day_airport.h"

#include "core/text.h"

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

std::vector<DayStand> gf_dayStands()
{
    std::vector<DayStand> stands;
    for (const int side : {1, -1}) {
        for (int n = 0; n < kStandsPerSide; ++n) {
            DayStand stand;
            stand.id = format("{}{}", side > 0 ? 'N' : 'S', n + 1);
            stand.at = {gf_standAlong(n), side * kStandsLeft};
            stand.headingDeg = kDayRunwayHeadingDeg + (side > 0 ? 90 : 270);
            stand.headingDeg = std::fmod(stand.headingDeg, 360);
            stand.radiusM = n % 4 == 0 ? kWideRadius : kNarrowRadius;
            stands.push_back(stand);
        }
    }
    return stands;
}

}  // namespace vlt
