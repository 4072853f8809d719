#include "sim/wire/transport/wire_stream.h"

#include "sim/wire/transport/pauses.h"

#include <asio/post.hpp>
#include <future>
#include <memory>

namespace vlt {

using asio::ip::tcp;

WireStream::WireStream(asio::io_context& context) : m_context(context), m_stream(tcp::socket(context)) {}

// What a look-up gave: `endpoint` counts if there is no error.
struct Found {
    std::error_code error;
    tcp::endpoint endpoint;
};

static Found lf_lookUp(asio::io_context& context, const SimTarget& target)
{
    const tcp family = target.road == SimRoad::IPv6 ? tcp::v6() : tcp::v4();
    tcp::resolver resolver(context);
    // Shared, since a look-up that takes too long still comes back some time, and since the thread
    // that keeps a promise is still at it when the waiting thread goes on.
    const auto promise = std::make_shared<std::promise<Found>>();
    resolver.async_resolve(family, target.host, target.name, tcp::resolver::flags(),
                           [promise](std::error_code error, const tcp::resolver::results_type& results) {
                               promise->set_value({error, error ? tcp::endpoint() : *results.begin()});
                           });
    auto found = promise->get_future();
    if (found.wait_for(transportPauses.lookUp) != std::future_status::ready) {
        return {asio::error::timed_out, {}};
    }
    return found.get();
}

static std::error_code lf_connect(asio::io_context& context, tcp::socket& socket, const SimTarget& target)
{
    const Found found = lf_lookUp(context, target);
    if (found.error) {
        return found.error;
    }
    const auto promise = std::make_shared<std::promise<std::error_code>>();
    auto connected = promise->get_future();
    socket.async_connect(found.endpoint, [promise](std::error_code error) { promise->set_value(error); });
    if (connected.wait_for(transportPauses.connect) == std::future_status::ready) {
        return connected.get();
    }
    // On the I/O thread, so that the socket isn't closed under a completion. One that succeeds at
    // this very moment is given up as well.
    const auto closing = std::make_shared<std::promise<void>>();
    asio::post(context, [&socket, closing] {
        std::error_code ignored;
        socket.close(ignored);
        closing->set_value();
    });
    closing->get_future().wait();
    connected.wait();
    return asio::error::timed_out;
}

std::error_code WireStream::connect(const SimTarget& target)
{
    if (target.road == SimRoad::Pipe) {
        return gf_connectLocalStream(m_stream.emplace<LocalStream>(m_context), target.name,
                                     transportPauses.busyPipe);
    }
    return lf_connect(m_context, m_stream.emplace<tcp::socket>(m_context), target);
}

bool WireStream::isOpen() const
{
    return std::visit([](const auto& stream) { return stream.is_open(); }, m_stream);
}

void WireStream::close()
{
    if (!isOpen()) {
        return;
    }
    if (auto* pipe = std::get_if<LocalStream>(&m_stream)) {
        gf_closeLocalStream(*pipe);
        return;
    }
    auto& socket = std::get<tcp::socket>(m_stream);
    std::error_code ignored;
    socket.shutdown(tcp::socket::shutdown_both, ignored);
    socket.close(ignored);
}

void WireStream::disableNagle()
{
    auto* socket = std::get_if<tcp::socket>(&m_stream);
    if (socket && socket->is_open()) {
        std::error_code ignored;
        socket->set_option(tcp::no_delay(true), ignored);
    }
}

}  // namespace vlt
