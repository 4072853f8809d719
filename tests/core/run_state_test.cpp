#include "core/base/run_state.h"

#include "core/base/display.h"
#include "support/fresh_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace vlt {

class RunStateTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
    }
    void TearDown() override
    {
        SetUp();
    }
};

TEST_F(RunStateTest, theFirstReasonWins)
{
    EXPECT_TRUE(gf_requestStop(ExitReason::ReaderError, 15));
    EXPECT_FALSE(gf_requestStop(ExitReason::SimConnectError, 9));
    EXPECT_EQ(ExitReason::ReaderError, exitReason);
    EXPECT_EQ(15, restartDelaySeconds);
    gf_requestClose();
    EXPECT_EQ(ExitReason::ReaderError, exitReason) << "a close keeps the reason";
    gf_noteSystemError();
    EXPECT_EQ(ExitReason::SystemError, exitReason) << "only this one overrides";
    EXPECT_EQ(0, restartDelaySeconds);
    EXPECT_FALSE(gf_resetRunState()) << "a close is not forgotten";
    EXPECT_TRUE(closeRequested);
}

TEST_F(RunStateTest, aStopWakesSleepersAtOnce)
{
    const auto begin = std::chrono::steady_clock::now();
    std::jthread stopper([] { gf_requestStop(ExitReason::NewFlight, 30); });
    EXPECT_FALSE(gf_sleepUnlessStopping(std::chrono::minutes(1)));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    EXPECT_TRUE(gf_sleepUnlessClosing(std::chrono::milliseconds(1))) << "a stop isn't a close";
    std::jthread closer(gf_requestClose);
    EXPECT_FALSE(gf_sleepUnlessClosing(std::chrono::minutes(1)));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST_F(RunStateTest, anErrorStaysAndAMessageGoesAfter25Seconds)
{
    showMessage("hello", false);
    for (int second = 0; second < 26; ++second) {
        EXPECT_EQ("hello", display.message.load()) << second;
        gf_displaySecond();
    }
    gf_displaySecond();
    EXPECT_EQ("", display.message.load());
    showError("broken");
    showMessage("all is well", false);
    EXPECT_EQ("broken", display.error.load());
    EXPECT_EQ("", display.message.load());
}

}  // namespace vlt
