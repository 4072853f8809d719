// velatra-tool decode: feed lines from standard input through the Traffic Reader.
#pragma once

#include <vector>

namespace vlt {

struct DecodeOptions {
    std::vector<double> user;  // latitude and longitude; empty: each line is its own centre
    std::vector<double> park;  // latitude, longitude, elevation in feet; empty: no park airport
    int range = 100;           // nm
    bool here = false;         // RealTraffic runs on this PC
};

// Prints a JSON line for each: the record, or why it was dropped. The exit code.
int gf_decode(const DecodeOptions& options);

}  // namespace vlt
