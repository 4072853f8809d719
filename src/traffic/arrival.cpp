#include "traffic/arrival.h"

#include "airports/stand_search.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/text.h"
#include "traffic/geodesy.h"
#include "traffic/legs.h"
#include "traffic/removal.h"
#include "traffic/spawn.h"
#include "traffic/stand_moves.h"

#include <algorithm>

namespace vlt {

int32_t maxPark = 0;

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

LiveAc* gf_holderOf(uint32_t standId, StState st, StState otherSt, const LiveAc& except)
{
    const auto found = std::ranges::find_if(liveAcs, [&](const LiveAc& ac) {
        return ac.standId == standId && (ac.st == st || ac.st == otherSt) && ac.fs == FsState::Active &&
               &ac != &except;
    });
    return found == liveAcs.end() ? nullptr : &*found;
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

// --- the way is cleared

static void lf_logTalkative(const std::string& line)
{
    if (LOG.value) {
        logLine(line);
    }
}

static void lf_removeHolder(const LiveAc& ac, const ParkPos& stand)
{
    if (LiveAc* holder = gf_holderOf(stand.index, StState::Parked, StState::Parked, ac)) {
        lf_logTalkative(
            format("{:8}: {:8} removed, {} wants to park there", stand.id, holder->callsign, ac.callsign));
        removeAircraftFromSim(*holder, "its stand is wanted");
    }
}

static void lf_removeNeighbours(const LiveAc& ac, const ParkPos& stand)
{
    for (const uint32_t index : stand.neighbours) {
        const ParkPos* neighbour = gf_stand(index);
        for (LiveAc& other : liveAcs) {
            const bool holds = other.standId == index && other.fs == FsState::Active &&
                               (other.st == StState::Parked || other.st == StState::PushingBack);
            if (neighbour == nullptr || !holds || &other == &ac || gf_isNullPosition(lf_place(*neighbour)) ||
                !gf_wouldTouch(ac.radius, stand, other.radius, *neighbour)) {
                continue;
            }
            lf_logTalkative(
                format("{:8}: {:8} removed by parking {} at adjacent and possibly colliding stand {}",
                       neighbour->id, other.callsign, ac.callsign, stand.id));
            removeAircraftFromSim(other, "an adjacent stand is wanted");
        }
    }
}

// Static aircraft on the stand itself; a creation that still waits is taken back.
static void lf_clearStand(const LiveAc& ac, const ParkPos& stand)
{
    const auto holder = std::ranges::find_if(staticAcs, [&stand](const StaticAc& s) {
        return s.standId == stand.index && (s.fs == FsState::Active || s.fs == FsState::Adding2Sim);
    });
    if (holder == staticAcs.end()) {
        return;
    }
    const bool same = holder->coupledCs1 == ac.callsign || holder->regcode == ac.regcode;
    std::string line = format("{:8}: {:8} {} makes way for{} {} {}", stand.id, holder->callsign,
                              holder->regcode, same ? " the same live version" : "", ac.callsign, ac.regcode);
    const bool waiting = holder->fs == FsState::Adding2Sim;
    removeAircraftFromSim(*holder, "makes way for a live aircraft");
    if (waiting && !holder->eraseCancelled) {
        return;  // it goes as soon as it shows up
    }
    lf_logTalkative(waiting ? "queued " + line : line);
    std::erase_if(staticAcs, [](const StaticAc& s) { return s.eraseCancelled; });
}

void clearStandForLive(const LiveAc& ac, const ParkPos& stand)
{
    lf_clearStand(ac, stand);
    for (const uint32_t index : stand.neighbours) {
        const auto beside = std::ranges::find_if(
            staticAcs, [index](const StaticAc& s) { return s.standId == index && s.fs == FsState::Active; });
        const ParkPos* neighbour = gf_stand(index);
        if (beside == staticAcs.end() || neighbour == nullptr ||
            !gf_wouldTouch(ac.radius, stand, beside->radius, *neighbour)) {
            continue;
        }
        lf_logTalkative(format("{:8}: {:8} removed by {} parking at adjacent stand {}", neighbour->id,
                               beside->callsign, ac.callsign, stand.id));
        removeAircraftFromSim(*beside, "an adjacent stand is taken");
    }
}

// --- the stand is taken

void try2Park(LiveAc& ac, bool wide)
{
    constexpr double kWide = 55.0 / kMetresPerNm;
    constexpr double kNarrow = 20.0 / kMetresPerNm;
    if (ac.stream.empty()) {
        logLine(format("{} empty sz?", "try2Park"));
        return;
    }
    const PosSample& last = ac.stream.back();
    if (last.lat == ac.lastParkLat && last.lon == ac.lastParkLon) {
        return;
    }
    ac.lastParkLat = last.lat;
    ac.lastParkLon = last.lon;
    const ParkPos* stand = gf_stand(standAtPosition(gf_positionOf(last), ac, wide ? kWide : kNarrow, wide));
    if (stand == nullptr || gf_keptForUser(*stand)) {
        return;
    }
    lf_removeHolder(ac, *stand);
    lf_removeNeighbours(ac, *stand);
    clearStandForLive(ac, *stand);
    gf_takeStand(ac, *stand);
    ac.stream.resize(1);
    ac.curve = Curve{};  // it led along the reports
    gf_setSt(ac, StState::Parking);
    drive2Stand(ac, *stand);
}

// Somebody else came first.
static bool lf_isTaken(const LiveAc& ac)
{
    const ParkPos* stand = gf_stand(ac.standId);
    return stand != nullptr && (stand->occupiedByLive ||
                                gf_holderOf(ac.standId, StState::Parked, StState::Parked, ac) != nullptr);
}

static void lf_park(LiveAc& ac)
{
    gf_setSt(ac, StState::Parked);
    ac.stamp = hourNow;
    if (ac.towed) {
        lf_logTalkative(format("          towed aircraft {} parks", logName(ac)));
    }
    ac.stream.front().stationary = true;
    gf_restartStandWatch(ac);
    parkedConfig(ac);
    lf_logTalkative(format("{:8}: {:8} arrived at stand", gf_standName(ac), ac.callsign));
    standChangeList.push_back(ac.hexid);
    if (!ac.airline.empty() && ac.soft == ac.cargo) {
        maxParkCheck(0);
    }
}

void arrivedAtStand(LiveAc& ac)
{
    constexpr double kAtStand = 2.0 / kMetresPerNm;
    if (lf_isTaken(ac)) {
        ParkPos* stand = gf_stand(ac.standId);
        const bool occupied = stand->occupiedByLive;
        ac.extendCount = 1;
        removeAircraftFromSim(ac, "its stand was taken");
        stand->occupiedByLive = occupied;  // not by this one
        return;
    }
    if (distNm({ac.lat, ac.lon}, {ac.standLat, ac.standLon}) > kAtStand) {
        gf_setSt(ac, StState::Taxi);
        return;
    }
    lf_park(ac);
}

// --- the stand is left

// Moved away so soon after its landing: nobody has boarded.
static bool lf_leavesTooSoon(const LiveAc& ac)
{
    constexpr int32_t kWeek = 604800 * kTicksPerSecond;
    constexpr int32_t kMinute = 60 * kTicksPerSecond;
    //                                                    Light Buzjets     Large         Heavy HighPerf Rotor
    static constexpr PerCategory<int32_t> kShortestStay{0, 15 * kMinute, 25 * kMinute, 60 * kMinute, 0, 0};
    // The front of a parked aircraft lies a week ahead of its arrival.
    const int32_t stay = tick - ac.stream.front().time + kWeek;
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
            ac.stream.front().time = tick + 1;
        }
        gf_endExtension(ac);
    }
    gf_releaseStand(ac);
}

void gf_restartStandWatch(LiveAc& ac)
{
    ac.parkedSince = tick;
    ac.standDistLast = 0;
    ac.growingDist = 0;
}

// --- how many stay

static bool lf_isParked(const LiveAc& ac)
{
    return ac.st == StState::Parked && ac.fs == FsState::Active;
}

static LiveAc* lf_longestParked()
{
    LiveAc* longest = nullptr;
    for (LiveAc& ac : liveAcs) {
        if (lf_isParked(ac) && (longest == nullptr || ac.parkedSince < longest->parkedSince)) {
            longest = &ac;
        }
    }
    return longest;
}

// Half hours since a stamp, the week running round.
static uint32_t lf_age(HourStamp stamp)
{
    constexpr uint32_t kSlotsPerWeek = 7 * kSlotsPerDay;
    const auto place = [](HourStamp s) { return s.day * static_cast<uint32_t>(kSlotsPerDay) + s.slot; };
    return (place(hourNow) + kSlotsPerWeek - place(stamp) % kSlotsPerWeek) % kSlotsPerWeek;
}

static void lf_removeOldestStatic(int64_t parked)
{
    const auto present = std::ranges::count_if(staticAcs, [](const StaticAc& s) {
        return s.fs == FsState::Active || s.fs == FsState::RemovingFromSim;
    });
    if (present + parked <= maxPark || staticAcs.empty()) {
        return;
    }
    const auto oldest =
        std::ranges::max_element(staticAcs, {}, [](const StaticAc& s) { return lf_age(s.stamp); });
    if (oldest->fs == FsState::Active) {
        removeAircraftFromSim(*oldest, "a live aircraft parks in its place");
    }
}

void maxParkCheck(int32_t extra)
{
    const auto parked = std::ranges::count_if(liveAcs, lf_isParked) + extra;
    if (!INITIAL_LOAD_ONLY.value && maxPark >= 1 && parked > maxPark) {
        if (LiveAc* longest = lf_longestParked()) {
            lf_logTalkative(
                format("{:}: {:8} max park exceeded, removed", gf_standName(*longest), longest->callsign));
            removeAircraftFromSim(*longest, "more parked than wanted");
        }
    }
    lf_removeOldestStatic(parked);
}

std::vector<ParkedStay> oldParkedRound()
{
    constexpr int32_t kMinute = 60 * kTicksPerSecond;
    std::vector<ParkedStay> stays;
    for (LiveAc& ac : liveAcs) {
        if (!lf_isParked(ac)) {
            continue;
        }
        const int32_t longest = (ac.category == AcCategory::Heavy ? 180 : 90) * kMinute;
        const int32_t stay = ac.liveAtStand ? 0 : tick - ac.parkedSince;
        if (stay > longest && !INITIAL_LOAD_ONLY.value) {
            removeAircraftFromSim(ac, "parked for long enough");
        } else {
            stays.push_back({ac.standId, stay / kMinute, gf_flightText(ac)});
        }
    }
    std::ranges::stable_sort(stays, {}, &ParkedStay::minutes);
    return stays;
}

void removeOldestParked(int32_t count)
{
    for (; count > 0; --count) {
        LiveAc* longest = lf_longestParked();
        if (longest == nullptr) {
            return;
        }
        lf_logTalkative(format("live parked {} at {} removed", longest->callsign, gf_standName(*longest)));
        removeAircraftFromSim(*longest, "fewer parked aircraft are wanted");
    }
}

void gf_flushParked()
{
    for (StaticAc& ac : staticAcs) {
        removeAircraftFromSim(ac, "the airport is out of sight");
    }
    for (LiveAc& ac : liveAcs) {
        if (ac.st == StState::Parked) {
            removeAircraftFromSim(ac, "the airport is out of sight");
        }
        gf_clearStandFields(ac);
    }
}

void clearReservedStand()
{
    const ParkPos* stand = gf_standById(reservedStand);
    if (reservedStand.empty() || stand == nullptr) {
        return;
    }
    const auto holds = [stand](const StaticAc& ac) {
        return ac.standId == stand->index && ac.fs == FsState::Active;
    };
    if (const auto s = std::ranges::find_if(staticAcs, holds); s != staticAcs.end()) {
        removeAircraftFromSim(*s, "the reserved stand stays free");
        return;
    }
    const auto live =
        std::ranges::find_if(liveAcs, [&](const LiveAc& ac) { return lf_isParked(ac) && holds(ac); });
    if (live != liveAcs.end()) {
        removeAircraftFromSim(*live, "the reserved stand stays free");
    }
}

}  // namespace vlt
