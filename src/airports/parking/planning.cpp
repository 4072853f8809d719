#include "airports/parking/planning.h"

#include "core/base/log.h"
#include "core/base/parameters.h"

#include <algorithm>

namespace vlt {

static constexpr int32_t kSlots = static_cast<int32_t>(kSlotsPerDay);
static constexpr int32_t kDays = 7;
static constexpr int32_t kWeek = kDays * kSlots;

// --- time

static int32_t lf_place(HourStamp stamp)
{
    return (static_cast<int32_t>(stamp.day) - 1) * kSlots + static_cast<int32_t>(stamp.slot);
}

HourStamp gf_halfHoursBefore(HourStamp stamp, int32_t halfHours)
{
    const int32_t place = ((lf_place(stamp) - halfHours) % kWeek + kWeek) % kWeek;
    return {static_cast<uint32_t>(place / kSlots) + 1, static_cast<uint32_t>(place % kSlots)};
}

bool gf_isOfDay(const StandOption& option, uint32_t day)
{
    return WEEK.value || option.day == static_cast<int32_t>(day);
}

bool gf_runsOn(const ParkPos& stand, const StandOption& option, HourStamp now)
{
    const HourStamp next = gf_halfHoursBefore(now, -1);
    if (next.day == now.day) {
        return option.hours.test(next.slot);
    }
    return std::ranges::any_of(stand.options, [&](const StandOption& o) {
        return o.sequence > 0 && gf_isOfDay(o, next.day) && o.airline == option.airline &&
               o.type == option.type && o.hours.test(0);
    });
}

// --- call signs

bool gf_isSameCallsign(std::string_view a, std::string_view b)
{
    a = a.substr(0, a.size() - (a.ends_with('*') ? 1 : 0));
    b = b.substr(0, b.size() - (b.ends_with('*') ? 1 : 0));
    return !a.empty() && a == b;
}

std::string lf_detcs(const PlanEntry& entry)
{
    std::string callsign = entry.stays ? entry.callsign : entry.coupledCs;
    if (callsign.empty()) {
        callsign = entry.stays ? entry.coupledCs : entry.callsign;
    }
    if (callsign.empty()) {
        logLine("lf_detcs callsign is empty..");
        return {};
    }
    while (callsign.ends_with('_')) {
        callsign.pop_back();
    }
    return callsign.ends_with('*') ? callsign : callsign + "*";
}

}  // namespace vlt
