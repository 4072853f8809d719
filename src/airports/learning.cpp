#include "airports/learning.h"

#include "airports/stand_search.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace vlt {

static constexpr int32_t kSlots = static_cast<int32_t>(kSlotsPerDay);
static constexpr int32_t kDays = 7;

// The slot in which an aircraft was last looked at for soft learning, by hexid.
static std::unordered_map<uint32_t, uint32_t, HexidHash> recentSoft;  // [worker]

static const std::string& lf_keyOf(const LiveAc& ac)
{
    return ac.regcode.empty() ? ac.callsign : ac.regcode;
}

static std::string_view lf_withoutGhostMark(std::string_view callsign)
{
    if (callsign.ends_with('_')) {
        callsign.remove_suffix(1);
    }
    return callsign;
}

static void lf_countUpdate()
{
    updateCount = updateCount + 1;
}

// --- options

static bool lf_isSame(const StandOption& a, const StandOption& b)
{
    return a.reg == b.reg && a.day == b.day && a.hours == b.hours && a.callsign == b.callsign;
}

// The new option's sequence number, or 0: there is nothing to add.
static int32_t addOption(ParkPos& stand, const LiveAc& ac, bool real, HourStamp stamp)
{
    StandOption option;
    option.reg = lf_keyOf(ac);
    if (option.reg.empty()) {
        return 0;
    }
    option.callsign = lf_withoutGhostMark(ac.callsign);
    option.hours.set(stamp.slot);
    option.day = static_cast<int32_t>(stamp.day);
    option.real = real;
    option.archived = false;
    const RegRecord* known = findRegcode(option.reg);
    option.airline = known != nullptr ? gf_airlineOf(*known) : ac.airline;
    option.type = known != nullptr ? known->type : ac.model;
    if (std::ranges::any_of(stand.options, [&](const StandOption& o) { return lf_isSame(o, option); })) {
        return 0;
    }
    // By place, not by the last one's number: that one may be switched off.
    option.sequence = static_cast<int32_t>(stand.options.size()) + 1;
    stand.options.push_back(std::move(option));
    return stand.options.back().sequence;
}

// The option with this number, also while it is switched off; nullptr for 0.
static StandOption* lf_option(ParkPos& stand, int32_t sequence)
{
    const bool exists = sequence > 0 && sequence <= static_cast<int32_t>(stand.options.size());
    return exists ? &stand.options[static_cast<size_t>(sequence) - 1] : nullptr;
}

// The flight that came in and the one that goes out stand in one option.
static void coupleCallsign(ParkPos& stand, int32_t sequence, std::string_view callsign)
{
    callsign = lf_withoutGhostMark(callsign);
    StandOption* option = lf_option(stand, sequence);
    if (callsign.empty() || option == nullptr) {
        return;
    }
    if (option->callsign.empty()) {
        option->callsign = callsign;
    } else if (callsign != option->callsign) {
        option->coupledCs = callsign;
    }
}

// --- gaps

static int32_t lf_window(const LiveAc& ac)
{
    return ac.cargo ? 12 : ac.category == AcCategory::Heavy ? 8 : 6;
}

// The half hours from the sighting to now; none if they are too many to believe in.
static std::optional<int32_t> lf_gap(HourStamp now, HourStamp seen, const LiveAc& ac)
{
    const int32_t slots = static_cast<int32_t>(now.slot) - static_cast<int32_t>(seen.slot);
    const bool nextDay = now.day == seen.day % kDays + 1;
    if (now.day != seen.day && !nextDay) {
        return std::nullopt;
    }
    const int32_t gap = now.day == seen.day ? (slots + kSlots) % kSlots : slots + kSlots;
    return gap >= 1 && gap < lf_window(ac) ? std::optional(gap) : std::nullopt;
}

// Sets `count` slots from `last` back, as far as they lie in the option's day.
static void lf_setBack(StandOption* option, int32_t last, int32_t count)
{
    for (int32_t slot = last; option != nullptr && slot > last - count && slot >= 0; --slot) {
        if (slot < kSlots) {
            option->hours.set(static_cast<size_t>(slot));
        }
    }
}

// It was here before and is here now, so it was here all the time between. False if that isn't believable.
static bool fillGap(HourStamp now, ParkPos& stand, Sighting& sighting, const LiveAc& ac, bool real)
{
    if (sighting.sequence == 0) {
        return true;
    }
    const std::optional<int32_t> gap = lf_gap(now, sighting.stamp, ac);
    if (!gap) {
        return false;
    }
    const auto slot = static_cast<int32_t>(now.slot);
    if (now.day == sighting.stamp.day) {
        lf_setBack(lf_option(stand, sighting.sequence), slot, *gap);
        coupleCallsign(stand, sighting.sequence, ac.callsign);
    } else {
        const int32_t today = addOption(stand, ac, real, now);
        if (today != 0) {
            lf_setBack(lf_option(stand, today), slot, *gap);
            lf_setBack(lf_option(stand, sighting.sequence), slot + kSlots, *gap);
            coupleCallsign(stand, today, ac.callsign);
            coupleCallsign(stand, sighting.sequence, ac.callsign);
        }
        sighting.sequence = today;
    }
    sighting.stamp = now;
    return true;
}

// --- a stand's use

// What of a stand's history tells of this aircraft today.
struct OwnOptions {
    bool archiveDenies = false;      // the archive knows when it stands here, and this isn't it
    StandOption* lacking = nullptr;  // the first learned one without the slot
    StandOption* holding = nullptr;  // and with it
};

static OwnOptions lf_ownOptions(ParkPos& stand, const LiveAc& ac, HourStamp stamp, bool real)
{
    OwnOptions own;
    for (StandOption& option : stand.options) {
        if (option.sequence == 0 || option.real != real || option.day != static_cast<int32_t>(stamp.day) ||
            option.reg != lf_keyOf(ac)) {
            continue;
        }
        const bool holds = option.hours.test(stamp.slot);
        own.archiveDenies = own.archiveDenies || (option.archived && !holds);
        StandOption*& first = holds ? own.holding : own.lacking;
        if (!option.archived && first == nullptr) {
            first = &option;
        }
    }
    return own;
}

// `lf_keyOf` isn't empty; false when the archive knows better.
static bool lf_learnReal(ParkPos& stand, const LiveAc& ac, HourStamp stamp, bool leaving)
{
    const OwnOptions own = lf_ownOptions(stand, ac, stamp, true);
    if (own.archiveDenies) {
        return false;
    }
    Sightings& seen = stand.realSightings;
    if (leaving) {
        // A stay over midnight has no option of today yet, but its sighting tells where it began.
        const auto sighting = seen.find(ac.hexid);
        const bool isNew = sighting == seen.end() || sighting->second.stamp == stamp;
        if (isNew ? own.lacking == nullptr || sighting == seen.end()
                  : !fillGap(stamp, stand, sighting->second, ac, true)) {
            addOption(stand, ac, true, stamp);
        }
        seen.erase(ac.hexid);
    } else if (own.lacking != nullptr) {
        own.lacking->hours.set(stamp.slot);
    } else {
        const int32_t sequence = addOption(stand, ac, true, stamp);
        seen[ac.hexid] = {stamp, sequence};
    }
    lf_countUpdate();
    return true;
}

static void lf_learnSoftAgain(ParkPos& stand, const LiveAc& ac, HourStamp stamp, bool leaving)
{
    Sightings& seen = stand.softSightings;
    const auto sighting = seen.find(ac.hexid);
    if (sighting == seen.end()) {
        const int32_t sequence = addOption(stand, ac, false, stamp);
        if (!leaving) {
            seen[ac.hexid] = {stamp, sequence};
        }
        return;
    }
    const bool filled = sighting->second.stamp == stamp || fillGap(stamp, stand, sighting->second, ac, false);
    if (!filled && leaving) {
        addOption(stand, ac, false, stamp);
    }
    if (!filled || leaving) {
        seen.erase(ac.hexid);
    }
}

static bool lf_learnSoft(ParkPos& stand, const LiveAc& ac, bool known, HourStamp stamp, bool leaving)
{
    const OwnOptions own = lf_ownOptions(stand, ac, stamp, false);
    if (own.archiveDenies) {
        return false;
    }
    if (own.lacking != nullptr && !known && !leaving) {
        own.lacking->hours.set(stamp.slot);
    } else if (own.lacking != nullptr || own.holding != nullptr) {
        lf_learnSoftAgain(stand, ac, stamp, leaving);
    } else if (const int32_t sequence = addOption(stand, ac, false, stamp); sequence > 0) {
        stand.softSightings[ac.hexid] = {stamp, sequence};
    }
    lf_countUpdate();
    return true;
}

template <typename Learn>
static bool lf_tried(const char* name, uint32_t standIndex, const LiveAc& ac, HourStamp stamp,
                     const Learn& learn)
{
    try {
        ParkPos* stand = gf_stand(standIndex);
        return stand != nullptr && !lf_keyOf(ac).empty() && learn(*stand);
    } catch (const std::exception& e) {
        logLine(format("{}: hh_now: {}, {}", name, stamp.slot, e.what()));
        return false;
    }
}

bool lf_addRealStandOption(uint32_t standIndex, const LiveAc& ac, HourStamp stamp, bool leaving)
{
    return lf_tried("lf_addRealStandOption", standIndex, ac, stamp,
                    [&](ParkPos& stand) { return lf_learnReal(stand, ac, stamp, leaving); });
}

bool lf_addSoftStandOption(uint32_t standIndex, const LiveAc& ac, bool known, HourStamp stamp, bool leaving)
{
    return lf_tried("lf_addSoftStandOption", standIndex, ac, stamp,
                    [&](ParkPos& stand) { return lf_learnSoft(stand, ac, known, stamp, leaving); });
}

bool gf_registerStandUse(const LiveAc& ac, bool leaving)
{
    if (ac.airline.empty() || ac.soft != ac.cargo) {
        return false;
    }
    if (lf_addRealStandOption(ac.standId, ac, hourNow, leaving)) {
        recentSoft[ac.hexid] = hourNow.slot;
    }
    return true;
}

// --- guesses

// Low enough, near enough, and the airport needs it.
static bool lf_mayGuess(const LiveAc& ac, bool stillOnGround)
{
    constexpr double kLow = 2500;  // feet above ground
    return LEARN_SOFT.value && softLearningAllowed && parkAirport && !parkApf.stands.empty() &&
           distNm(gf_placeOf(ac), gf_placeOf(*parkAirport)) <= kAirportRadius &&
           (stillOnGround || ac.agl < kLow) && ac.standId == kNoStand;
}

// The first stand at which it was guessed to be, at another time; kNoStand for none.
static uint32_t lf_guessedBefore(const LiveAc& ac)
{
    for (const ParkPos& stand : parkApf.stands) {
        if (const auto seen = stand.softSightings.find(ac.hexid); seen != stand.softSightings.end()) {
            return seen->second.stamp != hourNow ? stand.index : kNoStand;
        }
    }
    return kNoStand;
}

// True for one that was looked at a short while ago; else this is its look.
static bool lf_lookedAtLately(const LiveAc& ac)
{
    constexpr uint32_t kAgainAfter = 3;  // slots
    const auto [look, isNew] = recentSoft.try_emplace(ac.hexid, hourNow.slot);
    const auto slots = static_cast<uint32_t>(kSlots);
    if (!isNew && (hourNow.slot + slots - look->second) % slots < kAgainAfter) {
        return true;
    }
    look->second = hourNow.slot;
    return false;
}

// A stand's history has seen it around this time today.
static bool lf_isKnownAround(const LiveAc& ac)
{
    const size_t before = (hourNow.slot + kSlotsPerDay - 1) % kSlotsPerDay;
    const size_t after = (hourNow.slot + 1) % kSlotsPerDay;
    return !ac.regcode.empty() && std::ranges::any_of(parkApf.stands, [&](const ParkPos& stand) {
        return std::ranges::any_of(stand.options, [&](const StandOption& o) {
            return o.real && o.day == static_cast<int32_t>(hourNow.day) && o.reg == ac.regcode &&
                   (o.hours.test(hourNow.slot) || o.hours.test(before) || o.hours.test(after));
        });
    });
}

void offerSoftLearning(const LiveAc& ac, bool stillOnGround)
{
    if (!lf_mayGuess(ac, stillOnGround)) {
        return;
    }
    const uint32_t before = lf_guessedBefore(ac);
    if (before != kNoStand && lf_addSoftStandOption(before, ac, true, hourNow, !stillOnGround)) {
        recentSoft[ac.hexid] = hourNow.slot;
        return;
    }
    if (lf_lookedAtLately(ac) || lf_isKnownAround(ac)) {
        return;
    }
    const uint32_t chosen = chooseStand(hourNow, ac, true);
    if (chosen != kNoStand && !lf_addSoftStandOption(chosen, ac, false, hourNow, !stillOnGround)) {
        recentSoft.erase(ac.hexid);
    }
}

void noteCargoStand(LiveAc& ac)
{
    ParkPos* stand = gf_stand(ac.standId);
    if (stand == nullptr || !ac.cargo || stand->cargo) {
        return;
    }
    stand->cargo = true;
    stand->cargoChanged = true;
    ac.soft = true;  // its stand is one for freighters now
    lf_countUpdate();
    logLine(format("{} stand: {}, cargo attribute set to true, {} parked here", parkApf.code, stand->id,
                   logName(ac)));
}

void gf_forgetSoftLearning()
{
    recentSoft.clear();
}

}  // namespace vlt
