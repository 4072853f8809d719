#include "platform/standard_output.h"

#include <algorithm>
#include <climits>
#include <mutex>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace vlt {

static std::mutex outputMutex;
static bool lineIsBroken = false;  // [outputMutex] the last line lost its end

// Gives what the reader takes without waiting: a pipe that is ready takes at least PIPE_BUF bytes.
static std::string_view lf_writeReady(std::string_view text)
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    while (!text.empty() && ::poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), std::min<size_t>(text.size(), PIPE_BUF));
        if (written <= 0) {
            break;
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
    return text;
}

bool gf_printLine(std::string_view text)
{
    const std::scoped_lock lock(outputMutex);
    std::string line = lineIsBroken ? "\n" : "";
    line.append(text).append("\n");
    const std::string_view left = lf_writeReady(line);
    if (left.size() < line.size()) {
        lineIsBroken = !left.empty();
    }
    return left.empty();
}

}  // namespace vlt
