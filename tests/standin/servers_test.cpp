// The stand-in's servers over real sockets on ports that the system picks.
#include "sim/wire/packets.h"
#include "standin/feed_player.h"
#include "standin/file_server.h"
#include "standin/realtraffic_client.h"
#include "standin/sim_server.h"
#include "support/temp_folder.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace vlt {

using asio::ip::tcp;
using asio::ip::udp;

static std::vector<std::byte> lf_openPacket()
{
    std::vector<std::byte> room(kMaxClientPacket);
    PacketSpace space{room};
    gf_composeOpen(space, 1, "Velatra");
    room.resize(space.used);
    return room;
}

class SimServerTest : public testing::Test
{
protected:
    tcp::socket connected()
    {
        tcp::socket socket(context);
        socket.connect({asio::ip::address_v4::loopback(), port});
        return socket;
    }
    // The id of the next message.
    static SimMessageId nextId(tcp::socket& socket)
    {
        std::vector<std::byte> message(kServerHeaderSize);
        asio::read(socket, asio::buffer(message));
        const uint32_t size = PacketReader(message).u32();
        PacketReader reader(message);
        reader.skip(8);
        const auto id = static_cast<SimMessageId>(reader.u32());
        std::vector<std::byte> body(size - kServerHeaderSize);
        asio::read(socket, asio::buffer(body));
        return id;
    }

    asio::io_context context;
    VirtualSimulator simulator{{}};
    SimServer server{simulator, {.ipv4Port = 0, .ipv6Port = std::nullopt, .pipe = ""}};
    uint16_t port = server.start().ipv4Port;
};

TEST_F(SimServerTest, takesAPacketByteByByteAndSendsTheQuitMessageBeforeItGoes)
{
    tcp::socket socket = connected();
    socket.set_option(tcp::no_delay(true));
    for (const std::byte b : lf_openPacket()) {
        asio::write(socket, asio::buffer(&b, 1));
    }
    EXPECT_EQ(SimMessageId::Open, nextId(socket));
    EXPECT_EQ(0u, simulator.counts().complaints);
    simulator.quit();
    server.stop();
    EXPECT_EQ(SimMessageId::Quit, nextId(socket));
    EXPECT_THROW(nextId(socket), std::system_error);
}

TEST_F(SimServerTest, closesOnASizeThatCannotBeAndServesTheNextClient)
{
    tcp::socket bad = connected();
    const uint32_t words[] = {3, 35, 0xF0000001, 1};
    asio::write(bad, asio::buffer(words));
    EXPECT_THROW(nextId(bad), std::system_error) << "the server has closed";
    EXPECT_EQ(1u, simulator.counts().complaints);
    tcp::socket socket = connected();
    asio::write(socket, asio::buffer(lf_openPacket()));
    EXPECT_EQ(SimMessageId::Open, nextId(socket));
}

// ---- the file server

// The faults are played by the downloads' tests.
TEST(FileServer, servesItsFolderAndNothingElse)
{
    const TempFolder folder;
    folder.write("files/release/v.json", "0123456789");
    folder.write("secret", "x");
    const struct {
        FileFault fault;
        const char *faultPath, *path, *status, *end;
    } cases[] = {
        {FileFault::None, "", "/release/v.json", "200", "\r\n0123456789"},
        {FileFault::None, "", "/release/w.json", "404", "\r\n\r\n"},
        {FileFault::None, "", "/release/../../secret", "404", "\r\n\r\n"},
        {FileFault::ServerError, "dbase", "/release/v.json", "200", "\r\n0123456789"},
    };
    for (const auto& c : cases) {
        FileServer server({folder.path() / "files", 0, c.fault, c.faultPath});
        asio::io_context context;
        tcp::socket socket(context);
        socket.connect({asio::ip::address_v4::loopback(), server.start()});
        asio::write(socket, asio::buffer(std::string("GET ") + c.path + " HTTP/1.0\r\n\r\n"));
        std::string answer;
        std::error_code end;
        asio::read(socket, asio::dynamic_buffer(answer), end);
        EXPECT_EQ(c.status, answer.substr(9, 3)) << c.path;
        EXPECT_TRUE(answer.ends_with(c.end)) << answer;
    }
}

// ---- the feed

TEST(FeedPlayer, playsARecordingInOrderAndPace)
{
    const TempFolder folder;
    const std::string front = "RTTFC,20001,47.6,11.5,0,0,1,90,0,null,A320,D-AIXX,null,null,";
    // 1020 is late: it goes with the line before it.
    const std::vector<std::string> lines = {front + "1000.0", front + "1040.0", "a line without a time stamp",
                                            front + "1020.0", front + "1080.0"};
    std::string recording;
    for (const std::string& line : lines) {
        recording += line + "\n";
    }
    const auto file = folder.write("recording.txt", recording);
    asio::io_context context;
    udp::socket socket(context, {asio::ip::address_v4::loopback(), 0});
    FeedOptions options;
    options.port = socket.local_endpoint().port();
    options.weatherPort = 0;
    options.speed = 200;  // 80 seconds in 0.4
    FeedPlayer player(FeedSource(file), options);
    const auto begun = std::chrono::steady_clock::now();
    player.start();
    std::vector<std::string> got;
    std::vector<double> when;
    for (int i = 0; i < 5; ++i) {
        std::array<char, 2000> buffer;
        const size_t bytes = socket.receive(asio::buffer(buffer));
        got.emplace_back(buffer.data(), bytes);
        when.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count());
    }
    player.stop();
    EXPECT_EQ(lines, got);
    EXPECT_GE(when[1], 0.199);
    EXPECT_GE(when[4], 0.399);
    EXPECT_THROW(FeedSource(std::filesystem::path("no such recording")), std::runtime_error);
}

TEST(FeedPlayer, stopsAtOnce)
{
    FeedOptions options;
    options.port = 9;  // nobody listens; the player doesn't mind
    options.weatherPort = 0;
    options.speed = 0.001;
    FeedPlayer player(FeedSource(DayOptions{}), options);
    player.start();
    while (player.sent() == 0) {
        std::this_thread::yield();
    }
    const auto begun = std::chrono::steady_clock::now();
    player.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
}

// ---- RealTraffic

TEST(RealTrafficClient, answersTheVersionQuestionAndTakesPositionsIn)
{
    asio::io_context context;
    tcp::acceptor acceptor(context, {asio::ip::address_v4::loopback(), 0});
    RealTrafficClient client(acceptor.local_endpoint().port());
    tcp::socket socket = acceptor.accept();
    asio::write(socket, asio::buffer(std::string("Qs999=version\r\n")));
    std::string reply;
    asio::read_until(socket, asio::dynamic_buffer(reply), "\r\n");
    EXPECT_NE(std::string::npos, reply.find("version"));
    asio::write(socket, asio::buffer(std::string("Qs121=1;2;3\r\nQs1")));
    asio::write(socket, asio::buffer(std::string("23=5\r\nQs121=4;5;6\r\nexit\r\n")));
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!client.report().goodbye && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    const PositionReport report = client.report();
    EXPECT_TRUE(report.goodbye);
    EXPECT_EQ(2u, report.positions);
    EXPECT_EQ(1u, report.times);
    EXPECT_EQ("Qs121=4;5;6", report.lastPosition);
}

}  // namespace vlt
