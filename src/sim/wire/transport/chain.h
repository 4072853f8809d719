// The order in which the ways to the simulator are tried: pipe, TCP on IPv6, TCP on IPv4, pipe
// again.
//
// The order alone, without a socket: the attempts themselves come from the caller. Stateless.
#pragma once

#include "sim/wire/transport/config.h"

#include <functional>
#include <string>

namespace vlt {

enum class SimRoad { Pipe, IPv6, IPv4 };

// One attempt: where to, and how.
struct SimTarget {
    SimRoad road = SimRoad::Pipe;
    std::string host;  // of a socket
    std::string name;  // the port of a socket, the whole name of a pipe
};

// Tries the ways that `config` allows, until `attempt` returns true; false if none does. An address
// of another machine gets one attempt; the loopback addresses follow only where none was set.
bool gf_connectByChain(const SimConfig& config, const std::function<bool(const SimTarget&)>& attempt);

}  // namespace vlt
