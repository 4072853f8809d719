// How long the transport waits, and for what.
//
// The end of the program waits for an attempt that is under way, so the limits of connecting stay short.
#pragma once

#include <chrono>

namespace vlt {

struct TransportPauses {
    using Time = std::chrono::milliseconds;
    Time lookUp{1000};       // at most, for the address of a host
    Time connect{2000};      // at most, for a machine that is silent
    Time busyPipe{5000};     // at most, for a pipe that is there but serves another client at the moment
    Time afterFlush{100};    // for the last packets to leave
    Time afterClose{250};    // for what runs to complete
    Time betweenLooks{250};  // whether all of it has completed
    Time completions{5000};  // at most, for that
};

inline TransportPauses transportPauses;  // [const] the program keeps these; tests shorten them

}  // namespace vlt
