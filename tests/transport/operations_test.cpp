// The operations over real sockets and pipes, against a simulator's end that the test plays.
#include "sim/packets.h"
#include "sim/simconnect.h"
#include "sim/transport/connection.h"
#include "sim/transport/io_thread.h"
#include "transport/sim_world.h"

#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <optional>

namespace vlt {

using namespace std::chrono_literals;

constexpr size_t kOpenSize = 296;

class Operations : public testing::Test
{
protected:
    ~Operations() override
    {
        if (handle) {
            SimConnect_Close(handle);
        }
    }
    // Opens over the pipe and takes the opening packet off the wire.
    void openPipe()
    {
        peer.reset();
        server.emplace();
        ASSERT_EQ(kSimOk, SimConnect_Open(&handle, "Velatra", 0));
        peer.emplace(server->accept());
        opening = peer->read(kOpenSize);
    }
    void openTcp()
    {
        peer.reset();
        tcp.emplace();
        world.writeConfig("Protocol=IPv4\nAddress=127.0.0.1\nDisableNagle=1\nPort=" + tcp->port());
        ASSERT_EQ(kSimOk, SimConnect_Open(&handle, "Velatra", 0));
        peer.emplace(tcp->accept());
        opening = peer->read(kOpenSize);
    }
    // Dispatches until the connection is broken; the status of that.
    SimStatus untilBroken()
    {
        return gf_dispatchUntil(handle, messages, [] { return false; });
    }
    SimStatus untilMessages(size_t count)
    {
        return gf_dispatchUntil(handle, messages, [&] { return messages.size() >= count; });
    }
    [[nodiscard]] uint32_t reason() const
    {
        return static_cast<uint32_t>(handle->closeReason());
    }

    SimWorld world;
    std::optional<PipeServer> server;
    std::optional<TcpServer> tcp;
    std::optional<SimPeer> peer;
    SimHandle handle = nullptr;
    Bytes opening;
    std::vector<Bytes> messages;
};

TEST_F(Operations, openOverThePipeWithTheNameFirst)
{
    openPipe();
    EXPECT_EQ(296U, gf_u32At(opening, 0));
    EXPECT_EQ(35U, gf_u32At(opening, 4));
    EXPECT_EQ(0xF0000001U, gf_u32At(opening, 8));
    EXPECT_EQ(1U, gf_u32At(opening, 12));
    EXPECT_STREQ("Velatra", reinterpret_cast<const char*>(opening.data()) + 16);
}

TEST_F(Operations, openOverTcp)
{
    openTcp();
    EXPECT_EQ(0xF0000001U, gf_u32At(opening, 8));
}

TEST_F(Operations, openOverIPv6ByTheRegistrysPort)
{
    asio::io_context context;
    std::error_code error;
    asio::ip::tcp::acceptor probe(context);
    probe.open(asio::ip::tcp::v6(), error);
    if (!error) {
        probe.bind({asio::ip::make_address("::1"), 0}, error);
    }
    if (error) {
        GTEST_SKIP() << "no IPv6 here";
    }
    TcpServer six("::1");
    world.writeRegistry("SimConnect_Port_IPv6=" + six.port());
    ASSERT_EQ(kSimOk, SimConnect_Open(&handle, "Velatra", 0));
    SimPeer sixPeer = six.accept();
    EXPECT_EQ(296U, gf_u32At(sixPeer.read(kOpenSize), 0));
}

TEST_F(Operations, refuseToOpenWithoutArguments)
{
    EXPECT_EQ(static_cast<SimStatus>(0x80070057), SimConnect_Open(nullptr, "Velatra", 0));
    EXPECT_EQ(static_cast<SimStatus>(0x80070057), SimConnect_Open(&handle, {}, 0));
    EXPECT_EQ(static_cast<SimStatus>(0x80070057), SimConnect_Open(&handle, "Velatra", 7));
    EXPECT_EQ(nullptr, handle);
}

TEST_F(Operations, failAtOnceWithoutASimulator)
{
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(static_cast<SimStatus>(0x80004005), SimConnect_Open(&handle, "Velatra", 0));
    {
        // A port that was somebody's a moment ago.
        const std::string port = TcpServer().port();
        world.writeConfig("Protocol=IPv4\nAddress=127.0.0.1\nPort=" + port);
        EXPECT_EQ(static_cast<SimStatus>(0x80004005), SimConnect_Open(&handle, "Velatra", 0));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    EXPECT_EQ(nullptr, handle);
}

TEST_F(Operations, giveUpASilentMachine)
{
    TcpServer silent;
    silent.acceptor().listen(0);
    // Once its queue is full the system answers no further connect.
    asio::io_context context;
    std::vector<asio::ip::tcp::socket> waiting;
    for (int i = 0; i < 4; ++i) {
        waiting.emplace_back(context, asio::ip::tcp::v4());
        waiting.back().async_connect(silent.acceptor().local_endpoint(), [](std::error_code) {});
    }
    world.writeConfig("Protocol=IPv4\nAddress=127.0.0.1\nPort=" + silent.port());
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(static_cast<SimStatus>(0x80004005), SimConnect_Open(&handle, "Velatra", 0));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 4s);
}

TEST_F(Operations, takeThePipeWhenTheSocketIsRefused)
{
    world.writeConfig("Protocol=IPv4\nAddress=127.0.0.1\nPort=" + TcpServer().port());
    openPipe();
    EXPECT_EQ(1U, gf_u32At(opening, 12));
}

TEST_F(Operations, waitForAPipeThatServesOthers)
{
    PipeServer busy(kPipeName, 0);
    asio::io_context context;
    asio::local::stream_protocol::socket other(context);
    other.connect(gf_localPipeFile(kPipeName).string());
    auto opened = std::async(std::launch::async, [&] { return SimConnect_Open(&handle, "Velatra", 0); });
    EXPECT_EQ(std::future_status::timeout, opened.wait_for(50ms));
    SimPeer first = busy.accept();
    SimPeer second = busy.accept();
    EXPECT_EQ(kSimOk, opened.get());
    EXPECT_EQ(296U, gf_u32At(second.read(kOpenSize), 0));
}

TEST_F(Operations, refuseANameThatIsTooLong)
{
    const PipeServer pipe;
    EXPECT_EQ(static_cast<SimStatus>(0x8007007A), SimConnect_Open(&handle, std::string(256, 'x'), 0));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(0, livingConnections);
}

TEST_F(Operations, numberTheirPackets)
{
    openPipe();
    uint32_t last = 0;
    EXPECT_EQ(kSimOk, SimConnect_GetLastSentPacketID(handle, &last));
    EXPECT_EQ(1U, last);
    EXPECT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, 70000, 105));
    EXPECT_EQ(kSimOk, SimConnect_AIReleaseControl(handle, 70001, 103));
    EXPECT_EQ(kSimOk, SimConnect_GetLastSentPacketID(handle, &last));
    EXPECT_EQ(3U, last);
    const Bytes packets = peer->read(48);
    EXPECT_EQ(0xF000002CU, gf_u32At(packets, 8));
    EXPECT_EQ(2U, gf_u32At(packets, 12));
    EXPECT_EQ(70000U, gf_u32At(packets, 16));
    EXPECT_EQ(0xF000002BU, gf_u32At(packets, 32));
    EXPECT_EQ(3U, gf_u32At(packets, 36));
}

TEST_F(Operations, neverUseTheSendIdZero)
{
    openPipe();
    {
        const std::scoped_lock lock(connectionsMutex);
        handle->nextSendId = 0xFFFFFFFE;
    }
    for (const uint32_t expected : {0xFFFFFFFFU, 1U, 2U}) {
        EXPECT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, 1, 2));
        EXPECT_EQ(expected, gf_u32At(peer->read(24), 12));
    }
}

TEST_F(Operations, sendNothingOfATextThatIsTooLong)
{
    openPipe();
    const std::string title(300, 'x');
    EXPECT_EQ(static_cast<SimStatus>(0x8007007A),
              SimConnect_AICreateNonATCAircraft(handle, title, "G-ABCD", {}, 1));
    // The next packet comes alone, and nothing of the first is left in its padding.
    EXPECT_EQ(kSimOk, SimConnect_AICreateNonATCAircraft(handle, "T", "G", {}, 1));
    const Bytes packet = peer->read(344);
    EXPECT_EQ(344U, gf_u32At(packet, 0));
    EXPECT_EQ(Bytes(255), Bytes(packet.begin() + 17, packet.begin() + 272));
}

TEST_F(Operations, reachTheSimulatorEachAsItsPacket)
{
    openPipe();
    const Bytes data(64, std::byte{0x5A});
    const SimInitialPosition position{1, 2, 3, 4, 5, 6, 1, 8};
    Bytes expected;
    uint32_t id = 1;
    const auto add = [&](SimStatus sent, auto compose) {
        EXPECT_EQ(kSimOk, sent);
        Bytes packet(kMaxClientPacket);
        PacketSpace space{packet};
        EXPECT_EQ(kSimOk, compose(space, ++id));
        expected.insert(expected.end(), packet.begin(),
                        packet.begin() + static_cast<std::ptrdiff_t>(space.used));
    };
    add(SimConnect_SubscribeToSystemEvent(handle, 201, "Sim"),
        [](auto& s, uint32_t n) { return gf_composeSubscribe(s, n, 201, "Sim"); });
    add(SimConnect_AddToDataDefinition(handle, 404, "ATC ID", "", SimDataType::String32),
        [](auto& s, uint32_t n) {
            return gf_composeAddToDataDefinition(s, n, 404, "ATC ID", "", SimDataType::String32);
        });
    add(SimConnect_MapClientEventToSimEvent(handle, 218, "FLAPS_SET"),
        [](auto& s, uint32_t n) { return gf_composeMapClientEvent(s, n, 218, "FLAPS_SET"); });
    add(SimConnect_AddClientEventToNotificationGroup(handle, 301, 218, true),
        [](auto& s, uint32_t n) { return gf_composeAddEventToGroup(s, n, 301, 218, true); });
    add(SimConnect_SetNotificationGroupPriority(handle, 301, 1),
        [](auto& s, uint32_t n) { return gf_composeSetGroupPriority(s, n, 301, 1); });
    add(SimConnect_RequestDataOnSimObject(handle, 109, 403, 5, 4),
        [](auto& s, uint32_t n) { return gf_composeRequestData(s, n, 109, 403, 5, 4); });
    add(SimConnect_RequestDataOnSimObjectType(handle, 101, 404, 90000, 2),
        [](auto& s, uint32_t n) { return gf_composeRequestDataByType(s, n, 101, 404, 90000, 2); });
    add(SimConnect_SetDataOnSimObject(handle, 402, 77, data),
        [&](auto& s, uint32_t n) { return gf_composeSetData(s, n, 402, 77, data); });
    add(SimConnect_TransmitClientEvent(handle, 77, 218, 3, 301, 16),
        [](auto& s, uint32_t n) { return gf_composeTransmitClientEvent(s, n, 77, 218, 3, 301, 16); });
    add(SimConnect_AICreateNonATCAircraft(handle, "T", "G-A", position, 4),
        [&](auto& s, uint32_t n) { return gf_composeCreate(s, n, "T", "G-A", position, 4); });
    add(SimConnect_AIReleaseControl(handle, 77, 103),
        [](auto& s, uint32_t n) { return gf_composeReleaseControl(s, n, 77, 103); });
    add(SimConnect_AIRemoveObject(handle, 77, 105),
        [](auto& s, uint32_t n) { return gf_composeRemoveObject(s, n, 77, 105); });
    add(SimConnect_AISetAircraftFlightPlan(handle, 77, "C:\\a.pln", 110),
        [](auto& s, uint32_t n) { return gf_composeSetFlightPlan(s, n, 77, "C:\\a.pln", 110); });
    EXPECT_TRUE(expected == peer->read(expected.size()));
}

TEST_F(Operations, doNotWaitForASlowSimulatorAndLoseNothing)
{
    openPipe();
    // Far more than a pipe holds, with nobody reading.
    constexpr uint32_t kPackets = 3000;
    for (uint32_t i = 0; i < kPackets; ++i) {
        ASSERT_EQ(kSimOk, SimConnect_AICreateNonATCAircraft(handle, "T", "G", {}, i));
    }
    for (uint32_t i = 0; i < kPackets; ++i) {
        const Bytes packet = peer->read(344);
        ASSERT_EQ(i + 2, gf_u32At(packet, 12));
        ASSERT_EQ(i, gf_u32At(packet, 340));
    }
}

TEST_F(Operations, keepPacketsWholeWhenTwoThreadsSend)
{
    openTcp();
    constexpr uint32_t kEach = 500;
    std::mutex callMutex;
    std::map<uint32_t, uint32_t> objectOfId;  // [callMutex]
    const auto sender = [&](uint32_t first) {
        for (uint32_t i = 0; i < kEach; ++i) {
            const std::scoped_lock lock(callMutex);
            uint32_t id = 0;
            EXPECT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, first + i, 105));
            EXPECT_EQ(kSimOk, SimConnect_GetLastSentPacketID(handle, &id));
            objectOfId[id] = first + i;
        }
    };
    std::thread other(sender, 100000);
    sender(200000);
    other.join();
    for (uint32_t i = 0; i < 2 * kEach; ++i) {
        const Bytes packet = peer->read(24);
        ASSERT_EQ(i + 2, gf_u32At(packet, 12));
        ASSERT_EQ(objectOfId.at(i + 2), gf_u32At(packet, 16));
    }
}

TEST_F(Operations, dispatchEveryMessageInOrderOnTheCallersThread)
{
    openTcp();
    const std::vector<Bytes> sent = {gf_message(40, 7), gf_message(12, 3), gf_message(9000, 8)};
    Bytes stream = gf_joined({sent[0], gf_message(11, 9), sent[1], Bytes(8), sent[2]});
    for (const std::byte byte : stream) {
        peer->write({byte});
    }
    EXPECT_EQ(kSimOk, untilMessages(3));
    EXPECT_EQ(sent, messages);

    struct Seen {
        SimHandle handle;
        std::thread::id thread;
        SimStatus status = kSimFail;
    } seen{handle, {}};
    peer->write(gf_message(20, 4));
    const auto note = [](std::span<const std::byte>, void* context) {
        auto& in = *static_cast<Seen*>(context);
        in.thread = std::this_thread::get_id();
        // No lock is held: a request from inside works.
        in.status = SimConnect_AIRemoveObject(in.handle, 1, 105);
    };
    while (seen.thread == std::thread::id()) {
        ASSERT_EQ(kSimOk, SimConnect_CallDispatch(handle, note, &seen));
    }
    EXPECT_EQ(std::this_thread::get_id(), seen.thread);
    EXPECT_EQ(kSimOk, seen.status);
}

TEST_F(Operations, dispatchToTheLastFunctionGiven)
{
    openPipe();
    EXPECT_GT(0, SimConnect_CallDispatch(handle, nullptr, nullptr));
    EXPECT_EQ(kSimOk, SimConnect_CallDispatch(handle, gf_keepMessage, &messages));
    peer->write(gf_message(20, 4));
    while (messages.empty()) {
        ASSERT_EQ(kSimOk, SimConnect_CallDispatch(handle, nullptr, &messages));
    }
    EXPECT_EQ(gf_message(20, 4), messages[0]);
}

TEST_F(Operations, tellABrokenConnectionOnlyAfterItsMessages)
{
    openPipe();
    peer->write(gf_joined({gf_message(20, 1), gf_message(20, 2), gf_size(2)}));
    // The end is known before anything is asked for.
    while (handle->closeReason() == CloseReason::None) {
        std::this_thread::yield();
    }
    EXPECT_EQ(static_cast<SimStatus>(0x80004004), SimConnect_CallDispatch(handle, gf_keepMessage, &messages));
    EXPECT_EQ((std::vector<Bytes>{gf_message(20, 1), gf_message(20, 2)}), messages);
    EXPECT_EQ(2U, reason());
}

TEST_F(Operations, breakWithTheStatusOfWhatHappened)
{
    const struct {
        const char* what;
        std::function<void(SimPeer&)> act;
        uint32_t reason;
        uint32_t status;
    } cases[] = {
        {"too large",
         [](SimPeer& p) {
             p.write(gf_joined({gf_message(12, 1), gf_size(41089)}));
         },
         1, 0x80004004},
        {"size 3", [](SimPeer& p) { p.write(gf_size(3)); }, 2, 0x80004004},
        {"in good order", [](SimPeer& p) { p.finish(); }, 4, 0xC000013E},
        {"in the middle of a packet",
         [](SimPeer& p) {
             Bytes half = gf_message(100, 1);
             half.resize(50);
             p.write(half);
             p.finish();
         },
         4, 0xC000013E},
        {"by a crash", [](SimPeer& p) { p.reset(); }, 5, 0xC000020D},
    };
    for (const auto& c : cases) {
        openTcp();
        c.act(*peer);
        EXPECT_EQ(static_cast<SimStatus>(c.status), untilBroken()) << c.what;
        EXPECT_EQ(c.reason, reason()) << c.what;
        SimConnect_Close(handle);
        handle = nullptr;
    }
}

TEST_F(Operations, giveTheStatusOfABrokenConnectionToEveryRequest)
{
    openPipe();
    peer->finish();
    EXPECT_EQ(static_cast<SimStatus>(0xC000013E), untilBroken());
    uint32_t id = 0;
    EXPECT_EQ(static_cast<SimStatus>(0xC000013E), SimConnect_AIRemoveObject(handle, 1, 105));
    EXPECT_EQ(static_cast<SimStatus>(0xC000013E), SimConnect_SetDataOnSimObject(handle, 402, 1, {}));
    EXPECT_EQ(static_cast<SimStatus>(0xC000013E), SimConnect_GetLastSentPacketID(handle, &id));
    EXPECT_EQ(static_cast<SimStatus>(0xC000013E), SimConnect_CallDispatch(handle, gf_keepMessage, &messages));
    const SimHandle dead = handle;
    handle = nullptr;
    EXPECT_EQ(kSimFail, SimConnect_Close(dead));
}

TEST_F(Operations, refuseADeadHandle)
{
    openPipe();
    const SimHandle dead = handle;
    handle = nullptr;
    EXPECT_EQ(kSimOk, SimConnect_Close(dead));
    EXPECT_TRUE(peer->readsEnd());
    for (const SimHandle none : {dead, SimHandle()}) {
        uint32_t id = 0;
        EXPECT_GT(0, SimConnect_AIRemoveObject(none, 1, 105));
        EXPECT_GT(0, SimConnect_CallDispatch(none, gf_keepMessage, &messages));
        EXPECT_GT(0, SimConnect_GetLastSentPacketID(none, &id));
        EXPECT_GT(0, SimConnect_Close(none));
    }
}

TEST_F(Operations, sendWhatIsWaitingBeforeTheyClose)
{
    openPipe();
    for (uint32_t i = 0; i < 100; ++i) {
        ASSERT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, i, 105));
    }
    EXPECT_EQ(kSimOk, SimConnect_Close(handle));
    handle = nullptr;
    EXPECT_EQ(99U, gf_u32At(peer->read(2400), 2400 - 8));
    EXPECT_TRUE(peer->readsEnd());
    EXPECT_EQ(0, livingConnections);
}

TEST_F(Operations, closeWhileTheSimulatorReadsNothing)
{
    openPipe();
    for (uint32_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(kSimOk, SimConnect_AICreateNonATCAircraft(handle, "T", "G", {}, i));
    }
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(kSimOk, SimConnect_Close(handle));
    handle = nullptr;
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    EXPECT_EQ(0, livingConnections);
}

TEST_F(Operations, serveSeveralConnectionsAndOpenAgain)
{
    openPipe();
    SimHandle second = nullptr;
    ASSERT_EQ(kSimOk, SimConnect_Open(&second, "Other", 0));
    SimPeer secondPeer = server->accept();
    secondPeer.read(kOpenSize);
    EXPECT_EQ(kSimOk, SimConnect_Close(second));
    // The first goes on.
    peer->write(gf_message(20, 5));
    EXPECT_EQ(kSimOk, untilMessages(1));
    EXPECT_EQ(1U, messages.size());
    EXPECT_EQ(kSimOk, SimConnect_Close(handle));
    ASSERT_EQ(kSimOk, SimConnect_Open(&handle, "Velatra", 0));
    SimPeer again = server->accept();
    EXPECT_EQ(1U, gf_u32At(again.read(kOpenSize), 12));
}

// Below the operations: a read that is cancelled leaves its mark on a connection that still has an
// owner.
TEST_F(Operations, noteACancelledRead)
{
    const PipeServer pipe;
    gf_holdIoThread();
    auto connection = std::make_shared<SimConnection>(SimConfig{});
    ASSERT_TRUE(connection->connect({SimRoad::Pipe, ".", kPipeName}));
    EXPECT_TRUE(connection->close(CloseReason::None, kSimOk));
    while (connection->closeReason() == CloseReason::None) {
        std::this_thread::yield();
    }
    EXPECT_EQ(8U, static_cast<uint32_t>(connection->closeReason()));
    EXPECT_EQ(static_cast<SimStatus>(0xC0000120), connection->closeStatus());
    EXPECT_FALSE(connection->close(CloseReason::None, kSimOk));
    connection.reset();
    gf_releaseIoThread();
}

}  // namespace vlt
