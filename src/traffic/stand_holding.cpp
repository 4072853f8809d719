#include "traffic/stand_holding.h"

#include "airports/stand_search.h"

#include <algorithm>

namespace vlt {

// --- who is there

static uint32_t lf_phase(StState st)
{
    switch (st) {
    case StState::Parking:
        return kParks;
    case StState::Parked:
        return kParked;
    case StState::PushingBack:
        return kPushes;
    case StState::PushedBack:
        return kPushed;
    case StState::Taxi:
    case StState::TakeOff:
    case StState::Flying:
    case StState::Birth:
        return 0;
    }
    return 0;
}

bool gf_isParked(const LiveAc& ac)
{
    return ac.st == StState::Parked && ac.fs == FsState::Active;
}

LatLon gf_standPlace(const StaticAc& ac)
{
    return {ac.standLat, ac.standLon};
}

bool gf_holds(const LiveAc& ac, uint32_t standId, uint32_t phases)
{
    return ac.standId == standId && ac.fs == FsState::Active && (lf_phase(ac.st) & phases) != 0;
}

LiveAc* gf_liveHolder(uint32_t standId, uint32_t phases, const LiveAc* but)
{
    const auto found = std::ranges::find_if(
        liveAcs, [&](const LiveAc& ac) { return &ac != but && gf_holds(ac, standId, phases); });
    return found == liveAcs.end() ? nullptr : &*found;
}

StaticAc* gf_staticHolder(uint32_t standId, bool coming)
{
    const auto found = std::ranges::find_if(staticAcs, [&](const StaticAc& ac) {
        return ac.standId == standId &&
               (ac.fs == FsState::Active || (coming && ac.fs == FsState::Adding2Sim && !ac.eraseCancelled));
    });
    return found == staticAcs.end() ? nullptr : &*found;
}

bool gf_isHeldByOther(const ParkPos& stand, const LiveAc& ac)
{
    const bool claimed = stand.occupiedByLive != kNobody && stand.occupiedByLive != ac.hexid;
    return claimed || gf_liveHolder(stand.index, kParked, &ac) != nullptr;
}

// --- a stand is taken and left

void gf_takeStand(LiveAc& ac, const ParkPos& stand)
{
    ac.standLat = stand.lat;
    ac.standLon = stand.lon;
    ac.standHeading = stand.heading;
    ac.standId = stand.index;
    ac.soft = stand.cargo;
}

void gf_claimStand(const LiveAc& ac)
{
    if (ParkPos* stand = gf_stand(ac.standId)) {
        stand->occupiedByLive = ac.hexid;
    }
}

void gf_releaseStand(const StaticAc& ac)
{
    ParkPos* stand = gf_stand(ac.standId);
    if (stand != nullptr && stand->occupiedByLive == ac.hexid) {
        stand->occupiedByLive = kNobody;
    }
}

void gf_forgetStand(StaticAc& ac)
{
    gf_releaseStand(ac);
    ac.standLat = 0;
    ac.standLon = 0;
    ac.standHeading = 0;
    ac.standId = kNoStand;
    ac.soft = false;
}

void gf_restartStandWatch(LiveAc& ac)
{
    ac.parkedSince = tick;
    ac.standDistLast = 0;
    ac.growingDist = 0;
}

// --- stands among themselves

bool gf_isReserved(const ParkPos& stand)
{
    return !stand.id.empty() && stand.id == reservedStand;
}

bool gf_keptForUser(const ParkPos& stand)
{
    return gf_isReserved(stand) || (!stand.id.empty() && stand.id == nearestStandId(gf_placeOf(userNow)));
}

bool gf_wouldTouch(double halfSpan, const ParkPos& stand, double otherHalfSpan, const ParkPos& otherStand)
{
    constexpr double kMargin = 1.1;
    return (halfSpan + otherHalfSpan) * kMargin >= distNm(gf_placeOf(stand), gf_placeOf(otherStand));
}

std::string gf_standName(const StaticAc& ac)
{
    if (ac.standId == kNoStand) {
        return "sid==0?";
    }
    const ParkPos* stand = gf_stand(ac.standId);
    return stand != nullptr ? stand->id : "unknown";
}

}  // namespace vlt
