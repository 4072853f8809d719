#include "core/main_control.h"

#include "airports/learned_save.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking/park_list.h"
#include "airports/parking/reserved_stand.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/run.h"
#include "link/position_server.h"
#include "liveries/discovery.h"
#include "liveries/liveries.h"
#include "liveries/matching.h"
#include "platform/paths_form.h"
#include "platform/user_messages.h"
#include "scenery/airports_scan.h"
#include "scenery/generated_airports.h"
#include "sim/dispatch.h"
#include "traffic/auto_range.h"
#include "traffic/flight_plan.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <new>
#include <stdexcept>

namespace vlt {

using std::chrono::milliseconds;
using std::chrono::seconds;

static std::atomic<bool> runEndedInError{false};  // [atomic] worker

// --- the way up

static void lf_testInstallFolder()
{
    // Only "not found" means that we run from the wrong folder; whatever else is wrong speaks for itself.
    if (!std::filesystem::is_directory(kDocsFolder)) {
        throw UserErrorException(kPlainUserError,
                                 format("{} must be run from the {} folder!", kProgramName, kProgramName));
    }
}

static void lf_testStockAirports()
{
    const std::string stock = SIM_INSTALL_PATH.value.load() + "\\Scenery";
    std::error_code error;
    if (!std::filesystem::is_directory(gf_toNativeForm(stock), error)) {
        showMessage(format("Stock airports path does not exist: {}", stock), false);
    }
}

static void lf_testScannedLiveries()
{
    std::error_code error;
    if (!std::filesystem::exists(kLiveriesScannedFile, error) && !SCAN_LIVERIES.value) {
        showMessage(format("File {} is gone, rescan liveries", gf_shown(kLiveriesScannedFile)), true);
        SCAN_LIVERIES.value = true;
        saveParameter(SCAN_LIVERIES);
    }
}

static int32_t lf_countFiles(const std::filesystem::path& folder)
{
    std::error_code error;
    int32_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        count += entry.is_regular_file(error) ? 1 : 0;
    }
    return count;
}

static void lf_runThrough()
{
    lf_testInstallFolder();
    prepareRun();
    if (gf_stopping()) {
        return;
    }
    lf_testStockAirports();
    lf_testScannedLiveries();
    scanDriver();
    if (gf_stopping()) {
        return;
    }
    gf_recoverResults();
    if (SCAN_AIRPORTS.value) {
        display.thirdPartyCount = 0;
        display.orbxCount = 0;
        scanAirports();
    }
    if (gf_stopping()) {
        return;
    }
    display.thirdPartyCount = lf_countFiles(kMyThirdpartyFolder);
    display.orbxCount = lf_countFiles(kMyOrbxFolder);
    makeFlightPlanFolder();
    lf_readMyParkAirports();
    gf_allowListWishes();
    gf_adaptRange();
    runTraffic();
}

// --- the way down

static void lf_systemError(std::string_view text)
{
    showError(text);
    gf_noteSystemError();
}

static void lf_waitForUser()
{
    constexpr milliseconds kLook(500);
    while (!closeRequested) {
        gf_sleepUnlessClosing(kLook);
    }
    showMessage(format("User closed {}", kProgramName), false);
}

static bool lf_leadsToRestart(ExitReason reason)
{
    return reason == ExitReason::NewSettings || reason == ExitReason::SimConnectError ||
           reason == ExitReason::ReaderError;
}

// What holds for one run only must not be found by the next.
static void lf_forgetForNextRun()
{
    gf_removeFlightPlanFolder();
    for (StringTextbox* p : {&DESTINATION, &BLOCK_CALLSIGN}) {
        p->value = "";
        saveParameter(*p);
    }
}

static void lf_countdown()
{
    const int32_t delay = restartDelaySeconds;
    if (delay < 1) {
        return;
    }
    logLine(format("Restarting after {} seconds\n\n\n\n\n", delay));
    for (int32_t left = delay; left > 0 && !closeRequested; --left) {
        showMessage(format("Restarting after {} second{}", left, gf_plural(left)), false);
        gf_sleepUnlessClosing(seconds(1));
    }
}

// False if the user closes the window meanwhile.
static bool lf_prepareRestart(ExitReason reason)
{
    gf_clearError();
    showMessage("Prepare for a restart ...", false);
    if (reason != ExitReason::NewSettings) {
        for (Checkbox* p : {&SCAN_LIVERIES, &SCAN_AIRPORTS}) {
            p->value = false;
            saveParameter(*p);
        }
    }
    lf_countdown();
    return resetState();
}

static void lf_tellNewFlight()
{
    constexpr seconds kReadingTime(10);
    showMessage(format("New flight detected, {} will close, please restart manually ...", kProgramName),
                false);
    gf_sleepUnlessClosing(kReadingTime);
}

static void lf_closeDown()
{
    constexpr milliseconds kSettle(500);
    logLine(format("Exiting: {}", gf_exitReasonText(exitReason)));
    gf_askRunThreadsToStop();
    gf_sleepUnlessClosing(kSettle);
    closeServer();
    if (exitReason == ExitReason::SystemError) {
        lf_waitForUser();
    }
    gf_requestNoteStand();  // the SimClient may not have come to its own end yet
    gf_noteUserStand();
    gf_saveIfLearned();
    lf_forgetForNextRun();
    writeMatchingSummary();
    writeUnmatchedList();
    failedLiveries.clear();
    const ExitReason reason = exitReason;
    const bool restarting = lf_leadsToRestart(reason) && !closeRequested && lf_prepareRestart(reason);
    if (reason == ExitReason::NewFlight) {
        lf_tellNewFlight();
    }
    gf_postUserMessage(restarting ? UserMessage::StartMain : UserMessage::Finish);
}

static void lf_closingDown()
{
    try {
        lf_closeDown();
    } catch (const std::exception& e) {
        showMessage(format("lf_closingDown exception {}", e.what()), true);
        runEndedInError = true;
        if (closeRequested) {
            gf_postUserMessage(UserMessage::Finish);
        }
    }
}

void mainControl()
{
    try {
        lf_runThrough();
    } catch (const UserErrorException& e) {
        lf_systemError(e.what());
    } catch (const fmt::format_error& e) {
        lf_systemError(format("std::format error: {}", e.what()));
    } catch (const std::exception& e) {
        lf_systemError(e.what());
    } catch (...) {
        lf_systemError("Unknown exception");
    }
    lf_closingDown();
}

bool gf_runEndedInError()
{
    return runEndedInError;
}

}  // namespace vlt
