// The packet level of one connection: what has arrived and waits for the caller, and where packets
// to the simulator are composed.
//
// `connections` lists all that are open; a handle counts only while it is there.
#pragma once

#include "sim/wire/packets.h"
#include "sim/wire/simconnect.h"
#include "sim/wire/transport/transport.h"

#include <atomic>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace vlt {

struct SimConnection final : public SimTransport {
    explicit SimConnection(const SimConfig& config);
    ~SimConnection() override;

    // Gives what has arrived to `function`, or to the last one given if that is null; on the
    // caller's thread, one thread at a time, with no lock held during the function.
    SimStatus dispatch(SimDispatchFunction function, void* context);
    // Drops what has arrived.
    void dropIncoming();

    std::vector<std::byte> sendArena;  // [connectionsMutex] zeroed between packets
    uint32_t lastSendId = 0;           // [connectionsMutex] of the packet last begun

protected:
    void packetReceived(std::span<const std::byte> packet) override;

private:
    bool takeIncoming(std::vector<std::byte>& packet);

    std::mutex m_incomingMutex;
    std::deque<std::vector<std::byte>> m_incoming;     // [incomingMutex]
    SimDispatchFunction m_dispatchFunction = nullptr;  // [the dispatching thread]
};

inline std::mutex connectionsMutex;
inline std::list<std::shared_ptr<SimConnection>> connections;  // [connectionsMutex]
inline std::atomic<int> livingConnections = 0;                 // [atomic] listed or not

// The listed connection of a handle; none for null and for a handle that is dead. Needs
// connectionsMutex.
std::shared_ptr<SimConnection> gf_findConnection(SimHandle handle);

}  // namespace vlt
