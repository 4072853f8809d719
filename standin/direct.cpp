#include "standin/direct.h"

#include "sim/wire/packets.h"
#include "sim/wire/send_packet.h"
#include "sim/wire/simconnect.h"
#include "standin/virtual_simulator.h"

#include <algorithm>
#include <array>
#include <deque>
#include <mutex>
#include <vector>

namespace vlt {

// A connection in process. Everything in it is guarded by directMutex.
struct SimConnection {
    VirtualSimulator* simulator = nullptr;  // nullptr once broken
    std::array<std::byte, kMaxClientPacket> arena{};
    uint32_t lastSendId = 0;
    std::deque<std::vector<std::byte>> incoming;
    SimDispatchFunction function = nullptr;
};

static std::mutex directMutex;
static VirtualSimulator* directSimulator = nullptr;  // [directMutex]
static SimConnection* directConnection = nullptr;    // [directMutex]

void gf_setDirectSimulator(VirtualSimulator* simulator)
{
    const std::scoped_lock lock(directMutex);
    if (directConnection && directConnection->simulator) {
        directConnection->simulator->disconnect();
        directConnection->simulator = nullptr;
    }
    directSimulator = simulator;
}

static bool lf_broken(const SimConnection& connection)
{
    return !connection.simulator || !connection.simulator->started();
}

SimStatus gf_sendPacket(SimHandle handle, const ComposePacket& compose)
{
    if (!handle) {
        return kSimFail;
    }
    const std::scoped_lock lock(directMutex);
    if (lf_broken(*handle)) {
        return kSimFail;
    }
    handle->lastSendId = gf_sendIdAfter(handle->lastSendId);
    PacketSpace space{handle->arena};
    const SimStatus status = compose(space, handle->lastSendId);
    if (status == kSimOk) {
        handle->simulator->handlePacket(space.room.first(space.used));
    }
    std::ranges::fill(space.room.first(status == kSimOk ? space.used : space.room.size()), std::byte{0});
    return status;
}

SimStatus SimConnect_Open(SimHandle* handle, std::string_view name, uint32_t)
{
    if (!handle || !name.data()) {
        return kSimInvalidArgument;
    }
    *handle = nullptr;
    {
        const std::scoped_lock lock(directMutex);
        if (directConnection || !directSimulator || !directSimulator->connect()) {
            return kSimFail;
        }
        directConnection = new SimConnection;
        directConnection->simulator = directSimulator;
        *handle = directConnection;
    }
    const SimStatus status = gf_sendPacket(
        *handle, [&](PacketSpace& space, uint32_t sendId) { return gf_composeOpen(space, sendId, name); });
    if (status != kSimOk) {
        SimConnect_Close(*handle);
        *handle = nullptr;
    }
    return status;
}

SimStatus SimConnect_Close(SimHandle handle)
{
    if (!handle) {
        return kSimFail;
    }
    const std::scoped_lock lock(directMutex);
    if (handle->simulator) {
        handle->simulator->disconnect();
    }
    if (directConnection == handle) {
        directConnection = nullptr;
    }
    delete handle;
    return kSimOk;
}

// The next message; empty if there is none. `broken` tells that none will come any more.
static std::vector<std::byte> lf_nextMessage(SimConnection& connection, bool& broken)
{
    const std::scoped_lock lock(directMutex);
    if (connection.incoming.empty() && connection.simulator) {
        for (std::vector<std::byte>& message : connection.simulator->takeMessages()) {
            connection.incoming.push_back(std::move(message));
        }
    }
    broken = lf_broken(connection);
    if (connection.incoming.empty()) {
        return {};
    }
    std::vector<std::byte> message = std::move(connection.incoming.front());
    connection.incoming.pop_front();
    return message;
}

SimStatus SimConnect_CallDispatch(SimHandle handle, SimDispatchFunction function, void* context)
{
    if (!handle) {
        return kSimFail;
    }
    {
        const std::scoped_lock lock(directMutex);
        handle->function = function ? function : handle->function;
        function = handle->function;
    }
    if (!function) {
        return kSimFail;
    }
    for (;;) {
        bool broken = false;
        const std::vector<std::byte> message = lf_nextMessage(*handle, broken);
        if (message.empty()) {
            return broken ? kSimFail : kSimOk;
        }
        function(message, context);
    }
}

SimStatus SimConnect_GetLastSentPacketID(SimHandle handle, uint32_t* sendId)
{
    if (!handle || !sendId) {
        return kSimFail;
    }
    const std::scoped_lock lock(directMutex);
    *sendId = handle->lastSendId;
    return kSimOk;
}

}  // namespace vlt
