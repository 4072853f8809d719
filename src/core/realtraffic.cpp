#include "core/realtraffic.h"

#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "link/position_server.h"
#include "link/qnh_reader.h"
#include "link/traffic_reader.h"
#include "traffic/cycle.h"
#include "traffic/removal.h"
#include "traffic/sim_answers.h"
#include "traffic/traffic.h"

#include <utility>

namespace vlt {

static bool gone = false;    // [worker]
static bool heldUp = false;  // [worker]

void gf_forgetFeeds()
{
    trafficReader.forget();
    qnhReader.forget();
}

static void lf_setIntake(bool open)
{
    const std::scoped_lock lock(feedMutex);
    intakeOpen = open;
    feedQueue.clear();
}

// The tick stands still during a wait, but objects that are on their way come, and go.
static void lf_workWhileWaiting()
{
    static int32_t count = 0;  // [worker]
    ++count;
    gf_handleSimMessages();
    gf_stepAckWaits();
    if (count % kTicksPerRemoval == 0) {
        gf_sendNextRemoval();
    }
    if (count % kTicksPerSecond == 0 && !simRequestFailed) {
        gf_askForObjectData();
        gf_copyUser();
        hourNow = weekHourStamp();
        display.liveCount = static_cast<int32_t>(gf_activeCount());
    }
}

bool gf_meetRealTraffic()
{
    gone = false;
    simTimeMode = false;
    if (!realTrafficHere || AEROWINX.value) {
        display.realTraffic = true;
        settingsOpen = false;
        return true;
    }
    openServer(PORT_NUMBER.value);
    gf_forgetFeeds();
    if (!waitForRealTraffic(lf_workWhileWaiting)) {
        return false;
    }
    gf_copyUser();
    gf_tellTime();
    return true;
}

static void lf_onGone()
{
    gone = true;
    if (!closeRequested) {
        for (LiveAc& ac : liveAcs) {
            removeAircraftFromSim(ac, "RealTraffic has gone");
        }
        gf_eraseMarked();
    }
    lf_setIntake(false);
    gf_forgetFeeds();
    showMessage(format("{} RealTraffic gone? Wait for RealTraffic to re-connect ...", timeOfDayString()),
                true);
}

static void lf_onBack()
{
    gone = false;
    heldUp = true;
    lf_setIntake(!wasPaused);
}

void gf_tellPosition()
{
    switch (sendPosition(userNow, lf_workWhileWaiting)) {
    case ClientNews::None:
        break;
    case ClientNews::Came:
        lf_onBack();
        break;
    case ClientNews::Gone:
        lf_onGone();
        break;
    }
}

void gf_tellTime()
{
    if (simTimeMode) {
        sendSimTime(gf_simTime(userNow));
    }
}

bool gf_realTrafficGone()
{
    return gone;
}

bool gf_waitHeldUp()
{
    return std::exchange(heldUp, false);
}

}  // namespace vlt
