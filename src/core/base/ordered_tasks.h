// Work on many items at once, with the results taken in the items' order: what comes out depends on no
// timing.
//
// `work` runs on threads of its own, up to `threads` at a time, and shares nothing but what it only reads;
// `take` runs on the calling thread, one item after the other, so what it fills needs no lock.
#pragma once

#include "core/base/shared_value.h"

#include <cstdint>
#include <functional>
#include <optional>
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

// The same with results: take(i, work(i)). No more than kTasksAhead of them wait.
template <typename Work, typename Take>
bool gf_resultsInOrder(size_t count, const Work& work, const Take& take)
{
    using Result = decltype(work(size_t{0}));
    std::vector<std::optional<Result>> waiting(kTasksAhead);
    return gf_runInOrder(
        count, [&](size_t i) { waiting[i % kTasksAhead].emplace(work(i)); },
        [&](size_t i) {
            Result result = std::move(*waiting[i % kTasksAhead]);
            waiting[i % kTasksAhead].reset();
            take(i, result);
        });
}

}  // namespace vlt
