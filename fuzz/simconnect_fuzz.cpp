// Fuzzes what the simulator may send: the cutting into packets in random pieces, and the reading of
// a packet's values in a random order.
#include "sim/wire/packets.h"
#include "sim/wire/transport/receive_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

using namespace vlt;

// Reads values until the packet ends; the packet's own bytes choose which.
static void lf_readPacket(std::span<const std::byte> packet)
{
    PacketReader reader(packet);
    try {
        for (const std::byte choice : packet) {
            const size_t before = reader.remaining();
            switch (std::to_integer<unsigned>(choice) % 7) {
            case 0:
                reader.u32();
                break;
            case 1:
                reader.i64();
                break;
            case 2:
                reader.f32();
                break;
            case 3:
                reader.f64();
                break;
            case 4:
                reader.text(std::to_integer<size_t>(choice));
                break;
            case 5:
                reader.textV();
                break;
            case 6:
                reader.skip(std::to_integer<size_t>(choice));
                break;
            }
            if (reader.remaining() > before || reader.rest().size() != reader.remaining()) {
                std::abort();
            }
        }
    } catch (const std::out_of_range&) {
        return;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    constexpr uint32_t kLimit = 41088;
    using Kind = ReceiveBuffer::Taken::Kind;
    ReceiveBuffer buffer;
    std::span<const std::byte> rest(reinterpret_cast<const std::byte*>(data), size);
    while (rest.size() > 1) {
        // The first byte of each piece is the piece's length.
        const size_t wanted = 1 + std::to_integer<size_t>(rest.front()) * 16;
        rest = rest.subspan(1);
        const std::span<std::byte> room = buffer.room();
        const size_t count = std::min({wanted, room.size(), rest.size()});
        if (count == 0) {
            std::abort();
        }
        std::copy_n(rest.begin(), count, room.begin());
        buffer.filled(count);
        rest = rest.subspan(count);
        ReceiveBuffer::Taken taken;
        while ((taken = buffer.take(kLimit)).kind == Kind::Packet) {
            if (buffer.packet().size() < 4 || buffer.packet().size() > kLimit) {
                std::abort();
            }
            lf_readPacket(buffer.packet());
        }
        if (taken.kind == Kind::Broken) {
            break;
        }
    }
    return 0;
}
