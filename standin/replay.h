// A recording through the whole engine against the virtual simulator, on a virtual clock.
//
// Everything runs on the caller's thread, tick by tick, as fast as the machine can: the engine's tables are
// global, so there is one replay at a time in a process. The same input and seed give the same results.
#pragma once

#include "standin/feed_player.h"
#include "standin/replay_judge.h"
#include "standin/sim_object.h"
#include "standin/virtual_simulator.h"
#include "standin/world_tables.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace vlt {

struct ReplayOptions {
    std::filesystem::path world = gf_sampleWorld();  // types, liveries, titles
    std::filesystem::path airportFile;               // of the park airport; empty: none
    std::string airportCode = "XXXX";
    std::filesystem::path airportsFolder;  // of learned files, laid over and written; empty: none
    std::filesystem::path planFolder;      // for flight plans, removed at the end; empty: none are made
    UserState user;
    Terrain terrain;
    double from = 0;        // seconds of the feed to begin at
    double seconds = 3600;  // of the replay
    int32_t rangeNm = 40;
    int32_t qnh = kStandardQnh;      // hPa
    bool pressureAltitudes = false;  // turn the recording's altitudes into pressure altitudes
    uint64_t seed = 1;
    bool forgets = false;  // keeps no tracks, and every hour forgets what is over; breaks and counts stay
};

// What looks on while the replay runs.
class ReplayObserver
{
public:
    virtual ~ReplayObserver() = default;
    virtual void onTick(int32_t tick) = 0;                           // after each tick, from 0
    virtual void onSecond(int32_t tick, VirtualSimulator& sim) = 0;  // after each full second
};

struct ReplayResult {
    ReplayFindings findings;
    std::vector<ObjectLife> lives;             // of the simulator's objects
    std::vector<Complaint> complaints;         // of the simulator
    SimulatorCounts counts;                    // of the simulator
    std::map<std::string, int64_t> feedLines;  // by what became of them
    double clockAtStart = 0;                   // of the simulator, seconds
    double simulatedSeconds = 0;
    double aircraftSeconds = 0;  // of active aircraft
    double wallSeconds = 0;      // not the same twice
};

// Plays the feed. Throws std::runtime_error for a world or an airport file that can't be used.
ReplayResult gf_replay(const FeedSource& feed, const ReplayOptions& options,
                       ReplayObserver* observer = nullptr);

// The line with its altitude, the fifth field, as an altimeter set to 1013 hPa shows it where sea level
// pressure is `qnh`; a line that can't be read, and one on the ground, stays as it is.
std::string gf_withPressureAltitude(const std::string& line, int32_t qnh);

}  // namespace vlt
