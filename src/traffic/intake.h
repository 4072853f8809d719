// Intake of the feed: one record to the aircraft that it belongs to, or to a new one. Worker thread;
// feedMutex is held for taking the record only.
#pragma once

#include "traffic/traffic.h"

namespace vlt {

// Takes one record off feedQueue; false when there is none.
bool feedIntake();

// Creates the aircraft of a record whose hexid is unknown, if its type is known and wanted.
void newLiveAc(const FeedRecord& record);

}  // namespace vlt
