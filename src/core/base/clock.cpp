#include "core/base/clock.h"

#include "core/base/text.h"

#include <array>
#include <chrono>

namespace vlt {

using Seconds = std::chrono::sys_seconds;

static int64_t lf_now()
{
    return std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now())
        .time_since_epoch()
        .count();
}

static std::string lf_timeOfDayText(int64_t epochSeconds)
{
    const Seconds time{std::chrono::seconds(epochSeconds)};
    const std::chrono::hh_mm_ss clock(time - std::chrono::floor<std::chrono::days>(time));
    return format("{:02}:{:02}:{:02}", clock.hours().count(), clock.minutes().count(),
                  clock.seconds().count());
}

std::string gf_dateText(int64_t epochSeconds)
{
    static constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto days = std::chrono::floor<std::chrono::days>(Seconds{std::chrono::seconds(epochSeconds)});
    const std::chrono::year_month_day date(days);
    const std::chrono::weekday weekday(days);
    return format("{:3} {:3} {:02} {} {:4}", kDays[weekday.c_encoding()],
                  kMonths[static_cast<unsigned>(date.month()) - 1], static_cast<unsigned>(date.day()),
                  lf_timeOfDayText(epochSeconds), static_cast<int>(date.year()));
}

std::string nowString()
{
    return gf_dateText(lf_now());
}

std::string timeOfDayString()
{
    return lf_timeOfDayText(lf_now());
}

int64_t gf_trafficTime()
{
    // A stamp beyond the calendar is no time: the feed may send any number.
    constexpr double kLatest = 4102444800.0;  // 2100-01-01
    const double stamp = lastTimestamp;
    if (simTimeMode && stamp > 0 && stamp < kLatest) {
        return static_cast<int64_t>(stamp);
    }
    return lf_now();
}

HourStamp gf_hourStamp(int64_t epochSeconds)
{
    constexpr int64_t kSecondsPerDay = 86400;
    constexpr int64_t kSecondsPerSlot = 1800;
    const Seconds time{std::chrono::seconds(epochSeconds)};
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const int64_t second = (time - days).count();
    // The day stays that of the calendar: only the slot looks half a minute ahead.
    const int64_t slot = (second + 30) % kSecondsPerDay / kSecondsPerSlot;
    return {std::chrono::weekday(days).iso_encoding(), static_cast<uint32_t>(slot)};
}

HourStamp weekHourStamp()
{
    return gf_hourStamp(gf_trafficTime());
}

}  // namespace vlt
