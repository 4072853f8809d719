#include "sim/wire/transport/connection.h"

#include "core/base/run_state.h"

#include <algorithm>
#include <utility>

namespace vlt {

SimConnection::SimConnection(const SimConfig& config) : SimTransport(config), sendArena(kMaxClientPacket)
{
    ++livingConnections;
}

SimConnection::~SimConnection()
{
    --livingConnections;
}

void SimConnection::packetReceived(std::span<const std::byte> packet)
{
    const std::scoped_lock lock(m_incomingMutex);
    m_incoming.emplace_back(packet.begin(), packet.end());
}

void SimConnection::dropIncoming()
{
    const std::scoped_lock lock(m_incomingMutex);
    m_incoming.clear();
}

bool SimConnection::takeIncoming(std::vector<std::byte>& packet)
{
    const std::scoped_lock lock(m_incomingMutex);
    if (m_incoming.empty()) {
        return false;
    }
    packet = std::move(m_incoming.front());
    m_incoming.pop_front();
    return true;
}

SimStatus SimConnection::dispatch(SimDispatchFunction function, void* context)
{
    if (function) {
        m_dispatchFunction = function;
    }
    if (!m_dispatchFunction) {
        return kSimFail;
    }
    std::vector<std::byte> packet;
    // A server that floods must not hold the program's end back.
    while (!gf_stopping()) {
        // Asked before the list: packets come before the end, so none can follow an end seen here.
        const bool ended = closeReason() != CloseReason::None;
        if (!takeIncoming(packet)) {
            return ended ? closeStatus() : kSimOk;
        }
        if (packet.size() >= kServerHeaderSize) {
            m_dispatchFunction(packet, context);
        }
    }
    return kSimOk;
}

std::shared_ptr<SimConnection> gf_findConnection(SimHandle handle)
{
    const auto found = std::find_if(connections.begin(), connections.end(),
                                    [&](const auto& connection) { return connection.get() == handle; });
    return found == connections.end() ? nullptr : *found;
}

}  // namespace vlt
