#include "standin/builtin_day.h"

#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/day_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <set>

namespace vlt {

static BuiltinDay lf_day(uint64_t seed = 1)
{
    DayOptions options;
    options.seed = seed;
    options.world = "no such folder";
    return BuiltinDay(options);
}

static std::string lf_text(const std::vector<DayLine>& lines)
{
    std::string text;
    for (const DayLine& line : lines) {
        text += line.text + "\n";
    }
    return text;
}

// One line, read by its places.
struct Report {
    explicit Report(std::string_view line) : fields(gf_split(line, ',')) {}
    double number(size_t place) const
    {
        double value = std::nan("");
        const std::string_view text = fields.at(place);
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }
    std::string text(size_t place) const
    {
        return std::string(fields.at(place));
    }
    LatLon at() const
    {
        return {number(2), number(3)};
    }
    std::vector<std::string_view> fields;
};

TEST(BuiltinDay, isTheSameForTheSameSeedInAnyStretches)
{
    const BuiltinDay day = lf_day();
    const std::string whole = lf_text(day.lines(100, 160));
    EXPECT_EQ(whole, lf_text(lf_day().lines(100, 160)));
    EXPECT_NE(whole, lf_text(lf_day(2).lines(100, 160)));
    EXPECT_EQ(whole, lf_text(day.lines(100, 127.3)) + lf_text(day.lines(127.3, 160)));
}

TEST(BuiltinDay, writesWholeLinesOfNumbersInRangeAndGivesNobodysNameTwice)
{
    std::map<std::string, std::set<std::string>> hexidsOf;
    for (const DayLine& line : lf_day().lines(0, 1200)) {
        const Report report(line.text);
        ASSERT_EQ(43u, report.fields.size()) << line.text;
        for (const size_t place : {2, 3, 4, 5, 8, 14, 20, 23, 25}) {
            ASSERT_TRUE(std::isfinite(report.number(place))) << place << " of " << line.text;
        }
        ASSERT_LT(distNm(kDayAirport, report.at()), 90) << line.text;
        if (report.text(9) != "null") {
            hexidsOf[report.text(9)].insert(report.text(1));
        }
    }
    size_t ghosts = 0;
    for (const auto& [callsign, hexids] : hexidsOf) {
        EXPECT_EQ(1u, hexids.size()) << callsign;
        EXPECT_LE(callsign.size(), 9u) << callsign;
        ghosts += callsign.back() == '_';
    }
    EXPECT_GT(ghosts, 0u) << "some aircraft have a twin with _ behind their name";
}

TEST(BuiltinDay, movesAsItsReportsSay)
{
    constexpr double kNoiseKnots = 30;  // two positions a few metres off, two seconds apart
    int checked = 0;
    const std::vector<DayLine> lines = lf_day().lines(0, 900);
    std::map<std::string, const DayLine*> before;
    for (const DayLine& line : lines) {
        const Report b(line.text);
        const DayLine*& last = before[b.text(1)];
        const Report a(last == nullptr ? line.text : last->text);
        const double seconds = b.number(14) - a.number(14);
        if (last == nullptr || seconds > 0) {
            last = &line;
        }
        if (seconds < 2 || seconds > 12 || a.text(10) == "GRND") {
            continue;
        }
        ++checked;
        const double fastest = std::max(a.number(8), b.number(8));
        EXPECT_LT(distNm(a.at(), b.at()) / seconds * 3600, fastest + kNoiseKnots) << line.text;
        if (a.text(6) != "1" && b.text(6) != "1") {
            EXPECT_LT(std::abs(b.number(4) - a.number(4)) / seconds * 60, 4500) << line.text;
            const double turned = std::abs(std::remainder(b.number(7) - a.number(7), 360));
            EXPECT_FALSE(turned / seconds >= 12 && std::min(a.number(8), b.number(8)) > 40) << line.text;
        }
    }
    EXPECT_GT(checked, 5000);
}

TEST(BuiltinDay, landsOnTheRunwayAndParksAtAStandWithinItsTime)
{
    const LatLon threshold = gf_fieldPosition(kDayRunways[0].east);
    const double runway = bearing(threshold, gf_fieldPosition(kDayRunways[0].west));
    int landings = 0;
    for (const DayFlight& flight : lf_day().flights(0, 1200)) {
        const PathState& last = flight.journey.back();
        EXPECT_LT(last.time, kSchedules[static_cast<size_t>(flight.kind)].longest) << flight.callsign;
        if (flight.kind != FlightKind::Arrival) {
            continue;
        }
        ++landings;
        const auto touchdown =
            std::ranges::find_if(flight.journey, [](const PathState& s) { return s.feet <= 0; });
        ASSERT_NE(flight.journey.end(), touchdown);
        const LatLon at = gf_positionAround(touchdown->east, touchdown->north);
        EXPECT_LT(distNm(at, threshold) * 1852, 500) << flight.callsign;
        EXPECT_LT(gf_offLineFeet(threshold, runway, at), 20);
        EXPECT_NEAR(260, touchdown->heading * kDegPerRad, 1);
        double nearest = 1e9;
        for (const DayStand& stand : gf_dayStands()) {
            const EastNorth place = gf_eastNorth(stand.at);
            nearest = std::min(nearest, std::hypot(place.east - last.east, place.north - last.north));
        }
        EXPECT_LT(nearest, 2) << flight.callsign;
    }
    EXPECT_GE(landings, 5);
}

constexpr double kMetresPerSecond = 1852.0 / 3600;  // of a knot
const double kPi = std::acos(-1);

TEST(Journey, acceleratesEvenlyAndClimbsAsFastAsSlopeAndSpeedSay)
{
    // From 50 to 150 kt over 5000 m: the mean speed is 100 kt, so it takes 5000 / 51.44 s.
    const auto journey = gf_journey({{{{0, 0, 0, 50, 0}, {0, 5000, 0, 150, 0}}}});
    const double seconds = 5000 / (100 * kMetresPerSecond);
    EXPECT_NEAR(seconds, journey.back().time, 2 * kPathStep);
    EXPECT_NEAR(100, gf_stateAt(journey, seconds / 2).knots, 1);
    // 1000 ft in 6000 m at 120 kt: 97.2 s, 617 ft/min.
    const auto climb = gf_journey({{{{0, 0, 0, 120, 0}, {6000, 0, 0, 120, 1000}}}});
    EXPECT_NEAR(617, climb[20].climb, 1);
    EXPECT_NEAR(617, gf_stateAt(climb, 70).feet - gf_stateAt(climb, 10).feet, 1);
}

TEST(Journey, roundsACornerWithItsRadiusAndBanksForIt)
{
    constexpr double kRadius = 2000;
    const auto journey =
        gf_journey({{{{0, 0, 0, 200, 3000}, {0, 20000, kRadius, 200, 3000}, {20000, 20000, 0, 200, 3000}}}});
    // North, then a quarter circle about (2000, 18000), then east.
    double widest = 0;
    double bank = 0;
    for (const PathState& state : journey) {
        if (state.north > 18000.5 && state.east < 1999.5) {
            widest = std::max(widest, std::abs(std::hypot(state.east - 2000, state.north - 18000) - kRadius));
        }
        bank = std::max(bank, state.bank);
    }
    EXPECT_LT(widest, 1);
    EXPECT_NEAR(kPi / 2, journey.back().heading, 1e-6);
    const double speed = 200 * kMetresPerSecond;
    EXPECT_NEAR((18000 + kRadius * kPi / 2 + 18000) / speed, journey.back().time, 2 * kPathStep);
    EXPECT_NEAR(std::atan(speed * speed / 9.81 / kRadius), bank, 0.01) << "to the right, so positive";
}

}  // namespace vlt
