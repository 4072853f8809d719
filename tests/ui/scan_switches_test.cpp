// What follows from a click on the switches of the scans.
#include "ui/scan_switches.h"

#include "core/base/display.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "liveries/discovery.h"
#include "liveries/livery_place.h"

namespace vlt {

using ScanSwitches = LiveryPlace;

TEST_F(ScanSwitches, aScanHappensAtOnceOrAtTheNextStart)
{
    gf_switchScan(false, true, false);
    EXPECT_EQ("Your airports will be scanned at the next start of Velatra, recommended after you have "
              "add/removed airports",
              display.message.load());
    EXPECT_FALSE(stopRequested);
    gf_switchScan(false, false, true);
    EXPECT_EQ("", display.message.load());
    EXPECT_FALSE(SCAN_AIRPORTS.value);
    EXPECT_FALSE(stopRequested);
    liveriesProcessed = true;
    gf_switchScan(true, true, true);
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_EQ(ExitReason::NewSettings, exitReason.load());
    EXPECT_EQ(2, restartDelaySeconds.load());
    scanDriver();  // of the run that is to stop: it only forgets
    EXPECT_FALSE(liveriesProcessed);
}

}  // namespace vlt
