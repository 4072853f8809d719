// Work on many items at once, with the results taken in the items' order: what comes out depends on no
// timing.
//
// `work` runs on threads of its own, up to `threads` at a time, and shares nothing but what it only reads;
// `take` runs on the calling thread, one item after the other, so what it fills needs no lock.
#pragma once

#include "core/base/run_state.h"
#include "core/base/shared_value.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace vlt {

// How many tasks of a scan run at once.
extern SharedValue<int32_t> scanThreads;  // [worker] as many as the hardware has threads

// Calls work(i) for i from 0 to below `count`, and take(i) for each i in ascending order once work(i) has
// ended; work runs at most kTasksAhead items ahead. False when a stop of the run ended it before all were
// taken. An exception of either ends it too, and is thrown here once no task runs any more.
bool gf_runInOrder(size_t count, const std::function<void(size_t)>& work,
                   const std::function<void(size_t)>& take);

inline constexpr size_t kTasksAhead = 64;

// The same with results: take(i, work(i)). Some items at a time make a task, since waking a thread costs more
// than looking at a small file; no more than kTasksAhead tasks wait.
template <typename Work, typename Take>
bool gf_resultsInOrder(size_t count, const Work& work, const Take& take)
{
    constexpr size_t kItems = 16;
    using Result = decltype(work(size_t{0}));
    std::vector<std::vector<Result>> waiting(kTasksAhead);
    const auto end = [count](size_t task) { return std::min(count, (task + 1) * kItems); };
    return gf_runInOrder((count + kItems - 1) / kItems,
                         [&](size_t task) {
                             std::vector<Result>& results = waiting[task % kTasksAhead];
                             for (size_t i = task * kItems; i < end(task) && !gf_stopping(); ++i) {
                                 results.push_back(work(i));
                             }
                         },
                         [&](size_t task) {
                             std::vector<Result> results = std::exchange(waiting[task % kTasksAhead], {});
                             for (size_t n = 0; n < results.size(); ++n) {
                                 take(task * kItems + n, results[n]);
                             }
                         });
}

}  // namespace vlt
