// A replay of many hours: what grows, and what is left over, minute by minute.
//
// Used on the thread that drives the replay. Memory, threads and descriptors are the whole process's; where
// the system doesn't tell them they stay 0.
#pragma once

#include "standin/replay.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vlt {

struct ProcessUse {
    double memoryMb = 0;  // resident
    int64_t threads = 0;
    int64_t descriptors = 0;
};
ProcessUse gf_processUse();

struct LongRunMinute {
    int32_t minute = 0;  // of the replay, 1 after the first
    uint64_t created = 0, removed = 0, alive = 0;
    ProcessUse use;
};

// Writes minutes.csv while the replay runs. Throws std::runtime_error if it can't.
class LongRunRecorder : public ReplayObserver
{
public:
    explicit LongRunRecorder(const std::filesystem::path& folder);
    void onTick(int32_t) override {}
    void onSecond(int32_t now, VirtualSimulator& simulator) override;

    const std::vector<LongRunMinute>& minutes() const
    {
        return m_minutes;
    }

private:
    std::ofstream m_file;
    std::vector<LongRunMinute> m_minutes;
};

// The minutes at full hours as a table.
std::string gf_hoursText(const std::vector<LongRunMinute>& minutes);

// What must not be, a line each: objects that are lost, more than 5 MB of growth from the end of the first
// hour to that of any other, threads or descriptors that `before` had not and `after` has.
std::vector<std::string> gf_longRunFaults(const std::vector<LongRunMinute>& minutes, const ProcessUse& before,
                                          const ProcessUse& after);

}  // namespace vlt
