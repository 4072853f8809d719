// The files that a replay leaves: tracks.csv, events.csv, aircraft.csv and report.json.
//
// The same replay writes the same bytes; the only thing that isn't the same twice, its duration, stays out.
#pragma once

#include "core/base/text.h"
#include "standin/replay.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace vlt {

// Writes tracks.csv and events.csv while the replay runs. Throws std::runtime_error if it can't.
//
// tracks.csv: every active aircraft every `everyTicks` ticks, angles in degrees, altitudes in feet.
// events.csv: every call into the simulator but the positions, which are the tracks.
class ReplayRecorder : public ReplayObserver
{
public:
    // Into the folder, which is made if need be.
    ReplayRecorder(const std::filesystem::path& folder, int32_t everyTicks, bool events);
    void onTick(int32_t tick) override;
    void onSecond(int32_t tick, VirtualSimulator& simulator) override;

private:
    std::ofstream m_tracks;
    std::ofstream m_events;
    fmt::memory_buffer m_rows;  // of the present second
    int32_t m_everyTicks;
};

// Writes aircraft.csv and report.json. Throws std::runtime_error if it can't.
void gf_writeReplay(const ReplayResult& result, const std::filesystem::path& folder);

}  // namespace vlt
