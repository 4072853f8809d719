#include "traffic/arrival.h"

#include "airports/learning.h"
#include "airports/stand_search.h"
#include "core/base/log.h"
#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/object_config.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"
#include "traffic/stand_moves.h"
#include "traffic/stays.h"

#include <algorithm>

namespace vlt {

// --- the way is cleared

static void lf_removeHolder(const LiveAc& ac, const ParkPos& stand)
{
    if (LiveAc* holder = gf_liveHolder(stand.index, kParked, &ac)) {
        logTalkative(
            format("{:8}: {:8} removed, {} wants to park there", stand.id, holder->callsign, ac.callsign));
        removeAircraftFromSim(*holder, "its stand is wanted");
    }
}

static void lf_removeNeighbours(const LiveAc& ac, const ParkPos& stand)
{
    for (const uint32_t index : stand.neighbours) {
        const ParkPos* neighbour = gf_stand(index);
        if (neighbour == nullptr || gf_isNullPosition(gf_placeOf(*neighbour))) {
            continue;
        }
        for (LiveAc& other : liveAcs) {
            if (&other == &ac || !gf_holds(other, index, kParked | kPushes) ||
                !gf_wouldTouch(ac.radius, stand, other.radius, *neighbour)) {
                continue;
            }
            logTalkative(
                format("{:8}: {:8} removed by parking {} at adjacent and possibly colliding stand {}",
                       neighbour->id, other.callsign, ac.callsign, stand.id));
            removeAircraftFromSim(other, "an adjacent stand is wanted");
        }
    }
}

// Another aircraft is driving to an adjacent stand where the two would touch: first come, first served.
static bool lf_isAwaitedBeside(const LiveAc& ac, const ParkPos& stand)
{
    return std::ranges::any_of(liveAcs, [&](const LiveAc& other) {
        const ParkPos* neighbour = gf_stand(other.standId);
        return &other != &ac && neighbour != nullptr && gf_holds(other, neighbour->index, kParks) &&
               std::ranges::find(stand.neighbours, neighbour->index) != stand.neighbours.end() &&
               gf_wouldTouch(ac.radius, stand, other.radius, *neighbour);
    });
}

// Static aircraft on the stand itself; a creation that still waits is taken back.
static void lf_clearStand(const LiveAc& ac, const ParkPos& stand)
{
    StaticAc* holder = gf_staticHolder(stand.index, true);
    if (holder == nullptr) {
        return;
    }
    const bool same = holder->coupledCs1 == ac.callsign || holder->regcode == ac.regcode;
    const std::string line =
        format("{:8}: {:8} {} makes way for{} {} {}", stand.id, holder->callsign, holder->regcode,
               same ? " the same live version" : "", ac.callsign, ac.regcode);
    const bool waiting = holder->fs == FsState::Adding2Sim;
    removeAircraftFromSim(*holder, "makes way for a live aircraft");
    if (!waiting) {
        logTalkative(line);
    } else if (holder->eraseCancelled) {
        logTalkative("queued " + line);
    }
}

void clearStandForLive(const LiveAc& ac, const ParkPos& stand)
{
    lf_clearStand(ac, stand);
    for (const uint32_t index : stand.neighbours) {
        StaticAc* beside = gf_staticHolder(index);
        const ParkPos* neighbour = gf_stand(index);
        if (beside == nullptr || neighbour == nullptr ||
            !gf_wouldTouch(ac.radius, stand, beside->radius, *neighbour)) {
            continue;
        }
        logTalkative(format("{:8}: {:8} removed by {} parking at adjacent stand {}", neighbour->id,
                            beside->callsign, ac.callsign, stand.id));
        removeAircraftFromSim(*beside, "an adjacent stand is taken");
    }
}

// --- the stand is taken

void try2Park(LiveAc& ac, bool wide)
{
    constexpr double kNarrow = 20.0 / kMetresPerNm;
    if (ac.stream.empty()) {
        logLine("try2Park empty sz?");
        return;
    }
    const PosSample& last = ac.stream.back();
    if (last.lat == ac.lastParkLat && last.lon == ac.lastParkLon) {
        return;
    }
    ac.lastParkLat = last.lat;
    ac.lastParkLon = last.lon;
    const ParkPos* stand =
        gf_stand(standAtPosition(gf_placeOf(last), ac, wide ? kStandReach : kNarrow, wide));
    if (stand == nullptr || gf_keptForUser(*stand)) {
        return;
    }
    if (lf_isAwaitedBeside(ac, *stand)) {
        ac.lastParkLat = 0;  // asked again, also at the same place
        return;
    }
    lf_removeHolder(ac, *stand);
    lf_removeNeighbours(ac, *stand);
    clearStandForLive(ac, *stand);
    gf_takeStand(ac, *stand);
    ac.stream.resize(1);
    gf_setSt(ac, StState::Parking);
    drive2Stand(ac, *stand);
}

static void lf_park(LiveAc& ac)
{
    gf_setSt(ac, StState::Parked);
    ac.stamp = hourNow;
    if (ac.towed) {
        logTalkative(format("          towed aircraft {} parks", logName(ac)));
    }
    ac.stream.front().stationary = true;
    gf_restartStandWatch(ac);
    noteCargoStand(ac);
    parkedConfig(ac);
    logTalkative(format("{:8}: {:8} arrived at stand", gf_standName(ac), ac.callsign));
    standChangeList.push_back(ac.hexid);
    if (gf_registerStandUse(ac, false)) {
        maxParkCheck(0);
    }
}

void arrivedAtStand(LiveAc& ac)
{
    constexpr double kAtStand = 2.0 / kMetresPerNm;
    const ParkPos* stand = gf_stand(ac.standId);
    if (stand != nullptr && gf_isHeldByOther(*stand, ac)) {  // somebody else came first
        ac.extendCount = 1;
        removeAircraftFromSim(ac, "its stand was taken");
        return;
    }
    if (distNm(gf_placeOf(ac), gf_standPlace(ac)) > kAtStand) {
        gf_setSt(ac, StState::Taxi);
        return;
    }
    lf_park(ac);
}

// --- the stand is left

// Moved away so soon after its landing: nobody has boarded.
static bool lf_leavesTooSoon(const LiveAc& ac)
{
    constexpr int32_t kMinute = kTicksPerMinute;
    //                                                    Light Buzjets     Large         Heavy HighPerf Rotor
    static constexpr PerCategory<int32_t> kShortestStay{0, 15 * kMinute, 25 * kMinute, 60 * kMinute, 0, 0};
    const int32_t stay = tick - ac.stream.front().time + kParkedAheadTicks;
    return stay < gf_forCategory(kShortestStay, ac.category);
}

void leaveStand(LiveAc& ac)
{
    if (ac.extendCount >= 1) {
        if (ac.st == StState::Parked) {
            if (ac.landed && lf_leavesTooSoon(ac)) {
                ac.towed = true;
            }
            ac.landed = false;
            ac.stream.front().time = std::max(ac.leavesAt, tick + 1);
        }
        ac.extendCount = 0;
    }
    gf_registerStandUse(ac, true);
    gf_releaseStand(ac);
}

}  // namespace vlt
