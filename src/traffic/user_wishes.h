// What the user's commands ask of the traffic: flags that any thread sets, and the worker's service of them.
#pragma once

#include <atomic>

namespace vlt {

extern std::atomic<bool> navLightsChanged;  // [atomic] NAV_LIGHTS_WHILE_PARKED is new; the worker clears
extern std::atomic<bool> rangeChanged;    // [atomic] the automatic range is to be computed; the worker clears
extern std::atomic<bool> maxLiveChanged;  // [atomic] MAX_LIVE is new; the worker clears
extern std::atomic<bool> clearNoMatchList;  // [atomic] liveries are to be looked for anew; the worker clears

// The first three, once a second.
void gf_serviceWishes();
// The last, every 30 s.
void gf_serviceNoMatchList();

// As at the start of a run.
void gf_forgetWishes();

}  // namespace vlt
