#include "scenery/offline_learning.h"

#include "airports/airport_lookup.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "platform/paths_form.h"

#include <filesystem>

namespace vlt {

namespace fs = std::filesystem;

static bool lf_heldWell(const ArchivedAirportInfo& archived)
{
    constexpr int32_t kUsable = 45;  // quality of real data
    constexpr int32_t kLeastWeek = 24;
    return archived.qualityReal >= kUsable && archived.trafficWeek >= kLeastWeek;
}

static void lf_pack(const std::string& code, const LinkedAirport& airport, AirportScan& scan)
{
    const fs::path learned = gf_toNativeForm(gf_savedPath(code, airport.publisher));
    std::error_code error;
    gf_tell(scan, format("{} Not suitable for offline learning", code));
    if (!fs::exists(learned, error)) {
        return;
    }
    const fs::path folder = kOutputFolder / "offline_learning";
    fs::create_directories(folder, error);
    const fs::path copy = folder / (code + ".xml");
    fs::copy_file(learned, copy, fs::copy_options::overwrite_existing, error);
    gf_tell(scan, error ? format("failed to copy {}", gf_shown(learned))
                        : format("{} copied to {}", gf_shown(learned), gf_shown(copy)));
}

// True when the archive holds all airports of the kind well, and there is one.
static bool lf_packAll(bool simaddon, AirportScan& scan)
{
    bool any = false;
    bool allWell = true;
    for (auto& [code, airport] : scan.linked) {
        if ((airport.publisher == kSimaddon) != simaddon || gf_stopping()) {
            continue;
        }
        any = true;
        if (!airport.archived) {
            airport.archived = gf_archivedInfo(gf_archivePath(airport.publisher, code), scan);
        }
        const bool well = airport.archived && lf_heldWell(*airport.archived);
        if (airport.archived && !well) {
            lf_pack(code, airport, scan);
        }
        allWell = allWell && well;
    }
    return any && allWell;
}

void gf_packOfflineLearning(AirportScan& scan)
{
    if (lf_packAll(true, scan)) {
        gf_tell(scan, "All your ORBX airports are done, no off line learning needed.");
    }
    if (lf_packAll(false, scan)) {
        gf_tell(scan, "All your third party airports are done, no off line learning needed.");
    }
}

}  // namespace vlt
