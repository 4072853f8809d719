#include "traffic/stand_spawn.h"

#include "airports/learning.h"
#include "airports/stand_search.h"
#include "traffic/arrival.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_holding.h"
#include "traffic/stays.h"

#include <algorithm>
#include <optional>

namespace vlt {

// Where the aircraft would stand, if it is at a stand at all.
static std::optional<LatLon> lf_placeToTest(const LiveAc& ac)
{
    constexpr double kCreeps = 5;  // knots
    if (parkApf.stands.empty() || !parkAirport) {
        return std::nullopt;
    }
    const LatLon front = gf_placeOf(ac.stream.front());
    if (distNm(front, gf_placeOf(*parkAirport)) > kAirportRadius) {
        return std::nullopt;
    }
    if (ac.stream.front().stationary) {
        return front;
    }
    const LatLon last = gf_placeOf(ac.stream.back());
    const bool creeps = ac.stream[1].speed <= kCreeps && distNm(front, last) <= kStopsNear;
    return creeps ? std::optional(last) : std::nullopt;
}

static void lf_standAt(LiveAc& ac, const ParkPos& stand)
{
    gf_removeHolder(ac, stand.index);
    clearStandForLive(ac, stand);
    gf_takeStand(ac, stand);
    gf_setSt(ac, StState::Parked);
    gf_claimStand(ac);
    gf_restartStandWatch(ac);
    ac.stream.resize(1);
    PosSample& front = ac.stream.front();
    front.stationary = true;
    front.speed = 0;
    front.lat = stand.lat;
    front.lon = stand.lon;
    front.track = stand.heading * kDegPerRad;
    noteCargoStand(ac);
    gf_registerStandUse(ac, false);
    maxParkCheck(1);
}

bool gf_birthOnGround(LiveAc& ac)
{
    const auto place = lf_placeToTest(ac);
    if (!place) {
        gf_setSt(ac, StState::Taxi);
        return true;
    }
    const ParkPos* stand = gf_stand(standAtPosition(*place, ac, kStandReach, ac.stream.front().stationary));
    if (stand == nullptr) {
        if (ac.stream[1].stationary) {
            ac.stream.pop_front();
            return false;
        }
        gf_setSt(ac, StState::Taxi);
        return true;
    }
    if (gf_isReserved(*stand) || (userOnGround && gf_keptForUser(*stand))) {
        return true;  // it goes on without a stand
    }
    if (!standConflict(ac, stand->index) || gf_adjacentBlocked(ac, *stand)) {
        gf_turnAway(ac, "no room at its stand");
        return false;
    }
    lf_standAt(ac, *stand);
    return true;
}

}  // namespace vlt
