#include "core/traffic_loop.h"

#include "airports/parking/airport_sight.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking/park_airport.h"
#include "airports/parking/renewal.h"
#include "airports/parking/reserved_stand.h"
#include "airports/parking/static_parking.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/realtraffic.h"
#include "link/qnh_reader.h"
#include "link/traffic_reader.h"
#include "liveries/liveries.h"
#include "liveries/matching.h"
#include "platform/timer.h"
#include "sim/dispatch.h"
#include "sim/requests.h"
#include "traffic/auto_range.h"
#include "traffic/collision.h"
#include "traffic/cycle.h"
#include "traffic/geodesy.h"
#include "traffic/identity.h"
#include "traffic/sim_answers.h"
#include "traffic/stays.h"
#include "traffic/traffic.h"
#include "traffic/user_wishes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <thread>

namespace vlt {

using Clock = std::chrono::steady_clock;

static constexpr std::chrono::milliseconds kTickTime(10);
static constexpr int32_t kPassesPerLook = 100;  // while the flight isn't running

static constexpr std::array<UdpReader*, 2> kReaders{&trafficReader, &qnhReader};

static int32_t pausedPasses = 0;  // [worker] passes to the next look while the flight isn't running

static void lf_setIntake(bool open)
{
    const std::scoped_lock lock(feedMutex);
    intakeOpen = open;
}

static constexpr int32_t kPlaceEvery = 50;  // ticks

// Live aircraft come first.
static void lf_placeParked(bool liveOnesWait)
{
    if (tooManyObjects.exchange(false)) {
        gf_pausePlanning();
    } else if (!liveOnesWait) {
        planStep();
    }
}

void trafficTick()
{
    gf_handleSimMessages();
    gf_stepAckWaits();
    gf_updateLiveAcs();
    gf_handOverPositions();
    gf_meterRequests();
    gf_takeFeed();
    const bool liveOnesWait = !liveCreateQueue.empty();
    gf_makeNextRequest();
    if (tick % kPlaceEvery == 0) {
        lf_placeParked(liveOnesWait);
    }
    gf_requestObjectData();
    if (tick % kTicksPerSecond == 0) {
        gf_tellPosition();
        gf_copyUser();
    }
    ++tick;
}

static void lf_refreshCounters()
{
    display.liveCount = static_cast<int32_t>(gf_activeCount());
    display.airport.staticCount =
        static_cast<int32_t>(std::ranges::count(staticAcs, FsState::Active, &StaticAc::fs));
    gf_displaySecond();
}

void secondTick()
{
    if (wasPaused) {
        wasPaused = false;
        logLineTimed("Flight resumed");
        lf_setIntake(!gf_realTrafficGone());
    }
    hourNow = weekHourStamp();
    ++secondCount;
    lf_refreshCounters();
    gf_showUserStand();
    gf_noteUserStand();
    gf_serviceStandChange();
    gf_checkCollisions();
    gf_serviceFlush();
    gf_serviceBlock();
    gf_serviceWishes();
    gf_serviceDestination();
    flareActive = std::ranges::any_of(liveAcs, [](const LiveAc& ac) {
        return ac.flareStage != 0 && !ac.onGround && ac.fs == FsState::Active;
    });
}

void gf_refreshFeedState()
{
    for (UdpReader* reader : kReaders) {
        reader->lookWhetherSilent();
    }
}

// --- the longer periods

static constexpr int32_t kRenewal = 1200;  // seconds

static void lf_moveCentre()
{
    trafficReader.setCentre(gf_placeOf(userNow));
}

static void lf_wakeSilentFeeds()
{
    for (UdpReader* reader : kReaders) {
        if (reader->state == FeedState::Silent) {
            reader->lookWhetherSilent();
        }
    }
}

static void lf_showRenewal()
{
    display.minutesToRenewal = (kRenewal - secondCount % kRenewal) / 60;
}

static void lf_endDay()
{
    secondCount = 0;
    writeMatchingSummary();
    failedLiveries.clear();
}

struct Job {
    int32_t every;  // seconds
    void (*run)();
};

// The periodic job, in this order, in seconds that are multiples of 15; the day's end last, since it begins
// to count anew.
static constexpr Job kPeriodicJobs[] = {
    {15, lf_moveCentre},
    {15, gf_tellTime},
    {15, clearReservedStand},
    {15, lf_wakeSilentFeeds},
    {15, gf_serviceReRead},
    {30, gf_serviceNoMatchList},
    {30, gf_adaptRange},
    {60, lf_showRenewal},
    {15, gf_renewIfRequested},
    {kRenewal, gf_requestRenewal},
    {kRenewal, writeUnmatchedList},
    {86400, lf_endDay},
};

// Looks that have time until a second without the periodic job.
static constexpr Job kLooks[] = {
    {16, parkAirportCheck},
    {59, gf_refreshFeedState},
    {61, gf_removeStaticTwins},
};

static void lf_runDue(std::span<const Job> jobs)
{
    for (const Job& job : jobs) {
        if (secondCount % job.every == 0) {
            job.run();
        }
    }
}

void gf_longerPeriods()
{
    constexpr int32_t kPeriod = 15;
    gf_goOnLooking();
    if (secondCount % kPeriod == 0) {
        lf_runDue(kPeriodicJobs);
    } else {
        lf_runDue(kLooks);
    }
}

// --- the loop

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
        gf_tellPosition();
        hourNow = weekHourStamp();
        display.liveCount = static_cast<int32_t>(gf_activeCount());
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
        gf_longerPeriods();
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
    parkAirportCheck();
    gf_refreshFeedState();
    hourNow = weekHourStamp();
    gf_adaptRange();
    lf_setIntake(!gf_realTrafficGone());
    Clock::time_point deadline = Clock::now() + kTickTime;
    do {
        lf_sleepTo(deadline);
        if (secondDue || gf_waitHeldUp()) {
            deadline = Clock::now();
        }
        deadline += kTickTime;
    } while (trafficPass());
}

}  // namespace vlt
