#include "airports/parking/static_parking.h"

#include "airports/parking/reserved_stand.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "link/traffic_reader.h"
#include "liveries/matching.h"
#include "traffic/create_request.h"
#include "traffic/performance.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"
#include "traffic/traffic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

bool planningRuns = false;

static uint32_t lastNumber = 0;  // [worker] of the static aircraft placed last

static constexpr std::array<const char*, 8> kDayNames{"",         "Monday", "Tuesday",  "Wednesday",
                                                      "Thursday", "Friday", "Saturday", "Sunday"};

// --- the planning

void gf_preparePlanning()
{
    planningRuns = true;
    const std::scoped_lock lock(feedMutex);
    trafficReader.callsignsHeard.clear();
    trafficReader.collectCallsigns = true;
}

Planning gf_beginPlanning()
{
    Planning planning;
    planning.now = hourNow = weekHourStamp();
    logLine(format("\n{} (utc) It is day {} ({}), {} hours", timeOfDayString(), planning.now.day,
                   kDayNames.at(planning.now.day), planning.now.slot * 0.5));
    const std::scoped_lock lock(feedMutex);
    trafficReader.collectCallsigns = false;
    planning.heard = trafficReader.callsignsHeard;
    return planning;
}

void gf_endPlanning()
{
    planningRuns = false;
    display.airport.parkingEnabled = true;
}

void initialPlanning()
{
    Planning planning = gf_beginPlanning();
    showMessage(
        "Making changes to airport parking parameters is disabled while static parking takes place ...",
        false);
    parkPlan.clear();
    gf_renumberOptions();
    updateReservedStand();
    const int32_t wanted = wantedCount();
    gf_planPasses(planning, wanted, 0);
    std::ranges::stable_sort(parkPlan, {}, &PlanEntry::offset);
    if (std::ssize(parkPlan) > wanted) {
        parkPlan.resize(static_cast<size_t>(wanted));
    }
    if (parkPlan.empty()) {
        logLine("no parking positions found");
        gf_endPlanning();
        return;
    }
    constexpr double kPercent = 100;
    const auto share = std::lround(kPercent * static_cast<double>(parkPlan.size()) /
                                   static_cast<double>(parkApf.stands.size()));
    logLine(format("{} positions ({}% vs wanted {}%, with Max fit={} hours)\n", parkPlan.size(), share,
                   display.airport.wantedPercent.load(), MAX_FIT.value * 0.5 + 0.5));
    std::ranges::stable_sort(parkPlan, std::greater{}, &PlanEntry::offset);
    planningRuns = true;
    display.airport.parkingEnabled = false;
}

bool gf_endIfPlaced()
{
    if (!planningRuns || !parkPlan.empty() || trafficReader.collectCallsigns) {
        return false;
    }
    gf_endPlanning();
    return true;
}

// --- one aircraft

// Who is in the way of an entry.
enum class StandWay { Free, Taken, BeingCleared };

static void lf_log(const std::string& line)
{
    if (LOG.value) {
        logLine(line);
    }
}

// A live aircraft that parks at the stand, or is about to appear there.
static const LiveAc* lf_liveAt(uint32_t standId)
{
    const auto parks = [standId](const LiveAc& ac) {
        return ac.standId == standId && (ac.st == StState::Parked || ac.st == StState::Parking);
    };
    const auto found = std::ranges::find_if(liveAcs, parks);
    return found == liveAcs.end() ? nullptr : &*found;
}

static StandWay lf_liveInWay(const ParkPos& stand, const PlanEntry& entry)
{
    const std::string flight = format("{} {}", entry.callsign, entry.reg);
    if (const LiveAc* live = lf_liveAt(stand.index)) {
        lf_log(format("{:8}: no static parking for {}, live aircraft {} standing here", stand.id, flight,
                      live->callsign));
        return StandWay::Taken;
    }
    for (const uint32_t index : stand.neighbours) {
        if (const LiveAc* live = lf_liveAt(index)) {
            lf_log(format("{:8}: no static parking for {}, live aircraft {} is adjacent at {}, possibly "
                          "colliding",
                          stand.id, flight, live->callsign, gf_standName(*live)));
            return StandWay::Taken;
        }
    }
    return StandWay::Free;
}

static bool lf_goes(const StaticAc& ac)
{
    return ac.fs == FsState::RemovingFromSim || ac.removeWhenAdded || gf_isMarked(ac);
}

static StandWay lf_staticInWay(const ParkPos& stand, const PlanEntry& entry)
{
    StandWay way = StandWay::Free;
    for (const StaticAc& s : staticAcs) {
        if (s.standId != stand.index &&
            std::ranges::find(stand.neighbours, s.standId) == stand.neighbours.end()) {
            continue;
        }
        if (!lf_goes(s)) {
            lf_log(format("{:8}: no static parking for {} {}, static aircraft {} is adjacent at {}, possibly "
                          "colliding",
                          stand.id, entry.callsign, entry.reg, s.callsign, gf_standName(s)));
            return StandWay::Taken;
        }
        way = StandWay::BeingCleared;
    }
    return way;
}

// The live aircraft itself is known, wherever it is.
static bool lf_isLive(const PlanEntry& entry)
{
    if (entry.reg.empty() || std::ranges::find(liveAcs, entry.reg, &LiveAc::regcode) == liveAcs.end()) {
        return false;
    }
    lf_log(format("no static parking for {} {}, it is live", entry.callsign, entry.reg));
    return true;
}

// Never 0, nor one that another has.
static uint32_t lf_nextNumber()
{
    do {
        lastNumber = (lastNumber + 1) % kLastStaticHexid;
    } while (lastNumber == 0 ||
             std::ranges::find(staticAcs, lastNumber, &StaticAc::hexid) != staticAcs.end());
    return lastNumber;
}

static StaticAc lf_staticAc(const PlanEntry& entry, const ParkPos& stand)
{
    StaticAc ac;
    ac.hexid = lf_nextNumber();
    ac.airline = entry.airline;
    gf_setModel(ac, entry.type);
    ac.callsign = entry.callsign.empty() ? format("{}{}*", entry.airline, ac.hexid) : lf_detcs(entry);
    ac.coupledCs1 = entry.callsign;
    ac.coupledCs2 = entry.coupledCs;
    ac.regcode = entry.reg;
    ac.standLat = stand.lat;
    ac.standLon = stand.lon;
    ac.standHeading = stand.heading;
    ac.standId = stand.index;
    ac.soft = !entry.real;
    return ac;
}

static void lf_place(const PlanEntry& entry, const ParkPos& stand)
{
    constexpr size_t kMostStatics = kLastStaticHexid - 1;
    if (staticAcs.size() >= kMostStatics) {
        return;
    }
    StaticAc ac = lf_staticAc(entry, stand);
    if (!matchStatic(ac, stand.cargo, stand.id)) {
        return;
    }
    ac.stamp = gf_halfHoursBefore(hourNow, entry.offset);
    ac.fs = FsState::Adding2Sim;
    gf_requestStatic(ac);
    staticAcs.push_back(std::move(ac));
}

void planStep()
{
    if (parkPlan.empty() || parkApf.stands.empty()) {
        return;
    }
    PlanEntry entry = std::move(parkPlan.back());
    parkPlan.pop_back();
    const ParkPos* stand = gf_stand(entry.stand);
    if (stand == nullptr) {
        logLine(format("stand with id {} not found", entry.stand));
        return;
    }
    if (lf_isLive(entry) || lf_liveInWay(*stand, entry) == StandWay::Taken) {
        return;
    }
    switch (lf_staticInWay(*stand, entry)) {
    case StandWay::Taken:
        break;
    case StandWay::BeingCleared:
        parkPlan.insert(parkPlan.begin(), std::move(entry));  // the others needn't wait
        break;
    case StandWay::Free:
        lf_place(entry, *stand);
        break;
    }
}

void gf_pausePlanning()
{
    for (StaticAc& s : staticAcs) {
        if (s.fs == FsState::Adding2Sim) {
            removeAircraftFromSim(s, "the simulator takes no more objects");
        }
    }
    if (!parkPlan.empty()) {
        logLine(format("the simulator takes no more objects, {} positions stay empty", parkPlan.size()));
        parkPlan.clear();
    }
}

}  // namespace vlt
