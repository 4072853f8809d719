// What came of a run with the stand-in: counts, complaints, every object's life, motion breaks.
//
// Writes files; no state. Any thread.
#pragma once

#include "standin/virtual_simulator.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace vlt {

// What the simulator doesn't know about the run.
struct RunFacts {
    std::string world;
    std::string feed;  // what was played
    uint64_t feedLines = 0;
    uint64_t httpRequests = 0;
    uint64_t positionLines = 0;  // of the program to RealTraffic
    std::string lastPosition;    // the last of them
    uint64_t timeLines = 0;
    uint64_t realTrafficConnections = 0;
};

// The summary as JSON text, indented.
std::string gf_summary(const VirtualSimulator& simulator, const RunFacts& facts);

// Writes `summary.json` and `tracks.csv` into the folder, which is made if need be. Throws
// std::runtime_error if a file can't be written.
void gf_writeSummary(const VirtualSimulator& simulator, const RunFacts& facts,
                     const std::filesystem::path& folder);

}  // namespace vlt
