// Distances and directions on the sphere.
//
// Pure functions; any thread. Positions in degrees, angles in radians, distances in nm.
#pragma once

#include "core/base/units.h"

namespace vlt {

struct LatLon {
    double lat = 0;
    double lon = 0;
    bool operator==(const LatLon&) const = default;
};

// The place of a record that has a latitude and a longitude.
template <typename Record>
LatLon gf_placeOf(const Record& record)
{
    return {record.lat, record.lon};
}

// Great circle distance in nm by the haversine formula.
double distNm(LatLon a, LatLon b);

// Initial great circle bearing from a to b, 0 to 2 pi; 0 for equal positions.
double bearing(LatLon a, LatLon b);

// Where one comes out after `feet` along `heading`; the longitude in -180 to 180.
LatLon destination(LatLon a, double heading, double feet);

// Signed difference to - from the shorter way round, -pi to pi.
double angleDiff(double from, double to);

// An angle brought into 0 to 2 pi; 0 for one that isn't finite.
double gf_normalAngle(double angle);

// How far `point` lies off the line that leaves `from` with `heading`, to either side, in feet.
double gf_offLineFeet(LatLon from, double heading, LatLon point);

// The position that means "no position yet".
bool gf_isNullPosition(LatLon position);

}  // namespace vlt
