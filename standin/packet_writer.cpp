#include "standin/packet_writer.h"

#include "sim/wire/packets.h"

#include <cstring>
#include <utility>

namespace vlt {

static void lf_append(std::vector<std::byte>& bytes, const void* data, size_t count)
{
    const auto* first = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), first, first + count);
}

PacketWriter::PacketWriter(SimMessageId id)
{
    u32(0).u32(kClientProtocolVersion).u32(static_cast<uint32_t>(id));
}

PacketWriter& PacketWriter::u32(uint32_t value)
{
    lf_append(m_bytes, &value, sizeof value);
    return *this;
}

PacketWriter& PacketWriter::i64(int64_t value)
{
    lf_append(m_bytes, &value, sizeof value);
    return *this;
}

PacketWriter& PacketWriter::f32(float value)
{
    lf_append(m_bytes, &value, sizeof value);
    return *this;
}

PacketWriter& PacketWriter::f64(double value)
{
    lf_append(m_bytes, &value, sizeof value);
    return *this;
}

PacketWriter& PacketWriter::text(std::string_view value, size_t width)
{
    const std::string_view kept = value.substr(0, width > 0 ? width - 1 : 0);
    lf_append(m_bytes, kept.data(), kept.size());
    m_bytes.resize(m_bytes.size() + (width - kept.size()));
    return *this;
}

PacketWriter& PacketWriter::textV(std::string_view value)
{
    lf_append(m_bytes, value.data(), value.size());
    m_bytes.push_back(std::byte{0});
    return *this;
}

std::vector<std::byte> PacketWriter::finish()
{
    const auto size = static_cast<uint32_t>(m_bytes.size());
    std::memcpy(m_bytes.data(), &size, sizeof size);
    return std::move(m_bytes);
}

}  // namespace vlt
