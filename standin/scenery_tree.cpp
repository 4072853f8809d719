#include "standin/scenery_tree.h"

#include "core/base/text.h"
#include "standin/airport_files.h"

#include <fstream>
#include <stdexcept>

namespace vlt {

namespace fs = std::filesystem;

static void lf_write(const fs::path& path, const std::string& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
}

static int lf_typeOf(const std::string& kind)
{
    constexpr int kGaRamp = 2, kCargo = 5, kMediumGate = 9;
    return kind == "gate" ? kMediumGate : kind == "cargo" ? kCargo : kGaRamp;
}

BglAirportPlan gf_bglPlan(const ArchivedAirport& airport, bool newer)
{
    constexpr double kMetresPerFoot = 0.3048;
    BglAirportPlan plan{airport.code, airport.elevation * kMetresPerFoot, newer, {airport.name}, {}, {}};
    for (const ArchivedStand& stand : airport.stands) {
        if (stand.kind == "heli") {
            plan.helipads.push_back({2 * stand.radiusM, stand.headingDeg, stand.lat, stand.lon});
        } else {
            plan.parkings.push_back(
                {stand.id, lf_typeOf(stand.kind), stand.radiusM, stand.headingDeg, stand.lat, stand.lon, {}});
        }
    }
    return plan;
}

void gf_writeSceneryTree(const fs::path& world, const fs::path& folder)
{
    bool newer = false;
    for (const ArchivedAirport& airport : gf_worldAirports(world)) {
        const std::string author = airport.publisher == "stock" ? "Somebody" : airport.publisher;
        const fs::path scenery = folder / (author + " " + airport.code) / "scenery";
        lf_write(scenery / (airport.code + (newer ? ".BGL" : ".bgl")),
                 gf_bglFile({gf_bglPlan(airport, newer)}));
        lf_write(scenery / (airport.code + "_objects.bgl"), gf_bglFile({}));
        newer = !newer;
    }
}

}  // namespace vlt
