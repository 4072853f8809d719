#include "liveries/discovery.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/livery_packages.h"
#include "liveries/match_index.h"
#include "liveries/scan_results.h"
#include "liveries/scan_store.h"

#include <atomic>

namespace vlt {

static std::atomic<bool> resetLiveries{false};  // [atomic] the user thread sets, the worker takes

void gf_resetLiveriesAtNextRun()
{
    resetLiveries = true;
}

std::vector<std::string> gf_liveryFolders()
{
    std::vector<std::string> folders;
    if (LIG_AUTOMATIC.value) {
        lf_readP3DAddOnsAircraft(folders);
        readSimobjectsCfg(folders);
        return folders;
    }
    for (const StringParameter& folder : lfolders) {
        if (!folder.value.empty()) {
            folders.push_back(folder.value);
        }
    }
    return folders;
}

static void lf_throwNothingFound()
{
    if (LIG_AUTOMATIC.value) {
        throw UserErrorException(43,
                                 "Automatic scan has not found any liveries, switch off automatic and set "
                                 "lfolder parameter(-s), Manual 5.1");
    }
    throw UserErrorException(53, "no liveries found");
}

static void lf_scan()
{
    const bool automatic = LIG_AUTOMATIC.value;
    showMessage(
        format("Scanning {} for liveries ...", LIG_PRIORITIZE.value && !automatic ? "prioritized " : ""),
        false);
    logLine(format("\n++++++++++++++++++++++++ liveries scan {} starts ++++++++++++++++++++++++++++++++",
                   automatic ? "automatic" : "manual"));
    const std::vector<std::string> folders = gf_liveryFolders();
    if (folders.empty() && !automatic) {
        throw UserErrorException(48,
                                 "Set lfolder parameter(-s) to your liveries first, see Manual 5.1 (or check "
                                 "Liveries automatic)");
    }
    switch (scanAndStoreLiveries(folders)) {
    case LiveryScan::NothingFound:
        lf_throwNothingFound();
        break;
    case LiveryScan::Stored:
        SCAN_LIVERIES.value = false;
        saveParameter(SCAN_LIVERIES);
        break;
    case LiveryScan::NotStored:
        showMessage("The liveries found could not be stored, see the Log.txt", true);
        break;
    case LiveryScan::Stopped:
        break;
    }
    logLine("\n++++++++++++++++++++++++ liveries scan ends ++++++++++++++++++++++++++++++++\n");
}

void scanDriver()
{
    if (resetLiveries.exchange(false)) {
        gf_clearMatchIndexes();
        liveriesProcessed = false;
    }
    if (SCAN_LIVERIES.value) {
        lf_scan();
    }
    if (!gf_stopping()) {
        processScannedLiveries();
    }
}

}  // namespace vlt
