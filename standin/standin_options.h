// The command line of velatra-standin.
//
// Parsed once in main, read only afterwards.
#pragma once

#include "standin/faults.h"
#include "standin/feed_player.h"
#include "standin/file_server.h"
#include "standin/sim_server.h"
#include "standin/virtual_simulator.h"
#include "standin/world_tables.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

struct StandinOptions {
    std::filesystem::path world = gf_sampleWorld();
    std::filesystem::path recording;  // empty for the built-in day
    bool noFeed = false;
    uint64_t seed = 1;
    double seconds = 0;  // of the run, 0 for without end
    bool quitAtEnd = false;
    double noSimulatorFor = 0;  // seconds
    SimulatorOptions simulator;
    ServerOptions server;
    FeedOptions feed;
    std::optional<uint16_t> realTrafficPort;  // of the program's position server
    std::optional<FileServerOptions> files;
    std::vector<PlannedFault> faults;
    std::filesystem::path out;             // empty for no summary
    std::filesystem::path writeRecording;  // instead of a run
};

// The options; none if the program is to end now with `exitCode`: help was shown, or an error was.
std::optional<StandinOptions> gf_standinOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace vlt
