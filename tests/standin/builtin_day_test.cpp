#include "standin/builtin_day.h"

#include "core/text.h"
#include "standin/day_airport.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <map>
#include <set>

namespace vlt {

static DayOptions lf_options(uint64_t seed = 1)
{
    DayOptions options;
    options.seed = seed;
    options.world = "no such folder";
    return options;
}

static std::string lf_text(const std::vector<DayLine>& lines)
{
    std::string text;
    for (const DayLine& line : lines) {
        text += line.text + "\n";
    }
    return text;
}

static double lf_number(std::string_view text)
{
    double value = std::nan("");
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// One line, read by its places.
struct Report {
    std::string hexid, callsign, type, reg;
    LatLon at;
    double stamp, altitude, climb, knots, track;
    bool onGround;
};

static Report lf_report(const std::string& line)
{
    const auto f = gf_split(line, ',');
    return {std::string(f[1]),
            std::string(f[9]),
            std::string(f[10]),
            std::string(f[11]),
            {lf_number(f[2]), lf_number(f[3])},
            lf_number(f[14]),
            lf_number(f[4]),
            lf_number(f[5]),
            lf_number(f[8]),
            lf_number(f[7]),
            f[6] == "1"};
}

static std::map<std::string, std::vector<Report>> lf_byAircraft(const std::vector<DayLine>& lines)
{
    std::map<std::string, std::vector<Report>> reports;
    for (const DayLine& line : lines) {
        Report report = lf_report(line.text);
        auto& list = reports[report.hexid];
        if (list.empty() || list.back().stamp < report.stamp) {
            list.push_back(std::move(report));
        }
    }
    return reports;
}

TEST(BuiltinDay, isTheSameForTheSameSeedAndAnotherForAnother)
{
    const std::string once = lf_text(BuiltinDay(lf_options()).lines(0, 60));
    EXPECT_EQ(once, lf_text(BuiltinDay(lf_options()).lines(0, 60)));
    EXPECT_NE(once, lf_text(BuiltinDay(lf_options(2)).lines(0, 60)));
}

TEST(BuiltinDay, comesInStretchesWithoutASeam)
{
    const BuiltinDay day(lf_options());
    const std::string whole = lf_text(day.lines(100, 160));
    EXPECT_EQ(whole, lf_text(day.lines(100, 127.3)) + lf_text(day.lines(127.3, 160)));
}

TEST(BuiltinDay, writesWholeLinesOfNumbersInRange)
{
    const auto lines = BuiltinDay(lf_options()).lines(0, 300);
    ASSERT_GT(lines.size(), 1000u);
    for (const DayLine& line : lines) {
        const auto fields = gf_split(line.text, ',');
        ASSERT_EQ(43u, fields.size()) << line.text;
        for (const int place : {2, 3, 4, 5, 8, 14, 20, 23, 25}) {
            ASSERT_TRUE(std::isfinite(lf_number(fields[place]))) << place << " of " << line.text;
        }
        ASSERT_LT(distNm(kDayAirport, lf_report(line.text).at), 90) << line.text;
    }
}

TEST(BuiltinDay, hasFortyAircraftInRangeAtAnyTime)
{
    const BuiltinDay day(lf_options());
    for (const double from : {0.0, 600.0, 3000.0}) {
        std::set<std::string> heard;
        for (const DayLine& line : day.lines(from, from + 120)) {
            const Report report = lf_report(line.text);
            if (report.type != "GRND" && distNm(kDayAirport, report.at) < 40) {
                heard.insert(report.hexid);
            }
        }
        EXPECT_GE(heard.size(), 40u) << "from second " << from;
    }
}

TEST(BuiltinDay, movesAsItsReportsSay)
{
    constexpr double kNoiseKnots = 30;  // two positions a few metres off, two seconds apart
    int checked = 0;
    for (const auto& [hexid, reports] : lf_byAircraft(BuiltinDay(lf_options()).lines(0, 900))) {
        for (size_t i = 1; i < reports.size(); ++i) {
            const Report& a = reports[i - 1];
            const Report& b = reports[i];
            const double seconds = b.stamp - a.stamp;
            if (seconds < 2 || seconds > 12 || a.type == "GRND") {
                continue;
            }
            ++checked;
            const double moved = distNm(a.at, b.at) / seconds * 3600;
            EXPECT_LT(moved, std::max(a.knots, b.knots) + kNoiseKnots) << a.callsign << " at " << a.stamp;
            const double climb = (b.altitude - a.altitude) / seconds * 60;
            if (!a.onGround && !b.onGround) {
                EXPECT_LT(std::abs(climb), 4500) << a.callsign << " at " << a.stamp;
                const double turned = std::abs(angleDiff(a.track * kRadPerDeg, b.track * kRadPerDeg));
                if (std::isfinite(turned) && std::min(a.knots, b.knots) > 40) {
                    EXPECT_LT(turned * kDegPerRad / seconds, 12) << a.callsign << " at " << a.stamp;
                }
            }
        }
    }
    EXPECT_GT(checked, 5000);
}

TEST(BuiltinDay, givesNobodysNameTwice)
{
    std::map<std::string, std::set<std::string>> hexidsOf;
    for (const DayLine& line : BuiltinDay(lf_options()).lines(0, 1200)) {
        const Report report = lf_report(line.text);
        if (report.callsign != "null") {
            hexidsOf[report.callsign].insert(report.hexid);
        }
    }
    size_t ghosts = 0;
    for (const auto& [callsign, hexids] : hexidsOf) {
        EXPECT_EQ(1u, hexids.size()) << callsign;
        ghosts += callsign.back() == '_';
        EXPECT_LE(callsign.size(), 9u) << callsign;
    }
    EXPECT_GT(ghosts, 0u) << "some aircraft have a twin with _ behind their name";
}

TEST(BuiltinDay, landsOnTheRunwayAndParksAtAStand)
{
    const BuiltinDay day(lf_options());
    const std::vector<DayStand> stands = gf_dayStands();
    int landings = 0;
    for (const DayFlight& flight : day.flights(0, 1200)) {
        if (flight.kind != FlightKind::Arrival) {
            continue;
        }
        ++landings;
        const DayRunway& runway = kDayRunways[0];
        for (const PathState& state : flight.journey) {
            if (state.feet <= 0) {  // the moment of touchdown
                const LatLon at = gf_positionAround(state.east, state.north);
                EXPECT_LT(distNm(at, gf_fieldPosition(runway.east)) * 1852, 500) << flight.callsign;
                EXPECT_LT(
                    gf_offLineFeet(gf_fieldPosition(runway.east),
                                   bearing(gf_fieldPosition(runway.east), gf_fieldPosition(runway.west)), at),
                    20);
                EXPECT_NEAR(260, state.heading * kDegPerRad, 1);
                break;
            }
        }
        const PathState& last = flight.journey.back();
        double nearest = 1e9;
        for (const DayStand& stand : stands) {
            const EastNorth at = gf_eastNorth(stand.at);
            nearest = std::min(nearest, std::hypot(at.east - last.east, at.north - last.north));
        }
        EXPECT_LT(nearest, 2) << flight.callsign;
    }
    EXPECT_GE(landings, 5);
}

TEST(BuiltinDay, lastsNoLongerThanItsTimetableAllows)
{
    const BuiltinDay day(lf_options());
    for (const DayFlight& flight : day.flights(0, 3600)) {
        const KindSchedule& schedule = kSchedules[static_cast<size_t>(flight.kind)];
        EXPECT_LT(flight.journey.back().time, schedule.longest) << flight.callsign;
    }
}

}  // namespace vlt
