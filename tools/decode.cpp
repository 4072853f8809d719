#include "tools/decode.h"

#include "core/base/clock.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "link/traffic_reader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <string>

namespace vlt {

using Json = nlohmann::ordered_json;

static Json lf_record(const FeedRecord& record)
{
    const PosSample& s = record.sample;
    Json json;
    json["hexid"] = record.hexid;
    json["callsign"] = record.callsign;
    json["model"] = record.model;
    json["regcode"] = record.regcode;
    json["origin"] = record.origin;
    json["destination"] = record.destination;
    json["timestamp"] = record.timestamp;
    json["lat"] = s.lat;
    json["lon"] = s.lon;
    json["altitude"] = s.altitude;
    json["airborne"] = s.airborne;
    json["speed"] = s.speed;
    json["track"] = s.track;
    json["vs"] = s.vs;
    json["tas"] = s.tas;
    json["heading"] = s.headingValid ? Json(s.heading) : Json();
    json["roll"] = s.rollValid ? Json(s.roll) : Json();
    return json;
}

// Without a place of the user's every position counts as near.
static void lf_centreOnLine(const std::string& line)
{
    TrafficReader scout;
    scout.take(std::string_view(line).substr(0, kDatagramLimit - 1));
    if (scout.fields.size() > 3) {
        const double lat = std::strtod(std::string(scout.fields[2]).c_str(), nullptr);
        const double lon = std::strtod(std::string(scout.fields[3]).c_str(), nullptr);
        trafficReader.setCentre({lat, lon});
    }
}

static Json lf_decodeLine(const std::string& line)
{
    const int32_t before = trafficReader.packets;
    trafficReader.outcome = LineOutcome::NotOpen;
    trafficReader.record = {};
    if (line.size() >= kDatagramLimit) {
        return {{"dropped", "the datagram is too long"}};
    }
    const std::string last = trafficReader.lastDatagram;
    trafficReader.take(line);
    if (trafficReader.packets == before) {
        return {{"dropped", "an empty datagram"}};
    }
    if (!realTrafficHere && last == line) {
        return {{"dropped", "the same as the datagram before"}};
    }
    // The intake is closed, so a valid record stays where it can be shown.
    if (trafficReader.outcome == LineOutcome::NotOpen) {
        return {{"record", lf_record(trafficReader.record)}};
    }
    return {{"dropped", gf_outcomeText(trafficReader.outcome)}};
}

int gf_decode(const DecodeOptions& options)
{
    LATERAL_RANGE.value = options.range;
    gf_applyLateralRange();
    realTrafficHere = options.here;
    if (!options.park.empty()) {
        trafficReader.setParkAirport(ParkAirportPlace{options.park[0], options.park[1], options.park[2]});
    }
    if (!options.user.empty()) {
        trafficReader.setCentre({options.user[0], options.user[1]});
    }
    int64_t number = 0;
    for (std::string line; std::getline(std::cin, line);) {
        if (options.user.empty()) {
            lf_centreOnLine(line);
        }
        Json json = {{"line", ++number}};
        json.update(lf_decodeLine(line));
        json["feedTime"] = lastTimestamp.load();
        std::cout << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    }
    return 0;
}

}  // namespace vlt
