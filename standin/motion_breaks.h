// Finds where an object's motion is not that of an aircraft: jumps, sideways moves, sudden turns.
//
// Looks at the sampled track, with figures of its own. Pure functions; any thread.
#pragma once

#include "standin/sim_object.h"

#include <string>
#include <vector>

namespace vlt {

struct MotionBreak {
    uint32_t object = 0;
    std::string callsign;
    double time = 0;   // seconds of the simulator's clock
    std::string kind;  // "jump", "backward", "sideways", "turn", "height", "below ground", "attitude"
    double size = 0;   // feet or degrees beyond what is allowed
};

// Every break from one second after the first written position on. A push-back isn't one.
std::vector<MotionBreak> gf_motionBreaks(const ObjectLife& life);

// Hours under the program's control, by which breaks are counted.
double gf_controlledHours(const ObjectLife& life, double now);

}  // namespace vlt
