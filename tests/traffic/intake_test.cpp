#include "traffic/intake.h"

#include "core/parameters.h"
#include "support/aircraft.h"
#include "support/world.h"
#include "traffic/performance.h"
#include "traffic/stream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

namespace vlt {

class IntakeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_clearTables();
        gf_loadSmallWorld();
        parkAirport.reset();
    }
    void TearDown() override
    {
        gf_clearTables();
        gf_clearWorld();
        parkAirport.reset();
        LIGHT_AIRCRAFT.value = true;
    }

    static FeedRecord record(double timestamp)
    {
        FeedRecord r;
        r.hexid = 20001;
        r.model = "A319";
        r.callsign = "BAW3AK";
        r.timestamp = timestamp;
        r.sample = gf_airSample(tick + 3000);
        return r;
    }
    static void take(const FeedRecord& r)
    {
        feedQueue.push_back(r);
        EXPECT_TRUE(feedIntake());
    }
    static LiveAc& known()
    {
        return liveAcs.front();
    }
};

TEST_F(IntakeTest, anUnknownAircraftStartsInTheBuffer)
{
    EXPECT_FALSE(feedIntake());
    take(record(1000));
    ASSERT_EQ(1U, liveAcs.size());
    EXPECT_EQ(FsState::Buffer, known().fs);
    EXPECT_EQ(StState::Birth, known().st);
    EXPECT_EQ(AcCategory::Large, known().category);
    EXPECT_EQ("BAW3AK", known().coupledCs1);
    EXPECT_EQ(1U, known().stream.size());
    EXPECT_NEAR(0.07 * std::numbers::pi / 180, known().turnRate, 1e-12);
    const double rotate = -known().rotatePitch * 180 / std::numbers::pi;
    EXPECT_NEAR(0.15, std::abs(rotate - 6.0), 1e-9) << "2.5 percent more or less";
}

TEST_F(IntakeTest, onlyWantedAndKnownTypesComeIn)
{
    const struct {
        const char* what;
        std::function<void(FeedRecord&)> change;
        size_t expected;
    } cases[] = {
        {"known type", [](FeedRecord&) {}, 1},
        {"unknown type", [](FeedRecord& r) { r.model = "ZZZ9"; }, 0},
        {"light, switched off", [](FeedRecord& r) { r.model = "C172", LIGHT_AIRCRAFT.value = false; }, 0},
        {"light, switched on", [](FeedRecord& r) { r.model = "C172", LIGHT_AIRCRAFT.value = true; }, 1},
        {"within 120 ft of the airport's level",
         [](FeedRecord& r) {
             parkAirport = ParkAirportPlace{47, 8, 1500};
             r.sample.altitude = 1620;
         },
         0},
        {"above that", [](FeedRecord& r) { r.sample.altitude = 1621; }, 1},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        FeedRecord r = record(1000);
        c.change(r);
        take(r);
        EXPECT_EQ(c.expected, liveAcs.size()) << c.what;
    }
}

TEST_F(IntakeTest, aSecondAddressOfTheSameFlightIsDropped)
{
    take(record(1000));
    FeedRecord twin = record(1001);
    twin.hexid = 20002;
    take(twin);
    EXPECT_EQ(1U, liveAcs.size());
    twin.model = "B738";
    take(twin);
    EXPECT_EQ(2U, liveAcs.size()) << "another type is another aircraft";
}

TEST_F(IntakeTest, dropsWhatTellsNothingNew)
{
    const struct {
        const char* what;
        double dt, lastSpeed, speed, trackChange, moved;  // s, kt, kt, degrees, nm
        bool airborne;
        bool kept;
    } cases[] = {
        {"same time", 0, 300, 300, 0, 0.5, true, false},
        {"a second later", 1.0, 300, 300, 90, 0.5, true, false},
        {"in a turn", 1.1, 300, 300, 1.1, 0.1, true, true},
        {"straight, 440 m", 2.85, 300, 300, 0.9, 0.24, true, false},
        {"straight, 470 m", 3.05, 300, 300, 0.9, 0.25, true, true},
        {"slow in the air", 1.5, 119, 119, 0, 0.05, true, true},
        {"track through north", 2, 300, 300, -359.5, 0.2, true, false},
        {"speed grows tenfold", 20, 10, 100, 0, 1, true, false},
        {"speed falls to a tenth", 20, 100, 10, 0, 1, true, false},
        {"from standing to 80", 20, 5, 80, 0, 1, true, false},
        {"from standing to 79", 20, 5, 79, 0, 1, true, true},
    };
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.feedTime = 1000;
        ac.stream.back().speed = c.lastSpeed;
        FeedRecord r = record(1000 + c.dt);
        r.sample = gf_eastOf(ac.stream.back(), c.moved);
        r.sample.time += 500;
        r.sample.speed = c.speed;
        r.sample.track += c.trackChange;
        r.sample.airborne = c.airborne;
        take(r);
        EXPECT_EQ(c.kept ? 3U : 2U, liveAcs.front().stream.size()) << c.what;
    }
}

TEST_F(IntakeTest, lateNamesReachAnAircraftInTheBuffer)
{
    FeedRecord nameless = record(1000);
    nameless.callsign.clear();
    nameless.regcode = "G-ABCD";
    take(nameless);
    FeedRecord named = record(1010);
    named.sample = gf_eastOf(named.sample, 1);
    named.origin = "EGLL";
    take(named);
    EXPECT_EQ("BAW3AK", known().callsign);
    EXPECT_EQ("G-ABCD", known().regcode) << "an empty text replaces nothing";
    EXPECT_EQ("EGLL", known().origin);
    EXPECT_EQ(2U, known().stream.size());
}

TEST_F(IntakeTest, streamsStayInOrderWhateverTheFeedSays)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    for (int i = 1; i <= 5; ++i) {
        PosSample s = gf_eastOf(ac.stream.back(), 0.5);
        s.time = ac.stream.front().time;
        decodeExisting(ac, s);
    }
    ASSERT_EQ(7U, ac.stream.size());
    for (size_t i = 1; i < ac.stream.size(); ++i) {
        EXPECT_LT(ac.stream[i - 1].time, ac.stream[i].time);
    }
}

TEST_F(IntakeTest, anEndlessStreamRemovesTheAircraft)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    while (ac.stream.size() < 200) {
        decodeExisting(ac, gf_eastOf(ac.stream.back(), 0.5));
    }
    decodeExisting(ac, gf_eastOf(ac.stream.back(), 0.5));
    EXPECT_EQ(FsState::Active, ac.fs) << "200 and the one that comes are allowed";
    decodeExisting(ac, gf_eastOf(ac.stream.back(), 0.5));
    EXPECT_EQ(FsState::RemovingFromSim, ac.fs);
}

TEST_F(IntakeTest, standingInTheAirIsNoise)
{
    LiveAc& ac = gf_addFlying(20001, "BAW3AK");
    const PosSample last = ac.stream.back();
    for (const double degrees : {0.0, 0.0001}) {
        PosSample jitter = last;
        jitter.lat += degrees;
        jitter.time += 100;
        decodeExisting(ac, jitter);
        EXPECT_EQ(2U, ac.stream.size()) << degrees;
    }
    PosSample real = last;
    real.lat += 0.0002;
    decodeExisting(ac, real);
    EXPECT_EQ(3U, ac.stream.size());
}

TEST_F(IntakeTest, jitterOnTheGroundIsStandingStill)
{
    LiveAc& ac = gf_addBuffered(20001, "BAW3AK");
    for (PosSample& s : ac.stream) {
        s.airborne = false;
        s.altitude = 0;
        s.speed = 3;
    }
    PosSample jitter = ac.stream.back();
    jitter.lat += 0.0001;
    decodeExisting(ac, jitter);
    ASSERT_EQ(3U, ac.stream.size());
    EXPECT_TRUE(ac.stream[2].stationary);
    EXPECT_EQ(0, ac.stream[2].speed);
    EXPECT_EQ(ac.stream[1].lat, ac.stream[2].lat);
}

}  // namespace vlt
