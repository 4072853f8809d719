#include "core/base/hours.h"

#include <gtest/gtest.h>

namespace vlt {

// Seconds since 1970 of 2024-06-06 00:00:00 UTC, a Thursday.
constexpr int64_t kThursday = 1717632000;

constexpr int64_t lf_at(int days, int hours, int minutes, int seconds)
{
    return kThursday + days * 86400 + hours * 3600 + minutes * 60 + seconds;
}

TEST(HourStamp, beginsHalfAMinuteBeforeTheHalfHour)
{
    const struct {
        int days, hours, minutes, seconds;
        uint32_t day, slot;
    } cases[] = {
        // clang-format off
        {0,  0,  0,  0, 4,  0}, {0, 11, 29, 29, 4, 22}, {0, 11, 29, 30, 4, 23}, {0, 11, 59, 29, 4, 23},
        {0, 11, 59, 30, 4, 24}, {0, 23, 59, 29, 4, 47}, {0, 23, 59, 30, 4,  0}, {3, 12,  0,  0, 7, 24},
        {4,  0,  0,  0, 1,  0},
        // clang-format on
    };
    for (const auto& c : cases) {
        const int64_t time = lf_at(c.days, c.hours, c.minutes, c.seconds);
        EXPECT_EQ(c.day, gf_hourStamp(time).day) << gf_dateText(time);
        EXPECT_EQ(c.slot, gf_hourStamp(time).slot) << gf_dateText(time);
    }
}

TEST(Clock, writesDatesAsTheLogDoes)
{
    EXPECT_EQ("Thu Jun 06 09:23:31 2024", gf_dateText(lf_at(0, 9, 23, 31)));
}

TEST(Clock, trafficTimeFollowsTheFeedOnlyInSimTimeMode)
{
    lastTimestamp = static_cast<double>(kThursday);
    EXPECT_GT(gf_trafficTime(), kThursday);
    simTimeMode = true;
    EXPECT_EQ(kThursday, gf_trafficTime());
    for (const double noTime : {0.0, -5.0, 1e300}) {
        lastTimestamp = noTime;
        EXPECT_GT(gf_trafficTime(), kThursday) << noTime;
    }
    simTimeMode = false;
    lastTimestamp = 0.0;
}

TEST(Hours, readAndWriteLists)
{
    std::string all = "0";
    for (int slot = 1; slot < 48; ++slot) {
        all += "," + std::to_string(slot);
    }
    const std::pair<std::string, std::string> cases[] = {
        {"0,47", "0,47"}, {"48, 3,-1,x,3.5,,12", "3,12"}, {all, all}};
    for (const auto& [text, expected] : cases) {
        HoursSet hours;
        hoursToSet(text, hours);
        EXPECT_EQ(expected, setToHours(hours));
    }
}

}  // namespace vlt
