#include "ui/scan_switches.h"

#include "core/base/display.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/discovery.h"

namespace vlt {

// What the user reads of a scan that was asked for.
struct ScanWords {
    std::string_view what;
    std::string_view after;  // when another one is wanted
};

void gf_switchScan(bool liveries, bool on, bool settingsOpen)
{
    constexpr int32_t kDelaySeconds = 2;
    const ScanWords words =
        liveries ? ScanWords{"liveries", "AI aircraft models/liveries"} : ScanWords{"airports", "airports"};
    Checkbox& box = liveries ? SCAN_LIVERIES : SCAN_AIRPORTS;
    box.value = on;
    saveParameter(box);
    if (!on) {
        clearMessage();
    } else if (!settingsOpen) {
        showMessage(
            format(
                "Your {} will be scanned at the next start of {}, recommended after you have add/removed {}",
                words.what, kProgramName, words.after),
            false);
    } else {
        if (liveries) {
            gf_resetLiveriesAtNextRun();
        }
        showMessage(format("Your {} will be scanned", words.what), true);
        gf_requestStop(ExitReason::NewSettings, kDelaySeconds);
    }
}

}  // namespace vlt
