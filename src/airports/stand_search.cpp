#include "airports/stand_search.h"

#include "airports/loading.h"
#include "core/base/log.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "liveries/liveries.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>
#include <vector>

namespace vlt {

static constexpr double kFitTolerance = 1.8 / kMetresPerNm;  // a half span may exceed the radius by this
static constexpr double kFarAway = 900;                      // nm, farther than any stand

static bool lf_fits(const ParkPos& stand, const LiveAc& ac)
{
    return ac.radius - stand.radius <= kFitTolerance;
}

static bool lf_knowsFlight(const ParkPos& stand, const LiveAc& ac)
{
    return !ac.callsign.empty() && std::ranges::any_of(stand.options, [&ac](const StandOption& option) {
        return option.real && option.sequence != 0 &&
               (option.callsign == ac.callsign || option.coupledCs == ac.callsign ||
                (option.airline == ac.airline && option.type == ac.model));
    });
}

// --- the user's stand

static LatLon nearestAsked;        // [worker] of the last call; the null position: none
static std::string nearestAnswer;  // [worker]

void gf_forgetNearestStand()
{
    nearestAsked = {};
    nearestAnswer.clear();
}

const std::string& nearestStandId(LatLon position)
{
    static const std::string none;
    if (parkApf.stands.empty() || gf_isNullPosition(position)) {
        return none;
    }
    if (position == nearestAsked) {
        return nearestAnswer;
    }
    nearestAsked = position;
    nearestAnswer.clear();
    double nearest = kFarAway;
    for (const ParkPos& stand : parkApf.stands) {
        const double distance = distNm(position, gf_placeOf(stand));
        if (distance <= kStandReach && distance < nearest) {
            nearest = distance;
            nearestAnswer = stand.id;
        }
    }
    return nearestAnswer;
}

ParkPos* gf_standById(const std::string& id)
{
    const auto found = std::ranges::find(parkApf.stands, id, &ParkPos::id);
    return found == parkApf.stands.end() ? nullptr : &*found;
}

// --- the stand reached

// What the look over all stands finds.
struct Reached {
    ParkPos* nearest = nullptr;
    ParkPos* far = nullptr;
    ParkPos* enlarge = nullptr;
    double nearestDistance = kFarAway;
    double farDistance = kFarAway;
};

static void lf_look(ParkPos& stand, double distance, const LiveAc& ac, double searchRadius, bool allowFar,
                    Reached& reached)
{
    constexpr double kOnCentre = 20.0 / kMetresPerNm;  // close enough to take a stand too small
    constexpr double kFar = 85.0 / kMetresPerNm;       // with a history of this flight
    if (distance <= searchRadius && distance < reached.nearestDistance) {
        const bool fits = lf_fits(stand, ac);
        if (!fits && distance > kOnCentre) {
            return;
        }
        reached.nearest = &stand;
        reached.nearestDistance = distance;
        if (!fits) {
            reached.enlarge = &stand;
        }
    } else if (allowFar && reached.nearest == nullptr && distance <= kFar && distance < reached.farDistance &&
               lf_fits(stand, ac) && lf_knowsFlight(stand, ac)) {
        reached.far = &stand;
        reached.farDistance = distance;
    }
}

// The stand's radius is learned from an aircraft that stands on its centre and is larger.
static void lf_enlarge(ParkPos& stand, const LiveAc& ac)
{
    constexpr double kOverhang = 1.0 / kMetresPerNm;
    stand.radius = ac.radius - kOverhang;
    stand.radiusChanged = true;
    gf_findNeighbours(parkApf.stands);  // it reaches farther now
    updateCount = updateCount + 1;
}

uint32_t standAtPosition(LatLon position, const LiveAc& ac, double searchRadius, bool allowFar)
{
    Reached reached;
    for (ParkPos& stand : parkApf.stands) {
        if (stand.occupiedByLive == kNobody) {
            lf_look(stand, distNm(position, gf_placeOf(stand)), ac, searchRadius, allowFar, reached);
        }
    }
    ParkPos* stand = reached.nearest != nullptr ? reached.nearest : reached.far;
    if (stand == nullptr || stand->heli != (ac.category == AcCategory::Rotorcraft)) {
        return kNoStand;
    }
    if (stand == reached.enlarge) {
        lf_enlarge(*stand, ac);
    }
    return stand->index;
}

// --- the plausible stand

// A stand that would do.
struct Candidate {
    uint32_t stand = kNoStand;
    int32_t score = 0;     // smaller is a closer fit
    bool history = false;  // the flight, or its airline's type, was seen there
};

static bool lf_historyTakes(const ParkPos& stand, HourStamp stamp)
{
    return std::ranges::any_of(stand.options, [stamp](const StandOption& option) {
        return option.day == static_cast<int32_t>(stamp.day) && option.hours.test(stamp.slot);
    });
}

enum class Pass { Fitted, Loose };

// Smaller aircraft are told apart in finer steps. A loose pass counts whole nautical miles: all stands of
// a real size score alike.
static int32_t lf_score(const ParkPos& stand, const LiveAc& ac, Pass pass)
{
    constexpr double kFineUpTo = 17.8 / kMetresPerNm;
    constexpr double kFineStep = 14 / kMetresPerNm;
    constexpr double kCoarseStep = 21 / kMetresPerNm;
    if (pass == Pass::Loose) {
        return static_cast<int32_t>(std::lround(std::abs(ac.radius - stand.radius)));
    }
    const double step = ac.radius <= kFineUpTo ? kFineStep : kCoarseStep;
    return static_cast<int32_t>(std::lround((stand.radius - ac.radius) / step));
}

static std::vector<Candidate> lf_tryStands(HourStamp stamp, const LiveAc& ac, bool (*wanted)(const ParkPos&),
                                           Pass pass)
{
    constexpr int32_t kWorstScore = 100;
    std::vector<Candidate> candidates;
    int32_t best = kWorstScore;
    for (const ParkPos& stand : parkApf.stands) {
        if (!wanted(stand) || (pass == Pass::Fitted && !lf_fits(stand, ac))) {
            continue;
        }
        const int32_t score = lf_score(stand, ac, pass);
        if (score > best || lf_historyTakes(stand, stamp)) {
            continue;
        }
        best = score;
        candidates.push_back({stand.index, score, lf_knowsFlight(stand, ac)});
    }
    return candidates;
}

// Kinds of stands.

static bool lf_isHeli(const ParkPos& s)
{
    return s.heli;
}

static bool lf_isNoHeli(const ParkPos& s)
{
    return !s.heli;
}

static bool lf_isRamp(const ParkPos& s)
{
    return s.ramp;
}

static bool lf_isCargo(const ParkPos& s)
{
    return s.cargo && !s.heli;
}

static bool lf_isGate(const ParkPos& s)
{
    return !s.cargo && !s.heli && !s.ramp;
}

static bool lf_isPassengerRamp(const ParkPos& s)
{
    return !s.cargo && !s.heli && s.ramp;
}

// The kinds that an aircraft looks through, in order; the first that has candidates decides.
struct Look {
    bool (*wanted)(const ParkPos&);
    Pass pass;
};
// clang-format off
constexpr Look kForRotorcraft[] = {{lf_isHeli, Pass::Fitted},          {lf_isRamp, Pass::Fitted},
                                   {lf_isHeli, Pass::Loose},           {lf_isRamp, Pass::Loose}};
constexpr Look kForCargo[] =      {{lf_isCargo, Pass::Fitted},         {lf_isCargo, Pass::Loose},
                                   {lf_isNoHeli, Pass::Fitted},        {lf_isNoHeli, Pass::Loose}};
constexpr Look kForSmall[] =      {{lf_isPassengerRamp, Pass::Fitted}, {lf_isPassengerRamp, Pass::Loose}};
constexpr Look kGatesFirst[] =    {{lf_isGate, Pass::Fitted},          {lf_isGate, Pass::Loose},
                                   {lf_isPassengerRamp, Pass::Fitted}, {lf_isPassengerRamp, Pass::Loose}};
constexpr Look kRampsFirst[] =    {{lf_isPassengerRamp, Pass::Fitted}, {lf_isPassengerRamp, Pass::Loose},
                                   {lf_isGate, Pass::Fitted},          {lf_isGate, Pass::Loose}};
// clang-format on

static bool lf_looksAtGatesFirst()
{
    constexpr uint32_t kRampsFirstPercent = 10;
    return parkApf.code.starts_with('K') || gf_randomNumber() % 100 >= kRampsFirstPercent;
}

static std::span<const Look> lf_looksOf(const LiveAc& ac)
{
    if (ac.category == AcCategory::Rotorcraft) {
        return kForRotorcraft;
    }
    if (ac.cargo) {
        return kForCargo;
    }
    const bool airliner = ac.category == AcCategory::Large || ac.category == AcCategory::Heavy ||
                          ac.category == AcCategory::HighPerf;
    if (!airliner || ac.airline == kPrivateAirline) {
        return kForSmall;
    }
    if (lf_looksAtGatesFirst()) {
        return kGatesFirst;
    }
    return kRampsFirst;
}

static std::vector<Candidate> lf_findCandidates(HourStamp stamp, const LiveAc& ac)
{
    for (const Look& look : lf_looksOf(ac)) {
        if (std::vector<Candidate> found = lf_tryStands(stamp, ac, look.wanted, look.pass); !found.empty()) {
            return found;
        }
    }
    return {};
}

static HourStamp lf_nextHalfHour(HourStamp stamp)
{
    constexpr uint32_t kLastDay = 7;
    if (stamp.slot + 1 < kSlotsPerDay) {
        return {stamp.day, stamp.slot + 1};
    }
    return {stamp.day >= kLastDay ? 1 : stamp.day + 1, 0};
}

uint32_t chooseStand(HourStamp stamp, const LiveAc& ac, bool firstCall)
{
    constexpr size_t kSmallAirport = 10;
    std::vector<Candidate> candidates = lf_findCandidates(stamp, ac);
    if (candidates.empty()) {
        const bool again = firstCall && parkApf.stands.size() <= kSmallAirport;
        return again ? chooseStand(lf_nextHalfHour(stamp), ac, false) : kNoStand;
    }
    if (candidates.size() > 1) {
        gf_shuffle(candidates);
        std::ranges::stable_sort(candidates, [](const Candidate& a, const Candidate& b) {
            return a.history != b.history ? a.history : a.score < b.score;
        });
    }
    return candidates.front().stand;
}

// --- coupled call signs

// All slots within the window around the stamp's, on its day.
static HoursSet lf_window(HourStamp stamp, const LiveAc& ac)
{
    const uint32_t window = ac.category == AcCategory::Heavy ? 14 : 10;
    const uint32_t first = stamp.slot > window ? stamp.slot - window : 0;
    const uint32_t last = std::min<uint32_t>(stamp.slot + window, kSlotsPerDay - 1);
    HoursSet mask;
    for (uint32_t slot = first; slot <= last; ++slot) {
        mask.set(slot);
    }
    return mask;
}

void lf_searchForCoupledCsAroundThisTime(HourStamp stamp, LiveAc& ac)
{
    try {
        const HoursSet mask = lf_window(stamp, ac);
        std::string_view callsign = ac.callsign;
        if (callsign.ends_with('_')) {
            callsign.remove_suffix(1);
        }
        for (const ParkPos& stand : parkApf.stands) {
            for (const StandOption& option : stand.options) {
                if (option.sequence != 0 && option.day == static_cast<int32_t>(stamp.day) &&
                    (option.hours & mask).any() && option.airline == ac.airline &&
                    !option.coupledCs.empty() &&
                    (option.callsign == callsign || option.coupledCs == callsign)) {
                    ac.coupledCs1 = option.callsign;
                    ac.coupledCs2 = option.coupledCs;
                    return;
                }
            }
        }
    } catch (const std::exception& e) {
        logLine(format("lf_searchForCoupledCsAroundThisTime: {}", e.what()));
    }
}

}  // namespace vlt
