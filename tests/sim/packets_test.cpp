// The packets byte by byte, against their published layout.
#include "sim/wire/packets.h"

#include "standin/packet_writer.h"

#include <cstring>
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
template <typename Compose>
static SimStatus lf_compose(Compose compose, Bytes& packet, size_t arenaSize = kMaxClientPacket)
{
    packet.assign(arenaSize, std::byte{0});
    PacketSpace space{packet};
    const SimStatus status = compose(space);
    packet.resize(space.used);
    return status;
}

// 47.5 and -122.25 as IEEE doubles: 0x4047C00000000000, 0xC05E900000000000; 433 feet
// 0x407B100000000000; -1.5 degrees 0xBFF8000000000000; 0.25 0x3FD0000000000000; 180
// 0x4066800000000000.
static const SimInitialPosition kPosition{47.5, -122.25, 433, -1.5, 0.25, 180, 1, 140};

// A packet of this size and function: everything that isn't named, as offset and hexadecimal bytes, is zero.
template <typename Compose, typename... Arguments>
static void lf_expectLayout(const char* function, size_t size, const std::map<size_t, std::string>& fields,
                            Compose compose, const Arguments&... arguments)
{
    std::string expected(2 * size, '0');
    const auto put = [&](size_t offset, const std::string& hex) {
        expected.replace(2 * offset, hex.size(), hex);
    };
    const std::byte sizeBytes[] = {static_cast<std::byte>(size), static_cast<std::byte>(size >> 8)};
    put(0, lf_hex(sizeBytes));
    put(4, "23");
    put(8, std::string(function) + "0000f0");
    put(12, "04030201");
    for (const auto& [offset, hex] : fields) {
        put(offset, hex);
    }
    Bytes packet;
    const auto composed = [&](PacketSpace& space) { return compose(space, 0x01020304, arguments...); };
    EXPECT_EQ(kSimOk, lf_compose(composed, packet)) << function;
    EXPECT_EQ(expected, lf_hex(packet)) << function;
}

TEST(Packets, haveThePublishedLayout)
{
    const Bytes data = {std::byte{0xAA}, std::byte{0xBB}, std::byte{0xCC}};
    lf_expectLayout("01", 296, {{16, "56656c61747261"}, {276, "00443350"}, {280, "05"}, {284, "03"}},
                    gf_composeOpen, "Velatra");
    lf_expectLayout("04", 276, {{16, "cf"}, {20, "4142"}}, gf_composeMapClientEvent, 207, "AB");
    lf_expectLayout("05", 36, {{16, "010001"}, {20, "da"}, {24, "03"}, {28, "2d01"}, {32, "10"}},
                    gf_composeTransmitClientEvent, 0x10001, 218, 3, 301, 16);
    lf_expectLayout("07", 28, {{16, "2d01"}, {20, "cf"}, {24, "01"}}, gf_composeAddEventToGroup, 301, 207,
                    true);
    lf_expectLayout("07", 28, {{16, "2d01"}, {20, "cf"}}, gf_composeAddEventToGroup, 301, 207, false);
    lf_expectLayout("09", 24, {{16, "2d01"}, {20, "01"}}, gf_composeSetGroupPriority, 301, 1);
    lf_expectLayout("0c", 544, {{16, "9201"}, {20, "4e"}, {276, "55"}, {532, "04"}, {540, "ffffffff"}},
                    gf_composeAddToDataDefinition, 402, "N", "U", SimDataType::Float64);
    lf_expectLayout("0e", 48, {{16, "6c"}, {20, "9901"}, {24, "07"}, {28, "04"}}, gf_composeRequestData, 108,
                    409, 7, 4);
    lf_expectLayout("0f", 32, {{16, "65"}, {20, "9401"}, {24, "a08601"}, {28, "02"}},
                    gf_composeRequestDataByType, 101, 404, 100000, 2);
    lf_expectLayout("10", 39, {{16, "9101"}, {20, "09"}, {28, "01"}, {32, "03"}, {36, "aabbcc"}},
                    gf_composeSetData, 401, 9, data);
    lf_expectLayout("17", 276, {{16, "cc"}, {20, "4672616d65"}}, gf_composeSubscribe, 204, "Frame");
    lf_expectLayout("29", 344,
                    {{16, "54"},
                     {272, "472d41424344"},
                     {284, "0000000000c04740"
                           "0000000000905ec0"
                           "0000000000107b40"},
                     {308, "000000000000f8bf"
                           "000000000000d03f"
                           "0000000000806640"},
                     {332, "01"},
                     {336, "8c"},
                     {340, "010203"}},
                    gf_composeCreate, "T", "G-ABCD", kPosition, 0x30201);
    lf_expectLayout("2b", 24, {{16, "09"}, {20, "67"}}, gf_composeReleaseControl, 9, 103);
    lf_expectLayout("2c", 24, {{16, "09"}, {20, "69"}}, gf_composeRemoveObject, 9, 105);
    lf_expectLayout("2d", 284, {{16, "09"}, {20, "433a5c70"}, {280, "6e"}}, gf_composeSetFlightPlan, 9,
                    "C:\\p", 110);
}

TEST(Packets, refuseATextThatLeavesNoRoomForItsZero)
{
    using S = PacketSpace;
    using T = std::string_view;
    constexpr auto kAny = SimDataType::Int64;
    const std::pair<size_t, SimStatus (*)(S&, T)> cases[] = {
        {256, [](S& s, T t) { return gf_composeOpen(s, 1, t); }},
        {256, [](S& s, T t) { return gf_composeMapClientEvent(s, 1, 2, t); }},
        {256, [](S& s, T t) { return gf_composeSubscribe(s, 1, 2, t); }},
        {256, [](S& s, T t) { return gf_composeAddToDataDefinition(s, 1, 2, t, "", kAny); }},
        {256, [](S& s, T t) { return gf_composeAddToDataDefinition(s, 1, 2, "", t, kAny); }},
        {256, [](S& s, T t) { return gf_composeCreate(s, 1, t, "x", {}, 2); }},
        {12, [](S& s, T t) { return gf_composeCreate(s, 1, "x", t, {}, 2); }},
        {260, [](S& s, T t) { return gf_composeSetFlightPlan(s, 1, 2, t, 3); }},
    };
    for (const auto& c : cases) {
        for (const size_t length : {c.first - 1, c.first, size_t{5000}}) {
            Bytes packet;
            const SimStatus status = lf_compose(
                [&](PacketSpace& space) { return c.second(space, std::string(length, 'x')); }, packet);
            EXPECT_EQ(length < c.first ? kSimOk : static_cast<SimStatus>(0x8007007A), status) << c.first;
            EXPECT_EQ(length < c.first, !packet.empty()) << c.first;
        }
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

TEST(PacketReader, readsWhatWasWrittenAndNoCutOfIt)
{
    const Bytes message = lf_message();
    // In memory of exactly its size, so that a sanitizer sees a read past the end.
    const auto readAll = [&](size_t length) {
        const Bytes cut(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(length));
        PacketReader reader(cut);
        reader.skip(kServerHeaderSize);
        EXPECT_EQ(0xCAFE0102, reader.u32());
        EXPECT_EQ(-2, reader.i64());
        EXPECT_EQ(1.5F, reader.f32());
        EXPECT_EQ(-0.25, reader.f64());
        EXPECT_EQ("G-ABCD", reader.text(8));
        EXPECT_EQ("too", reader.text(4));
        EXPECT_TRUE(std::string_view("title").starts_with(reader.textV()));
        EXPECT_EQ(7U, reader.u32());
        EXPECT_TRUE(reader.rest().empty());
    };
    readAll(message.size());
    for (size_t length = 0; length + 4 < message.size(); ++length) {
        EXPECT_THROW(readAll(length), std::out_of_range) << length;
    }
}

TEST(PacketReader, endsATextAtTheEndOfItsFieldAndRefusesASkipThatWouldWrapAround)
{
    const Bytes bytes(5, std::byte{'x'});
    PacketReader field(bytes);
    EXPECT_EQ("xxx", field.text(3));
    EXPECT_THROW(field.skip(SIZE_MAX), std::out_of_range);
    EXPECT_EQ(2U, field.remaining());
    EXPECT_EQ("xx", field.textV());
    EXPECT_EQ("", field.textV());
}

}  // namespace vlt
