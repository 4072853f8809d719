// Whole roads of aircraft: reports of invented journeys at the built-in day's place, and what a replay of
// them looked like.
#pragma once

#include "standin/airport_files.h"
#include "standin/day_path.h"
#include "standin/replay.h"
#include "support/temp_folder.h"
#include "traffic/traffic.h"

#include <functional>
#include <string>
#include <vector>

namespace vlt {

// Who reports.
struct RoadAircraft {
    uint32_t hexid = 4198297;
    std::string callsign = "BAW3AK";
    std::string type = "A320";
    std::string regcode = "G-DBCJ";
    std::string origin;
    std::string destination;
};

// One report and its second.
struct RoadReport {
    double time = 0;
    std::string text;
};

// What an aircraft looked like after a tick.
struct RoadLook {
    int32_t tick = 0;
    uint32_t objectid = 0;
    FsState fs = FsState::Buffer;
    StState st = StState::Birth;
    double lat = 0;
    double lon = 0;
    double east = 0;  // metres from the airport
    double north = 0;
    double feet = 0;  // of the wheels above the airport
    double headingDeg = 0;
    double speed = 0;
    bool onGround = false;
    bool towed = false;
    bool landingRoll = false;
};

// A stage for roads: reports are collected, then played through the engine.
class RoadStage
{
public:
    RoadStage();

    // Reports of the journey every `period` seconds from second `begin` on, until `until` of the journey.
    void add(const RoadAircraft& aircraft, const std::vector<PathState>& journey, double period = 4,
             double begin = 0, double until = 1e9);
    void add(RoadReport report);
    // Changes every line that was added so far; its second stays.
    void editLines(const std::function<void(std::string&)>& edit);
    // No reports, and nothing seen.
    void clear();

    // An airport with a row of gates G1 to G3, 60 m apart, whose aircraft face north, a ramp stand R1 with
    // its way out ahead, and a helipad H1; and no airport at all.
    void useGates();
    void usePlace(const std::string& airportFileText);

    // Plays everything for `seconds`.
    ReplayResult play(double seconds);

    ReplayOptions options;
    // What was seen of the watched address, every tenth of a second while it is in the engine.
    uint32_t watched = 4198297;
    std::vector<RoadLook> looks;
    // Called with every look, after it was taken, and after every full second.
    std::function<void(const RoadLook&)> onLook;
    std::function<void(int32_t, VirtualSimulator&)> onSecond;

private:
    TempFolder m_folder;
    std::vector<RoadReport> m_reports;
};

// A point on the ground, or in the air with `feet` above 0.
RoutePoint gf_at(double east, double north, double knots, double feet = 0, double radius = 30);

// A report in the air at 20,000 ft and 280 kt, anywhere on earth.
std::string gf_roadLine(uint32_t hexid, const std::string& callsign, double lat, double lon, double time);

// The phases in the order in which they were seen, each named once in a row: "parked taxi flying".
std::string gf_phases(const std::vector<RoadLook>& looks);

}  // namespace vlt
