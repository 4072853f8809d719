// The packets byte by byte, against their published layout.
#include "sim/packets.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace vlt {

using Bytes = std::vector<std::byte>;

static std::string lf_hex(std::span<const std::byte> bytes)
{
    std::string text;
    for (const std::byte byte : bytes) {
        constexpr const char* kDigits = "0123456789abcdef";
        text += kDigits[std::to_integer<int>(byte) >> 4];
        text += kDigits[std::to_integer<int>(byte) & 15];
    }
    return text;
}

// A packet composed in an arena of the given size.
static SimStatus lf_compose(const std::function<SimStatus(PacketSpace&)>& compose, Bytes& packet,
                            size_t arenaSize = kMaxClientPacket)
{
    packet.assign(arenaSize, std::byte{0});
    PacketSpace space{packet};
    const SimStatus status = compose(space);
    packet.resize(space.used);
    return status;
}

// What a packet is expected to hold: everything that isn't named is zero.
struct Layout {
    const char* what;
    std::function<SimStatus(PacketSpace&)> compose;
    uint32_t size;
    uint32_t function;
    std::map<size_t, std::string> fields;  // offset -> hexadecimal bytes
};

static Bytes lf_expected(const Layout& layout)
{
    Bytes bytes(layout.size, std::byte{0});
    const auto put = [&](size_t offset, std::string_view hex) {
        for (size_t i = 0; i < hex.size() / 2; ++i) {
            const auto value = std::stoul(std::string(hex.substr(2 * i, 2)), nullptr, 16);
            bytes.at(offset + i) = static_cast<std::byte>(value);
        }
    };
    for (size_t i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::byte>(layout.size >> (8 * i));
    }
    put(4, "23000000");
    put(8, "000000f0");
    bytes[8] = static_cast<std::byte>(layout.function);
    put(12, "04030201");
    for (const auto& [offset, hex] : layout.fields) {
        put(offset, hex);
    }
    return bytes;
}

constexpr uint32_t kId = 0x01020304;

// 47.5 and -122.25 as IEEE doubles: 0x4047C00000000000, 0xC05E900000000000; 433 feet
// 0x407B100000000000; -1.5 degrees 0xBFF8000000000000; 0.25 0x3FD0000000000000; 180
// 0x4066800000000000.
static const SimInitialPosition kPosition{47.5, -122.25, 433, -1.5, 0.25, 180, 1, 140};

TEST(Packets, haveThePublishedLayout)
{
    const std::byte data[] = {std::byte{0xAA}, std::byte{0xBB}, std::byte{0xCC}};
    const Layout layouts[] = {
        {"open",
         [](auto& s) { return gf_composeOpen(s, kId, "Velatra"); },
         296,
         0x01,
         {{16, "56656c61747261"}, {276, "00443350"}, {280, "05"}, {284, "03"}}},
        {"map event",
         [](auto& s) { return gf_composeMapClientEvent(s, kId, 207, "AB"); },
         276,
         0x04,
         {{16, "cf"}, {20, "4142"}}},
        {"transmit event",
         [](auto& s) { return gf_composeTransmitClientEvent(s, kId, 0x10001, 218, 3, 301, 16); },
         36,
         0x05,
         {{16, "010001"}, {20, "da"}, {24, "03"}, {28, "2d01"}, {32, "10"}}},
        {"event to group",
         [](auto& s) { return gf_composeAddEventToGroup(s, kId, 301, 207, true); },
         28,
         0x07,
         {{16, "2d01"}, {20, "cf"}, {24, "01"}}},
        {"event to group, not maskable",
         [](auto& s) { return gf_composeAddEventToGroup(s, kId, 301, 207, false); },
         28,
         0x07,
         {{16, "2d01"}, {20, "cf"}}},
        {"priority",
         [](auto& s) { return gf_composeSetGroupPriority(s, kId, 301, 1); },
         24,
         0x09,
         {{16, "2d01"}, {20, "01"}}},
        {"definition",
         [](auto& s) { return gf_composeAddToDataDefinition(s, kId, 402, "N", "U", SimDataType::Float64); },
         544,
         0x0C,
         {{16, "9201"}, {20, "4e"}, {276, "55"}, {532, "04"}, {540, "ffffffff"}}},
        {"request",
         [](auto& s) { return gf_composeRequestData(s, kId, 108, 409, 7, 4); },
         48,
         0x0E,
         {{16, "6c"}, {20, "9901"}, {24, "07"}, {28, "04"}}},
        {"request by type",
         [](auto& s) { return gf_composeRequestDataByType(s, kId, 101, 404, 100000, 2); },
         32,
         0x0F,
         {{16, "65"}, {20, "9401"}, {24, "a08601"}, {28, "02"}}},
        {"set data",
         [&](auto& s) { return gf_composeSetData(s, kId, 401, 9, data); },
         39,
         0x10,
         {{16, "9101"}, {20, "09"}, {28, "01"}, {32, "03"}, {36, "aabbcc"}}},
        {"subscribe",
         [](auto& s) { return gf_composeSubscribe(s, kId, 204, "Frame"); },
         276,
         0x17,
         {{16, "cc"}, {20, "4672616d65"}}},
        {"create",
         [](auto& s) { return gf_composeCreate(s, kId, "T", "G-ABCD", kPosition, 0x30201); },
         344,
         0x29,
         {{16, "54"},
          {272, "472d41424344"},
          {284, "0000000000c04740"},
          {292, "0000000000905ec0"},
          {300, "0000000000107b40"},
          {308, "000000000000f8bf"},
          {316, "000000000000d03f"},
          {324, "0000000000806640"},
          {332, "01"},
          {336, "8c"},
          {340, "010203"}}},
        {"release",
         [](auto& s) { return gf_composeReleaseControl(s, kId, 9, 103); },
         24,
         0x2B,
         {{16, "09"}, {20, "67"}}},
        {"remove",
         [](auto& s) { return gf_composeRemoveObject(s, kId, 9, 105); },
         24,
         0x2C,
         {{16, "09"}, {20, "69"}}},
        {"flight plan",
         [](auto& s) { return gf_composeSetFlightPlan(s, kId, 9, "C:\\p", 110); },
         284,
         0x2D,
         {{16, "09"}, {20, "433a5c70"}, {280, "6e"}}},
    };
    for (const Layout& layout : layouts) {
        Bytes packet;
        EXPECT_EQ(kSimOk, lf_compose(layout.compose, packet)) << layout.what;
        EXPECT_EQ(lf_hex(lf_expected(layout)), lf_hex(packet)) << layout.what;
    }
}

TEST(Packets, refuseATextThatLeavesNoRoomForItsZero)
{
    const struct {
        const char* what;
        size_t width;
        std::function<SimStatus(PacketSpace&, std::string_view)> compose;
    } cases[] = {
        {"open", 256, [](auto& s, auto text) { return gf_composeOpen(s, 1, text); }},
        {"event", 256, [](auto& s, auto text) { return gf_composeMapClientEvent(s, 1, 2, text); }},
        {"system event", 256, [](auto& s, auto text) { return gf_composeSubscribe(s, 1, 2, text); }},
        {"variable", 256,
         [](auto& s, auto text) {
             return gf_composeAddToDataDefinition(s, 1, 2, text, "", SimDataType::Int64);
         }},
        {"unit", 256,
         [](auto& s, auto text) {
             return gf_composeAddToDataDefinition(s, 1, 2, "", text, SimDataType::Int64);
         }},
        {"title", 256, [](auto& s, auto text) { return gf_composeCreate(s, 1, text, "x", {}, 2); }},
        {"tail number", 12, [](auto& s, auto text) { return gf_composeCreate(s, 1, "x", text, {}, 2); }},
        {"path", 260, [](auto& s, auto text) { return gf_composeSetFlightPlan(s, 1, 2, text, 3); }},
    };
    for (const auto& c : cases) {
        Bytes packet;
        const auto with = [&](size_t length) {
            const std::string text(length, 'x');
            return lf_compose([&](PacketSpace& space) { return c.compose(space, text); }, packet);
        };
        EXPECT_EQ(kSimOk, with(c.width - 1)) << c.what;
        EXPECT_EQ(static_cast<SimStatus>(0x8007007A), with(c.width)) << c.what;
        EXPECT_TRUE(packet.empty()) << c.what;
        EXPECT_EQ(static_cast<SimStatus>(0x8007007A), with(5000)) << c.what;
    }
}

TEST(Packets, stayWithinTheirRoom)
{
    // Each size of room from none to one byte too few, in memory of exactly that size.
    Bytes packet;
    const auto create = [](PacketSpace& space) { return gf_composeCreate(space, 1, "T", "A", kPosition, 2); };
    for (size_t size = 0; size < 344; ++size) {
        EXPECT_EQ(kSimFail, lf_compose(create, packet, size)) << size;
        EXPECT_TRUE(packet.empty());
    }
    EXPECT_EQ(kSimOk, lf_compose(create, packet, 344));

    const Bytes data(41088 - 36 + 1);
    const auto setData = [&](size_t count) {
        return lf_compose(
            [&](PacketSpace& space) {
                return gf_composeSetData(space, 1, 2, 3, std::span(data).first(count));
            },
            packet);
    };
    EXPECT_EQ(kSimOk, setData(41088 - 36));
    EXPECT_EQ(kSimFail, setData(41088 - 36 + 1));
}

static Bytes lf_message()
{
    return PacketWriter(SimMessageId::ObjectData)
        .u32(0xCAFE0102)
        .i64(-2)
        .f32(1.5F)
        .f64(-0.25)
        .text("G-ABCD", 8)
        .text("too long for it", 4)
        .textV("title")
        .u32(7)
        .finish();
}

TEST(PacketWriter, writesLittleEndianWithTheSizeInFront)
{
    EXPECT_EQ("3a000000"
              "23000000"
              "08000000"
              "0201feca"
              "feffffffffffffff"
              "0000c03f"
              "000000000000d0bf"
              "472d414243440000"
              "746f6f00"
              "7469746c6500"
              "07000000",
              lf_hex(lf_message()));
}

static void lf_readAll(std::span<const std::byte> bytes)
{
    PacketReader reader(bytes);
    reader.skip(kServerHeaderSize);
    EXPECT_EQ(0xCAFE0102, reader.u32());
    EXPECT_EQ(-2, reader.i64());
    EXPECT_EQ(1.5F, reader.f32());
    EXPECT_EQ(-0.25, reader.f64());
    EXPECT_EQ("G-ABCD", reader.text(8));
    EXPECT_EQ("too", reader.text(4));
    EXPECT_TRUE(std::string_view("title").starts_with(reader.textV()));
    EXPECT_EQ(4U, reader.remaining());
    EXPECT_EQ(7U, reader.u32());
    EXPECT_TRUE(reader.rest().empty());
}

TEST(PacketReader, readsWhatWasWrittenAndNoCutOfIt)
{
    const Bytes message = lf_message();
    lf_readAll(message);
    for (size_t length = 0; length + 4 < message.size(); ++length) {
        const Bytes cut(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(length));
        PacketReader reader(cut);
        const auto readAll = [&] {
            reader.skip(kServerHeaderSize);
            reader.u32();
            reader.i64();
            reader.f32();
            reader.f64();
            reader.text(8);
            reader.text(4);
            reader.textV();
            reader.u32();
        };
        EXPECT_THROW(readAll(), std::out_of_range) << length;
    }
}

TEST(PacketReader, endsATextWithoutAZeroAtTheEndOfItsField)
{
    const Bytes bytes(5, std::byte{'x'});
    PacketReader field(bytes);
    EXPECT_EQ("xxx", field.text(3));
    EXPECT_EQ("xx", field.textV());
    EXPECT_EQ("", field.textV());
    EXPECT_EQ(0U, field.remaining());
}

TEST(PacketReader, refusesASkipThatWouldWrapAround)
{
    const Bytes bytes(5);
    PacketReader reader(bytes);
    reader.skip(3);
    EXPECT_THROW(reader.skip(SIZE_MAX), std::out_of_range);
    EXPECT_EQ(2U, reader.remaining());
}

}  // namespace vlt
