// The byte stream cut into packets, in whatever pieces it comes.
#include "sim/wire/transport/receive_buffer.h"

#include "transport/sim_world.h"

#include <gtest/gtest.h>

namespace vlt {

using Kind = ReceiveBuffer::Taken::Kind;

constexpr uint32_t kLimit = 41088;

// What came out of a stream: the packets, and how it ended.
struct Outcome {
    std::vector<Bytes> packets;
    ReceiveBuffer::Taken last;
};

// Feeds `bytes` in pieces of at most `chunk`, as a stream that fills at most the room would.
static Outcome lf_feed(ReceiveBuffer& buffer, std::span<const std::byte> bytes, size_t chunk,
                       uint32_t limit = kLimit)
{
    Outcome outcome;
    while (!bytes.empty() && outcome.last.kind != Kind::Broken) {
        const std::span<std::byte> room = buffer.room();
        const size_t count = std::min({chunk, room.size(), bytes.size()});
        if (count == 0) {
            ADD_FAILURE() << "no room";
            break;
        }
        std::copy_n(bytes.begin(), count, room.begin());
        buffer.filled(count);
        bytes = bytes.subspan(count);
        while ((outcome.last = buffer.take(limit)).kind == Kind::Packet) {
            outcome.packets.emplace_back(buffer.packet().begin(), buffer.packet().end());
        }
    }
    return outcome;
}

static Outcome lf_feed(const Bytes& bytes, size_t chunk, uint32_t limit = kLimit)
{
    ReceiveBuffer buffer;
    return lf_feed(buffer, bytes, chunk, limit);
}

TEST(ReceiveBuffer, givesWholePacketsFromAnyPieces)
{
    std::vector<Bytes> packets;
    Bytes stream;
    for (const uint32_t size : {12, 4, 2047, 2048, 2049, 17, 41088, 6001, 13}) {
        packets.push_back(gf_message(size, size));
        stream = gf_joined({stream, packets.back()});
    }
    for (const size_t chunk : {1, 2, 3, 5, 11, 100, 2047, 2048, 2049, 60000}) {
        const Outcome outcome = lf_feed(stream, chunk);
        EXPECT_EQ(packets, outcome.packets) << chunk;
        EXPECT_EQ(Kind::Wait, outcome.last.kind) << chunk;
    }
}

TEST(ReceiveBuffer, skipsZerosBetweenPackets)
{
    const Bytes first = gf_message(20, 1);
    const Bytes second = gf_message(13, 2);
    for (const size_t zeros : {4, 5, 6, 7, 8, 1000}) {
        const Bytes stream = gf_joined({Bytes(zeros), first, Bytes(zeros), second});
        EXPECT_EQ((std::vector<Bytes>{first, second}), lf_feed(stream, stream.size()).packets) << zeros;
    }
    // The gap ends with its read: the packet that comes later begins with a zero, the low byte of its size.
    const Bytes even = gf_message(256, 3);
    EXPECT_EQ(std::vector<Bytes>{even}, lf_feed(gf_joined({Bytes(4), even}), 4).packets);
}

TEST(ReceiveBuffer, breaksOnSizesThatCannotBe)
{
    const struct {
        uint32_t size;
        uint32_t limit;
        uint32_t reason;  // 0: it goes on
    } cases[] = {
        {1, kLimit, 2},          {2, kLimit, 2},          {3, kLimit, 2},         {kLimit, kLimit, 0},
        {kLimit + 1, kLimit, 1}, {0xFFFFFFFF, kLimit, 1}, {kLimit + 1, 50000, 0},
    };
    for (const auto& c : cases) {
        const Outcome outcome = lf_feed(gf_joined({gf_message(12, 1), gf_size(c.size)}), 100, c.limit);
        EXPECT_EQ(1U, outcome.packets.size()) << c.size;
        EXPECT_EQ(c.reason == 0 ? Kind::Wait : Kind::Broken, outcome.last.kind) << c.size;
        EXPECT_EQ(c.reason, static_cast<uint32_t>(outcome.last.reason)) << c.size;
        if (c.reason != 0) {
            EXPECT_EQ(static_cast<SimStatus>(0x80004004), outcome.last.status) << c.size;
        }
    }
}

TEST(ReceiveBuffer, growsByStepsOnlyForAPacketThatFillsIt)
{
    ReceiveBuffer buffer;
    EXPECT_EQ(2048U, buffer.capacity());
    lf_feed(buffer, gf_message(2048, 1), 5000);
    EXPECT_EQ(2048U, buffer.capacity());
    lf_feed(buffer, gf_message(2049, 2), 5000);
    EXPECT_EQ(4096U, buffer.capacity());
    // Small packets move down instead.
    for (uint32_t i = 0; i < 2000; ++i) {
        lf_feed(buffer, gf_message(13, i), 7);
    }
    EXPECT_EQ(4096U, buffer.capacity());
    lf_feed(buffer, gf_message(41088, 3), 5000);
    EXPECT_EQ(43008U, buffer.capacity());  // 21 steps, the first that hold it
}

TEST(ReceiveBuffer, dropsAPacketThatNeverFits)
{
    constexpr uint32_t kLarge = 3'000'000;
    ReceiveBuffer buffer;
    const Bytes message = gf_message(kLarge, 1);
    const std::span<const std::byte> all = message;
    EXPECT_TRUE(lf_feed(buffer, all.first(1048576), 4096, kLarge).packets.empty());
    EXPECT_EQ(1048576U, buffer.capacity());
    // Dropped: the next bytes are a new packet's.
    const Bytes next = gf_message(12, 2);
    EXPECT_EQ(std::vector<Bytes>{next}, lf_feed(buffer, next, 4096, kLarge).packets);

    // One byte less than the buffer: whole.
    const Bytes fits = gf_message(1048575, 3);
    EXPECT_EQ(std::vector<Bytes>{fits}, lf_feed(buffer, fits, 4096, kLarge).packets);
}

TEST(ReceiveBuffer, waitsAtEveryCutOfAPacketAndForgetsItOnReset)
{
    ReceiveBuffer buffer;
    const Bytes whole = gf_message(300, 1);
    for (size_t length = 1; length < whole.size(); ++length) {
        const Outcome outcome = lf_feed(buffer, std::span(whole).first(length), 1000);
        EXPECT_TRUE(outcome.packets.empty()) << length;
        EXPECT_EQ(Kind::Wait, outcome.last.kind) << length;
        buffer.reset();
    }
}

}  // namespace vlt
