#include "traffic/stand_holding.h"

#include "airports/stand_search.h"
#include "traffic/geodesy.h"

namespace vlt {

static LatLon lf_place(const ParkPos& stand)
{
    return {stand.lat, stand.lon};
}

std::string gf_standName(const StaticAc& ac)
{
    if (ac.standId == kNoStand) {
        return "sid==0?";
    }
    const ParkPos* stand = gf_stand(ac.standId);
    return stand != nullptr ? stand->id : "unknown";
}

bool gf_wouldTouch(double halfSpan, const ParkPos& stand, double otherHalfSpan, const ParkPos& otherStand)
{
    constexpr double kMargin = 1.1;
    return (halfSpan + otherHalfSpan) * kMargin >= distNm(lf_place(stand), lf_place(otherStand));
}

bool gf_keptForUser(const ParkPos& stand)
{
    return !stand.id.empty() &&
           (stand.id == reservedStand || stand.id == nearestStandId({userNow.lat, userNow.lon}));
}

void gf_takeStand(LiveAc& ac, const ParkPos& stand)
{
    ac.standLat = stand.lat;
    ac.standLon = stand.lon;
    ac.standHeading = stand.heading;
    ac.standId = stand.index;
    ac.soft = stand.cargo;
}

void gf_releaseStand(const StaticAc& ac)
{
    ParkPos* stand = gf_stand(ac.standId);
    if (stand != nullptr && ac.hexid > kLastStaticHexid) {
        stand->occupiedByLive = false;
    }
}

void gf_clearStandFields(StaticAc& ac)
{
    ac.standLat = 0;
    ac.standLon = 0;
    ac.standHeading = 0;
    ac.standId = kNoStand;
    ac.soft = false;
}

}  // namespace vlt
