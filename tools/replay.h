// velatra-tool replay: a recording through the whole engine on a virtual clock.
#pragma once

#include "standin/replay.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace vlt {

struct ReplayToolOptions {
    ReplayOptions replay;
    std::filesystem::path recording;  // empty: the built-in day
    std::filesystem::path out = "replay";
    std::vector<double> user;            // latitude, longitude
    std::optional<double> userAltitude;  // feet; none: on the ground
    double userHeadingDeg = 0;
    std::optional<double> elevation;  // of the ground, feet
    double slopePercent = 0;
    int32_t every = 10;  // ticks between the rows of tracks.csv
    bool noEvents = false;
    uint64_t seeds =
        0;  // replays of the built-in day with the seeds 1 to this, each into a folder of its own
    int32_t repeat =
        0;  // times that the stretch is played in one run, watched for what grows; 0: once, as usual
};

// What the replay itself needs. Writes the built-in day's airport file to the folder `out` where none is
// given. Throws if a recording comes without the user's place.
ReplayOptions gf_replayOptions(const ReplayToolOptions& options);

// Writes the results to the folder `out` and prints one JSON line, or for several seeds or hours one table.
// The exit code: 2 if something was that must never be. Throws as gf_replayOptions does, and if a file can't
// be written.
int gf_replayToFiles(const ReplayToolOptions& options);

}  // namespace vlt
