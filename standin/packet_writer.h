// The simulator's messages as bytes ready for the wire: the counterpart of PacketReader.
//
// No state but a writer's own.
#pragma once

#include "sim/wire/simconnect.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vlt {

// Writes little-endian values one after the other into a growing buffer.
class PacketWriter
{
public:
    // Begins a message of the simulator: size (filled in by `finish`), version, id.
    explicit PacketWriter(SimMessageId id);
    PacketWriter& u32(uint32_t value);
    PacketWriter& i64(int64_t value);
    PacketWriter& f32(float value);
    PacketWriter& f64(double value);
    PacketWriter& text(std::string_view value, size_t width);  // cut to width - 1, zero-padded
    PacketWriter& textV(std::string_view value);               // with its closing zero
    // The finished message; the writer is spent.
    std::vector<std::byte> finish();

private:
    std::vector<std::byte> m_bytes;
};

}  // namespace vlt
