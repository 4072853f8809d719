#include "traffic/auto_range.h"

#include "airports/airports.h"
#include "core/base/parameters.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cmath>
#include <cstdint>
#include <optional>

namespace vlt {

// The range in nm for a user on the ground or at `altitude` feet, `parkAirportNm` from the first park
// airport, if there is one.
static int32_t lf_autoRange(bool onGround, double altitude, std::optional<double> parkAirportNm)
{
    constexpr int32_t kAtAirport = 10;  // nm
    constexpr int32_t kOnTheWay = 40;
    constexpr int32_t kHighUp = 100;
    constexpr double kNear = 7;
    constexpr double kFar = 37;
    constexpr int32_t kMargin = 3;
    if (onGround) {
        return kAtAirport;
    }
    if (altitude > AUTO_RANGE_ABOVE_HEIGHT.value) {
        return kHighUp;
    }
    if (altitude > AIRPORT_HEIGHT.value || !parkAirportNm || *parkAirportNm >= kFar) {
        return kOnTheWay;
    }
    return *parkAirportNm <= kNear ? kAtAirport : static_cast<int32_t>(std::lround(*parkAirportNm)) + kMargin;
}

void gf_adaptRange()
{
    if (!AUTO_RANGE.value) {
        return;
    }
    std::optional<double> parkAirportNm;
    if (!parkAirports.empty()) {
        const ParkListEntry& first = parkAirports.front();
        parkAirportNm = distNm(gf_placeOf(userNow), gf_placeOf(first));
    }
    gf_takeAutomaticRange(lf_autoRange(userOnGround, userNow.altitude, parkAirportNm));
}

}  // namespace vlt
