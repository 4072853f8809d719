// Any bytes as a scenery file. Stands must have numbers that can be and ids of their own.
#include "fuzz/seeds.h"
#include "scenery/bgl.h"
#include "standin/airport_files.h"
#include "standin/scenery_tree.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <sstream>

using namespace vlt;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    bool newer = false;
    for (const ArchivedAirport& airport : gf_worldAirports(VELATRA_SOURCE_DIR "/data/world")) {
        gf_seed(*argc, *argv, airport.code, gf_bglFile({gf_bglPlan(airport, newer)}));
        newer = !newer;
    }
    BglAirportPlan small{"EHAM", 3, true, {"a", "b"}, {{20, 0, 1, 2}}, {}};
    small.parkings = {
        {"g1", 8, 20, 0, 1, 2, {"KLM"}}, {"g1", 5, 30, 1, 1, 2, {}}, {"A3", 12, 30, 1, 1, 2, {}}};
    gf_seed(*argc, *argv, "small", gf_bglFile({small}));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::istringstream head(bytes);
    gf_holdsAirports(head);
    std::istringstream in(bytes);
    for (const BglAirport& airport : gf_decodeBgl(in, "fuzz").airports) {
        gf_require(airport.apf.code.size() == 4);
        gf_require(airport.apf.altitude >= 0 && airport.apf.altitude <= 10000);
        std::set<std::string> ids;
        for (const ParkPos& stand : airport.apf.stands) {
            gf_require(ids.insert(stand.id).second);
            gf_require(std::abs(stand.lat) <= 90 && std::abs(stand.lon) <= 180 &&
                       std::isfinite(stand.heading));
            gf_require(stand.radius > 0 && stand.radius <= 1);
        }
    }
    return 0;
}
