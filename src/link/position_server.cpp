#include "link/position_server.h"

#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace vlt {

using asio::ip::tcp;
using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

static constexpr size_t kReplyLimit = 16384;  // bytes; a reply as long as this counts as none

std::atomic<bool> clientConnected{false};

struct Server {
    asio::io_context context;
    tcp::acceptor acceptor{context};
    std::optional<tcp::socket> client;
};
static std::unique_ptr<Server> server;  // [worker]

// --- listening

static void lf_check(const asio::error_code& error, std::string_view what)
{
    if (error) {
        throw std::runtime_error(format("{}{}", what, error.message()));
    }
}

static tcp::endpoint lf_address(asio::io_context& context, const std::string& port)
{
    asio::error_code error;
    tcp::resolver resolver(context);
    const auto found = resolver.resolve(tcp::v4(), "", port, tcp::resolver::passive, error);
    lf_check(error, "getaddrinfo failed with error ");
    return found.begin()->endpoint();
}

void openServer(const std::string& port)
{
    auto opened = std::make_unique<Server>();
    tcp::acceptor& acceptor = opened->acceptor;
    const tcp::endpoint address = lf_address(opened->context, port);
    asio::error_code error;
    acceptor.open(tcp::v4(), error);
    lf_check(error, "socket failed with error ");
    acceptor.non_blocking(true, error);  // a wait in the system couldn't be ended by a stop
    lf_check(error, "ioctlsocket failed with error ");
    acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    if (error) {
        throw std::runtime_error("setsockopt(SO_REUSEADDR) failed");
    }
    acceptor.bind(address, error);
    lf_check(error, format("Bind failed at port {} with error {} ", port, error.value()));
    acceptor.listen(tcp::acceptor::max_listen_connections, error);
    lf_check(error, "listen failed with error ");
    server = std::move(opened);
}

uint16_t gf_serverPort()
{
    asio::error_code none;
    return server ? server->acceptor.local_endpoint(none).port() : uint16_t{0};
}

// --- the client

// Takes in a client that knocks, if one does.
static bool lf_takeClient()
{
    asio::error_code error;
    tcp::socket socket = server->acceptor.accept(error);
    if (error) {
        return false;
    }
    try {
        socket.set_option(tcp::no_delay(true), error);
        lf_check(error, format("{} setsockopt failed with error ", timeOfDayString()));
        socket.non_blocking(true, error);
        lf_check(error, format("{} ioctlsocket failed with error ", timeOfDayString()));
    } catch (const std::runtime_error& e) {
        logLine(format("waitForClient interrupted: {}", e.what()));
        return false;
    }
    server->client = std::move(socket);
    clientConnected = true;
    return true;
}

// The worker's pause between two looks at a socket. False if a stop ends it.
static bool lf_pause(WaitingWork work)
{
    const bool goesOn = gf_sleepUnlessStopping(milliseconds(kWaitingWorkMs));
    if (goesOn && work != nullptr) {
        work();
    }
    return goesOn;
}

static bool lf_acceptClient(WaitingWork work)
{
    while (!clientConnected) {
        if (server == nullptr || gf_stopping() || (!lf_takeClient() && !lf_pause(work))) {
            return false;
        }
    }
    return true;
}

static void lf_turnOthersAway()
{
    asio::error_code error;
    for (tcp::socket other = server->acceptor.accept(error); !error; other = server->acceptor.accept(error)) {
        logLineTimed("a second client of the position server is turned away");
        asio::error_code none;
        other.close(none);
    }
}

static void lf_dropClient()
{
    clientConnected = false;
    server->client.reset();
    logLine("RealTraffic client socket closed");
}

// What a client says unasked is of no use, but left unread it would take the last words with it when the
// connection is closed.
static void lf_leaveUnheard()
{
    std::array<char, kReplyLimit> heard;
    asio::error_code error;
    constexpr int kMost = 64;
    for (int i = 0; i < kMost && server->client->receive(asio::buffer(heard), 0, error) > 0; ++i) {
    }
}

// Sends as long as the client reads; the error when it ends before the text does.
static asio::error_code lf_send(std::string_view text)
{
    constexpr milliseconds kTimeOut(1000);
    constexpr milliseconds kPause(5);
    const auto deadline = SteadyClock::now() + kTimeOut;
    while (!text.empty()) {
        asio::error_code error;
        text.remove_prefix(server->client->send(asio::buffer(text.data(), text.size()), 0, error));
        if (error == asio::error::would_block && SteadyClock::now() >= deadline) {
            return asio::error::timed_out;
        }
        if (error == asio::error::would_block) {
            gf_sleepUnlessClosing(kPause);
        } else if (error) {
            return error;
        }
    }
    return {};
}

bool sendToClient(std::string_view text)
{
    if (!clientConnected) {
        return false;
    }
    lf_leaveUnheard();
    const asio::error_code error = lf_send(text);
    if (error) {
        logLine(format("sendDataPacket to RealTraffic failed: {}", error.message()));
        lf_dropClient();
    }
    return !error;
}

// One reply. Nothing of it is used, so who says nothing for long is let in all the same.
static std::string lf_receiveReply(WaitingWork work)
{
    constexpr std::chrono::seconds kPatience(10);
    const auto deadline = SteadyClock::now() + kPatience;
    std::string reply(kReplyLimit, '\0');
    asio::error_code error;
    do {
        reply.resize(server->client->receive(asio::buffer(reply), 0, error));
        if (error != asio::error::would_block) {
            break;
        }
        reply.resize(kReplyLimit);
    } while (SteadyClock::now() < deadline && lf_pause(work));
    if (error == asio::error::would_block) {
        return {};
    }
    if (error && error != asio::error::eof) {
        logLine(format("receive: {}", error.message()));
        return {};
    }
    if (reply.size() >= kReplyLimit) {
        logLine(format("receive: buffer overrun: {}", reply.size()));
        return {};
    }
    return reply;
}

// --- the conversation

bool waitForRealTraffic(WaitingWork work)
{
    showMessage(format("Waiting for RealTraffic to connect to {} ...", kProgramName), true);
    do {
        if (!lf_acceptClient(work)) {
            clearMessage();
            return false;
        }
    } while (!sendToClient("Qs999=version\r\n"));
    const std::string reply = lf_receiveReply(work);
    if (gf_stopping()) {
        return false;
    }
    if (reply.empty()) {
        showMessage("No RealTraffic version received?", true);
    }
    display.realTraffic = true;
    settingsOpen = false;
    simTimeMode = true;
    logLine("RealTraffic connected");
    clearMessage();
    return true;
}

ClientNews sendPosition(const UserAc& user, WaitingWork work)
{
    if (server == nullptr || gf_isNullPosition(gf_placeOf(user))) {
        return ClientNews::None;
    }
    if (!clientConnected) {
        if (exitReason != ExitReason::NotYetSet || !lf_acceptClient(work)) {
            return ClientNews::None;
        }
        display.realTraffic = true;
        logLine(format("{} RealTraffic re-connected", timeOfDayString()));
        clearMessage();
        return ClientNews::Came;
    }
    lf_turnOthersAway();
    if (sendToClient(gf_positionText(user))) {
        return ClientNews::None;
    }
    display.realTraffic = false;
    return ClientNews::Gone;
}

void sendSimTime(int64_t seconds)
{
    constexpr int64_t kMsPerSecond = 1000;
    if (clientConnected && seconds >= 1) {
        sendToClient(format("Qs123={}\r\n", seconds * kMsPerSecond));
    }
}

void closeServer()
{
    if (clientConnected) {
        sendToClient("exit\r\n");
    }
    clientConnected = false;
    server.reset();
}

// --- the texts

// The shortest text that reads back as the number, never with an exponent.
static std::string lf_shortest(double value)
{
    constexpr size_t kRoom = 400;  // the largest number has 309 digits
    std::array<char, kRoom> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return {text.data(), end.ptr};
}

static double lf_rounded(double value)
{
    return std::nearbyint(value) + 0.0;  // the sum makes a zero of the negative one
}

std::string gf_positionText(const UserAc& user)
{
    constexpr double kAngle = 100000;
    constexpr double kThousand = 1000;
    return format("Qs121={:.0f};{:.0f};{:.6f};{:.0f};{};{:.6f};{:.6f}\r\n", lf_rounded(user.pitch * kAngle),
                  lf_rounded(user.bank * kAngle), user.heading, lf_rounded(user.altitude * kThousand),
                  lf_shortest(user.speed * kThousand), user.lat * kRadPerDeg, user.lon * kRadPerDeg);
}

int64_t gf_simTime(const UserAc& user)
{
    constexpr int64_t kFirstYear = 1970;
    constexpr int64_t kLastYear = 9999;
    constexpr int64_t kLongestYear = 366;    // days
    constexpr int64_t kLongestDay = 86'401;  // seconds
    if (user.zuluYear < kFirstYear || user.zuluYear > kLastYear || user.zuluDay < 1 ||
        user.zuluDay > kLongestYear || user.zuluTime < 0 || user.zuluTime > kLongestDay) {
        return 0;
    }
    using namespace std::chrono;
    const sys_days newYear = year(static_cast<int>(user.zuluYear)) / January / 1;
    const sys_seconds time = newYear + days(user.zuluDay - 1) + seconds(user.zuluTime);
    return time.time_since_epoch().count();
}

}  // namespace vlt
