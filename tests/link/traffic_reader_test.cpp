#include "link/traffic_reader.h"

#include "core/clock.h"
#include "core/locks.h"
#include "core/parameters.h"
#include "core/run_state.h"
#include "support/feed_line.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>
#include <vector>

namespace vlt {

class TrafficReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        trafficReader.reset();
        trafficReader.lastDatagram.clear();
        trafficReader.setCentre({47.0, 8.0});
        trafficReader.setParkAirport(std::nullopt);
        trafficReader.collectCallsigns = false;
        LATERAL_RANGE.value = 40;
        gf_applyLateralRange();
        realTrafficHere = true;
        feedQueue.clear();
        intakeOpen = true;
    }
    void TearDown() override
    {
        feedQueue.clear();
        intakeOpen = false;
        realTrafficHere = false;
        trafficReader.setParkAirport(std::nullopt);
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
    const auto with = [](auto change) {
        FeedLine line;
        change(line);
        return line;
    };
    using O = LineOutcome;
    const struct {
        const char* what;
        FeedLine line;
        LineOutcome expected;
    } cases[] = {
        {"a vehicle, wherever it says so", with([](FeedLine& l) { l.other[16] = "A VEH"; }), O::Vehicle},
        {"null position", with([](FeedLine& l) { l.lat = 0.0005, l.lon = 0.01; }), O::NoPosition},
        {"beyond the pole", with([](FeedLine& l) { l.lat = 90.001; }), O::NoPosition},
        {"latitude not a number", with([](FeedLine& l) { l.other[2] = "nan"; }), O::Malformed},
        {"latitude hexadecimal, which reads as 0", with([](FeedLine& l) { l.other[2] = "0x2f"; }),
         O::OutOfRange},
        {"leading blank", with([](FeedLine& l) { l.other[2] = " 47.0"; }), O::Malformed},
        {"longitude overflows", with([](FeedLine& l) { l.other[3] = "1e400"; }), O::Malformed},
        {"39 nm north", with([](FeedLine& l) { l.lat = 47.65; }), O::Taken},
        {"41 nm north", with([](FeedLine& l) { l.lat = 47.684; }), O::OutOfRange},
        {"39 nm east", with([](FeedLine& l) { l.lon = 8.953; }), O::Taken},
        {"41 nm east", with([](FeedLine& l) { l.lon = 9.003; }), O::OutOfRange},
        {"tail of 12", with([](FeedLine& l) { l.tail = "ABCDEFGHIJKL"; }), O::Taken},
        {"tail of 13", with([](FeedLine& l) { l.tail = "ABCDEFGHIJKLM"; }), O::LongTail},
        {"no type", with([](FeedLine& l) { l.type = "null"; }), O::NoType},
        {"type 0", with([](FeedLine& l) { l.type = "0"; }), O::NoType},
        {"type ZZZZ", with([](FeedLine& l) { l.type = "ZZZZ"; }), O::NoType},
        {"surface vehicle by category", with([](FeedLine& l) { l.other[28] = "C2"; }), O::NoAircraft},
        {"glider by type", with([](FeedLine& l) { l.type = "GLID"; }), O::NoAircraft},
        {"the same without category", with([](FeedLine& l) { l.type = "GLID", l.other[28] = "null"; }),
         O::Taken},
        {"a type of five letters", with([](FeedLine& l) { l.type = "A3190"; }), O::NoAircraft},
        {"the same without category", with([](FeedLine& l) { l.type = "A3190", l.other[28] = ""; }),
         O::Taken},
        {"hexid 10000", with([](FeedLine& l) { l.hexid = 10000; }), O::LowHexid},
        {"hexid 10001", with([](FeedLine& l) { l.hexid = 10001; }), O::Taken},
        {"hexid overflows", with([](FeedLine& l) { l.other[1] = "4294967296"; }), O::Malformed},
        {"hexid with a tail", with([](FeedLine& l) { l.other[1] = "4198297x"; }), O::Taken},
        {"hexid without digits", with([](FeedLine& l) { l.other[1] = "x4198297"; }), O::Malformed},
        {"test transponder", with([](FeedLine& l) { l.callsign = "ERARMTR0"; }), O::Blacklisted},
        {"no name at all", with([](FeedLine& l) { l.callsign = "null", l.tail = "null"; }), O::Nameless},
        {"@ and no tail", with([](FeedLine& l) { l.callsign = "AB@C", l.tail = "null"; }), O::Nameless},
        {"on the ground, no park airport", with([](FeedLine& l) { l.altitude = 0; }), O::GroundNoPark},
        {"track empty", with([](FeedLine& l) { l.other[7] = ""; }), O::Taken},
        {"track unreadable", with([](FeedLine& l) { l.other[7] = "x"; }), O::Malformed},
        {"roll unreadable in the air", with([](FeedLine& l) { l.other[23] = "null"; }), O::Malformed},
        {"speed absurd", with([](FeedLine& l) { l.other[8] = "1e300"; }), O::Malformed},
        {"altitude infinite", with([](FeedLine& l) { l.other[4] = "inf"; }), O::Malformed},
        {"heading beyond 360", with([](FeedLine& l) { l.other[17] = "adsb_icao", l.other[25] = "360.1"; }),
         O::Malformed},
        {"heading unreadable, but not ours to read", with([](FeedLine& l) { l.other[25] = "null"; }),
         O::Taken},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, hear(c.line)) << c.what << ": " << gf_outcomeText(trafficReader.outcome);
    }
}

TEST(GroundedAltitude, followsHeightAndSpeed)
{
    const double unknown = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        double altitude, speed, elevation, expected;
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
        {"elevation unknown, fast", 10, 40, unknown, 10},
        {"elevation unknown, slow", 1000, 30, unknown, 0},
        {"a balloon high up", 20000, 35, 500, 0},
        {"high airport, at its limit of judgement", 14000, 40, 13990, 14000},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, gf_groundedAltitude(c.altitude, c.speed, c.elevation)) << c.what;
    }
}

TEST(EstimatedTas, stepsWithAltitude)
{
    EXPECT_EQ(180, gf_estimatedTas(2000));
    EXPECT_EQ(220, gf_estimatedTas(2001));
    EXPECT_EQ(250, gf_estimatedTas(10000));
    EXPECT_EQ(350, gf_estimatedTas(20000));
    EXPECT_EQ(430, gf_estimatedTas(20001));
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

TEST_F(TrafficReaderTest, keepsTheTimeStampOfDroppedLines)
{
    FeedLine line;
    line.lat = 10;
    line.timestamp = 1700000000.5;
    EXPECT_EQ(LineOutcome::OutOfRange, hear(line));
    EXPECT_DOUBLE_EQ(1700000000.5, lastTimestamp);
    line.other[14] = "soon";
    EXPECT_EQ(LineOutcome::Malformed, hear(line));
    EXPECT_DOUBLE_EQ(1700000000.5, lastTimestamp);
}

TEST_F(TrafficReaderTest, losesRecordsWhileTheIntakeIsClosed)
{
    intakeOpen = false;
    EXPECT_EQ(LineOutcome::NotOpen, hear(FeedLine{}));
    EXPECT_TRUE(feedQueue.empty());
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
    const std::string b = gf_feedText(other);
    const struct {
        const char* what;
        bool here;
        std::vector<std::string> heard;
        size_t taken;
    } cases[] = {
        {"repeated, here", true, {a, a}, 2},
        {"repeated, elsewhere", false, {a, a}, 1},
        {"in turns, here", true, {a, b, a}, 3},
        {"in turns, elsewhere", false, {a, b, a}, 3},
    };
    for (const auto& c : cases) {
        realTrafficHere = c.here;
        trafficReader.lastDatagram.clear();
        feedQueue.clear();
        for (const std::string& datagram : c.heard) {
            gf_hear(datagram);
        }
        EXPECT_EQ(c.taken, feedQueue.size()) << c.what;
    }
}

TEST_F(TrafficReaderTest, countsDatagramsAndIgnoresGiantOnes)
{
    std::string giant = gf_feedText(FeedLine{});
    giant.resize(kDatagramLimit, ',');
    trafficReader.takeDatagram(giant.size());
    EXPECT_EQ(0, trafficReader.packets);
    trafficReader.takeDatagram(0);
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
        trafficReader.datagram = {cut.data(), cut.size()};
        trafficReader.processDatagram();
        // What is cut inside a number may be a number, but no report before its last field is whole.
        EXPECT_EQ(length + 1 == complete ? 1U : 0U, feedQueue.size()) << length;
    }
}

}  // namespace vlt
