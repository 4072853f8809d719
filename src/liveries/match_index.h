// Builds the indexes that answer livery queries from the list of installed liveries.
//
// Worker thread, before the traffic starts. The master index owns the titles; every other index holds
// views into it, so it must not change after it was built. State: the tables of liveries.h.
#pragma once

#include "liveries/liveries.h"

#include <cstddef>
#include <functional>

namespace vlt {

inline constexpr size_t kLongestTitle = 255;  // bytes that the simulator's field takes before its zero

// Sorts `liveries` by airline, model and title; equal ones keep their order.
void gf_sortLiveries();

// All indexes from the sorted list `liveries`, in one go: the master index; the registrations printed on the
// liveries, and those that `bindRegcodes` binds, which may make titles special; then what the ladder asks,
// from which special titles are left out. A livery that no query may find, or that the simulator can't name,
// is taken out of the list before, and logged.
void buildMatchIndexes(const std::function<void()>& bindRegcodes = {});

// Empties the master index, all other indexes and what has grown on them: counters, remembered and
// refused titles.
void gf_clearMatchIndexes();

}  // namespace vlt
