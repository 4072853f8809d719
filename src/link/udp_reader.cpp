#include "link/udp_reader.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"

#include <asio.hpp>

#include <chrono>
#include <stdexcept>
#include <vector>

namespace vlt {

using asio::ip::udp;

static constexpr int32_t kReaderErrorDelay = 15;  // seconds to the restart
static constexpr int kBurstBytes = 4 << 20;       // kept by the system for us: some thousand reports at once

void UdpReader::take(std::string_view received)
{
    if (received.empty()) {
        return;
    }
    if (received.size() >= kDatagramLimit) {
        logLine(format("buffer overrun: {} bytes", received.size()));
        return;
    }
    datagram = received;
    packets = packets + 1;
    // RealTraffic on another PC reaches us by every network both have.
    if (!realTrafficHere) {
        if (datagram == lastDatagram) {
            return;
        }
        lastDatagram = datagram;
    }
    processDatagram();
}

void UdpReader::forget()
{
    packets = 0;
    packetsAtLastLook = 0;
    if (state == FeedState::Receiving) {
        state = FeedState::Silent;
    }
}

void UdpReader::lookWhetherSilent()
{
    if (state != FeedState::Stopped) {
        const int32_t now = packets;
        state = now == packetsAtLastLook ? FeedState::Silent : FeedState::Receiving;
        packetsAtLastLook = now;
    }
}

static udp::socket lf_open(asio::io_context& context, uint16_t port)
{
    asio::error_code error;
    udp::socket socket(context);
    socket.open(udp::v4(), error);
    if (error) {
        throw std::runtime_error(format("failed to create the socket, error: {}", error.message()));
    }
    socket.set_option(asio::socket_base::receive_buffer_size(kBurstBytes), error);  // less will do, too
    const asio::ip::address_v4 address =
        realTrafficHere ? asio::ip::address_v4::loopback() : asio::ip::address_v4::any();
    socket.bind(udp::endpoint(address, port), error);
    if (error) {
        throw std::runtime_error(format("bind to stream socket failed, error: {}", error.message()));
    }
    return socket;
}

using Buffer = std::vector<char>;

static void lf_receiveNext(UdpReader& reader, udp::socket& socket, Buffer& buffer)
{
    socket.async_receive(asio::buffer(buffer),
                         [&reader, &socket, &buffer](const asio::error_code& error, size_t size) {
                             if (error == asio::error::message_size) {
                                 size = buffer.size();
                             } else if (error) {
                                 throw std::runtime_error(format("receive error: {}", error.message()));
                             }
                             reader.take({buffer.data(), size});
                             lf_receiveNext(reader, socket, buffer);
                         });
}

static void lf_run(const std::stop_token& token, UdpReader& reader, uint16_t port)
{
    Buffer buffer(kDatagramLimit);
    asio::io_context context(1);
    udp::socket socket = lf_open(context, port);
    reader.onStarted();
    logLine(format("{} connected", reader.name));
    const std::stop_callback wake(token, [&context] { context.stop(); });
    lf_receiveNext(reader, socket, buffer);
    while (!token.stop_requested()) {
        context.run_for(std::chrono::seconds(1));
    }
    reader.onStopped();
}

static void lf_threadBody(const std::stop_token& token, UdpReader& reader, uint16_t port)
{
    try {
        lf_run(token, reader, port);
        logLine(format("{} disconnected", reader.name));
    } catch (const std::exception& e) {
        logLine(format("{} disconnected", reader.name));
        if (gf_requestStop(ExitReason::ReaderError, kReaderErrorDelay)) {
            showMessage(format("The {} has stopped with error: {}", reader.name, e.what()), true);
        }
    }
}

std::jthread gf_startReader(UdpReader& reader, uint16_t port)
{
    return std::jthread(lf_threadBody, std::ref(reader), port);
}

}  // namespace vlt
