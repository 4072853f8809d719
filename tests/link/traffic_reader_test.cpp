#include "link/traffic_reader.h"

#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "support/feed_line.h"
#include "support/fresh_run.h"

#include <gtest/gtest.h>

#include <map>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

class TrafficReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        trafficReader.lastDatagram.clear();
        trafficReader.setCentre({47.0, 8.0});
        trafficReader.collectCallsigns = false;
        realTrafficHere = true;
        intakeOpen = true;
    }
    void TearDown() override
    {
        gf_freshRun();
        realTrafficHere = false;
    }

    LineOutcome hear(const FeedLine& line)
    {
        gf_hear(line);
        return trafficReader.outcome;
    }
};

TEST_F(TrafficReaderTest, takesAReportAndStampsItHalfAMinuteAhead)
{
    tick = 1234;
    FeedLine line;
    line.vs = -640;
    line.other = {{23, "-12.5"}, {20, "431"}};
    ASSERT_EQ(LineOutcome::Taken, hear(line));
    ASSERT_EQ(1U, feedQueue.size());
    const FeedRecord& record = feedQueue.front();
    EXPECT_EQ(4198297U, record.hexid);
    EXPECT_EQ("BAW3AK", record.callsign);
    EXPECT_EQ("A319", record.model);
    EXPECT_EQ("G-DBCJ", record.regcode);
    EXPECT_EQ("TLS", record.origin);
    EXPECT_EQ("LHR", record.destination);
    EXPECT_EQ(1234 + 3000, record.sample.time);
    EXPECT_TRUE(record.sample.airborne);
    EXPECT_DOUBLE_EQ(-640, record.sample.vs);
    EXPECT_DOUBLE_EQ(431, record.sample.tas);
    // The feed counts a left bank as negative, the simulator as positive.
    EXPECT_TRUE(record.sample.rollValid);
    EXPECT_NEAR(12.5 * std::numbers::pi / 180, record.sample.roll, 1e-12);
}

TEST_F(TrafficReaderTest, judgesWhatLinesAreAircraft)
{
    using O = LineOutcome;
    const struct {
        const char* what;
        std::map<size_t, std::string> places;
        LineOutcome expected;
    } cases[] = {
        {"a vehicle, wherever it says so", {{16, "A VEH"}}, O::Vehicle},
        {"null position", {{2, "0.0005"}, {3, "0.01"}}, O::NoPosition},
        {"beyond the pole", {{2, "90.001"}}, O::NoPosition},
        {"latitude not a number", {{2, "nan"}}, O::Malformed},
        {"latitude hexadecimal, which reads as 0", {{2, "0x2f"}}, O::OutOfRange},
        {"leading blank", {{2, " 47.0"}}, O::Malformed},
        {"longitude overflows", {{3, "1e400"}}, O::Malformed},
        {"39 nm north", {{2, "47.65"}}, O::Taken},
        {"41 nm north", {{2, "47.684"}}, O::OutOfRange},
        {"39 nm east", {{3, "8.953"}}, O::Taken},
        {"41 nm east", {{3, "9.003"}}, O::OutOfRange},
        {"tail of 12", {{11, "ABCDEFGHIJKL"}}, O::Taken},
        {"tail of 13", {{11, "ABCDEFGHIJKLM"}}, O::LongTail},
        {"no type", {{10, "null"}}, O::NoType},
        {"type 0", {{10, "0"}}, O::NoType},
        {"type ZZZZ", {{10, "ZZZZ"}}, O::NoType},
        {"surface vehicle by category", {{28, "C2"}}, O::NoAircraft},
        {"glider by type", {{10, "GLID"}}, O::NoAircraft},
        {"the same without category", {{10, "GLID"}, {28, "null"}}, O::Taken},
        {"a type of five letters", {{10, "A3190"}}, O::NoAircraft},
        {"the same without category", {{10, "A3190"}, {28, ""}}, O::Taken},
        {"hexid 10000", {{1, "10000"}}, O::LowHexid},
        {"hexid 10001", {{1, "10001"}}, O::Taken},
        {"hexid overflows", {{1, "4294967296"}}, O::Malformed},
        {"hexid with a tail", {{1, "4198297x"}}, O::Taken},
        {"hexid without digits", {{1, "x4198297"}}, O::Malformed},
        {"test transponder", {{9, "ERARMTR0"}}, O::Blacklisted},
        {"no name at all", {{9, "null"}, {11, "null"}}, O::Nameless},
        {"@ and no tail", {{9, "AB@C"}, {11, "null"}}, O::Nameless},
        {"on the ground, no park airport", {{4, "0"}}, O::GroundNoPark},
        {"track empty", {{7, ""}}, O::Taken},
        {"track unreadable", {{7, "x"}}, O::Malformed},
        {"roll unreadable in the air", {{23, "null"}}, O::Malformed},
        {"speed absurd", {{8, "1e300"}}, O::Malformed},
        {"altitude infinite", {{4, "inf"}}, O::Malformed},
        {"heading beyond 360", {{17, "adsb_icao"}, {25, "360.1"}}, O::Malformed},
        {"heading unreadable, but not ours to read", {{25, "null"}}, O::Taken},
    };
    for (const auto& c : cases) {
        FeedLine line;
        line.other = c.places;
        EXPECT_EQ(c.expected, hear(line)) << c.what << ": " << gf_outcomeText(trafficReader.outcome);
    }
}

TEST(GroundedAltitude, followsHeightAndSpeed)
{
    const struct {
        const char* what;
        double altitude, speed;
        std::optional<double> elevation;
        double expected;
    } cases[] = {
        {"below zero", -20, 250, 500, 0},
        {"low and fast", 545, 120, 500, 0},
        {"low and too fast", 545, 120.1, 500, 545},
        {"just above the first height", 545.1, 120, 500, 545.1},
        {"slow and low", 560, 75, 500, 0},
        {"slow, too high for its speed", 600, 75, 500, 600},
        {"very slow", 620, 43, 500, 0},
        {"too high for any test", 620.1, 43, 500, 620.1},
        {"below the airport", 400, 300, 500, 0},
        {"elevation unknown, fast", 10, 40, std::nullopt, 10},
        {"elevation unknown, slow", 1000, 30, std::nullopt, 0},
        {"a balloon high up", 20000, 35, 500, 0},
        {"high airport, at its limit of judgement", 14000, 40, 13990, 14000},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, gf_groundedAltitude(c.altitude, c.speed, c.elevation)) << c.what;
    }
}

TEST(EstimatedTas, stepsWithAltitude)
{
    for (const auto& [altitude, tas] :
         {std::pair{2000, 180}, {2001, 220}, {10000, 250}, {20000, 350}, {20001, 430}}) {
        EXPECT_EQ(tas, gf_estimatedTas(altitude)) << altitude;
    }
}

TEST_F(TrafficReaderTest, takesGroundReportsNearTheParkAirportOnly)
{
    trafficReader.setParkAirport(ParkAirportPlace{47.1, 8.0, 1400});
    FeedLine line;
    line.altitude = 0;
    line.lat = 47.1 + 4.99 / 60;
    EXPECT_EQ(LineOutcome::Taken, hear(line));
    EXPECT_FALSE(feedQueue.back().sample.airborne);
    EXPECT_FALSE(feedQueue.back().sample.rollValid);
    line.lat = 47.1 + 5.01 / 60;
    EXPECT_EQ(LineOutcome::GroundFar, hear(line));
    line.altitude = 20000;
    EXPECT_EQ(LineOutcome::Taken, hear(line)) << "in the air it does not matter";
}

TEST_F(TrafficReaderTest, readsTheHeadingOfFullTransponderReports)
{
    FeedLine line;
    line.track = 0;
    line.other = {{17, "adsb_icao"}, {25, "0"}};
    ASSERT_EQ(LineOutcome::Taken, hear(line));
    EXPECT_DOUBLE_EQ(2 * std::numbers::pi, feedQueue.back().sample.heading);
    EXPECT_DOUBLE_EQ(360, feedQueue.back().sample.track) << "a track of 0 takes the heading";
    line.other[25] = "-1";
    ASSERT_EQ(LineOutcome::Taken, hear(line));
    EXPECT_FALSE(feedQueue.back().sample.headingValid);
    line.other = {{17, "adsb_other"}, {25, "90"}};
    ASSERT_EQ(LineOutcome::Taken, hear(line));
    EXPECT_FALSE(feedQueue.back().sample.headingValid) << "others' headings are not believed";
}

TEST_F(TrafficReaderTest, anAtSignCostsTheCallSignOnly)
{
    FeedLine line;
    line.callsign = "@@@@@@@@";
    ASSERT_EQ(LineOutcome::Taken, hear(line));
    EXPECT_TRUE(feedQueue.back().callsign.empty());
    EXPECT_EQ("G-DBCJ", feedQueue.back().regcode);
}

TEST_F(TrafficReaderTest, keepsTheTimeStampOfDroppedLinesAndLosesThemWhileTheIntakeIsClosed)
{
    FeedLine line;
    line.timestamp = 1700000000.5;
    intakeOpen = false;
    EXPECT_EQ(LineOutcome::NotOpen, hear(line));
    EXPECT_TRUE(feedQueue.empty());
    line.lat = 10;
    line.timestamp = 1700000001.5;
    EXPECT_EQ(LineOutcome::OutOfRange, hear(line));
    EXPECT_DOUBLE_EQ(1700000001.5, lastTimestamp);
    line.other[14] = "soon";
    EXPECT_EQ(LineOutcome::Malformed, hear(line));
    EXPECT_DOUBLE_EQ(1700000001.5, lastTimestamp);
}

TEST_F(TrafficReaderTest, collectsCallSignsOfTheWholeRange)
{
    FeedLine line;
    hear(line);
    trafficReader.collectCallsigns = true;
    for (const char* callsign : {"KLM12", "null", "AB@C", "BAW1_", "KLM12"}) {
        line.callsign = callsign;
        line.type = "null";
        EXPECT_EQ(LineOutcome::NoType, hear(line));
    }
    EXPECT_EQ((std::set<std::string, std::less<>>{"KLM12", "BAW1_"}), trafficReader.callsignsHeard);
}

TEST_F(TrafficReaderTest, leavesOutRepetitionsOnlyWhenRealTrafficIsElsewhere)
{
    const std::string a = gf_feedText(FeedLine{});
    FeedLine other;
    other.callsign = "KLM12";
    for (const bool here : {true, false}) {
        realTrafficHere = here;
        for (const std::string& datagram : {a, a, gf_feedText(other), a}) {
            gf_hear(datagram);
        }
        EXPECT_EQ(here ? 4U : 3U, feedQueue.size()) << "only the one in a row";
        feedQueue.clear();
    }
}

TEST_F(TrafficReaderTest, countsDatagramsAndIgnoresGiantOnes)
{
    std::string giant = gf_feedText(FeedLine{});
    giant.resize(kDatagramLimit, ',');
    gf_hear(giant);
    EXPECT_EQ(0, trafficReader.packets);
    gf_hear("");
    EXPECT_EQ(0, trafficReader.packets);
    gf_hear(std::string(kDatagramLimit - 1, ','));
    EXPECT_EQ(1, trafficReader.packets);
    EXPECT_EQ(LineOutcome::Malformed, trafficReader.outcome);
}

TEST_F(TrafficReaderTest, dropsEveryTruncatedReportInSilence)
{
    const std::string report = gf_feedText(FeedLine{});
    const size_t complete = report.find("A3,") + 2;
    for (size_t length = 1; length < complete; ++length) {
        // A fresh buffer of the exact size each time, so that a sanitizer sees a read past the end.
        const std::vector<char> cut(report.begin(), report.begin() + static_cast<std::ptrdiff_t>(length));
        trafficReader.take({cut.data(), cut.size()});
        // What is cut inside a number may be a number, but no report before its last field is whole.
        EXPECT_EQ(length + 1 == complete ? 1U : 0U, feedQueue.size()) << length;
    }
}

}  // namespace vlt
