#include "tools/bgl.h"

#include "core/base/units.h"
#include "scenery/bgl.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <iostream>
#include <numbers>

namespace vlt {

using nlohmann::ordered_json;

static void lf_print(const ordered_json& line)
{
    std::cout << line.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

static double lf_rounded(double value, double steps)
{
    return std::round(value * steps) / steps;
}

static const char* lf_kind(const ParkPos& stand)
{
    return stand.heli ? "heli" : stand.cargo ? "cargo" : stand.ramp ? "ramp" : "gate";
}

static void lf_printAirport(const BglAirport& airport)
{
    const Apf& apf = airport.apf;
    lf_print({{"airport", apf.code},
              {"name", apf.name},
              {"altitude", apf.altitude},
              {"newer", airport.newer},
              {"stands", apf.stands.size()},
              {"skipped", airport.skipped.size()}});
    for (const ParkPos& stand : apf.stands) {
        lf_print({{"stand", stand.id},
                  {"kind", lf_kind(stand)},
                  {"lat", lf_rounded(stand.lat, 1e6)},
                  {"lon", lf_rounded(stand.lon, 1e6)},
                  {"heading", lf_rounded(stand.heading * 180 / std::numbers::pi, 10)},
                  {"radius_m", lf_rounded(stand.radius * kMetresPerNm, 10)}});
    }
    for (const SkippedStand& skipped : airport.skipped) {
        lf_print({{"skipped", skipped.id}, {"reason", skipped.reason}});
    }
}

int gf_bgl(const BglOptions& options)
{
    if (!holdsAirports(options.file)) {
        lf_print({{"error", "no scenery file with airports"}});
        return 1;
    }
    const BglFile file = decodeBglFile(options.file, options.file);
    for (const BglAirport& airport : file.airports) {
        lf_printAirport(airport);
    }
    for (const std::string& line : file.log) {
        lf_print({{"log", line}});
    }
    return 0;
}

}  // namespace vlt
