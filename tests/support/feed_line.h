// Builds lines of the feed for tests: a valid airborne report, with what a test wants different.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace vlt {

struct FeedLine {
    uint32_t hexid = 4198297;
    double lat = 47.0;
    double lon = 8.0;
    double altitude = 35000;  // feet
    double vs = 0;            // feet per minute
    double track = 90;        // degrees
    double speed = 450;       // knots
    std::string callsign = "BAW3AK";
    std::string type = "A319";
    std::string tail = "G-DBCJ";
    std::string origin = "TLS";
    std::string destination = "LHR";
    double timestamp = 1717665811.8;      // seconds since 1970
    std::map<size_t, std::string> other;  // by place, wins over all of the above
};

// The line, with its 43 places.
std::string gf_feedText(const FeedLine& line);

// Gives the line to the Traffic Reader as a datagram.
void gf_hear(const std::string& datagram);
inline void gf_hear(const FeedLine& line)
{
    gf_hear(gf_feedText(line));
}

}  // namespace vlt
