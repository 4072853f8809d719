// One process at a time, and how it is told to close.
#include "platform/close_signals.h"
#include "platform/instance_lock.h"
#include "platform/user_messages.h"
#include "support/temp_folder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>

namespace vlt {

// Another process that tries to take the lock, tells the result, and holds on until it is let go.
class OtherProcess
{
public:
    OtherProcess()
    {
        int answer[2];
        int hold[2];
        EXPECT_EQ(0, ::pipe(answer));
        EXPECT_EQ(0, ::pipe(hold));
        m_id = ::fork();
        if (m_id == 0) {
            ::close(hold[1]);
            char byte = gf_takeInstanceLock() ? 'y' : 'n';
            const bool told = ::write(answer[1], &byte, 1) == 1;
            // Returns when the parent closes its end.
            const auto ended = ::read(hold[0], &byte, 1);
            ::_exit(told && ended == 0 ? 0 : 1);
        }
        ::close(answer[1]);
        ::close(hold[0]);
        m_hold = hold[1];
        char byte = '?';
        m_took = ::read(answer[0], &byte, 1) == 1 && byte == 'y';
        ::close(answer[0]);
    }
    ~OtherProcess()
    {
        end();
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    [[nodiscard]] bool took() const
    {
        return m_took;
    }
    void end()
    {
        if (m_hold < 0) {
            return;
        }
        ::close(m_hold);
        m_hold = -1;
        int status = -1;
        ::waitpid(m_id, &status, 0);
        EXPECT_EQ(0, status);
    }

private:
    pid_t m_id = -1;
    int m_hold = -1;
    bool m_took = false;
};

TEST(InstanceLock, belongsToOneProcessUntilItEnds)
{
    const TempFolder folder;
    const ScopedVariable runtime("VELATRA_RUNTIME", (folder.path() / "new").string());
    OtherProcess first;
    EXPECT_TRUE(first.took());
    {
        const OtherProcess second;
        EXPECT_FALSE(second.took());
    }
    EXPECT_FALSE(gf_takeInstanceLock());
    first.end();
    EXPECT_TRUE(gf_takeInstanceLock());
    const OtherProcess third;
    EXPECT_FALSE(third.took());
}

TEST(InstanceLock, doesNotStopTheProgramWithoutAFolder)
{
    const TempFolder folder;
    const auto file = folder.write("file", "x");
    const ScopedVariable runtime("VELATRA_RUNTIME", (file / "below").string());
    EXPECT_TRUE(gf_takeInstanceLock());
}

TEST(UserMessages, comeInTheirOrder)
{
    gf_postUserMessage(UserMessage::StartMain);
    gf_postUserMessage(UserMessage::Close);
    gf_postUserMessage(UserMessage::Finish);
    EXPECT_EQ(UserMessage::StartMain, gf_waitUserMessage());
    EXPECT_EQ(UserMessage::Close, gf_waitUserMessage());
    EXPECT_EQ(UserMessage::Finish, gf_waitUserMessage());
}

TEST(UserMessages, noneIsLostBetweenThreads)
{
    constexpr int kEach = 1000;
    std::thread closers([] {
        for (int i = 0; i < kEach; ++i) {
            gf_postUserMessage(UserMessage::Close);
        }
    });
    std::thread starters([] {
        for (int i = 0; i < kEach; ++i) {
            gf_postUserMessage(UserMessage::StartMain);
        }
    });
    int closes = 0;
    for (int i = 0; i < 2 * kEach; ++i) {
        closes += gf_waitUserMessage() == UserMessage::Close;
    }
    EXPECT_EQ(kEach, closes);
    closers.join();
    starters.join();
}

TEST(CloseSignals, becomeMessages)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    {
        const CloseSignals signals;
        for (const int signal : {SIGINT, SIGTERM}) {
            ::kill(::getpid(), signal);
            EXPECT_EQ(UserMessage::Close, gf_waitUserMessage()) << signal;
        }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace vlt
