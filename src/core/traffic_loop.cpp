#include "core/traffic_loop.h"

#include "airports/parking/park_airport.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "link/traffic_reader.h"
#include "liveries/liveries.h"
#include "liveries/matching.h"
#include "platform/timer.h"
#include "sim/client.h"
#include "traffic/auto_range.h"
#include "traffic/collision.h"
#include "traffic/cycle.h"
#include "traffic/identity.h"
#include "traffic/sim_answers.h"
#include "traffic/stays.h"
#include "traffic/traffic.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace vlt {

using Clock = std::chrono::steady_clock;

static constexpr std::chrono::milliseconds kTickTime(10);
static constexpr int32_t kPassesPerLook = 100;  // while the flight isn't running

static int32_t packetsAtLastLook = 0;  // [worker] of the Traffic Reader
static int32_t pausedPasses = 0;       // [worker] passes to the next look while the flight isn't running

static void lf_setIntake(bool open)
{
    const std::scoped_lock lock(feedMutex);
    intakeOpen = open;
}

void trafficTick()
{
    gf_handleSimMessages();
    gf_stepAckWaits();
    gf_updateLiveAcs();
    gf_handOverPositions();
    gf_meterRequests();
    gf_takeFeed();
    gf_makeNextRequest();
    gf_requestObjectData();
    if (tick % kTicksPerSecond == 0) {
        gf_copyUser();
    }
    ++tick;
}

static void lf_refreshCounters()
{
    display.liveCount = static_cast<int32_t>(std::ranges::count(liveAcs, FsState::Active, &LiveAc::fs));
    gf_displaySecond();
}

void secondTick()
{
    if (wasPaused) {
        wasPaused = false;
        logLineTimed("Flight resumed");
        lf_setIntake(true);
    }
    hourNow = weekHourStamp();
    ++secondCount;
    lf_refreshCounters();
    gf_showUserStand();
    gf_noteUserStand();
    gf_serviceStandChange();
    gf_checkCollisions();
    gf_serviceBlock();
    flareActive = std::ranges::any_of(liveAcs, [](const LiveAc& ac) {
        return ac.flareStage != 0 && !ac.onGround && ac.fs == FsState::Active;
    });
}

void gf_refreshFeedState()
{
    if (display.trafficFeedState == FeedState::Stopped) {
        return;
    }
    const int32_t packets = trafficReader.packets;
    display.trafficFeedState = packets == packetsAtLastLook ? FeedState::Silent : FeedState::Receiving;
    packetsAtLastLook = packets;
}

void gf_periodicJob()
{
    constexpr int32_t kDay = 86400;
    constexpr int32_t kRenewal = 1200;
    const auto due = [](int32_t period) { return secondCount % period == 0; };
    if (display.trafficFeedState == FeedState::Silent) {
        gf_refreshFeedState();
    }
    if (due(30) && AUTO_RANGE.value) {
        gf_adaptRange();
    }
    if (due(60)) {
        display.minutesToRenewal = (kRenewal - secondCount % kRenewal) / 60;
    }
    if (due(kRenewal)) {
        writeUnmatchedList();
    }
    if (due(kDay)) {
        secondCount = 0;
        writeMatchingSummary();
        failedLiveries.clear();
    }
}

static void lf_longerPeriods()
{
    constexpr int32_t kPeriod = 15;
    constexpr int32_t kAirportLook = 16;
    constexpr int32_t kFeedLook = 59;
    constexpr int32_t kTwinLook = 61;
    if (secondCount % kPeriod == 0) {
        trafficReader.setCentre({userNow.lat, userNow.lon});
        clearReservedStand();
        gf_periodicJob();
        return;
    }
    if (secondCount % kAirportLook == 0) {
        parkAirportCheck();
    }
    if (secondCount % kFeedLook == 0) {
        gf_refreshFeedState();
    }
    if (secondCount % kTwinLook == 0) {
        gf_removeStaticTwins();
    }
}

static void lf_beginPause()
{
    lf_setIntake(false);
    wasPaused = true;
    pausedPasses = kPassesPerLook;
    fillBuffer.clear();
    {
        const std::scoped_lock lock(simCallMutex);
        sendBuffer.clear();
    }
    logLineTimed("Flight not running");
}

// The flight isn't running: nothing moves, but acknowledgements aren't lost.
static void lf_pausedPass()
{
    if (!wasPaused) {
        lf_beginPause();
    }
    gf_handleSimMessages();
    if (--pausedPasses <= 0) {
        pausedPasses = kPassesPerLook;
        hourNow = weekHourStamp();
        display.liveCount = static_cast<int32_t>(std::ranges::count(liveAcs, FsState::Active, &LiveAc::fs));
    }
}

bool trafficPass()
{
    if (gf_stopping()) {
        return false;
    }
    if (!simRunning) {
        lf_pausedPass();
        return !gf_stopping();
    }
    if (simRequestFailed) {
        return !gf_stopping();
    }
    trafficTick();
    if (secondDue.exchange(false)) {
        secondTick();
        lf_longerPeriods();
    }
    return true;
}

// Sleeps to the deadline in whole milliseconds; sleeps may end early, so the clock is asked again.
static void lf_sleepTo(Clock::time_point deadline)
{
    constexpr std::chrono::milliseconds kShortest(1);
    for (auto left = deadline - Clock::now(); left >= kShortest; left = deadline - Clock::now()) {
        std::this_thread::sleep_for(std::chrono::ceil<std::chrono::milliseconds>(left));
    }
}

void trafficLoop()
{
    const FineTimer oneMillisecond;
    secondCount = 0;
    packetsAtLastLook = 0;
    parkAirportCheck();
    gf_refreshFeedState();
    hourNow = weekHourStamp();
    if (AUTO_RANGE.value) {
        gf_adaptRange();
    }
    lf_setIntake(true);
    Clock::time_point deadline = Clock::now() + kTickTime;
    do {
        lf_sleepTo(deadline);
        if (secondDue) {
            deadline = Clock::now();
        }
        deadline += kTickTime;
    } while (trafficPass());
}

}  // namespace vlt
