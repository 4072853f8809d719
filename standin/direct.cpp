#include "standin/direct.h"

#include "sim/wire/packets.h"
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

static uint32_t lf_nextSendId(uint32_t last)
{
    return last == UINT32_MAX ? 1 : last + 1;
}

static bool lf_broken(const SimConnection& connection)
{
    return !connection.simulator || !connection.simulator->started();
}

// Composes one packet and hands it over: what every operation does.
template <typename Compose>
static SimStatus lf_send(SimHandle handle, Compose&& compose)
{
    if (!handle) {
        return kSimInvalidArgument;
    }
    const std::scoped_lock lock(directMutex);
    if (lf_broken(*handle)) {
        return kSimFail;
    }
    PacketSpace space{handle->arena};
    const uint32_t sendId = lf_nextSendId(handle->lastSendId);
    const SimStatus status = compose(space, sendId);
    if (status == kSimOk) {
        handle->lastSendId = sendId;
        handle->simulator->handlePacket(space.room.first(space.used));
        std::fill_n(handle->arena.begin(), space.used, std::byte{0});
    } else {
        handle->arena.fill(std::byte{0});
    }
    return status;
}

SimStatus SimConnect_Open(SimHandle* handle, std::string_view name, uint32_t)
{
    if (!handle || name.empty()) {
        return kSimInvalidArgument;
    }
    {
        const std::scoped_lock lock(directMutex);
        if (directConnection || !directSimulator || !directSimulator->connect()) {
            return kSimFail;
        }
        directConnection = new SimConnection;
        directConnection->simulator = directSimulator;
        *handle = directConnection;
    }
    const SimStatus status = lf_send(
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
        return kSimInvalidArgument;
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
        return kSimInvalidArgument;
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
        return kSimInvalidArgument;
    }
    const std::scoped_lock lock(directMutex);
    *sendId = handle->lastSendId;
    return kSimOk;
}

SimStatus SimConnect_SubscribeToSystemEvent(SimHandle handle, uint32_t event, std::string_view name)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeSubscribe(space, sendId, event, name);
    });
}

SimStatus SimConnect_AddToDataDefinition(SimHandle handle, uint32_t definition, std::string_view name,
                                         std::string_view unit, SimDataType type)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeAddToDataDefinition(space, sendId, definition, name, unit, type);
    });
}

SimStatus SimConnect_MapClientEventToSimEvent(SimHandle handle, uint32_t event, std::string_view name)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeMapClientEvent(space, sendId, event, name);
    });
}

SimStatus SimConnect_AddClientEventToNotificationGroup(SimHandle handle, uint32_t group, uint32_t event,
                                                       bool maskable)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeAddEventToGroup(space, sendId, group, event, maskable);
    });
}

SimStatus SimConnect_SetNotificationGroupPriority(SimHandle handle, uint32_t group, uint32_t priority)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeSetGroupPriority(space, sendId, group, priority);
    });
}

SimStatus SimConnect_RequestDataOnSimObject(SimHandle handle, uint32_t request, uint32_t definition,
                                            uint32_t object, uint32_t period)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeRequestData(space, sendId, request, definition, object, period);
    });
}

SimStatus SimConnect_RequestDataOnSimObjectType(SimHandle handle, uint32_t request, uint32_t definition,
                                                uint32_t radiusM, uint32_t objectType)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeRequestDataByType(space, sendId, request, definition, radiusM, objectType);
    });
}

SimStatus SimConnect_SetDataOnSimObject(SimHandle handle, uint32_t definition, uint32_t object,
                                        std::span<const std::byte> data)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeSetData(space, sendId, definition, object, data);
    });
}

SimStatus SimConnect_TransmitClientEvent(SimHandle handle, uint32_t object, uint32_t event, uint32_t data,
                                         uint32_t group, uint32_t flags)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeTransmitClientEvent(space, sendId, object, event, data, group, flags);
    });
}

SimStatus SimConnect_AICreateNonATCAircraft(SimHandle handle, std::string_view title,
                                            std::string_view tailNumber, const SimInitialPosition& position,
                                            uint32_t request)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeCreate(space, sendId, title, tailNumber, position, request);
    });
}

SimStatus SimConnect_AIReleaseControl(SimHandle handle, uint32_t object, uint32_t request)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeReleaseControl(space, sendId, object, request);
    });
}

SimStatus SimConnect_AIRemoveObject(SimHandle handle, uint32_t object, uint32_t request)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeRemoveObject(space, sendId, object, request);
    });
}

SimStatus SimConnect_AISetAircraftFlightPlan(SimHandle handle, uint32_t object, std::string_view path,
                                             uint32_t request)
{
    return lf_send(handle, [&](PacketSpace& space, uint32_t sendId) {
        return gf_composeSetFlightPlan(space, sendId, object, path, request);
    });
}

}  // namespace vlt
