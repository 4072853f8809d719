// The stand-in's servers over real sockets on ports that the system picks.
#include "sim/wire/packets.h"
#include "standin/feed_player.h"
#include "standin/sim_server.h"
#include "support/temp_folder.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <gtest/gtest.h>

namespace vlt {

using asio::ip::tcp;
using asio::ip::udp;

// The id of the next message.
static SimMessageId lf_nextId(tcp::socket& socket)
{
    uint32_t header[3] = {};  // size, version, id
    asio::read(socket, asio::buffer(header));
    std::vector<std::byte> body(header[0] - kServerHeaderSize);
    asio::read(socket, asio::buffer(body));
    return static_cast<SimMessageId>(header[2]);
}

TEST(SimServer, takesPacketsByteByByteFromTheNextClientAfterABadOneAndSaysGoodbye)
{
    VirtualSimulator simulator{{}};
    SimServer server{simulator, {.ipv4Port = 0, .ipv6Port = std::nullopt, .pipe = ""}};
    const tcp::endpoint there{asio::ip::address_v4::loopback(), server.start().ipv4Port};
    asio::io_context context;
    tcp::socket bad(context);
    bad.connect(there);
    const uint32_t words[] = {3, 35, 0xF0000001, 1};
    asio::write(bad, asio::buffer(words));
    EXPECT_THROW(lf_nextId(bad), std::system_error) << "no packet has 3 bytes: the server has closed";
    EXPECT_EQ(1u, simulator.counts().complaints);

    std::vector<std::byte> room(kMaxClientPacket);
    PacketSpace space{room};
    gf_composeOpen(space, 1, "Velatra");
    tcp::socket socket(context);
    socket.connect(there);
    socket.set_option(tcp::no_delay(true));
    for (size_t i = 0; i < space.used; ++i) {
        asio::write(socket, asio::buffer(&room[i], 1));
    }
    EXPECT_EQ(SimMessageId::Open, lf_nextId(socket));
    EXPECT_EQ(1u, simulator.counts().complaints);
    simulator.quit();
    server.stop();
    EXPECT_EQ(SimMessageId::Quit, lf_nextId(socket));
    EXPECT_THROW(lf_nextId(socket), std::system_error);
}

TEST(FeedPlayer, playsARecordingInOrderAndPaceAndStopsAtOnce)
{
    const std::string front = "RTTFC,20001,47.6,11.5,0,0,1,90,0,null,A320,D-AIXX,null,null,";
    // 1020 is late: it goes with the line before it. The last is far away.
    const std::vector<std::string> lines = {front + "1000.0", front + "1040.0", "a line without a time stamp",
                                            front + "1020.0", front + "1080.0"};
    std::string recording;
    for (const std::string& line : lines) {
        recording += line + "\n";
    }
    const TempFolder folder;
    const auto file = folder.write("recording.txt", recording + front + "9000000.0\n");
    asio::io_context context;
    udp::socket socket(context, {asio::ip::address_v4::loopback(), 0});
    FeedPlayer player(FeedSource(file),
                      {.port = socket.local_endpoint().port(), .weatherPort = 0, .speed = 200});
    const auto begun = std::chrono::steady_clock::now();
    player.start();
    std::vector<std::string> got;
    std::vector<double> when;
    for (int i = 0; i < 5; ++i) {
        std::array<char, 2000> buffer;
        got.emplace_back(buffer.data(), socket.receive(asio::buffer(buffer)));
        when.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count());
    }
    player.stop();
    EXPECT_EQ(lines, got);
    EXPECT_GE(when[1], 0.199) << "40 seconds";
    EXPECT_GE(when[4], 0.399);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(60)) << "the rest takes longer";
}

TEST(FeedSource, aRepeatedStretchGoesOnInTimeAndIsSilentAtItsEnd)
{
    const std::string front = "RTTFC,20001,47.6,11.5,0,0,1,90,0,null,A320,D-AIXX,null,null,";
    const TempFolder folder;
    FeedSource source(folder.write("recording.txt", front + "970.0\n" + front + "1000.0,x\n" + front +
                                                        "1040.5,x\n" + front + "1080.0,x\n"));
    EXPECT_THROW(source.repeat(30, 20, 20), std::invalid_argument);
    source.repeat(30, 100, 50);
    std::vector<std::pair<double, std::string>> got;
    for (const auto& [from, to] : {std::pair(30, 70), std::pair(70, 131), std::pair(131, 270)}) {
        for (const DayLine& line : source.lines(from, to)) {
            got.emplace_back(line.time, line.text.substr(front.size()));
        }
    }
    const std::vector<std::pair<double, std::string>> expected{{30, "1000.0,x"},
                                                               {70.5, "1040.5,x"},
                                                               {130, "1100.000,x"},
                                                               {170.5, "1140.500,x"},
                                                               {230, "1200.000,x"}};
    EXPECT_EQ(expected, got);
}

}  // namespace vlt
