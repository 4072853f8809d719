#include "platform/close_signals.h"

#include "platform/user_messages.h"

#include <csignal>
#include <ctime>

namespace vlt {

// How long the waiting thread may take to see that the program ends.
constexpr timespec kLookInterval{0, 200'000'000};

static sigset_t lf_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    // The terminal is gone. Whoever starts us so that we outlive it has it ignored.
    struct sigaction hangUp {
    };
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        sigaddset(&signals, SIGHUP);
    }
    return signals;
}

CloseSignals::CloseSignals()
{
    const sigset_t signals = lf_signals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // Whoever reads our output may go before us; that must not end a flight.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);  // nor may a limit to the size of files: their writes fail then
    m_waiter = std::thread([this, signals] {
        while (!m_ending) {
            if (sigtimedwait(&signals, nullptr, &kLookInterval) > 0) {
                gf_postUserMessage(UserMessage::Close);
            }
        }
    });
}

// The signals stay blocked: one that comes while the program ends must not cut that short.
CloseSignals::~CloseSignals()
{
    m_ending = true;
    m_waiter.join();
}

}  // namespace vlt
