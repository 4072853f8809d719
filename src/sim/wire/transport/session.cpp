// A conversation over the wire from opening to close, and how its packets are sent.
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "sim/wire/packets.h"
#include "sim/wire/send_packet.h"
#include "sim/wire/simconnect.h"
#include "sim/wire/transport/connection.h"
#include "sim/wire/transport/io_thread.h"
#include "sim/wire/transport/pauses.h"

#include <algorithm>
#include <thread>

namespace vlt {

static std::shared_ptr<SimConnection> lf_find(SimHandle handle)
{
    const std::scoped_lock lock(connectionsMutex);
    return gf_findConnection(handle);
}

// Composes one packet in the arena and sends it. Needs connectionsMutex.
static SimStatus lf_sendLocked(SimConnection& connection, const ComposePacket& compose)
{
    if (connection.closeReason() != CloseReason::None) {
        return connection.closeStatus();
    }
    // A packet that turns out not to fit has used its id up all the same.
    connection.lastSendId = gf_sendIdAfter(connection.lastSendId);
    PacketSpace space{connection.sendArena};
    const SimStatus status = compose(space, connection.lastSendId);
    const size_t touched = status == kSimOk ? space.used : space.room.size();
    const bool sent = status == kSimOk && connection.send(space.room.first(touched));
    std::fill_n(space.room.begin(), touched, std::byte{0});
    if (status != kSimOk) {
        return status;
    }
    return sent ? kSimOk : kSimFail;
}

// Ends what a connection began; `connection` is the owner's reference. The I/O thread ends with the
// last.
static bool lf_end(std::shared_ptr<SimConnection> connection)
{
    {
        const std::scoped_lock lock(connectionsMutex);
        connections.remove(connection);
    }
    const bool wasOpen = connection->close(CloseReason::None, kSimOk);
    connection->start();
    connection.reset();
    return wasOpen;
}

static void lf_endIoThread()
{
    bool last = false;
    {
        const std::scoped_lock lock(connectionsMutex);
        last = connections.empty();
    }
    auto waited = TransportPauses::Time::zero();
    while (last && livingConnections > 0 && waited < transportPauses.completions) {
        std::this_thread::sleep_for(transportPauses.betweenLooks);
        waited += transportPauses.betweenLooks;
    }
    gf_releaseIoThread();
}

// Why a connection isn't made, once per change: the client tries every second.
static void lf_logReason(const std::string& reason)
{
    static std::string last;  // [the connecting thread]
    if (reason != last && !reason.empty()) {
        logLine(format("no connection to the simulator:{}", reason));
    }
    last = reason;
}

static std::shared_ptr<SimConnection> lf_connect(const SimConfig& config)
{
    std::shared_ptr<SimConnection> connection;
    std::string reasons;
    const bool connected = gf_connectByChain(config, [&](const SimTarget& target) {
        if (gf_stopping()) {
            return false;  // an attempt may take seconds
        }
        connection = std::make_shared<SimConnection>(config);
        const std::error_code error = connection->connect(target);
        if (!error) {
            return true;
        }
        reasons += format(" [{}{}: {}]", target.road == SimRoad::Pipe ? "" : target.host + " ", target.name,
                          error.message());
        connection->close(CloseReason::None, kSimOk);
        connection.reset();
        return false;
    });
    if (reasons.empty()) {
        reasons = " [no port is known]";
    }
    lf_logReason(connected || gf_stopping() ? "" : reasons);
    return connected ? connection : nullptr;
}

static SimStatus lf_open(SimHandle* handle, std::string_view name, const SimConfig& config)
{
    const auto connection = lf_connect(config);
    if (!connection) {
        return kSimFail;
    }
    const std::scoped_lock lock(connectionsMutex);
    const SimStatus status = lf_sendLocked(
        *connection, [&](PacketSpace& space, uint32_t id) { return gf_composeOpen(space, id, name); });
    if (status != kSimOk) {
        connection->close(CloseReason::None, kSimOk);
        return status;
    }
    connections.push_back(connection);
    *handle = connection.get();
    return kSimOk;
}

SimStatus SimConnect_Open(SimHandle* handle, std::string_view name, uint32_t configIndex)
{
    if (!handle || !name.data()) {
        return kSimInvalidArgument;
    }
    *handle = nullptr;
    const auto config = gf_readSimConfig(gf_simConfigFolders(), configIndex);
    if (!config) {
        return kSimInvalidArgument;
    }
    gf_holdIoThread();
    SimStatus status = kSimFail;
    try {
        status = lf_open(handle, name, *config);
    } catch (const std::exception&) {
        status = kSimFail;
    }
    if (status != kSimOk) {
        lf_endIoThread();
    }
    return status;
}

SimStatus SimConnect_Close(SimHandle handle)
{
    auto connection = lf_find(handle);
    if (!connection) {
        return kSimFail;
    }
    const bool couldFlush = connection->isOpen();
    std::this_thread::sleep_for(transportPauses.afterFlush);
    connection->dropIncoming();
    const bool couldClose = lf_end(std::move(connection));
    std::this_thread::sleep_for(transportPauses.afterClose);
    lf_endIoThread();
    return couldFlush || couldClose ? kSimOk : kSimFail;
}

SimStatus SimConnect_CallDispatch(SimHandle handle, SimDispatchFunction function, void* context)
{
    const auto connection = lf_find(handle);
    return connection ? connection->dispatch(function, context) : kSimFail;
}

SimStatus SimConnect_GetLastSentPacketID(SimHandle handle, uint32_t* sendId)
{
    const std::scoped_lock lock(connectionsMutex);
    const auto connection = gf_findConnection(handle);
    if (!connection || !sendId) {
        return kSimFail;
    }
    if (connection->closeReason() != CloseReason::None) {
        return connection->closeStatus();
    }
    *sendId = connection->lastSendId;
    return kSimOk;
}

SimStatus gf_sendPacket(SimHandle handle, const ComposePacket& compose)
{
    try {
        const std::scoped_lock lock(connectionsMutex);
        const auto connection = gf_findConnection(handle);
        return connection ? lf_sendLocked(*connection, compose) : kSimFail;
    } catch (const std::exception&) {
        return kSimFail;
    }
}

}  // namespace vlt
