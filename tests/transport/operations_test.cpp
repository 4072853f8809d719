// The operations over real sockets and pipes, against a simulator's end that the test plays.
#include "core/base/run_state.h"
#include "sim/wire/packets.h"
#include "sim/wire/simconnect.h"
#include "sim/wire/transport/connection.h"
#include "sim/wire/transport/io_thread.h"
#include "sim/wire/transport/pauses.h"
#include "transport/sim_world.h"

#include <barrier>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <utility>

namespace vlt {

using namespace std::chrono_literals;

constexpr size_t kOpenSize = 296;
constexpr auto kEnded = static_cast<SimStatus>(0xC000013E);
constexpr auto kBadArgument = static_cast<SimStatus>(0x80070057);
constexpr auto kTooLong = static_cast<SimStatus>(0x8007007A);
constexpr auto kNobody = static_cast<SimStatus>(0x80004005);

// Keeps every message of the simulator.
static void lf_keepMessage(std::span<const std::byte> message, void* context)
{
    static_cast<std::vector<Bytes>*>(context)->emplace_back(message.begin(), message.end());
}

class Operations : public testing::Test
{
protected:
    Operations()
    {
        transportPauses.afterFlush = 0ms;
        transportPauses.afterClose = 0ms;
        transportPauses.betweenLooks = 1ms;
    }
    ~Operations() override
    {
        if (handle) {
            SimConnect_Close(handle);
        }
        transportPauses = {};
    }
    // Opens and takes the opening packet off the wire. The peer of a server before must be gone.
    template <typename Server>
    void open(Server& from)
    {
        peer.reset();
        ASSERT_EQ(kSimOk, SimConnect_Open(&handle, "Velatra", 0));
        peer.emplace(from.accept());
        opening = peer->read(kOpenSize);
    }
    void openPipe()
    {
        peer.reset();
        open(server.emplace());
    }
    void openTcp()
    {
        peer.reset();
        tcp.emplace();
        configure(*tcp);
        open(*tcp);
    }
    void configure(TcpServer& to)
    {
        world.writeConfig("Protocol=IPv4\nAddress=127.0.0.1\nDisableNagle=1\nPort=" + to.port());
    }
    SimStatus close()
    {
        return SimConnect_Close(std::exchange(handle, nullptr));
    }
    static void waitForTheEnd(SimConnection& connection)
    {
        while (connection.closeReason() == CloseReason::None) {
            std::this_thread::yield();
        }
    }

    SimWorld world;
    std::optional<PipeServer> server;
    std::optional<TcpServer> tcp;
    std::optional<SimPeer> peer;
    SimHandle handle = nullptr;
    Bytes opening;
    std::vector<Bytes> messages;
};

TEST_F(Operations, failAtOnceWithoutASimulatorOrArguments)
{
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(kBadArgument, SimConnect_Open(nullptr, "Velatra", 0));
    EXPECT_EQ(kBadArgument, SimConnect_Open(&handle, {}, 0));
    EXPECT_EQ(kBadArgument, SimConnect_Open(&handle, "Velatra", 7));
    EXPECT_EQ(kNobody, SimConnect_Open(&handle, "Velatra", 0));
    // A port that was somebody's a moment ago.
    configure(tcp.emplace());
    tcp.reset();
    EXPECT_EQ(kNobody, SimConnect_Open(&handle, "Velatra", 0));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    const PipeServer pipe;
    handle = reinterpret_cast<SimHandle>(this);  // whatever stood there
    EXPECT_EQ(kTooLong, SimConnect_Open(&handle, std::string(256, 'x'), 0));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(0, livingConnections);
}

TEST_F(Operations, giveUpASilentMachine)
{
    transportPauses.connect = 100ms;
    TcpServer silent;
    silent.acceptor.listen(0);
    // Once its queue is full the system answers no further connect.
    asio::io_context context;
    std::vector<asio::ip::tcp::socket> waiting;
    for (int i = 0; i < 4; ++i) {
        waiting.emplace_back(context, asio::ip::tcp::v4());
        waiting.back().async_connect(silent.acceptor.local_endpoint(), [](std::error_code) {});
    }
    configure(silent);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(kNobody, SimConnect_Open(&handle, "Velatra", 0));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 2s);
}

TEST_F(Operations, waitForAPipeThatServesOthersButNotForEver)
{
    PipeServer busy(0);
    asio::io_context context;
    asio::local::stream_protocol::socket other(context);
    other.connect(gf_localPipeFile(kPipeName).string());
    transportPauses.busyPipe = 100ms;
    EXPECT_EQ(kNobody, SimConnect_Open(&handle, "Velatra", 0));
    transportPauses.busyPipe = TransportPauses().busyPipe;
    auto opened = std::async(std::launch::async, [&] { return SimConnect_Open(&handle, "Velatra", 0); });
    EXPECT_EQ(std::future_status::timeout, opened.wait_for(50ms));
    SimPeer first = busy.accept();
    SimPeer second = busy.accept();
    EXPECT_EQ(kSimOk, opened.get());
    EXPECT_EQ(kOpenSize, gf_u32At(second.read(kOpenSize), 0));
}

TEST_F(Operations, reachTheSimulatorEachAsItsNumberedPacket)
{
    // The socket is refused, so the pipe is taken.
    configure(tcp.emplace());
    tcp.reset();
    openPipe();
    Bytes expected;
    uint32_t id = 0;
    const auto expectPacket = [&](auto compose, const auto&... arguments) {
        Bytes packet(kMaxClientPacket);
        PacketSpace space{packet};
        EXPECT_EQ(kSimOk, compose(space, ++id, arguments...));
        packet.resize(space.used);
        expected = gf_joined({expected, packet});
    };
    const auto send = [&](auto request, auto compose, const auto&... arguments) {
        EXPECT_EQ(kSimOk, request(handle, arguments...));
        expectPacket(compose, arguments...);
    };
    const SimInitialPosition at{1, 2, 3, 4, 5, 6, 1, 8};
    const Bytes data(64, std::byte{0x5A});
    const auto text = SimDataType::String32;
    expectPacket(gf_composeOpen, "Velatra");
    send(SimConnect_SubscribeToSystemEvent, gf_composeSubscribe, 201, "Sim");
    send(SimConnect_AddToDataDefinition, gf_composeAddToDataDefinition, 404, "ATC ID", "", text);
    send(SimConnect_MapClientEventToSimEvent, gf_composeMapClientEvent, 218, "FLAPS_SET");
    send(SimConnect_AddClientEventToNotificationGroup, gf_composeAddEventToGroup, 301, 218, true);
    send(SimConnect_SetNotificationGroupPriority, gf_composeSetGroupPriority, 301, 1);
    send(SimConnect_RequestDataOnSimObject, gf_composeRequestData, 109, 403, 5, 4);
    send(SimConnect_RequestDataOnSimObjectType, gf_composeRequestDataByType, 101, 404, 90000, 2);
    send(SimConnect_SetDataOnSimObject, gf_composeSetData, 402, 77, data);
    send(SimConnect_TransmitClientEvent, gf_composeTransmitClientEvent, 77, 218, 3, 301, 16);
    // One whose text is too long uses its id up; nothing of it is sent, or left in the next one's padding.
    EXPECT_EQ(kTooLong, SimConnect_AICreateNonATCAircraft(handle, std::string(300, 'x'), "G", {}, 1));
    ++id;
    send(SimConnect_AICreateNonATCAircraft, gf_composeCreate, "T", "G-A", at, 4);
    send(SimConnect_AIReleaseControl, gf_composeReleaseControl, 77, 103);
    send(SimConnect_AIRemoveObject, gf_composeRemoveObject, 77, 105);
    send(SimConnect_AISetAircraftFlightPlan, gf_composeSetFlightPlan, 77, "C:\\a.pln", 110);
    EXPECT_TRUE(gf_joined({opening, peer->read(expected.size() - kOpenSize)}) == expected);
    uint32_t last = 0;
    EXPECT_EQ(kSimOk, SimConnect_GetLastSentPacketID(handle, &last));
    EXPECT_EQ(id, last);
    {
        const std::scoped_lock lock(connectionsMutex);
        handle->lastSendId = 0xFFFFFFFE;
    }
    for (const uint32_t next : {0xFFFFFFFFU, 1U}) {
        EXPECT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, 1, 2));
        EXPECT_EQ(next, gf_u32At(peer->read(24), 12)) << "never 0";
    }
}

TEST_F(Operations, keepPacketsWholeWhenTwoThreadsSendAndDoNotWaitForASlowSimulator)
{
    openTcp();
    constexpr uint32_t kEach = 3000;  // far more than the wire holds
    std::barrier begin(2);
    const auto sender = [&](uint32_t first) {
        begin.arrive_and_wait();
        for (uint32_t i = 0; i < kEach; ++i) {
            EXPECT_EQ(kSimOk, SimConnect_AICreateNonATCAircraft(handle, "T", "G", {}, first + i));
        }
    };
    std::thread other(sender, 100000);
    sender(200000);
    other.join();
    uint32_t next[] = {100000, 200000};
    for (uint32_t i = 0; i < 2 * kEach; ++i) {
        const Bytes packet = peer->read(344);
        ASSERT_EQ(i + 2, gf_u32At(packet, 12));
        const uint32_t request = gf_u32At(packet, 340);
        ASSERT_EQ(next[request / 200000]++, request) << "each thread's in their order";
    }
    begin.arrive_and_drop();
    sender(300000);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(kSimOk, close());
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s) << "nor for one that reads nothing";
    EXPECT_EQ(0, livingConnections);
}

TEST_F(Operations, dispatchEveryMessageInOrderToTheLastFunctionGiven)
{
    openTcp();
    EXPECT_EQ(kSimFail, SimConnect_CallDispatch(handle, nullptr, nullptr));
    struct Context {
        SimHandle handle;
        std::vector<Bytes> messages;
        std::thread::id caller = std::this_thread::get_id();
    } context{handle, {}};
    const auto note = [](std::span<const std::byte> message, void* given) {
        auto& in = *static_cast<Context*>(given);
        in.messages.emplace_back(message.begin(), message.end());
        EXPECT_EQ(in.caller, std::this_thread::get_id());
        EXPECT_EQ(kSimOk, SimConnect_AIRemoveObject(in.handle, 1, 105)) << "no lock is held";
    };
    EXPECT_EQ(kSimOk, SimConnect_CallDispatch(handle, note, &context));
    const std::vector<Bytes> sent = {gf_message(40, 7), gf_message(12, 3), gf_message(9000, 8)};
    for (const std::byte byte : gf_joined({sent[0], gf_message(11, 9), sent[1]})) {
        peer->write({byte});
    }
    peer->write(gf_joined({Bytes(8), sent[2]}));  // at once: a gap of zeros ends with its read
    while (context.messages.size() < sent.size()) {
        ASSERT_EQ(kSimOk, SimConnect_CallDispatch(handle, nullptr, &context));
    }
    EXPECT_EQ(sent, context.messages) << "one of 11 bytes has no id";
}

TEST_F(Operations, endADrainAndTheSearchForASimulatorAtAStop)
{
    openPipe();
    peer->write(gf_joined({gf_message(20, 1), gf_message(20, 2)}));
    peer->finish();
    waitForTheEnd(*handle);  // both are there
    static int given;
    given = 0;
    const auto stop = [](std::span<const std::byte>, void*) {
        ++given;
        gf_requestStop(ExitReason::NewFlight, 0);
    };
    SimConnect_CallDispatch(handle, stop, nullptr);
    EXPECT_EQ(1, given) << "a flood must not hold the end back";
    SimHandle second = nullptr;
    EXPECT_EQ(kNobody, SimConnect_Open(&second, "Velatra", 0));
    EXPECT_TRUE(gf_resetRunState());
}

TEST_F(Operations, breakWithTheStatusOfWhatHappenedAfterAllMessages)
{
    const Bytes two = gf_joined({gf_message(20, 1), gf_message(20, 2)});
    Bytes half = gf_message(100, 1);
    half.resize(50);
    const struct {
        const char* what;
        Bytes sent;
        void (SimPeer::*then)();
        uint32_t reason, status;
    } cases[] = {
        {"too large", gf_joined({two, gf_size(41089)}), nullptr, 1, 0x80004004},
        {"size 3", gf_joined({two, gf_size(3)}), nullptr, 2, 0x80004004},
        {"in good order", two, &SimPeer::finish, 4, 0xC000013E},
        {"in a packet", gf_joined({two, half}), &SimPeer::finish, 4, 0xC000013E},
        {"by a crash", {}, &SimPeer::reset, 5, 0xC000020D},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        openTcp();
        peer->write(c.sent);
        if (c.then != nullptr) {
            ((*peer).*c.then)();
        }
        waitForTheEnd(*handle);  // so that it is known before anything is asked for
        messages.clear();
        EXPECT_EQ(static_cast<SimStatus>(c.status),
                  SimConnect_CallDispatch(handle, lf_keepMessage, &messages));
        EXPECT_EQ(c.sent.empty() ? 0U : 2U, messages.size());
        EXPECT_EQ(c.reason, static_cast<uint32_t>(handle->closeReason()));
        close();
    }
}

TEST_F(Operations, giveTheStatusOfABrokenConnectionAndRefuseADeadHandle)
{
    const auto statuses = [&](SimHandle on) {
        uint32_t id = 0;
        return std::vector<SimStatus>{
            SimConnect_AIRemoveObject(on, 1, 105), SimConnect_SetDataOnSimObject(on, 402, 1, {}),
            SimConnect_GetLastSentPacketID(on, &id), SimConnect_CallDispatch(on, lf_keepMessage, &messages)};
    };
    openPipe();
    peer->finish();
    waitForTheEnd(*handle);
    EXPECT_EQ(std::vector<SimStatus>(4, kEnded), statuses(handle));
    const SimHandle dead = handle;
    EXPECT_EQ(kSimFail, close());
    for (const SimHandle none : {dead, SimHandle()}) {
        EXPECT_EQ(std::vector<SimStatus>(4, kSimFail), statuses(none));
        EXPECT_EQ(kSimFail, SimConnect_Close(none));
    }
}

TEST_F(Operations, serveSeveralConnectionsSendWhatIsWaitingBeforeTheyCloseAndOpenAgain)
{
    transportPauses.afterFlush = TransportPauses().afterFlush;
    openPipe();
    SimHandle second = nullptr;
    ASSERT_EQ(kSimOk, SimConnect_Open(&second, "Other", 0));
    SimPeer secondPeer = server->accept();
    EXPECT_EQ(kSimOk, SimConnect_Close(second));
    for (uint32_t i = 0; i < 100; ++i) {
        ASSERT_EQ(kSimOk, SimConnect_AIRemoveObject(handle, i, 105));
    }
    EXPECT_EQ(kSimOk, close());
    EXPECT_EQ(99U, gf_u32At(peer->read(2400), 2400 - 8));
    EXPECT_TRUE(peer->readsEnd());
    EXPECT_EQ(0, livingConnections);
    open(*server);
    EXPECT_EQ(1U, gf_u32At(opening, 12));
}

}  // namespace vlt
