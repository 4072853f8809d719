#include "sim/wire/transport/chain.h"

namespace vlt {

constexpr std::string_view kThisMachine = ".";
constexpr std::string_view kLoopbackIPv6 = "::1";
constexpr std::string_view kLoopbackIPv4 = "127.0.0.1";
constexpr std::string_view kDefaultPipe = "Lockheed Martin Prepar3D v5\\SimConnect";

using Attempt = std::function<bool(const SimTarget&)>;

static bool lf_tryPipe(const SimConfig& config, const Attempt& attempt)
{
    const std::string_view host = config.address.empty() ? kThisMachine : std::string_view(config.address);
    const std::string_view name = config.port.empty() ? kDefaultPipe : std::string_view(config.port);
    std::string pipe = "\\\\";
    pipe.append(host).append("\\pipe\\").append(name);
    return attempt({SimRoad::Pipe, std::string(host), pipe});
}

static bool lf_trySocket(const SimConfig& config, SimRoad road, const Attempt& attempt)
{
    return !config.port.empty() && attempt({road, config.address, config.port});
}

bool gf_connectByChain(const SimConfig& config, const Attempt& attempt)
{
    SimConfig now = config;
    if (now.protocol == SimProtocol::Auto) {
        if (lf_tryPipe(now, attempt)) {
            return true;
        }
        if (!now.address.empty() && now.address != kThisMachine) {
            return false;
        }
        now.address = kLoopbackIPv6;
        now.port = gf_simPortFromRegistry(SimProtocol::IPv6);
    }
    if (now.protocol != SimProtocol::IPv4) {
        if (lf_trySocket(now, SimRoad::IPv6, attempt)) {
            return true;
        }
        if (now.address != kLoopbackIPv6) {
            return false;
        }
        now.address = kLoopbackIPv4;
        now.port = gf_simPortFromRegistry(SimProtocol::IPv4);
    }
    if (lf_trySocket(now, SimRoad::IPv4, attempt)) {
        return true;
    }
    if (now.address != kLoopbackIPv4) {
        return false;
    }
    now.address = kThisMachine;
    now.port.clear();
    return lf_tryPipe(now, attempt);
}

}  // namespace vlt
