#include "traffic/geodesy.h"

#include <cmath>

namespace vlt {

static constexpr double kNmPerRadianTwice = 6875.493541569878;  // 2 x the earth's radius
static constexpr double kRadiansPerFoot = 4.787404208238998e-8;

static double lf_squared(double x)
{
    return x * x;
}

double distNm(LatLon a, LatLon b)
{
    const double x = lf_squared(std::sin((b.lat - a.lat) * kRadPerDeg / 2)) +
                     std::cos(a.lat * kRadPerDeg) * std::cos(b.lat * kRadPerDeg) *
                         lf_squared(std::sin((b.lon - a.lon) * kRadPerDeg / 2));
    return kNmPerRadianTwice * std::atan2(std::sqrt(x), std::sqrt(std::fmax(0.0, 1 - x)));
}

double bearing(LatLon a, LatLon b)
{
    const double latA = a.lat * kRadPerDeg;
    const double latB = b.lat * kRadPerDeg;
    const double dLon = (b.lon - a.lon) * kRadPerDeg;
    const double east = std::sin(dLon) * std::cos(latB);
    const double north = std::cos(latA) * std::sin(latB) - std::sin(latA) * std::cos(latB) * std::cos(dLon);
    return gf_normalAngle(std::atan2(east, north));
}

LatLon destination(LatLon a, double heading, double feet)
{
    const double angle = feet * kRadiansPerFoot;
    const double lat = a.lat * kRadPerDeg;
    const double sinLat =
        std::sin(lat) * std::cos(angle) + std::cos(lat) * std::sin(angle) * std::cos(heading);
    const double dLon = std::atan2(std::sin(heading) * std::sin(angle) * std::cos(lat),
                                   std::cos(angle) - std::sin(lat) * sinLat);
    return {std::asin(std::fmin(1.0, std::fmax(-1.0, sinLat))) * kDegPerRad,
            std::remainder(a.lon + dLon * kDegPerRad, 360.0)};
}

double angleDiff(double from, double to)
{
    return std::remainder(to - from, kTwoPi);
}

double gf_normalAngle(double angle)
{
    if (!std::isfinite(angle)) {
        return 0;
    }
    const double rest = std::fmod(angle, kTwoPi);
    return rest < 0 ? rest + kTwoPi : rest;
}

double gf_offLineFeet(LatLon from, double heading, LatLon point)
{
    const double off = std::abs(angleDiff(heading, bearing(from, point)));
    return std::sin(off) * distNm(from, point) * kFeetPerNm;
}

bool gf_isNullPosition(LatLon position)
{
    return position.lat >= 0.0 && position.lat <= 0.0009 && position.lon >= 0.0 && position.lon <= 0.05;
}

}  // namespace vlt
