// The stream of an aircraft's reports: which new samples are believed, and what happens when none come.
//
// Worker thread. No state beside the aircraft's.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

inline constexpr size_t kLongestStream = 200;  // samples; an aircraft with more is removed

// Takes a sample of a known aircraft into its stream, or drops it. Logs an exception and passes it on.
void decodeExisting(LiveAc& ac, PosSample sample);

// Tells jitter from motion; true if the sample, which may be changed, is to be kept. The stream isn't empty.
bool filterStop(const LiveAc& ac, PosSample& sample);

// A sample ends an extension of the stream; true if it is to be kept, false if it lies behind the aircraft.
bool checkExtendingSituations(LiveAc& ac, const PosSample& sample);

// The aircraft has reached the last sample of its stream. True if one was invented, false if it has to go.
bool extendStream(LiveAc& ac);

// Adds one invented sample, after which `count` - 1 more may follow.
void extrapolate(LiveAc& ac, int32_t count);

// The user accepts aircraft of this category.
bool gf_categoryAccepted(AcCategory category);

}  // namespace vlt
