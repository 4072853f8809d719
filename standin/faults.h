// What may go wrong in the world outside, by words: at a second of the run (--fault), or now (a word on
// standard input).
//
// The table is stateless; a fault is played on the thread that calls.
#pragma once

#include "standin/feed_player.h"
#include "standin/file_server.h"
#include "standin/realtraffic_client.h"
#include "standin/sim_server.h"
#include "standin/virtual_simulator.h"

#include <optional>
#include <string>
#include <string_view>

namespace vlt {

// The world that faults strike; nullptr where a part of it isn't there.
struct FaultTargets {
    VirtualSimulator* simulator = nullptr;
    SimServer* server = nullptr;
    FeedPlayer* feed = nullptr;
    RealTrafficClient* realTraffic = nullptr;
    FileServer* files = nullptr;
};

// Plays the fault of this word. False if there is none, or the part of the world isn't there.
bool gf_playFault(std::string_view word, const FaultTargets& targets);

struct PlannedFault {
    std::string word;
    double second = 0;  // of the run
};
// "word@second"; none if it can't be read, or there is no such fault.
std::optional<PlannedFault> gf_plannedFault(std::string_view text);

// The words with what they do, a line each.
std::string gf_faultWords();

}  // namespace vlt
