// Calendar time: the clock strings of the log, and the half hour of the week by which stands are learned.
//
// Any thread. The traffic clock follows the feed while `simTimeMode` is on, so that a replayed day
// parks that day's aircraft.
#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <string>

namespace vlt {

// A half hour of the week.
struct HourStamp {
    uint32_t day = 1;   // 1 Monday to 7 Sunday
    uint32_t slot = 0;  // 0 to 47, half hours of the UTC day
    auto operator<=>(const HourStamp&) const = default;
};

inline constexpr size_t kSlotsPerDay = 48;

inline std::atomic<bool> simTimeMode{false};  // [atomic] a replay: the traffic clock runs on the feed's time
inline std::atomic<double> lastTimestamp{0.0};  // [atomic] Traffic Reader: of the last line, s since 1970

// Now in UTC as "Sun Nov 22 21:16:31 2026".
std::string nowString();
// The same for a given time, in seconds since 1970.
std::string gf_dateText(int64_t epochSeconds);
// Now in UTC as "21:16:31".
std::string timeOfDayString();

// The traffic clock, seconds since 1970.
int64_t gf_trafficTime();
// The half hour of the traffic clock; a new one begins 30 s before the full and the half hour.
HourStamp weekHourStamp();
// The same for a given time.
HourStamp gf_hourStamp(int64_t epochSeconds);

}  // namespace vlt
