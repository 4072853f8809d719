#include "core/run.h"

#include "airports/catalogue.h"
#include "airports/parking/airport_sight.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking/park_airport.h"
#include "airports/server_files.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/realtraffic.h"
#include "core/traffic_loop.h"
#include "link/qnh_reader.h"
#include "link/traffic_reader.h"
#include "liveries/dbase_reader.h"
#include "platform/folders.h"
#include "sim/client.h"
#include "sim/detection.h"
#include "sim/dispatch.h"
#include "sim/requests.h"
#include "traffic/collision.h"
#include "traffic/cycle.h"
#include "traffic/geodesy.h"
#include "traffic/stays.h"
#include "traffic/traffic.h"
#include "traffic/user_wishes.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace vlt {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Threads of the present run, or of the last one while they end.
struct RunThreads {
    std::jthread simClient;
    std::jthread qnhReader;
    std::jthread trafficReader;
};
static RunThreads runThreads;  // [worker], and the user thread once the worker was joined

static bool dbaseRead = false;  // [worker] survives restarts

static void lf_lookForRealTraffic()
{
    std::error_code error;
    realTrafficHere =
        std::filesystem::exists(gf_appDataFolder() / "InsideSystems" / "RealTraffic.jar", error);
    logLine(format("RealTraffic {}detected at this PC", realTrafficHere ? "" : "not "));
}

// False if a stop ended the download: that is no failure of the server's.
static bool lf_readDbaseOnce()
{
    try {
        dbaseRead = dbaseRead || readDbase();
        return true;
    } catch (const std::exception&) {
        if (!gf_stopping()) {
            throw;
        }
        return false;
    }
}

void prepareRun()
{
    if (const std::string forUser = readParameters(); !forUser.empty()) {
        showMessage(forUser, true);
    }
    makeFolders();
    PROGRAM_INSTALL_PATH.value = gf_shown(std::filesystem::current_path());
    saveParameter(PROGRAM_INSTALL_PATH);
    hourNow = weekHourStamp();
    if (!lf_readDbaseOnce()) {
        return;
    }
    if (!readAirports()) {
        showMessage(format("\"{}\" holds no airport", gf_shown(kAirportsCatalogueFile)), true);
    }
    ALL_INSTALL_PATH.value = SIM_INSTALL_PATH.value;
    display.installPathEnabled = true;
    if (ALL_INSTALL_PATH.value.empty()) {
        gf_detectSimulator();
    }
    lf_lookForRealTraffic();
    rangeBeforeAuto = LATERAL_RANGE.value.load();
}

// Looks every `pause` until `ready`; false if a stop ends the wait.
template <typename Ready>
static bool lf_waitUntil(Ready ready, milliseconds pause)
{
    while (!ready()) {
        if (!gf_sleepUnlessStopping(pause)) {
            return false;
        }
    }
    return !gf_stopping();
}

static bool lf_askForUser()
{
    gf_copyUser();
    return !gf_isNullPosition(gf_placeOf(userNow));
}

static bool waitForUserAircraft()
{
    if (!lf_waitUntil([] { return simRunning && !simRequestFailed; }, milliseconds(100))) {
        return false;
    }
    gf_mustSend(gf_requestUserOnGround(), "SimConnect request ac gnd/air fails");
    if (!lf_waitUntil([] { return lf_askForUser() && userOnGroundKnown; }, milliseconds(500))) {
        return false;
    }
    gf_mustSend(gf_requestUserTitleAndModel(), "SimConnect request title and model fails");
    return lf_waitUntil(lf_askForUser, milliseconds(200));
}

static void lf_clearIndicators()
{
    display.sim.connected = false;
    display.sim.running = false;
    display.realTraffic = false;
}

static void lf_waitForFirstReport()
{
    constexpr int kLooks = 150;
    constexpr milliseconds kPause(100);
    for (int i = 0; i < kLooks && lastTimestamp == 0.0; ++i) {
        if (!gf_sleepUnlessStopping(kPause)) {
            return;
        }
    }
    if (lastTimestamp == 0.0) {
        showMessage("No traffic in this region?", false);
    }
}

// The weather first; false if a stop ends the pause between the two.
static bool lf_startReaders()
{
    constexpr seconds kBetween(2);
    {
        const std::scoped_lock lock(feedMutex);
        intakeOpen = false;
    }
    runThreads.qnhReader = startQnhReader(kQnhPort);
    if (!gf_sleepUnlessStopping(kBetween)) {
        return false;
    }
    gf_copyUser();
    trafficReader.setCentre(gf_placeOf(userNow));
    runThreads.trafficReader = startTrafficReader(kTrafficPort);
    return true;
}

void runTraffic()
{
    lf_clearIndicators();
    gf_reserveTables();
    startSimClient(P3D_VERSION.value);
    runThreads.simClient = gf_startSimClientThread();
    if (!waitForUserAircraft()) {
        return;
    }
    if (!gf_meetRealTraffic() || !lf_startReaders()) {
        return;
    }
    gf_tellPosition();
    lf_waitForFirstReport();
    hourNow = weekHourStamp();
    if (!gf_stopping()) {
        trafficLoop();
    }
}

void gf_askRunThreadsToStop()
{
    {
        const std::scoped_lock lock(feedMutex);
        intakeOpen = false;
    }
    runThreads.simClient.request_stop();
    runThreads.qnhReader.request_stop();
    runThreads.trafficReader.request_stop();
}

void gf_joinRunThreads()
{
    gf_askRunThreadsToStop();
    runThreads = RunThreads{};
    gf_forgetServerFiles();
}

bool gf_resetRun()
{
    if (!gf_resetRunState()) {
        return false;
    }
    gf_forgetFeeds();
    trafficReader.state = FeedState::Stopped;
    qnhReader.state = FeedState::Stopped;
    gf_resetSimClient();
    gf_clearTables();
    maxPark = 0;
    gf_resetParkAirport();
    gf_forgetLooks();
    gf_forgetCollisions();
    gf_forgetWishes();
    gf_forgetListWishes();
    gf_resetDisplay();
    return true;
}

bool resetState()
{
    gf_joinRunThreads();
    if (!gf_resetRun()) {
        return false;
    }
    wantedSimVersion = P3D_VERSION.value;
    gf_applyLateralRange();
    return true;
}

}  // namespace vlt
