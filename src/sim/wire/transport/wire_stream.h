// The bytes' way to the simulator: a TCP socket or a local pipe, driven alike.
//
// Like Asio's own streams it has no lock: its owner sees to it that one thread at a time calls it.
#pragma once

#include "platform/local_stream.h"
#include "sim/wire/transport/chain.h"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <cstddef>
#include <span>
#include <system_error>
#include <utility>
#include <variant>

namespace vlt {

class WireStream
{
public:
    explicit WireStream(asio::io_context& context);

    // Connects to `target`. Blocks for a few seconds at most: a machine that refuses is known at
    // once, one that is silent is given up. The I/O thread must be running.
    std::error_code connect(const SimTarget& target);

    [[nodiscard]] bool isOpen() const;
    // Ends both directions; whatever runs is cancelled. Does nothing on a closed stream.
    void close();
    // Small packets of a socket go out at once.
    void disableNagle();

    // Starts to read some bytes into `room`, or to write some of `bytes`; `done(error, count)` is
    // called on the I/O thread. The memory must stay until then.
    template <typename Done>
    void readSome(std::span<std::byte> room, Done done)
    {
        std::visit(
            [&](auto& stream) {
                stream.async_read_some(asio::buffer(room.data(), room.size()), std::move(done));
            },
            m_stream);
    }
    template <typename Done>
    void writeSome(std::span<const std::byte> bytes, Done done)
    {
        std::visit(
            [&](auto& stream) {
                stream.async_write_some(asio::buffer(bytes.data(), bytes.size()), std::move(done));
            },
            m_stream);
    }

private:
    asio::io_context& m_context;
    std::variant<asio::ip::tcp::socket, LocalStream> m_stream;
};

}  // namespace vlt
