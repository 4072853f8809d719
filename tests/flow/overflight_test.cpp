// The road of an aircraft that flies past: from its first report to its last position.
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "support/flight.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vlt {

constexpr double kReplayDelay = 30;  // seconds

class Overflight : public Flight
{
protected:
    // Where the aircraft is `seconds` after its first report: eastwards at 450 kt.
    static LatLon place(double seconds)
    {
        constexpr double kSpeed = 450;
        const double nm = kSpeed * seconds / 3600;
        return {47.2, 7.6 + nm / (60.0 * std::cos(47.2 * kRadPerDeg))};
    }

    static FeedLine report(double seconds)
    {
        FeedLine line;
        line.lat = place(seconds).lat;
        line.lon = place(seconds).lon;
        line.timestamp += seconds;
        return line;
    }

    // Reports every five seconds until `until`, seconds after the first one.
    void flyPast(double until, const std::function<void(double)>& eachTick = {})
    {
        for (; sent <= until; sent += 5) {
            gf_hear(report(sent));
            double at = sent;
            pass(5, [&] {
                at += 0.01;
                if (eachTick) {
                    eachTick(at);
                }
            });
        }
    }

    double sent = 0;
};

TEST_F(Overflight, isCreatedInItsLiveryAndTakenFromTheSimulatorsHands)
{
    flyPast(60);
    const auto aircraft = object("BAW3AK");
    ASSERT_TRUE(aircraft.has_value());
    EXPECT_EQ("A319", aircraft->kind.title.substr(aircraft->kind.title.find("A319"), 4));
    EXPECT_TRUE(aircraft->released && aircraft->frozenPosition && aircraft->frozenAltitude &&
                aircraft->frozenAttitude);
    EXPECT_TRUE(aircraft->positioned);
    for (const Complaint& complaint : simulator->complaints()) {
        ADD_FAILURE() << complaint.function << ": " << complaint.reason;
    }
}

TEST_F(Overflight, fliesItsTrackHalfAMinuteLater)
{
    std::vector<double> delays, offTrackM;
    flyPast(150, [&](double at) {
        const auto aircraft = object("BAW3AK");
        if (at > 60 && aircraft && aircraft->positioned) {
            const double degreesPerSecond = place(1).lon - place(0).lon;
            delays.push_back(at - (aircraft->lon - place(0).lon) / degreesPerSecond);
            offTrackM.push_back(std::abs(aircraft->lat - place(0).lat) * 60 * kMetresPerNm);
        }
    });
    ASSERT_GT(delays.size(), 5000U);
    // Two seconds of set-up come on top of the delay: the aircraft flies at its reported speed rather
    // than making them good.
    const auto [least, most] = std::ranges::minmax(delays);
    EXPECT_GE(least, kReplayDelay);
    EXPECT_LT(most, kReplayDelay + 2.6);
    EXPECT_LT(*std::ranges::max_element(offTrackM), 5);
}

TEST_F(Overflight, movesSmoothly)
{
    double worst = 0;
    std::optional<SimObject> before;
    flyPast(120, [&](double at) {
        const auto aircraft = object("BAW3AK");
        if (at > 60 && before && aircraft && aircraft->positioned) {
            const double step =
                distNm({before->lat, before->lon}, {aircraft->lat, aircraft->lon}) * kMetresPerNm;
            worst = std::max(worst, step);
        }
        before = aircraft;
    });
    // 450 kt are 7.7 m in a frame of 1/30 s; half as much again is what an eye forgives.
    EXPECT_GT(worst, 5.0);
    EXPECT_LT(worst, 7.7 * 1.5);
}

TEST_F(Overflight, leavesWhenItsReportsHaveStopped)
{
    flyPast(60);
    ASSERT_TRUE(object("BAW3AK").has_value());
    // Thirty seconds of stream, eight invented samples of eight seconds, and some for the removal.
    pass(30 + 64 + 15);
    EXPECT_FALSE(object("BAW3AK").has_value());
    EXPECT_TRUE(liveAcs.empty());
    EXPECT_EQ(simulator->counts().created, simulator->counts().removed);
}

TEST_F(Overflight, anObjectAwaitedOutsideTheRangeIsTakenOverAllTheSame)
{
    flyPast(20);
    ASSERT_FALSE(object("BAW3AK").has_value());
    // The user comes down, say: the range shrinks while the object is being made, 20 nm away.
    LATERAL_RANGE.value = 5;
    gf_applyLateralRange();
    pass(10);
    const auto aircraft = object("BAW3AK");
    ASSERT_TRUE(aircraft.has_value());
    EXPECT_TRUE(aircraft->released && aircraft->positioned);
    pass(60);
    EXPECT_FALSE(object("BAW3AK").has_value());
}

TEST_F(Overflight, standsStillWhileTheFlightIsPausedAndGoesOnWhereItWas)
{
    flyPast(60);
    simulator->setRunning(false);
    pass(0.2);
    const auto before = object("BAW3AK");
    const int32_t tickBefore = tick;
    pass(5);
    EXPECT_EQ(tickBefore, tick);
    const auto after = object("BAW3AK");
    ASSERT_TRUE(before && after);
    EXPECT_EQ(before->lat, after->lat);
    EXPECT_EQ(before->lon, after->lon);
    simulator->setRunning(true);
    pass(2);
    const auto resumed = object("BAW3AK");
    ASSERT_TRUE(resumed.has_value());
    EXPECT_GT(resumed->lon, after->lon);
    const std::scoped_lock lock(feedMutex);
    EXPECT_TRUE(intakeOpen);
}

}  // namespace vlt
