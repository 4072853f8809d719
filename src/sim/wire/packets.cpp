#include "sim/wire/packets.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace vlt {

// Values are copied to and from the wire as they lie in memory.
static_assert(std::endian::native == std::endian::little, "the wire is little-endian");

// What the opening packet tells about the client: the simulator's library of this version.
constexpr uint32_t kOpenTag = 0x50334400;
constexpr uint32_t kOpenVersion = 5;
constexpr uint32_t kOpenSubversion = 3;
constexpr size_t kOpenSpareBytes = 8;

constexpr float kAnyChange = 0;      // epsilon of a data definition
constexpr uint32_t kNoFlags = 0;     // of requests and data
constexpr uint32_t kNoOrigin = 0;    // a request begins at once
constexpr uint32_t kNoInterval = 0;  // and skips no period
constexpr uint32_t kNoLimit = 0;     // and goes on for ever
constexpr uint32_t kOneElement = 1;  // data on one object comes as one element

namespace {

// Fills one packet front to back. The first failure is kept, and everything after it is ignored.
class Composer
{
public:
    Composer(PacketSpace& space, SimFunction function, uint32_t sendId) : m_space(space)
    {
        u32(0);  // the size, known at the end
        u32(kClientProtocolVersion);
        u32(kClientFunctionBase + static_cast<uint32_t>(function));
        u32(sendId);
    }
    Composer& u32(uint32_t value)
    {
        return bytes(&value, sizeof value);
    }
    Composer& f32(float value)
    {
        return bytes(&value, sizeof value);
    }
    Composer& text(std::string_view value, size_t width)
    {
        if (m_status == kSimOk && value.size() >= width) {
            m_status = kSimTextTooLong;
        }
        if (m_status != kSimOk) {
            return *this;
        }
        return bytes(value.data(), value.size()).zeros(width - value.size());
    }
    Composer& zeros(size_t count)
    {
        const std::span<std::byte> field = take(count);
        std::fill(field.begin(), field.end(), std::byte{0});
        return *this;
    }
    Composer& bytes(const void* data, size_t count)
    {
        const std::span<std::byte> field = take(count);
        if (!field.empty()) {
            std::memcpy(field.data(), data, field.size());
        }
        return *this;
    }
    SimStatus finish()
    {
        if (m_status == kSimOk) {
            const auto size = static_cast<uint32_t>(m_at);
            std::memcpy(m_space.room.data(), &size, sizeof size);
            m_space.used = m_at;
        }
        return m_status;
    }

private:
    // The next `count` bytes of the packet; none once something has failed.
    std::span<std::byte> take(size_t count)
    {
        if (m_status == kSimOk && count > m_space.room.size() - m_at) {
            m_status = kSimFail;
        }
        if (m_status != kSimOk) {
            return {};
        }
        m_at += count;
        return m_space.room.subspan(m_at - count, count);
    }

    PacketSpace& m_space;
    size_t m_at = 0;
    SimStatus m_status = kSimOk;
};

}  // namespace

uint32_t gf_sendIdAfter(uint32_t id)
{
    return id == UINT32_MAX ? 1 : id + 1;
}

SimStatus gf_composeOpen(PacketSpace& space, uint32_t sendId, std::string_view name)
{
    return Composer(space, SimFunction::Open, sendId)
        .text(name, kSimNameWidth)
        .u32(0)
        .u32(kOpenTag)
        .u32(kOpenVersion)
        .u32(kOpenSubversion)
        .zeros(kOpenSpareBytes)
        .finish();
}

SimStatus gf_composeMapClientEvent(PacketSpace& space, uint32_t sendId, uint32_t event, std::string_view name)
{
    return Composer(space, SimFunction::MapClientEventToSimEvent, sendId)
        .u32(event)
        .text(name, kSimNameWidth)
        .finish();
}

SimStatus gf_composeTransmitClientEvent(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t event,
                                        uint32_t data, uint32_t group, uint32_t flags)
{
    return Composer(space, SimFunction::TransmitClientEvent, sendId)
        .u32(object)
        .u32(event)
        .u32(data)
        .u32(group)
        .u32(flags)
        .finish();
}

SimStatus gf_composeAddEventToGroup(PacketSpace& space, uint32_t sendId, uint32_t group, uint32_t event,
                                    bool maskable)
{
    return Composer(space, SimFunction::AddClientEventToNotificationGroup, sendId)
        .u32(group)
        .u32(event)
        .u32(maskable ? 1 : 0)
        .finish();
}

SimStatus gf_composeSetGroupPriority(PacketSpace& space, uint32_t sendId, uint32_t group, uint32_t priority)
{
    return Composer(space, SimFunction::SetNotificationGroupPriority, sendId)
        .u32(group)
        .u32(priority)
        .finish();
}

SimStatus gf_composeAddToDataDefinition(PacketSpace& space, uint32_t sendId, uint32_t definition,
                                        std::string_view name, std::string_view unit, SimDataType type)
{
    return Composer(space, SimFunction::AddToDataDefinition, sendId)
        .u32(definition)
        .text(name, kSimNameWidth)
        .text(unit, kSimNameWidth)
        .u32(static_cast<uint32_t>(type))
        .f32(kAnyChange)
        .u32(kSimDatumIdUnused)
        .finish();
}

SimStatus gf_composeRequestData(PacketSpace& space, uint32_t sendId, uint32_t request, uint32_t definition,
                                uint32_t object, uint32_t period)
{
    return Composer(space, SimFunction::RequestDataOnSimObject, sendId)
        .u32(request)
        .u32(definition)
        .u32(object)
        .u32(period)
        .u32(kNoFlags)
        .u32(kNoOrigin)
        .u32(kNoInterval)
        .u32(kNoLimit)
        .finish();
}

SimStatus gf_composeRequestDataByType(PacketSpace& space, uint32_t sendId, uint32_t request,
                                      uint32_t definition, uint32_t radiusM, uint32_t objectType)
{
    return Composer(space, SimFunction::RequestDataOnSimObjectType, sendId)
        .u32(request)
        .u32(definition)
        .u32(radiusM)
        .u32(objectType)
        .finish();
}

SimStatus gf_composeSetData(PacketSpace& space, uint32_t sendId, uint32_t definition, uint32_t object,
                            std::span<const std::byte> data)
{
    return Composer(space, SimFunction::SetDataOnSimObject, sendId)
        .u32(definition)
        .u32(object)
        .u32(kNoFlags)
        .u32(kOneElement)
        .u32(static_cast<uint32_t>(data.size()))
        .bytes(data.data(), data.size())
        .finish();
}

SimStatus gf_composeSubscribe(PacketSpace& space, uint32_t sendId, uint32_t event, std::string_view name)
{
    return Composer(space, SimFunction::SubscribeToSystemEvent, sendId)
        .u32(event)
        .text(name, kSimNameWidth)
        .finish();
}

SimStatus gf_composeCreate(PacketSpace& space, uint32_t sendId, std::string_view title,
                           std::string_view tailNumber, const SimInitialPosition& position, uint32_t request)
{
    return Composer(space, SimFunction::AICreateNonATCAircraft, sendId)
        .text(title, kSimNameWidth)
        .text(tailNumber, kSimTailNumberWidth)
        .bytes(&position, sizeof position)
        .u32(request)
        .finish();
}

SimStatus gf_composeReleaseControl(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t request)
{
    return Composer(space, SimFunction::AIReleaseControl, sendId).u32(object).u32(request).finish();
}

SimStatus gf_composeRemoveObject(PacketSpace& space, uint32_t sendId, uint32_t object, uint32_t request)
{
    return Composer(space, SimFunction::AIRemoveObject, sendId).u32(object).u32(request).finish();
}

SimStatus gf_composeSetFlightPlan(PacketSpace& space, uint32_t sendId, uint32_t object, std::string_view path,
                                  uint32_t request)
{
    return Composer(space, SimFunction::AISetAircraftFlightPlan, sendId)
        .u32(object)
        .text(path, kSimPathWidth)
        .u32(request)
        .finish();
}

template <typename Value>
static Value lf_value(std::span<const std::byte> bytes)
{
    Value value{};
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

static std::string_view lf_text(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::byte> PacketReader::take(size_t bytes)
{
    if (bytes > remaining()) {
        throw std::out_of_range("packet too short");
    }
    m_at += bytes;
    return m_bytes.subspan(m_at - bytes, bytes);
}

uint32_t PacketReader::u32()
{
    return lf_value<uint32_t>(take(sizeof(uint32_t)));
}

int64_t PacketReader::i64()
{
    return lf_value<int64_t>(take(sizeof(int64_t)));
}

float PacketReader::f32()
{
    return lf_value<float>(take(sizeof(float)));
}

double PacketReader::f64()
{
    return lf_value<double>(take(sizeof(double)));
}

std::string_view PacketReader::text(size_t width)
{
    const std::string_view field = lf_text(take(width));
    return field.substr(0, field.find('\0'));
}

std::string_view PacketReader::textV()
{
    const std::string_view all = lf_text(rest());
    const std::string_view value = all.substr(0, all.find('\0'));
    m_at += std::min(value.size() + 1, all.size());
    return value;
}

void PacketReader::skip(size_t bytes)
{
    take(bytes);
}

}  // namespace vlt
