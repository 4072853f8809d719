#include "airports/learning.h"

#include "airports/stand_history.h"
#include "airports/stand_search.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <unordered_map>

namespace vlt {

static constexpr int32_t kSlots = static_cast<int32_t>(kSlotsPerDay);

// The slot in which an aircraft was last looked at for soft learning, by hexid.
static std::unordered_map<uint32_t, uint32_t, HexidHash> recentSoft;  // [worker]

static void lf_countUpdate()
{
    updateCount = updateCount + 1;
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
            option.reg != gf_optionKey(ac)) {
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

// Today has no option of its own yet, but its sighting tells where a stay over midnight began.
static bool lf_wasGuessedYesterday(const ParkPos& stand, const LiveAc& ac, HourStamp stamp)
{
    const auto sighting = stand.softSightings.find(ac.hexid);
    return sighting != stand.softSightings.end() && sighting->second.sequence > 0 &&
           sighting->second.stamp.day != stamp.day && gf_isOneStay(stamp, sighting->second.stamp, ac);
}

static bool lf_learnSoft(ParkPos& stand, const LiveAc& ac, bool known, HourStamp stamp, bool leaving)
{
    const OwnOptions own = lf_ownOptions(stand, ac, stamp, false);
    if (own.archiveDenies) {
        return false;
    }
    if (own.lacking != nullptr && !known && !leaving) {
        own.lacking->hours.set(stamp.slot);
    } else if (own.lacking != nullptr || own.holding != nullptr || lf_wasGuessedYesterday(stand, ac, stamp)) {
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
        return stand != nullptr && !gf_optionKey(ac).empty() && learn(*stand);
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
