// Asks from outside to end the program: SIGINT, SIGTERM and SIGHUP become UserMessage::Close, so that they
// act like closing the window. A SIGHUP that is ignored from the start stays so (nohup).
//
// Made first thing in main, before any other thread, since threads inherit which signals they leave
// alone. A thread of its own waits for them; the destructor ends and joins it.
#pragma once

#include <atomic>
#include <thread>

namespace vlt {

class CloseSignals
{
public:
    CloseSignals();
    ~CloseSignals();
    CloseSignals(const CloseSignals&) = delete;
    CloseSignals& operator=(const CloseSignals&) = delete;

private:
    std::atomic<bool> m_ending = false;  // [atomic] set by the destructor
    std::thread m_waiter;
};

}  // namespace vlt
