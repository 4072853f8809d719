// The picture of a run: a chart of the traffic, with the airport large beside it.
//
// Pure functions; any thread.
#pragma once

#include "standin/sim_object.h"
#include "traffic/geodesy.h"

#include <string>
#include <vector>

namespace vlt {

struct Chart {
    std::string title;
    std::string subtitle;
    LatLon user;
    double userHeading = 0;     // radians
    bool atDayAirport = false;  // with the airport of the built-in day in its middle, else the user
    std::vector<ObjectLife> lives;
};

// The chart as an SVG document.
std::string gf_trafficSvg(const Chart& chart);

}  // namespace vlt
