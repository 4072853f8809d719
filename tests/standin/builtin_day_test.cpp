#include "standin/builtin_day.h"

#include <gtest/gtest.h>

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

TEST(BuiltinDay, isTheSameForTheSameSeedInAnyStretches)
{
    const BuiltinDay day = lf_day();
    const std::string whole = lf_text(day.lines(100, 160));
    EXPECT_EQ(whole, lf_text(lf_day().lines(100, 160)));
    EXPECT_NE(whole, lf_text(lf_day(2).lines(100, 160)));
    EXPECT_EQ(whole, lf_text(day.lines(100, 127.3)) + lf_text(day.lines(127.3, 160)));
}

}  // namespace vlt
