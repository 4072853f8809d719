// Looks at the static aircraft of a replay every second: how each lived, how many stood in each half hour,
// and what must never be.
//
// Reads the engine's tables, on the thread that drives it.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vlt {

// One static aircraft's stay.
struct StaticLife {
    uint32_t hexid = 0;
    std::string callsign;
    std::string airline;
    std::string model;
    std::string regcode;
    std::string title;
    int32_t titleStep = 0;
    std::string stand;
    int32_t firstTick = 0;
    int32_t activeTick = -1;  // -1: never
    int32_t goneTick = -1;    // -1: still there
    bool soft = false;        // its stand was inferred
    FsState fs = FsState::Buffer;
    std::string why;  // it went
};

// Who stands at the end of a half hour.
struct ParkedCount {
    HourStamp stamp;
    int32_t statics = 0;
    int32_t live = 0;
    int32_t wanted = 0;
};

struct StaticFindings {
    std::vector<StaticLife> lives;  // in the order of their appearance
    std::vector<ParkedCount> halfHours;
    int32_t updates = 0;  // what was learned
};

class StaticJudge
{
public:
    using Note = std::function<void(std::string)>;
    // `note` is told what must not be.
    void onSecond(const Note& note);
    StaticFindings finish();

private:
    void look(const StaticAc& ac);

    StaticFindings m_findings;
    std::map<uint32_t, size_t> m_present;  // by hexid: index into the lives
};

}  // namespace vlt
