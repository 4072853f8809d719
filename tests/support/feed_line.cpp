#include "support/feed_line.h"

#include "link/traffic_reader.h"

#include <fmt/format.h>

#include <vector>

namespace vlt {

std::string gf_feedText(const FeedLine& line)
{
    constexpr size_t kPlaces = 43;
    std::vector<std::string> places(kPlaces, "-1");
    places[0] = "RTTFC";
    places[1] = std::to_string(line.hexid);
    places[2] = fmt::format("{:.6f}", line.lat);
    places[3] = fmt::format("{:.6f}", line.lon);
    places[4] = fmt::format("{}", line.altitude);
    places[5] = fmt::format("{}", line.vs);
    places[6] = "0";
    places[7] = fmt::format("{}", line.track);
    places[8] = fmt::format("{}", line.speed);
    places[9] = line.callsign;
    places[10] = line.type;
    places[11] = line.tail;
    places[12] = line.origin;
    places[13] = line.destination;
    places[14] = fmt::format("{:.2f}", line.timestamp);
    places[15] = "X2";
    places[16] = "null";
    places[17] = "adsb_other";
    places[28] = "A3";
    for (const auto& [place, text] : line.other) {
        places[place] = text;
    }
    return fmt::format("{}", fmt::join(places, ","));
}

void gf_hear(const std::string& datagram)
{
    trafficReader.take(datagram);
}

}  // namespace vlt
