// The packets that go to the simulator: one composer per operation, as bytes ready for the wire, and a
// reader of the packets of both sides.
//
// Used by both libraries that serve the operations, so that what the tests drive in process is byte
// for byte what goes over the wire. Stateless; any thread.
#pragma once

#include "sim/wire/simconnect.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vlt {

inline constexpr uint32_t kClientProtocolVersion = 35;
inline constexpr uint32_t kClientFunctionBase = 0xF0000000;
inline constexpr size_t kClientHeaderSize = 16;  // size, version, id, send id
inline constexpr size_t kServerHeaderSize = 12;  // size, version, id
inline constexpr size_t kMaxClientPacket = 41088;

// Function numbers, as added to kClientFunctionBase.
enum class SimFunction : uint32_t {
    Open = 0x01,
    MapClientEventToSimEvent = 0x04,
    TransmitClientEvent = 0x05,
    AddClientEventToNotificationGroup = 0x07,
    SetNotificationGroupPriority = 0x09,
    AddToDataDefinition = 0x0C,
    RequestDataOnSimObject = 0x0E,
    RequestDataOnSimObjectType = 0x0F,
    SetDataOnSimObject = 0x10,
    SubscribeToSystemEvent = 0x17,
    AICreateNonATCAircraft = 0x29,
    AIReleaseControl = 0x2B,
    AIRemoveObject = 0x2C,
    AISetAircraftFlightPlan = 0x2D,
};

// The send id after `id`: counts up, and goes from the largest to 1, since 0 is "none".
uint32_t gf_sendIdAfter(uint32_t id);

// Where a composed packet goes: the unused rest of a zeroed arena. `used` is the packet's length after
// a composer has succeeded.
struct PacketSpace {
    std::span<std::byte> room;  // zeroed
    size_t used = 0;            // bytes, 0 before
};

// Each composer writes one whole packet with `sendId` to the front of `space.room` and sets
// `space.used`. kSimTextTooLong if a text (with its closing zero) doesn't fit its field, kSimFail if
// the packet doesn't fit the room; nothing counts as written then, though bytes may have been touched.
SimStatus gf_composeOpen(PacketSpace& space, uint32_t sendId, std::string_view name);
SimStatus gf_composeMapClientEvent(PacketSpace& space, uint32_t sendId, uint32_t event,
                                   std::string_view name);
SimStatus gf_composeTransmitClientEvent(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t event,
                                        uint32_t data, uint32_t group, uint32_t flags);
SimStatus gf_composeAddEventToGroup(PacketSpace& space, uint32_t sendId, uint32_t group, uint32_t event,
                                    bool maskable);
SimStatus gf_composeSetGroupPriority(PacketSpace& space, uint32_t sendId, uint32_t group, uint32_t priority);
SimStatus gf_composeAddToDataDefinition(PacketSpace& space, uint32_t sendId, uint32_t definition,
                                        std::string_view name, std::string_view unit, SimDataType type);
SimStatus gf_composeRequestData(PacketSpace& space, uint32_t sendId, uint32_t request, uint32_t definition,
                                uint32_t object, uint32_t period);
SimStatus gf_composeRequestDataByType(PacketSpace& space, uint32_t sendId, uint32_t request,
                                      uint32_t definition, uint32_t radiusM, uint32_t objectType);
SimStatus gf_composeSetData(PacketSpace& space, uint32_t sendId, uint32_t definition, uint32_t object,
                            std::span<const std::byte> data);
SimStatus gf_composeSubscribe(PacketSpace& space, uint32_t sendId, uint32_t event, std::string_view name);
SimStatus gf_composeCreate(PacketSpace& space, uint32_t sendId, std::string_view title,
                           std::string_view tailNumber, const SimInitialPosition& position, uint32_t request);
SimStatus gf_composeReleaseControl(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t request);
SimStatus gf_composeRemoveObject(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t request);
SimStatus gf_composeSetFlightPlan(PacketSpace& space, uint32_t sendId, uint32_t object, std::string_view path,
                                  uint32_t request);

// Reads little-endian values one after the other; throws std::out_of_range past the end, so that a
// message with a body too short for its id is caught by its reader.
class PacketReader
{
public:
    explicit PacketReader(std::span<const std::byte> bytes) : m_bytes(bytes) {}
    uint32_t u32();
    int64_t i64();
    float f32();
    double f64();
    // A zero-ended text in a field of `width` bytes.
    std::string_view text(size_t width);
    // A zero-ended text of any length; moves past its zero. The end of the packet ends it as well.
    std::string_view textV();
    void skip(size_t bytes);
    [[nodiscard]] size_t remaining() const
    {
        return m_bytes.size() - m_at;
    }
    std::span<const std::byte> rest() const
    {
        return m_bytes.subspan(m_at);
    }

private:
    std::span<const std::byte> take(size_t bytes);
    std::span<const std::byte> m_bytes;
    size_t m_at = 0;
};

}  // namespace vlt
