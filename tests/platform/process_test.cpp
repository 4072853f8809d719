// One process at a time, and how it is told to close.
#include "platform/close_signals.h"
#include "platform/instance_lock.h"
#include "platform/standard_output.h"
#include "platform/user_messages.h"
#include "support/temp_folder.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vlt {

// Whether another process gets the lock; it has ended then.
static bool lf_otherProcessTakes()
{
    const pid_t id = ::fork();
    if (id == 0) {
        ::_exit(gf_takeInstanceLock() ? 1 : 2);
    }
    int status = -1;
    ::waitpid(id, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) > 0) << status;
    return WEXITSTATUS(status) == 1;
}

TEST(InstanceLock, belongsToOneProcessUntilItEnds)
{
    const TempFolder folder;
    const ScopedVariable runtime("VELATRA_RUNTIME", folder.path().string());
    EXPECT_TRUE(lf_otherProcessTakes());
    EXPECT_TRUE(gf_takeInstanceLock()) << "the other has ended";
    EXPECT_FALSE(lf_otherProcessTakes());
    EXPECT_FALSE(gf_takeInstanceLock());
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
    constexpr UserMessage kPosted[] = {UserMessage::StartMain, UserMessage::Finish, UserMessage::Close};
    for (const UserMessage message : kPosted) {
        gf_postUserMessage(message);
    }
    for (const UserMessage message : kPosted) {
        EXPECT_EQ(message, gf_waitUserMessage());
    }
}

TEST(StandardOutput, dropsLinesThatNobodyTakesAndBeginsAnew)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    std::fflush(stdout);
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    while (gf_printLine(std::string(999, 'x'))) {
    }
    const bool taken = gf_printLine("dropped");
    std::string text(1 << 20, '\0');
    text.resize(static_cast<size_t>(::read(ends[0], text.data(), text.size())));
    gf_printLine("new");
    char last[9] = {};
    ::read(ends[0], last, sizeof last - 1);
    ::dup2(before, STDOUT_FILENO);
    EXPECT_FALSE(taken);
    EXPECT_STREQ(text.ends_with("x") ? "\nnew\n" : "new\n", last);
    for (const int file : {ends[0], ends[1], before}) {
        ::close(file);
    }
}

TEST(CloseSignals, becomeMessages)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const auto handler = std::signal(SIGHUP, SIG_DFL);
    {
        const CloseSignals signals;
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            ::kill(::getpid(), signal);
            EXPECT_EQ(UserMessage::Close, gf_waitUserMessage()) << signal;
        }
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGHUP, SIG_IGN);
    {
        const CloseSignals signals;
        ::kill(::getpid(), SIGHUP);
        ::kill(::getpid(), SIGTERM);
        EXPECT_EQ(UserMessage::Close, gf_waitUserMessage());
    }
    gf_postUserMessage(UserMessage::Finish);
    EXPECT_EQ(UserMessage::Finish, gf_waitUserMessage()) << "under nohup only the other one closes";
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGHUP, handler);
}

}  // namespace vlt
