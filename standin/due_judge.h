// Holds every driven aircraft against its own reports: how far from its due place, by band of flight.
//
// Reads the engine's records, on the thread that drives it.
#pragma once

#include "standin/due_track.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

enum class DueBand { Taxi, TakeOffRun, LandingRoll, Below3000Ft, Above3000Ft };
inline constexpr std::array<std::string_view, 5> kDueBandNames{"taxi", "takeOffRun", "landingRoll",
                                                               "below3000Ft", "above3000Ft"};

// One number of one aircraft at one second.
struct DueMeasure {
    float value = 0;
    uint32_t hexid = 0;
    int32_t tick = 0;
};

// The offsets in one band, each by its size; `seconds` keeps its sign: late above 0.
struct DueBandFindings {
    std::vector<DueMeasure> metres, feet, seconds;
};

// Of the sizes: median, 95 %, and the worst measure itself. Of none: zeros.
struct DueSpread {
    double median = 0, most = 0;
    DueMeasure worst;
};
DueSpread gf_spreadOf(std::vector<DueMeasure> measures);

struct DueFindings {
    std::array<DueBandFindings, kDueBandNames.size()> bands;
    std::vector<DueMeasure> rotations;  // seconds after the first report of the air was due
};

class DueJudge
{
public:
    void onReport(const FeedRecord& record);
    // An aircraft lifts its nose.
    void onRotation(const LiveAc& ac);
    // Once a second for every driven aircraft. Tells what can't be, empty if all is well: an object on the
    // ground while its reports are high, one in the air while they taxi, one that hangs below them.
    std::string onSecond(const LiveAc& ac);
    DueFindings finish();

private:
    struct Seen {
        DueTrack track;
        int32_t drivenSince = -1;  // tick
        int32_t wrongSince = -1;   // tick
    };

    DueFindings m_findings;
    std::map<uint32_t, Seen> m_seen;  // by hexid
};

}  // namespace vlt
