// The byte stream cut into packets, in whatever pieces it comes.
#include "sim/wire/transport/receive_buffer.h"

#include "transport/sim_world.h"

#include <gtest/gtest.h>
#include <random>

namespace vlt {

using Taken = ReceiveBuffer::Taken;

// All that has come and isn't taken yet, cut in the plainest way.
struct Reference {
    Bytes pending;

    Bytes cut(size_t size)
    {
        const auto end = pending.begin() + static_cast<std::ptrdiff_t>(size);
        const Bytes front(pending.begin(), end);
        pending.erase(pending.begin(), end);
        return front;
    }
    Taken take(uint32_t limit, Bytes& packet)
    {
        constexpr auto kBad = static_cast<SimStatus>(0x80004004);
        while (pending.size() >= 4) {
            const uint32_t size = gf_u32At(pending, 0);
            if (size == 0) {
                // The gap ends with its read: a zero that comes later may be the low byte of a size.
                cut(std::ranges::find_if(pending, [](auto b) { return b != std::byte{}; }) - pending.begin());
                continue;
            }
            if (size > limit || size < 4) {
                return {Taken::Kind::Broken, size < 4 ? CloseReason::BadSize : CloseReason::TooLarge, kBad};
            }
            if (pending.size() < size) {
                break;
            }
            packet = cut(size);
            return {Taken::Kind::Packet};
        }
        if (pending.size() == 1'048'576) {
            pending.clear();  // full, and still no packet: this one never becomes whole
        }
        return {};
    }
};

// Random packets, gaps of zeros and sizes that cannot be, fed in random pieces.
TEST(ReceiveBuffer, cutsAnyStreamInAnyPiecesLikeItsReference)
{
    constexpr uint32_t kSizes[] = {4, 12, 13, 17, 256, 2047, 2048, 2049, 6001, 41088, 50'000};
    constexpr uint32_t kHugeSizes[] = {20'000, 1'048'575, 1'048'576, 1'048'577};
    constexpr uint32_t kBadSizes[] = {1, 2, 3, 41089, 0xFFFFFFFF};
    constexpr size_t kPieces[] = {1, 2, 3, 5, 11, 100, 2047, 2048, 2049, 60'000};
    size_t taken = 0, broken = 0;
    for (uint32_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto one = [&](const auto& list) { return list[random() % std::size(list)]; };
        const bool huge = seed % 30 == 29;
        const uint32_t limit = huge ? 3'000'000 : seed % 3 == 0 ? 50'000 : 41'088;
        ReceiveBuffer buffer;
        size_t largest = 2048;
        for (int stream = 0; stream < 3; ++stream) {
            Bytes bytes;
            for (uint32_t part = 0; part < (huge ? 4U : 12U); ++part) {
                const uint32_t size = huge ? one(kHugeSizes) : one(kSizes);
                const bool bad = random() % 40 == 0;
                bytes =
                    gf_joined({bytes, random() % 3 == 0 ? Bytes(4 + random() % 9) : Bytes(),
                               bad ? gf_size(one(kBadSizes)) : gf_message(std::min(size, limit + 1), part)});
            }
            Reference reference;
            const size_t most = huge ? 60'000 : one(kPieces);
            Taken last;
            for (size_t at = 0; at < bytes.size() && last.kind != Taken::Kind::Broken;) {
                const std::span<std::byte> room = buffer.room();
                ASSERT_FALSE(room.empty());
                const size_t count = std::min({1 + random() % most, room.size(), bytes.size() - at});
                const auto piece = std::span(bytes).subspan(at, count);
                std::ranges::copy(piece, room.begin());
                buffer.filled(count);
                reference.pending.insert(reference.pending.end(), piece.begin(), piece.end());
                at += count;
                do {
                    Bytes packet;
                    const Taken expected = reference.take(limit, packet);
                    last = buffer.take(limit);
                    ASSERT_EQ(expected.kind, last.kind) << at;
                    ASSERT_EQ(expected.reason, last.reason) << at;
                    ASSERT_EQ(expected.status, last.status) << at;
                    if (last.kind == Taken::Kind::Packet) {
                        ASSERT_TRUE(std::ranges::equal(packet, buffer.packet())) << at;
                        largest = std::max(largest, packet.size());
                        ++taken;
                    }
                } while (last.kind == Taken::Kind::Packet);
            }
            if (last.kind == Taken::Kind::Broken) {
                ++broken;
            } else if (reference.pending.empty() && !huge) {
                EXPECT_EQ((largest + 2047) / 2048 * 2048, buffer.capacity()) << "no more than it takes";
            }
            buffer.reset();
        }
    }
    EXPECT_GT(taken, 2000U);
    EXPECT_GT(broken, 50U);
}

}  // namespace vlt
