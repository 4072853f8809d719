#include "traffic/intake.h"

#include "core/base/parameters.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
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
        gf_freshRun();
        gf_loadSmallWorld();
    }
    void TearDown() override
    {
        gf_freshRun();
        gf_clearWorld();
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
};

TEST_F(IntakeTest, anUnknownAircraftStartsInTheBuffer)
{
    EXPECT_FALSE(feedIntake());
    take(record(1000));
    FeedRecord twin = record(1001);
    twin.hexid = 20002;
    take(twin);
    ASSERT_EQ(1U, liveAcs.size()) << "a second address of the same flight is dropped";
    const LiveAc& known = liveAcs.front();
    EXPECT_EQ(FsState::Buffer, known.fs);
    EXPECT_EQ(AcCategory::Large, known.category);
    EXPECT_EQ(1U, known.stream.size());
    EXPECT_NEAR(0.07 * std::numbers::pi / 180, known.turnRate, 1e-12);
    const double rotate = -known.rotatePitch * 180 / std::numbers::pi;
    EXPECT_NEAR(0.15, std::abs(rotate - 6.0), 1e-9) << "2.5 percent more or less";
    twin.model = "B738";
    take(twin);
    EXPECT_EQ(2U, liveAcs.size()) << "another type is another aircraft";
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
        {"within 120 ft of the airport", [](FeedRecord& r) { r.sample.altitude = 1620; }, 0},
        {"above that", [](FeedRecord& r) { r.sample.altitude = 1621; }, 1},
    };
    parkAirport = ParkAirportPlace{47, 8, 1500};
    for (const auto& c : cases) {
        liveAcs.clear();
        FeedRecord r = record(1000);
        c.change(r);
        take(r);
        EXPECT_EQ(c.expected, liveAcs.size()) << c.what;
    }
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
    FeedRecord r = record(1000);
    r.callsign.clear();
    r.regcode = "G-ABCD";
    take(r);
    r = record(1010);
    r.sample = gf_eastOf(r.sample, 1);
    r.origin = "EGLL";
    take(r);
    const LiveAc& known = liveAcs.front();
    EXPECT_EQ("BAW3AK", known.callsign);
    EXPECT_EQ("G-ABCD", known.regcode) << "an empty text replaces nothing";
    EXPECT_EQ("EGLL", known.origin);
    EXPECT_EQ(2U, known.stream.size());
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
    while (ac.stream.size() <= 200) {
        decodeExisting(ac, gf_eastOf(ac.stream.back(), 0.5));
    }
    EXPECT_EQ(FsState::Active, ac.fs) << "200 and the one that comes are allowed";
    decodeExisting(ac, gf_eastOf(ac.stream.back(), 0.5));
    EXPECT_EQ(FsState::RemovingFromSim, ac.fs);
}

TEST_F(IntakeTest, jitterInTheAirIsNoiseAndOnTheGroundStandingStill)
{
    const struct {
        double degrees;
        bool onGround;
        size_t samples;
    } cases[] = {{0.0, false, 2}, {0.0001, false, 2}, {0.0002, false, 3}, {0.0001, true, 3}};
    for (const auto& c : cases) {
        liveAcs.clear();
        LiveAc& ac = gf_addBuffered(20001, "BAW3AK");
        for (PosSample& s : ac.stream) {
            s.airborne = !c.onGround;
            s.speed = c.onGround ? 3 : s.speed;
        }
        PosSample moved = ac.stream.back();
        moved.lat += c.degrees;
        moved.time += 100;
        decodeExisting(ac, moved);
        ASSERT_EQ(c.samples, ac.stream.size()) << c.degrees;
        if (c.onGround) {
            EXPECT_TRUE(ac.stream[2].stationary && ac.stream[2].speed == 0);
            EXPECT_EQ(ac.stream[1].lat, ac.stream[2].lat);
        }
    }
}

}  // namespace vlt
