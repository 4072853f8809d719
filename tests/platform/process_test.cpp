// One process at a time, and how it is told to close.
#include "platform/close_signals.h"
#include "platform/instance_lock.h"
#include "platform/standard_output.h"
#include "platform/user_messages.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
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

TEST(StandardOutput, dropsLinesThatNobodyReads)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    const std::string longLine(5000, 'x');  // more than a pipe that is ready takes for sure
    int taken = 0;
    while (taken < 100 && gf_printLine(longLine)) {
        ++taken;
    }
    std::string got(size_t{1} << 20, '\0');
    got.resize(static_cast<size_t>(::read(ends[0], got.data(), got.size())));
    EXPECT_TRUE(gf_printLine("next"));
    std::string rest(10, '\0');
    rest.resize(static_cast<size_t>(::read(ends[0], rest.data(), rest.size())));
    ::dup2(before, STDOUT_FILENO);
    for (const int file : {before, ends[0], ends[1]}) {
        ::close(file);
    }
    EXPECT_GT(taken, 1);
    EXPECT_LT(taken, 100) << "a pipe is never endless";
    EXPECT_TRUE(got.starts_with(longLine + '\n' + longLine + '\n'));
    EXPECT_EQ(got.ends_with('\n') ? "next\n" : "\nnext\n", rest) << "a cut line ends before the next begins";
}

TEST(UserMessages, comeInTheirOrder)
{
    const UserMessage all[] = {UserMessage::StartMain, UserMessage::Close, UserMessage::Finish};
    std::ranges::for_each(all, gf_postUserMessage);
    for (const UserMessage expected : all) {
        EXPECT_EQ(expected, gf_waitUserMessage());
    }
}

TEST(UserMessages, noneIsLostBetweenThreads)
{
    constexpr int kEach = 1000;
    const auto post = [](UserMessage message) {
        for (int i = 0; i < kEach; ++i) {
            gf_postUserMessage(message);
        }
    };
    std::thread closers(post, UserMessage::Close);
    std::thread starters(post, UserMessage::StartMain);
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
