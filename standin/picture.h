// The picture of a run: a chart of the traffic, with the airport large beside it.
//
// Pure but for the writing of the file; any thread.
#pragma once

#include "standin/sim_object.h"
#include "traffic/geodesy.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

struct ChartRunway {
    std::string name;
    LatLon ends[2];
};

struct ChartStand {
    std::string id;
    LatLon at;
    double radiusM = 0;
};

struct ChartAirport {
    std::string code;
    LatLon at;
    double elevation = 0;  // feet
    std::vector<ChartRunway> runways;
    std::vector<ChartStand> stands;
};

struct Chart {
    std::string title;
    std::string subtitle;
    LatLon user;
    double userHeading = 0;  // radians
    std::optional<ChartAirport> airport;
    std::vector<ObjectLife> lives;
};

// The invented airport of the built-in day.
ChartAirport gf_dayChartAirport();

// The chart as an SVG document.
std::string gf_trafficSvg(const Chart& chart);

// Throws std::runtime_error if the file can't be written.
void gf_writePicture(const Chart& chart, const std::filesystem::path& file);

}  // namespace vlt
