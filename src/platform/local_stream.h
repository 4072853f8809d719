// A byte stream over a local pipe, as Asio drives it.
//
// The type differs between systems; both have async_read_some and async_write_some.
#pragma once

// First: Asio 1.22 chooses how it allocates by macros of the standard library, and a file in which
// they weren't known yet would free what another file allocated otherwise.
#include <cstddef>

#ifdef _WIN32
#include <asio/windows/stream_handle.hpp>
#else
#include <asio/local/stream_protocol.hpp>
#endif

#include <asio/io_context.hpp>
#include <chrono>
#include <string_view>
#include <system_error>

namespace vlt {

#ifdef _WIN32
using LocalStream = asio::windows::stream_handle;
#else
using LocalStream = asio::local::stream_protocol::socket;
#endif

// Opens `stream` to the server of the pipe `name` (`\\host\pipe\...`). Blocks only while the server
// has no room for one more client, each wait for room up to `busyLimit`. Any thread; the stream is
// only filled.
std::error_code gf_connectLocalStream(LocalStream& stream, std::string_view name,
                                      std::chrono::milliseconds busyLimit);

// Ends both directions and closes the stream; whatever runs on it is cancelled.
void gf_closeLocalStream(LocalStream& stream);

}  // namespace vlt
