// The stand-in's servers over real sockets on ports that the system picks.
#include "sim/packets.h"
#include "standin/feed_player.h"
#include "standin/file_server.h"
#include "standin/realtraffic_client.h"
#include "standin/sim_server.h"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <curl/curl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

namespace vlt {

using asio::ip::tcp;
using asio::ip::udp;

static std::filesystem::path lf_folder(const char* name)
{
    const auto folder = std::filesystem::temp_directory_path() / "velatra_standin_test" / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

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
    void SetUp() override
    {
        port = server.start().ipv4Port;
        ASSERT_NE(0, port);
    }

    tcp::socket connected()
    {
        tcp::socket socket(context);
        socket.connect({asio::ip::address_v4::loopback(), port});
        return socket;
    }

    // The id of the next message.
    uint32_t nextId(tcp::socket& socket)
    {
        std::vector<std::byte> header(kServerHeaderSize);
        asio::read(socket, asio::buffer(header));
        PacketReader reader(header);
        const uint32_t size = reader.u32();
        reader.u32();
        std::vector<std::byte> body(size - kServerHeaderSize);
        asio::read(socket, asio::buffer(body));
        return reader.u32();
    }

    asio::io_context context;
    VirtualSimulator simulator{{}};
    SimServer server{simulator, {.ipv4Port = 0, .ipv6Port = std::nullopt, .pipe = ""}};
    uint16_t port = 0;
};

TEST_F(SimServerTest, takesAPacketThatComesByteByByte)
{
    tcp::socket socket = connected();
    socket.set_option(tcp::no_delay(true));
    for (const std::byte b : lf_openPacket()) {
        asio::write(socket, asio::buffer(&b, 1));
    }
    EXPECT_EQ(static_cast<uint32_t>(SimMessageId::Open), nextId(socket));
    EXPECT_EQ(0u, simulator.counts().complaints);
}

TEST_F(SimServerTest, closesOnASizeThatCannotBeAndServesTheNextClient)
{
    {
        tcp::socket socket = connected();
        const uint32_t words[] = {3, 35, 0xF0000001, 1};
        asio::write(socket, asio::buffer(words));
        std::error_code error;
        char byte;
        asio::read(socket, asio::buffer(&byte, 1), error);
        EXPECT_TRUE(error) << "the server has closed";
    }
    EXPECT_EQ(1u, simulator.counts().complaints);
    tcp::socket socket = connected();
    asio::write(socket, asio::buffer(lf_openPacket()));
    EXPECT_EQ(static_cast<uint32_t>(SimMessageId::Open), nextId(socket));
}

TEST_F(SimServerTest, sendsTheQuitMessageBeforeItGoes)
{
    tcp::socket socket = connected();
    asio::write(socket, asio::buffer(lf_openPacket()));
    EXPECT_EQ(static_cast<uint32_t>(SimMessageId::Open), nextId(socket));
    simulator.quit();
    server.stop();
    EXPECT_EQ(static_cast<uint32_t>(SimMessageId::Quit), nextId(socket));
    EXPECT_THROW(nextId(socket), std::system_error);
}

// ---- the file server

// What a download gives; a status of -1 for no whole answer within a moment.
static std::string lf_body(const FileServerOptions& options, const char* path, int& status)
{
    FileServer server(options);
    const std::string url = "http://127.0.0.1:" + std::to_string(server.start()) + path;
    std::string body;
    CURL* curl = curl_easy_init();
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(curl, CURLOPT_NOPROXY, "*");
    // A silent server is given up soon; the others answer at once, but on a busy machine.
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, options.fault == FileFault::Silent ? 300L : 20'000L);
    const auto take = +[](char* data, size_t size, size_t count, void* into) {
        static_cast<std::string*>(into)->append(data, size * count);
        return size * count;
    };
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, take);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    const CURLcode result = curl_easy_perform(curl);
    long code = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &code);
    curl_easy_cleanup(curl);
    status = result == CURLE_OK ? static_cast<int>(code) : -1;
    return body;
}

TEST(FileServer, servesAFolderAndPlaysFaults)
{
    const auto folder = lf_folder("files");
    std::filesystem::create_directories(folder / "release");
    std::ofstream(folder / "release" / "v.json") << "0123456789";
    const struct {
        const char* what;
        FileFault fault;
        const char* faultPath;
        const char* path;
        int status;  // -1 for no whole answer
        const char* body;
    } cases[] = {
        {"plain", FileFault::None, "", "/release/v.json", 200, "0123456789"},
        {"not there", FileFault::None, "", "/release/w.json", 404, ""},
        {"out of the folder", FileFault::None, "", "/../files/release/v.json", 404, ""},
        {"404", FileFault::NotFound, "", "/release/v.json", 404, ""},
        {"500", FileFault::ServerError, "", "/release/v.json", 500, ""},
        {"cut", FileFault::CutBody, "", "/release/v.json", -1, "01234"},
        {"silent", FileFault::Silent, "", "/release/v.json", -1, ""},
        {"another path", FileFault::ServerError, "dbase", "/release/v.json", 200, "0123456789"},
    };
    for (const auto& c : cases) {
        int status = 0;
        const std::string body = lf_body({folder, 0, c.fault, c.faultPath}, c.path, status);
        EXPECT_EQ(c.status, status) << c.what;
        EXPECT_EQ(c.body, body) << c.what;
    }
}

TEST(FileServer, givesAPageInThePlaceOfAnArchive)
{
    const auto folder = lf_folder("archive");
    std::ofstream(folder / "dbase.zip") << "PK";
    int status = 0;
    const std::string body = lf_body({folder, 0, FileFault::NotAZip, ""}, "/dbase.zip", status);
    EXPECT_EQ(200, status);
    EXPECT_FALSE(body.empty());
    EXPECT_NE("PK", body.substr(0, 2));
}

// ---- the feed

static std::string lf_recordingLine(const char* hexid, const char* stamp)
{
    return std::string("RTTFC,") + hexid + ",47.6,11.5,0,0,1,90,0,null,A320,D-AIXX,null,null," + stamp +
           ",X2,null";
}

TEST(FeedPlayer, playsARecordingInOrderAndPace)
{
    const auto file = lf_folder("feed") / "recording.txt";
    {
        std::ofstream out(file);
        out << lf_recordingLine("20001", "1000.0") << '\n'
            << lf_recordingLine("20002", "1040.0") << '\n'
            << "a line without a time stamp\n"
            << lf_recordingLine("20003", "1020.0") << '\n'  // late: it goes with the line before it
            << lf_recordingLine("20004", "1080.0") << '\n';
    }
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
    EXPECT_EQ(lf_recordingLine("20001", "1000.0"), got[0]);
    EXPECT_EQ("a line without a time stamp", got[2]);
    EXPECT_EQ(lf_recordingLine("20003", "1020.0"), got[3]);
    EXPECT_EQ(lf_recordingLine("20004", "1080.0"), got[4]);
    EXPECT_GE(when[1], 0.199);
    EXPECT_GE(when[4], 0.399);
    EXPECT_EQ(5u, player.sent());
}

TEST(FeedPlayer, stopsAtOnce)
{
    FeedOptions options;
    options.port = 9;  // nobody listens; the player doesn't mind
    options.weatherPort = 0;
    options.speed = 0.001;
    FeedPlayer player(FeedSource(DayOptions{}), options);
    player.start();
    const auto begun = std::chrono::steady_clock::now();
    player.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
}

TEST(FeedSource, refusesAFileThatIsNotThere)
{
    EXPECT_THROW(FeedSource(std::filesystem::path("no such recording")), std::runtime_error);
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
