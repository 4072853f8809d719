#include "platform/local_stream.h"

#include "platform/local_pipe.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace vlt {

static std::error_code lf_lastError()
{
    return {errno, std::system_category()};
}

static void lf_limitConnecting(int file, std::chrono::milliseconds limit)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(limit - seconds);
    const timeval time{static_cast<time_t>(seconds.count()), static_cast<suseconds_t>(rest.count())};
    ::setsockopt(file, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
}

// The system itself waits while the server's queue is full, for as long as it may wait for sending.
static std::error_code lf_connect(int file, const sockaddr_un& address, std::chrono::milliseconds busyLimit)
{
    lf_limitConnecting(file, busyLimit);
    if (::connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return lf_lastError();
    }
    lf_limitConnecting(file, std::chrono::milliseconds(0));
    return {};
}

std::error_code gf_connectLocalStream(LocalStream& stream, std::string_view name,
                                      std::chrono::milliseconds busyLimit)
{
    if (!gf_isPipeOfThisMachine(name)) {
        return std::make_error_code(std::errc::host_unreachable);
    }
    const std::string path = gf_localPipeFile(name).string();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return std::make_error_code(std::errc::filename_too_long);
    }
    std::memcpy(address.sun_path, path.data(), path.size());

    const int file = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (file < 0) {
        return lf_lastError();
    }
    std::error_code error = lf_connect(file, address, busyLimit);
    if (!error) {
        stream.assign(asio::local::stream_protocol(), file, error);
    }
    if (error) {
        ::close(file);
    }
    return error;
}

void gf_closeLocalStream(LocalStream& stream)
{
    std::error_code ignored;
    stream.shutdown(LocalStream::shutdown_both, ignored);
    stream.close(ignored);
}

}  // namespace vlt
