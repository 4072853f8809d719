#include "platform/standard_input.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace vlt {

static constexpr size_t kLongestLine = 4096;
static constexpr int kLookMs = 200;  // how long the thread may take to see that the program ends

static bool lf_waitForInput(const std::stop_token& token)
{
    while (!token.stop_requested()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (::poll(&input, 1, kLookMs) > 0) {
            return true;
        }
    }
    return false;
}

static void lf_readLines(const std::stop_token& token, const std::function<void(std::string_view)>& onLine)
{
    std::string line;
    std::array<char, kLongestLine> chunk;
    // In the background of a terminal a read is refused; it mustn't stop the program.
    std::signal(SIGTTIN, SIG_IGN);
    while (lf_waitForInput(token)) {
        const ssize_t size = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (size <= 0) {
            if (size < 0 && (errno == EINTR || errno == EAGAIN)) {
                continue;
            }
            break;
        }
        for (const char c : std::string_view(chunk.data(), static_cast<size_t>(size))) {
            if (c == '\n') {
                onLine(line);
                line.clear();
            } else if (line.size() < kLongestLine) {
                line += c;
            }
        }
    }
    if (!line.empty() && !token.stop_requested()) {
        onLine(line);
    }
}

StandardInput::StandardInput(std::function<void(std::string_view line)> onLine)
    : m_reader([onLine = std::move(onLine)](const std::stop_token& token) { lf_readLines(token, onLine); })
{
}

StandardInput::~StandardInput() = default;

}  // namespace vlt
