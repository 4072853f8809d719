// velatra-tool plan: which static aircraft an airport would get at a half hour of the week, and why the
// other stands would stay empty.
#pragma once

#include "standin/world_tables.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace vlt {

struct PlanOptions {
    std::filesystem::path airportFile;
    std::string heard;               // a file of call signs of flights in the air, one a line; empty: none
    std::filesystem::path airports;  // folder of learned files, laid over; empty: none
    std::filesystem::path world = gf_sampleWorld();
    uint32_t day = 1;   // 1 Monday to 7 Sunday
    uint32_t slot = 0;  // 0 to 47
    int32_t percentage = 30;
    int32_t maxFit = 47;  // half hours
    uint64_t seed = 1;
    int32_t plans = 1;     // with the seeds that follow; more than one are counted
    bool week = false;     // weekdays don't count
    bool soft = false;     // inferred options too
    bool inOrder = false;  // no chance: the first option of the file
};

// Prints a JSON line for each stand: its aircraft, or of several plans how often each was chosen. The exit
// code; throws if the file holds no stands.
int gf_plan(const PlanOptions& options);

}  // namespace vlt
