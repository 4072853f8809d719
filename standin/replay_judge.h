// Looks at every second of a replay: what must never happen, and how each aircraft lived and touched down.
//
// Reads the engine's tables, on the thread that drives it.
#pragma once

#include "standin/due_judge.h"
#include "standin/static_judge.h"
#include "standin/virtual_simulator.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vlt {

// Something that must not be, whatever the feed says.
struct InvariantBreak {
    int32_t tick = 0;
    std::string what;
};

// Where and how an aircraft came down.
struct Touchdown {
    int32_t tick = 0;
    LatLon at;
    double sinkFpm = 0;  // feet per minute, of the last tick
};

// One aircraft's way through the engine.
struct ReplayLife {
    uint32_t hexid = 0;
    std::string callsign;
    std::string airline;
    std::string model;
    std::string regcode;
    std::string title;
    int32_t titleStep = 0;
    int32_t firstTick = 0;    // known
    int32_t activeTick = -1;  // driven; -1 never
    int32_t goneTick = -1;    // -1: still there
    FsState fs = FsState::Buffer;
    StState st = StState::Birth;  // last seen
    std::string stands;           // where it parked, in order, with blanks between
    double standDistanceM = -1;   // of the parked aircraft from its last stand's centre
    std::optional<Touchdown> touchdown;
    double firstGroundReportM = -1;  // from the touchdown to the first report on the ground; -1: none, or
                                     // after a gap of more than 30 s
    std::string why;                 // it went
};

struct ReplayFindings {
    std::vector<InvariantBreak> invariantBreaks;  // the first kMostBreaks
    int64_t invariantBreakCount = 0;
    std::vector<ReplayLife> lives;  // in the order of their appearance
    DueFindings due;
    StaticFindings statics;
};

class ReplayJudge
{
public:
    static constexpr size_t kMostBreaks = 200;

    // A report that the engine took in.
    void onReport(const FeedRecord& record);
    void onTick();
    void onSecond(const VirtualSimulator& simulator);
    // Forgets everybody's past, so that a long replay doesn't fill the memory; breaks stay.
    void forget();
    // Everything found. The replay is over.
    ReplayFindings finish();

    // Aircraft under the engine's control at the last second.
    int64_t active() const
    {
        return m_active;
    }

private:
    // What was seen of an aircraft at the last look.
    struct Seen {
        size_t life = 0;  // index into the findings' lives
        int32_t tick = 0;
        double altRate = 0;  // feet per tick
        bool landingRoll = false;
        bool parked = false;
    };
    struct Parked {
        LatLon at;
        std::array<double, 4> attitude{};  // heading, altitude, pitch, bank
        bool settled = false;              // compared from now on
    };
    // The reports of one address.
    struct Reports {
        bool airborne = false;
        double timestamp = 0;               // of the last one
        std::optional<LatLon> firstGround;  // after the last airborne one, unless a gap lies between
    };

    Seen& seenOf(const LiveAc& ac);
    void look(const LiveAc& ac);
    void close(const Seen& seen);
    void note(std::string what);
    void checkIdentities();
    void checkNumbers(const LiveAc& ac);
    void checkParked(const LiveAc& ac, const std::unordered_map<uint32_t, const SimObject*>& objects);

    ReplayFindings m_findings;
    std::unordered_map<uint32_t, Seen> m_seen;  // by hexid
    std::map<uint32_t, Parked> m_parked;        // by object
    std::map<uint32_t, Reports> m_reports;      // by hexid
    DueJudge m_due;
    StaticJudge m_statics;
    int64_t m_active = 0;
};

}  // namespace vlt
