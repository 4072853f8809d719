#include "airports/learned_save.h"

#include "airports/airport_file.h"
#include "airports/airport_lookup.h"
#include "airports/airports.h"
#include "airports/loading.h"
#include "airports/parking_settings.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace vlt {

// A stand that the file is to hold.
static bool lf_isWorthKeeping(const ParkPos& stand)
{
    return stand.manual || !stand.options.empty() || stand.radiusChanged || stand.cargoChanged;
}

// Of all that is known, what the planner has switched off included.
static Quality lf_wholeQuality(std::vector<ParkPos> stands)
{
    constexpr int32_t kOn = 1;
    for (ParkPos& stand : stands) {
        for (StandOption& option : stand.options) {
            option.sequence = kOn;
        }
    }
    return gf_qualityFactor(stands);
}

// What was learned of the airport; of a handmade one all.
static Apf lf_learnedPart()
{
    Apf learned = parkApf;
    if (learned.handmade) {
        learned.quality = lf_wholeQuality(learned.stands);
        return learned;
    }
    for (ParkPos& stand : learned.stands) {
        std::erase_if(stand.options, [](const StandOption& option) { return option.archived; });
    }
    std::erase_if(learned.stands, [](const ParkPos& stand) { return !lf_isWorthKeeping(stand); });
    return learned;
}

bool saveLearned(std::filesystem::path path)
{
    if (path.empty()) {
        path = gf_toNativeForm(gf_savedPath(parkApf.code, parkApf.publisher));
    }
    std::error_code failed;
    std::filesystem::create_directories(path.parent_path(), failed);
    const int32_t updates = updateCount;
    if (failed || !saveAirportFile(lf_learnedPart(), path, AirportFileMode::Learned)) {
        showMessage(format("{} saving \"{}\" did not succeed", timeOfDayString(), path.generic_string()),
                    true);
        return false;
    }
    showMessage(format("{}{} \"{}\" saved with {} update{} {}", timeOfDayString(),
                       parkApf.handmade ? " handmade" : "", path.generic_string(), updates,
                       updates == 1 ? "" : "s",
                       gf_airportsSettingsChanged() ? "and one or more parameter changes" : ""),
                true);
    return true;
}

void gf_saveIfLearned()
{
    if (parkState == ParkState::Loaded && (updateCount > 0 || gf_airportsSettingsChanged())) {
        saveLearned();
    }
}

}  // namespace vlt
