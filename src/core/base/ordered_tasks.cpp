#include "core/base/ordered_tasks.h"

#include "core/base/run_state.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vlt {

SharedValue<int32_t> scanThreads = static_cast<int32_t>(std::max(1U, std::thread::hardware_concurrency()));

// What the calling thread and the tasks share.
struct TaskRun {
    TaskRun(size_t items, const std::function<void(size_t)>& task) : count(items), work(task) {}

    const size_t count;
    const std::function<void(size_t)>& work;
    std::mutex mutex;                      // guards all below
    std::condition_variable ended;         // an item that is waited for, or a failure
    std::condition_variable room;          // an item was taken, or it is over
    std::array<bool, kTasksAhead> done{};  // by item modulo their number
    size_t next = 0;                       // item to begin
    size_t taken = 0;                      // items taken
    bool over = false;
    std::exception_ptr failure;
};

static void lf_end(TaskRun& run, const std::exception_ptr& failure)
{
    {
        const std::scoped_lock lock(run.mutex);
        run.over = true;
        if (failure && !run.failure) {
            run.failure = failure;
        }
    }
    run.room.notify_all();
    run.ended.notify_all();
}

// The next item to work on; none when it is over.
static std::optional<size_t> lf_begin(TaskRun& run)
{
    std::unique_lock lock(run.mutex);
    run.room.wait(lock,
                  [&run] { return run.over || run.next == run.count || run.next < run.taken + kTasksAhead; });
    return run.over || run.next == run.count ? std::nullopt : std::optional(run.next++);
}

static void lf_task(TaskRun& run)
{
    try {
        while (const std::optional<size_t> item = gf_stopping() ? std::nullopt : lf_begin(run)) {
            run.work(*item);
            const std::scoped_lock lock(run.mutex);
            run.done[*item % kTasksAhead] = true;
            if (*item == run.taken) {
                run.ended.notify_one();
            }
        }
    } catch (...) {
        lf_end(run, std::current_exception());
    }
}

// Waits for the item that is to be taken next. False when there won't be one.
static bool lf_await(TaskRun& run)
{
    constexpr std::chrono::milliseconds kLook(50);
    std::unique_lock lock(run.mutex);
    while (!run.over && !run.done[run.taken % kTasksAhead]) {
        if (gf_stopping()) {
            return false;
        }
        run.ended.wait_for(lock, kLook);
    }
    return !run.over && !gf_stopping();
}

static void lf_takeAll(TaskRun& run, const std::function<void(size_t)>& take)
{
    while (run.taken < run.count && lf_await(run)) {
        take(run.taken);
        {
            const std::scoped_lock lock(run.mutex);
            run.done[run.taken++ % kTasksAhead] = false;
        }
        run.room.notify_one();
    }
}

bool gf_runInOrder(size_t count, const std::function<void(size_t)>& work,
                   const std::function<void(size_t)>& take)
{
    TaskRun run(count, work);
    {
        std::vector<std::jthread> threads;
        const auto wanted = static_cast<size_t>(std::max(1, scanThreads.load()));
        try {
            while (threads.size() < std::min(wanted, count)) {
                threads.emplace_back([&run] { lf_task(run); });
            }
            lf_takeAll(run, take);
            lf_end(run, nullptr);
        } catch (...) {
            lf_end(run, std::current_exception());
        }
    }
    if (run.failure) {
        std::rethrow_exception(run.failure);
    }
    return run.taken == count;
}

}  // namespace vlt
