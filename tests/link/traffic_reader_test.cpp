#include "link/traffic_reader.h"

#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/random.h"
#include "core/base/run_state.h"
#include "support/feed_line.h"
#include "support/fresh_run.h"

#include <asio.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
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
    LineOutcome hear(const FeedLine& line)
    {
        gf_hear(line);
        return trafficReader.outcome;
    }
};

TEST_F(TrafficReaderTest, aReportComesOutAsItWentInHalfAMinuteAhead)
{
    // clang-format off
    const std::map<size_t, std::vector<std::string>> texts{
        {1,  {"10001", "4294967295"}},       {2,  {"46.9", "47.123456"}}, {3,  {"8", "7.654321"}},
        {5,  {"0", "-640"}},                 {7,  {"", "0", "271.5"}},    {8,  {"121", "450.5"}},
        {9,  {"BAW3AK", "null", "AB@C"}},    {10, {"A319", "B77W"}},      {12, {"null", "TLS"}},
        {13, {"null", "LHR"}},               {14, {"1717665811.8", "5"}}, {17, {"adsb_icao", "adsb_other"}},
        {20, {"-1", "-1", "431"}},           {28, {"A3", "", "null"}},    {25, {"-1", "0", "90", "360"}},
        {23, {"-1", "0", "1", "-12.5"}},     {4,  {"700", "2000", "2001", "5001", "10000", "20000", "20001"}}};
    // How fast they fly up there, for those that don't tell.
    const std::map<std::string, double> usualTas{{"700",   180}, {"2000",  180}, {"2001",  220}, {"5001", 250},
                                                 {"10000", 250}, {"20000", 350}, {"20001", 430}};
    // clang-format on
    const auto given = [](const std::string& text) { return text == "null" ? "" : text; };
    gf_seedRandom(3);
    for (int round = 0; round < 1000; ++round) {
        tick = 1000 + round;
        FeedLine line;
        std::map<size_t, std::string>& f = line.other;
        for (const auto& [place, choice] : texts) {
            f[place] = choice[gf_randomNumber() % choice.size()];
        }
        gf_hear(line);
        ASSERT_EQ(LineOutcome::Taken, trafficReader.outcome) << gf_feedText(line);
        const FeedRecord& r = feedQueue.back();
        const std::string callsign = f[9].find('@') == std::string::npos ? given(f[9]) : "";
        EXPECT_EQ(f[1] + callsign + f[10] + "G-DBCJ" + given(f[12]) + given(f[13]),
                  std::to_string(r.hexid) + r.callsign + r.model + r.regcode + r.origin + r.destination);
        const bool heading = f[17] == "adsb_icao" && f[25] != "-1";
        const double degrees = f[25] == "0" ? 360 : std::stod(f[25]);
        const bool roll = f[23] != "-1" && f[23] != "0";
        const double track = f[7].empty() || f[7] == "0" ? (heading ? degrees : 0) : std::stod(f[7]);
        const PosSample& sample = r.sample;
        const std::pair<double, double> numbers[] = {
            // clang-format off
            {std::stod(f[2]), sample.lat},      {std::stod(f[3]), sample.lon},   {std::stod(f[14]), r.timestamp},
            {std::stod(f[4]), sample.altitude}, {std::stod(f[8]), sample.speed}, {std::stod(f[5]), sample.vs},
            {heading ? degrees * kRadPerDeg : 0, sample.heading},                   {track, sample.track},
            {roll ? -std::stod(f[23]) * kRadPerDeg : 0, sample.roll},  // a left bank is positive in the simulator
            {f[20] == "-1" ? usualTas.at(f[4]) : 431, sample.tas},               {tick + 3000, sample.time},
            // clang-format on
        };
        for (const auto& [expected, taken] : numbers) {
            EXPECT_NEAR(expected, taken, 1e-9) << gf_feedText(line);
        }
        EXPECT_EQ(std::tuple(true, roll, heading, heading),
                  std::tuple(sample.airborne, sample.rollValid, sample.headingValid, sample.attitudeGiven));
    }
}

TEST_F(TrafficReaderTest, junkDropsTheLineWhereANumberIsReadAndCountsForNothingElsewhere)
{
    const std::set<size_t> numbers{1, 2, 3, 4, 5, 7, 8, 14, 20, 23, 25};
    for (size_t place = 0; place < 43; ++place) {
        for (const char* junk : {"", "x", "null", " 47", "1e400", "inf", "nan"}) {
            FeedLine line;
            line.other = {{17, "adsb_icao"}, {place, junk}};
            const bool fine = (place == 7 && *junk == '\0') || (place == 1 && *junk == '1');  // empty, "1"
            EXPECT_EQ(numbers.contains(place) && !fine, hear(line) == LineOutcome::Malformed)
                << place << ": \"" << junk << '"';
        }
    }
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
        {"hexid with a tail", {{1, "4198297x"}}, O::Taken},
        {"test transponder", {{9, "ERARMTR0"}}, O::Blacklisted},
        {"another", {{9, "AIRPORT1"}}, O::Blacklisted},
        {"no name at all", {{9, "null"}, {11, "null"}}, O::Nameless},
        {"@ and no tail", {{9, "AB@C"}, {11, "null"}}, O::Nameless},
        {"speed absurd", {{8, "1e300"}}, O::Malformed},
        {"heading beyond 360", {{17, "adsb_icao"}, {25, "360.1"}}, O::Malformed},
        {"heading unreadable, but not ours to read", {{25, "null"}}, O::Taken},
        {"on the ground, 5.01 nm from the park airport", {{2, "47.1835"}, {4, "0"}}, O::GroundFar},
        {"on the ground, 4.99 nm from it", {{2, "47.183166"}, {4, "0"}, {23, "12"}}, O::Taken},
    };
    trafficReader.setParkAirport(ParkAirportPlace{47.1, 8.0, 1400});
    FeedLine line;
    for (const auto& c : cases) {
        line.other = c.places;
        EXPECT_EQ(c.expected, hear(line)) << c.what << ": " << gf_outcomeText(trafficReader.outcome);
    }
    EXPECT_FALSE(feedQueue.back().sample.airborne || feedQueue.back().sample.rollValid);
    trafficReader.setParkAirport(std::nullopt);
    EXPECT_EQ(O::GroundNoPark, hear(line));
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
        {"half a foot too high for it", 590.5, 80, 500, 590.5},
        {"very slow", 620, 43, 500, 0},
        {"too high for any test", 620.1, 43, 500, 620.1},
        {"below the airport", 400, 300, 500, 0},
        {"elevation unknown, fast", 10, 40, std::nullopt, 10},
        {"elevation unknown, slow", 1000, 30, std::nullopt, 0},
        {"high airport, at its limit of judgement", 14000, 40, 13990, 14000},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, gf_groundedAltitude(c.altitude, c.speed, c.elevation)) << c.what;
    }
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

TEST_F(TrafficReaderTest, leavesOutEmptyAndGiantDatagramsAndWhereRealTrafficIsElsewhereRepetitions)
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
    trafficReader.packets = 0;
    for (const size_t size : {size_t{0}, kDatagramLimit, kDatagramLimit - 1}) {
        gf_hear(std::string(size, ','));
        EXPECT_EQ(size == kDatagramLimit - 1 ? 1 : 0, trafficReader.packets);
    }
}

TEST_F(TrafficReaderTest, aThousandReportsASecondAllComeInWithTheirMoment)
{
    using std::chrono::steady_clock, std::chrono::milliseconds;
    asio::io_context context;
    asio::ip::udp::socket sender(context, {asio::ip::address_v4::loopback(), 0});
    asio::ip::udp::endpoint there{asio::ip::address_v4::loopback(), 0};
    there.port(asio::ip::udp::socket(context, there).local_endpoint().port());  // one that is free
    std::jthread reader = startTrafficReader(there.port());
    while (trafficReader.state != FeedState::Receiving) {
        std::this_thread::yield();
    }
    constexpr int kLines = 2000;
    FeedLine line;
    const auto begin = steady_clock::now();
    for (int i = 0; i < kLines; ++i) {
        std::this_thread::sleep_until(begin + milliseconds(i));
        tick = static_cast<int32_t>((steady_clock::now() - begin) / milliseconds(10));
        line.timestamp = tick;
        sender.send_to(asio::buffer(gf_feedText(line)), there);
    }
    const auto taken = [] {
        const std::scoped_lock lock(feedMutex);
        return feedQueue.size();
    };
    while (taken() < kLines && steady_clock::now() < begin + std::chrono::seconds(30)) {
        std::this_thread::yield();
    }
    reader = {};
    ASSERT_EQ(kLines, feedQueue.size());
    const auto late = std::ranges::count_if(feedQueue, [](const FeedRecord& record) {
        return record.sample.time - kReplayDelayTicks > record.timestamp + 2;
    });
    EXPECT_LE(late, kLines / 20) << "20 ms, where others leave us the time";
    EXPECT_EQ(FeedState::Stopped, trafficReader.state);
}

TEST_F(TrafficReaderTest, dropsEveryTruncatedReportInSilence)
{
    const std::string report = gf_feedText(FeedLine{});
    const size_t complete = report.find("A3,") + 2;
    for (size_t length = 1; length < complete; ++length) {
        gf_hear(report.substr(0, length));
        // What is cut inside a number may be a number, but no report before its last field is whole.
        EXPECT_EQ(length + 1 == complete ? 1U : 0U, feedQueue.size()) << length;
    }
}

}  // namespace vlt
