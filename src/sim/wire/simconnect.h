// The simulator's operations as Velatra calls them, with the ids and constants of the conversation.
//
// Two libraries serve them: velatra_transport over a socket or pipe, velatra_direct by the virtual
// simulator in the same process. Which one is a choice of the link, so there is no interface class; the
// requests are composed once for both (send_packet.h). Every call may come from any thread, but the dispatch
// function runs on the thread that calls SimConnect_CallDispatch. Callers outside the SimClient thread hold
// `simCallMutex`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vlt {

// kSimOk, or a failure: every other value, with the bits of the system's status codes.
using SimStatus = int32_t;
inline constexpr SimStatus kSimOk = 0;
inline constexpr SimStatus kSimFail = static_cast<SimStatus>(0x80004005);
inline constexpr SimStatus kSimInvalidArgument = static_cast<SimStatus>(0x80070057);
inline constexpr SimStatus kSimTextTooLong = static_cast<SimStatus>(0x8007007A);

// A connection, owned by the library that made it. nullptr means none.
using SimHandle = struct SimConnection*;

// One message from the simulator, whole, of at least 12 bytes (size, version, id).
using SimDispatchFunction = void (*)(std::span<const std::byte> message, void* context);

enum class SimMessageId : uint32_t {
    Exception = 1,
    Open = 2,
    Quit = 3,
    Event = 4,
    ObjectAddRemove = 5,
    FileName = 6,
    Frame = 7,
    ObjectData = 8,
    ObjectDataByType = 9,
};

// Types of one entry of a data definition.
enum class SimDataType : uint32_t {
    Int32 = 1,
    Int64 = 2,
    Float32 = 3,
    Float64 = 4,
    String8 = 5,
    String32 = 6,
    String64 = 7,
    String128 = 8,
    String256 = 9,
    String260 = 10,
    StringV = 11,
};

inline constexpr uint32_t kSimDatumIdUnused = 0xFFFFFFFF;
inline constexpr uint32_t kSimUserObject = 0;          // "the user's aircraft" as argument of a request
inline constexpr uint32_t kSimObjectTypeAircraft = 2;  // for requests by type and in ObjectAddRemove
inline constexpr uint32_t kSimPeriodOnce = 1;
inline constexpr uint32_t kSimPeriodSecond = 4;

// Where an object is created: latitude, longitude in degrees, altitude in feet, angles in degrees.
struct SimInitialPosition {
    double lat = 0;
    double lon = 0;
    double altitude = 0;
    double pitch = 0;
    double bank = 0;
    double heading = 0;
    uint32_t onGround = 0;
    uint32_t airspeed = 0;  // knots
};
static_assert(sizeof(SimInitialPosition) == 56, "goes over the wire as it lies in memory");

// Widths of the text fields in packets, with the closing zero.
inline constexpr size_t kSimNameWidth = 256;
inline constexpr size_t kSimTailNumberWidth = 12;
inline constexpr size_t kSimPathWidth = 260;

// Opens a connection to the simulator and sends the opening packet with `name`. A failure while the
// simulator isn't there.
SimStatus SimConnect_Open(SimHandle* handle, std::string_view name, uint32_t configIndex);
// Ends the connection; the handle is dead afterwards.
SimStatus SimConnect_Close(SimHandle handle);
// Gives every message that has arrived to `function`, on this thread. A failure once the connection is
// broken and everything before that was given.
SimStatus SimConnect_CallDispatch(SimHandle handle, SimDispatchFunction function, void* context);
// The send id of the last packet, by which an exception names its cause.
SimStatus SimConnect_GetLastSentPacketID(SimHandle handle, uint32_t* sendId);

// The requests. Each sends one packet at once; a text too long for its field gives kSimTextTooLong and
// sends nothing; a broken connection gives the status with which it broke.
SimStatus SimConnect_SubscribeToSystemEvent(SimHandle handle, uint32_t event, std::string_view name);
SimStatus SimConnect_AddToDataDefinition(SimHandle handle, uint32_t definition, std::string_view name,
                                         std::string_view unit, SimDataType type);
SimStatus SimConnect_MapClientEventToSimEvent(SimHandle handle, uint32_t event, std::string_view name);
SimStatus SimConnect_AddClientEventToNotificationGroup(SimHandle handle, uint32_t group, uint32_t event,
                                                       bool maskable);
SimStatus SimConnect_SetNotificationGroupPriority(SimHandle handle, uint32_t group, uint32_t priority);
SimStatus SimConnect_RequestDataOnSimObject(SimHandle handle, uint32_t request, uint32_t definition,
                                            uint32_t object, uint32_t period);
SimStatus SimConnect_RequestDataOnSimObjectType(SimHandle handle, uint32_t request, uint32_t definition,
                                                uint32_t radiusM, uint32_t objectType);
SimStatus SimConnect_SetDataOnSimObject(SimHandle handle, uint32_t definition, uint32_t object,
                                        std::span<const std::byte> data);
SimStatus SimConnect_TransmitClientEvent(SimHandle handle, uint32_t object, uint32_t event, uint32_t data,
                                         uint32_t group, uint32_t flags);
SimStatus SimConnect_AICreateNonATCAircraft(SimHandle handle, std::string_view title,
                                            std::string_view tailNumber, const SimInitialPosition& position,
                                            uint32_t request);
SimStatus SimConnect_AIReleaseControl(SimHandle handle, uint32_t object, uint32_t request);
SimStatus SimConnect_AIRemoveObject(SimHandle handle, uint32_t object, uint32_t request);
SimStatus SimConnect_AISetAircraftFlightPlan(SimHandle handle, uint32_t object, std::string_view path,
                                             uint32_t request);

}  // namespace vlt
