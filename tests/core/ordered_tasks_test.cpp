// Work on many threads whose results come in order, and end when they must.
#include "core/base/ordered_tasks.h"

#include "core/base/run_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace vlt {

class OrderedTasks : public testing::Test
{
protected:
    OrderedTasks()
    {
        scanThreads = 8;
    }
    ~OrderedTasks() override
    {
        scanThreads = 2;
    }
};

TEST_F(OrderedTasks, resultsComeInOrderAndFewWait)
{
    std::atomic<size_t> begun = 0;
    std::vector<size_t> taken;
    size_t farthest = 0;
    const auto work = [&begun](size_t i) {
        ++begun;
        return i * i;
    };
    EXPECT_TRUE(gf_resultsInOrder(20000, work, [&](size_t i, size_t square) {
        EXPECT_EQ(i * i, square);
        farthest = std::max(farthest, begun - i);
        taken.push_back(i);
    }));
    ASSERT_EQ(20000U, taken.size());
    EXPECT_TRUE(std::is_sorted(taken.begin(), taken.end()));
    EXPECT_LE(farthest, (kTasksAhead + 1) * 16);
    EXPECT_TRUE(gf_resultsInOrder(0, work, [](size_t, size_t) { FAIL(); }));
}

TEST_F(OrderedTasks, aFailureOfEitherSideEndsThem)
{
    const auto fails = [](size_t i) {
        return i == 3000 ? throw std::runtime_error("work") : static_cast<int>(i);
    };
    EXPECT_THAT([&] { gf_resultsInOrder(20000, fails, [](size_t, int) {}); },
                testing::ThrowsMessage<std::runtime_error>("work"));
    EXPECT_THAT(
        [] {
            gf_resultsInOrder(
                20000, [](size_t i) { return i; },
                [](size_t i, size_t) { i == 70 ? throw std::runtime_error("take") : void(); });
        },
        testing::ThrowsMessage<std::runtime_error>("take"));
}

TEST_F(OrderedTasks, aStopEndsThem)
{
    size_t taken = 0;
    EXPECT_FALSE(gf_resultsInOrder(
        100000, [](size_t i) { return i; },
        [&taken](size_t, size_t) {
            if (++taken == 100) {
                gf_requestClose();
            }
        }));
    EXPECT_LT(taken, 200U);
    exitReason = ExitReason::NotYetSet;
    stopRequested = false;
    closeRequested = false;
}

}  // namespace vlt
