// The requests to the simulator, each one packet: composed here, put on its way by `gf_sendPacket`.
#include "sim/wire/packets.h"
#include "sim/wire/send_packet.h"
#include "sim/wire/simconnect.h"

namespace vlt {

// By reference, so that no request needs memory for its composer.
template <typename Compose, typename... Arguments>
static SimStatus lf_send(SimHandle handle, Compose compose, const Arguments&... arguments)
{
    const auto composed = [&](PacketSpace& space, uint32_t sendId) {
        return compose(space, sendId, arguments...);
    };
    return gf_sendPacket(handle, std::cref(composed));
}

SimStatus SimConnect_SubscribeToSystemEvent(SimHandle handle, uint32_t event, std::string_view name)
{
    return lf_send(handle, gf_composeSubscribe, event, name);
}

SimStatus SimConnect_AddToDataDefinition(SimHandle handle, uint32_t definition, std::string_view name,
                                         std::string_view unit, SimDataType type)
{
    return lf_send(handle, gf_composeAddToDataDefinition, definition, name, unit, type);
}

SimStatus SimConnect_MapClientEventToSimEvent(SimHandle handle, uint32_t event, std::string_view name)
{
    return lf_send(handle, gf_composeMapClientEvent, event, name);
}

SimStatus SimConnect_AddClientEventToNotificationGroup(SimHandle handle, uint32_t group, uint32_t event,
                                                       bool maskable)
{
    return lf_send(handle, gf_composeAddEventToGroup, group, event, maskable);
}

SimStatus SimConnect_SetNotificationGroupPriority(SimHandle handle, uint32_t group, uint32_t priority)
{
    return lf_send(handle, gf_composeSetGroupPriority, group, priority);
}

SimStatus SimConnect_RequestDataOnSimObject(SimHandle handle, uint32_t request, uint32_t definition,
                                            uint32_t object, uint32_t period)
{
    return lf_send(handle, gf_composeRequestData, request, definition, object, period);
}

SimStatus SimConnect_RequestDataOnSimObjectType(SimHandle handle, uint32_t request, uint32_t definition,
                                                uint32_t radiusM, uint32_t objectType)
{
    return lf_send(handle, gf_composeRequestDataByType, request, definition, radiusM, objectType);
}

SimStatus SimConnect_SetDataOnSimObject(SimHandle handle, uint32_t definition, uint32_t object,
                                        std::span<const std::byte> data)
{
    return lf_send(handle, gf_composeSetData, definition, object, data);
}

SimStatus SimConnect_TransmitClientEvent(SimHandle handle, uint32_t object, uint32_t event, uint32_t data,
                                         uint32_t group, uint32_t flags)
{
    return lf_send(handle, gf_composeTransmitClientEvent, object, event, data, group, flags);
}

SimStatus SimConnect_AICreateNonATCAircraft(SimHandle handle, std::string_view title,
                                            std::string_view tailNumber, const SimInitialPosition& position,
                                            uint32_t request)
{
    return lf_send(handle, gf_composeCreate, title, tailNumber, position, request);
}

SimStatus SimConnect_AIReleaseControl(SimHandle handle, uint32_t object, uint32_t request)
{
    return lf_send(handle, gf_composeReleaseControl, object, request);
}

SimStatus SimConnect_AIRemoveObject(SimHandle handle, uint32_t object, uint32_t request)
{
    return lf_send(handle, gf_composeRemoveObject, object, request);
}

SimStatus SimConnect_AISetAircraftFlightPlan(SimHandle handle, uint32_t object, std::string_view path,
                                             uint32_t request)
{
    return lf_send(handle, gf_composeSetFlightPlan, object, path, request);
}

}  // namespace vlt
