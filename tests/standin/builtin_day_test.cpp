#include "standin/builtin_day.h"

#include "core/base/text.h"
#include "standin/day_airport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace vlt {

static BuiltinDay lf_day(uint64_t seed = 1)
{
    return BuiltinDay({.seed = seed, .world = "no such folder"});
}

static std::string lf_text(const std::vector<DayLine>& lines)
{
    std::string text;
    for (const DayLine& line : lines) {
        text += line.text + "\n";
    }
    return text;
}

// The number at a place of a line; none elsewhere.
static double lf_number(const std::vector<std::string_view>& places, size_t place)
{
    double value = std::nan("");
    const std::string_view text = places.at(place);
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

TEST(BuiltinDay, isTheSameForTheSameSeedInAnyStretches)
{
    const BuiltinDay day = lf_day();
    const std::string whole = lf_text(day.lines(100, 160));
    EXPECT_EQ(whole, lf_text(lf_day().lines(100, 160)));
    EXPECT_NE(whole, lf_text(lf_day(2).lines(100, 160)));
    EXPECT_EQ(whole, lf_text(day.lines(100, 127.3)) + lf_text(day.lines(127.3, 160)));
}

TEST(BuiltinDay, itsLinesAreWholeAndOfAircraftThatMoveAsTheySay)
{
    constexpr double kNoiseKnots = 30;  // two positions a few metres off, two seconds apart
    const std::vector<DayLine> lines = lf_day().lines(0, 1200);
    std::map<std::string_view, std::vector<std::string_view>> before;
    int moved = 0;
    for (const DayLine& line : lines) {
        SCOPED_TRACE(line.text);
        const std::vector<std::string_view> b = gf_split(line.text, ',');
        ASSERT_EQ(43u, b.size());
        for (const size_t place : {2, 3, 4, 5, 8, 14, 20, 23, 25}) {
            ASSERT_TRUE(std::isfinite(lf_number(b, place))) << place;
        }
        const LatLon at{lf_number(b, 2), lf_number(b, 3)};
        ASSERT_LT(distNm(kDayAirport, at), 90);
        const auto a = before.contains(b[1]) ? before[b[1]] : b;
        const double seconds = lf_number(b, 14) - lf_number(a, 14);
        before.insert_or_assign(b[1], seconds < 0 ? a : b);
        if (seconds < 2 || seconds > 12 || b[10] == "GRND") {
            continue;
        }
        ++moved;
        const auto [slower, faster] = std::minmax({lf_number(a, 8), lf_number(b, 8)});
        const double knots = distNm({lf_number(a, 2), lf_number(a, 3)}, at) / seconds * 3600;
        EXPECT_LT(knots, faster + kNoiseKnots);
        if (a[6] != "1" && b[6] != "1") {
            EXPECT_LT(std::abs(lf_number(b, 4) - lf_number(a, 4)) / seconds * 60, 4500);
            const double turned = std::abs(std::remainder(lf_number(b, 7) - lf_number(a, 7), 360));
            EXPECT_TRUE(turned / seconds < 12 || slower <= 40) << turned;
        }
    }
    EXPECT_GT(moved, 5000);
}

}  // namespace vlt
