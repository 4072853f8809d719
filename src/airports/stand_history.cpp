#include "airports/stand_history.h"

#include "liveries/database.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace vlt {

static constexpr int32_t kSlots = static_cast<int32_t>(kSlotsPerDay);
static constexpr int32_t kDays = 7;

const std::string& gf_optionKey(const LiveAc& ac)
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

// --- options

static bool lf_isSame(const StandOption& a, const StandOption& b)
{
    return a.reg == b.reg && a.day == b.day && a.hours == b.hours && a.callsign == b.callsign;
}

int32_t addOption(ParkPos& stand, const LiveAc& ac, bool real, HourStamp stamp)
{
    StandOption option;
    option.reg = gf_optionKey(ac);
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

bool gf_isOneStay(HourStamp now, HourStamp seen, const LiveAc& ac)
{
    return lf_gap(now, seen, ac).has_value();
}

bool fillGap(HourStamp now, ParkPos& stand, Sighting& sighting, const LiveAc& ac, bool real)
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

}  // namespace vlt
