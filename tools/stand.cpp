#include "tools/stand.h"

#include "airports/loading.h"
#include "airports/stand_search.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "link/traffic_reader.h"
#include "liveries/liveries.h"
#include "traffic/geodesy.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <stdexcept>
#include <string>

namespace vlt {

// The report's position; it counts wherever it is.
static bool lf_hear(const std::string& line)
{
    if (line.size() >= kDatagramLimit) {
        return false;
    }
    trafficReader.outcome = LineOutcome::Malformed;
    trafficReader.take(line);
    return trafficReader.outcome == LineOutcome::NotOpen;
}

static nlohmann::ordered_json lf_answer(int64_t number, const StandOptions& options)
{
    const FeedRecord& record = trafficReader.record;
    const LatLon place = gf_placeOf(record.sample);
    LiveAc ac;
    ac.callsign = record.callsign;
    ac.model = record.model;
    ac.radius = options.spanM * kHalfSpanNmPerMetre;
    ac.category = options.category == "Rotorcraft" ? AcCategory::Rotorcraft : AcCategory::Large;
    nlohmann::ordered_json json = {{"line", number},
                                   {"callsign", record.callsign},
                                   {"lat", place.lat},
                                   {"lon", place.lon},
                                   {"speed", record.sample.speed}};
    const uint32_t index = standAtPosition(place, ac, options.radiusM / kMetresPerNm, options.allowFar);
    if (const ParkPos* stand = gf_stand(index)) {
        json["stand"] = stand->id;
        json["distanceM"] = distNm(place, gf_placeOf(*stand)) * kMetresPerNm;
    } else {
        json["stand"] = nullptr;
    }
    return json;
}

int gf_findStands(const StandOptions& options)
{
    constexpr double kAnywhere = 100;  // nm, the reader's largest range
    AirportLoad load = gf_readApfAlone(options.airportFile, "XXXX");
    if (!load.failed.empty()) {
        throw std::runtime_error(options.airportFile + ": " + load.failed);
    }
    parkApf = std::move(load.apf);
    const ParkPos& first = parkApf.stands.front();
    LATERAL_RANGE.value = static_cast<int32_t>(kAnywhere);
    gf_applyLateralRange();
    realTrafficHere = true;
    trafficReader.setCentre(gf_placeOf(first));
    trafficReader.setParkAirport(ParkAirportPlace{first.lat, first.lon, 0});
    int64_t number = 0;
    for (std::string line; std::getline(std::cin, line);) {
        ++number;
        if (lf_hear(line) && !trafficReader.record.sample.airborne) {
            std::cout
                << lf_answer(number, options).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
                << '\n';
        }
    }
    return 0;
}

}  // namespace vlt
