#include "airports/parking/renewal.h"

#include "airports/parking/reserved_stand.h"
#include "airports/parking/static_parking.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "traffic/geodesy.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace vlt {

std::atomic<bool> renewalWanted{false};
static bool requested = false;  // [worker]

// A copy of a static aircraft that stays.
struct Stayer {
    std::string callsign;
    std::string coupledCs1;
    std::string coupledCs2;
    std::string regcode;
    std::string airline;
    std::string model;
    HourStamp stamp;
    uint32_t stand = kNoStand;
    bool soft = false;
    bool replan = false;  // it is to come back under its next call sign
};

// One renewal.
struct Renewal {
    Planning planning;
    std::vector<Stayer> stayers;     // the latest first
    std::vector<uint32_t> removals;  // stands whose static aircraft go
    int32_t wanted = 0;
};

// --- a static aircraft against the plan

static bool lf_isItself(const PlanEntry& entry, const StaticAc& s)
{
    return entry.airline == s.airline && entry.type == s.model &&
           (entry.callsign + "*" == s.callsign || entry.coupledCs + "*" == s.callsign);
}

// The entry's time lies after that at which the static aircraft took its stand.
static bool lf_isLater(const PlanEntry& entry, const StaticAc& s, HourStamp now)
{
    return entry.offset < gf_halfHoursSince(s.stamp, now);
}

static bool lf_touches(const PlanEntry& entry, const StaticAc& s)
{
    const ParkPos* stand = gf_stand(entry.stand);
    return stand != nullptr && halfWingspanNm(entry.type) + halfWingspanNm(s.model) >
                                   distNm(gf_standPlace(s), gf_placeOf(*stand));
}

// The history has an aircraft of this airline and type in `slots` half hours back from `slot` of a day.
static bool lf_hasHistory(const ParkPos& stand, const StaticAc& s, uint32_t day, int32_t slot, int32_t slots)
{
    return std::ranges::any_of(stand.options, [&](const StandOption& o) {
        if (o.sequence <= 0 || o.airline != s.airline || o.type != s.model || !gf_isOfDay(o, day)) {
            return false;
        }
        for (int32_t n = 0; n < slots && slot - n >= 0; ++n) {
            if (o.hours.test(static_cast<size_t>(slot - n))) {
                return true;
            }
        }
        return false;
    });
}

static bool lf_historyHas(const Planning& planning, const StaticAc& s)
{
    constexpr int32_t kMostYesterday = 46;
    constexpr int32_t kLastSlot = static_cast<int32_t>(kSlotsPerDay) - 1;
    const ParkPos* stand = gf_stand(s.standId);
    if (stand == nullptr) {
        return false;
    }
    const int32_t back = std::clamp(std::max(planning.maxFitReal, planning.maxFitSoft), 0, kLastSlot);
    const auto slot = static_cast<int32_t>(planning.now.slot);
    const uint32_t yesterday = gf_halfHoursBefore(planning.now, slot + 1).day;
    return lf_hasHistory(*stand, s, planning.now.day, slot, back + 1) ||
           (back > slot &&
            lf_hasHistory(*stand, s, yesterday, kLastSlot, std::min(back - slot, kMostYesterday)));
}

// Whether the static aircraft stays; entries that it wins against are erased.
static bool lf_stays(const Planning& planning, const StaticAc& s)
{
    const auto heard = [&](const std::string& cs) { return !cs.empty() && planning.heard.contains(cs); };
    if (heard(s.coupledCs1) || heard(s.coupledCs2)) {
        return false;
    }
    const auto here = std::ranges::find(parkPlan, s.standId, &PlanEntry::stand);
    if (here != parkPlan.end()) {
        if (!lf_isItself(*here, s) && lf_isLater(*here, s, planning.now)) {
            return false;
        }
        parkPlan.erase(here);
        return true;
    }
    const ParkPos* stand = gf_stand(s.standId);
    const auto isBeside = [&](const PlanEntry& entry) {
        return stand != nullptr &&
               std::ranges::find(stand->neighbours, entry.stand) != stand->neighbours.end() &&
               lf_touches(entry, s);
    };
    if (std::ranges::none_of(parkPlan, isBeside)) {
        return lf_historyHas(planning, s);
    }
    if (std::ranges::any_of(parkPlan, [&](const PlanEntry& entry) {
            return isBeside(entry) && lf_isLater(entry, s, planning.now);
        })) {
        return false;
    }
    std::erase_if(parkPlan, isBeside);
    return true;
}

static Stayer lf_stayer(const StaticAc& s)
{
    return {s.callsign, s.coupledCs1, s.coupledCs2, s.regcode, s.airline,
            s.model,    s.stamp,      s.standId,    s.soft,    false};
}

// Its flight came in, and doesn't stand there any more in the next half hour.
static bool lf_leavesNext(const Stayer& stayer, HourStamp now)
{
    const ParkPos* stand = gf_stand(stayer.stand);
    if (stand == nullptr || stayer.coupledCs2.empty() ||
        !gf_isSameCallsign(stayer.callsign, stayer.coupledCs1)) {
        return false;
    }
    const auto option = std::ranges::find_if(stand->options, [&](const StandOption& o) {
        return gf_isOfDay(o, now.day) && gf_isSameCallsign(o.callsign, stayer.callsign) &&
               o.airline == stayer.airline && o.type == stayer.model;
    });
    return option != stand->options.end() && !gf_runsOn(*stand, *option, now);
}

// --- the steps

static void lf_decideOnStatics(Renewal& renewal)
{
    const HourStamp now = renewal.planning.now;
    for (const StaticAc& s : staticAcs) {
        if (s.fs != FsState::Active) {
            continue;
        }
        if (lf_stays(renewal.planning, s)) {
            renewal.stayers.push_back(lf_stayer(s));
        } else {
            renewal.removals.push_back(s.standId);
        }
    }
    std::ranges::stable_sort(renewal.stayers, {},
                             [now](const Stayer& stayer) { return gf_halfHoursSince(stayer.stamp, now); });
    for (Stayer& stayer : renewal.stayers) {
        stayer.replan = lf_leavesNext(stayer, now);
    }
}

static void lf_replan(Renewal& renewal)
{
    for (const Stayer& s : renewal.stayers) {
        if (s.replan) {
            const int32_t offset = std::max(gf_halfHoursSince(s.stamp, renewal.planning.now), 0);
            parkPlan.push_back(
                {s.stand, offset, s.airline, s.model, s.coupledCs1, s.coupledCs2, s.regcode, !s.soft, false});
            renewal.removals.push_back(s.stand);
        }
    }
    std::erase_if(renewal.stayers, [](const Stayer& stayer) { return stayer.replan; });
}

static void lf_cutToWanted(Renewal& renewal)
{
    std::ranges::stable_sort(parkPlan, {}, &PlanEntry::offset);
    auto excess = std::ssize(parkPlan) + std::ssize(renewal.stayers) +
                  std::ssize(renewal.planning.liveStayers) - renewal.wanted;
    for (; excess > 0 && !parkPlan.empty(); --excess) {
        parkPlan.pop_back();
    }
    for (; excess > 0 && !renewal.stayers.empty(); --excess) {
        renewal.removals.push_back(renewal.stayers.back().stand);
        renewal.stayers.pop_back();
    }
    if (excess > 0 && !INITIAL_LOAD_ONLY.value) {
        removeOldestParked(static_cast<int32_t>(excess));
    }
}

static void lf_workOffRemovals(const Renewal& renewal)
{
    for (auto stand = renewal.removals.rbegin(); stand != renewal.removals.rend(); ++stand) {
        for (StaticAc& s : staticAcs) {
            if (s.standId == *stand && (s.fs == FsState::Active || s.fs == FsState::RemovingFromSim)) {
                removeAircraftFromSim(s, "the renewal of parking");
            }
        }
    }
}

static void lf_collectLiveStayers(Renewal& renewal)
{
    std::vector<ParkedStay>& live = renewal.planning.liveStayers;
    live = oldParkedRound();
    const auto more = std::ssize(live) - renewal.wanted;
    if (renewal.wanted >= 1 && more > 0) {
        logLine(format("Parking adjustments: {} more live ac than wanted", more));
        removeOldestParked(static_cast<int32_t>(more));
        live = oldParkedRound();
    }
    for (const ParkedStay& stay : live) {
        if (ParkPos* stand = gf_stand(stay.standId)) {
            gf_markPlanned(*stand);
        }
    }
}

// Taken back while it was asked for, and the simulator hasn't answered since: it had no room.
static bool lf_neverCame(const StaticAc& s)
{
    return s.fs == FsState::Adding2Sim && s.removeWhenAdded;
}

void parkingAdjustments()
{
    if (parkState != ParkState::Loaded || parkApf.stands.empty()) {
        return;
    }
    Renewal renewal;
    renewal.planning = gf_beginPlanning();
    planningRuns = true;
    parkPlan.clear();
    std::erase_if(staticAcs, lf_neverCame);
    gf_renumberOptions();
    updateReservedStand();
    renewal.wanted = wantedCount();
    lf_collectLiveStayers(renewal);
    gf_planPasses(renewal.planning, renewal.wanted,
                  static_cast<int32_t>(renewal.planning.liveStayers.size()));
    lf_decideOnStatics(renewal);
    lf_replan(renewal);
    logLine(format("live stayers: {}, ", renewal.planning.liveStayers.size()));
    lf_cutToWanted(renewal);
    std::ranges::stable_sort(parkPlan, std::greater{}, &PlanEntry::offset);
    logLine(format("Parking adjustments: {} to be removed, {} to be added\n", renewal.removals.size(),
                   parkPlan.size()));
    lf_workOffRemovals(renewal);
    if (parkPlan.empty()) {
        gf_endPlanning();
    }
}

void gf_requestRenewal()
{
    if (parkState == ParkState::Loaded && !INITIAL_LOAD_ONLY.value) {
        requested = true;
        display.airport.parkingEnabled = false;
        gf_preparePlanning();
    }
}

void gf_forgetRenewal()
{
    renewalWanted = false;
    requested = false;
}

void gf_renewIfRequested()
{
    const bool wanted = renewalWanted.exchange(false);  // a renewal that is due serves a new wish too
    if (requested) {
        requested = false;
        parkingAdjustments();
    } else if (wanted) {
        gf_requestRenewal();
    }
}

}  // namespace vlt
