// What the user has learned at airports that the archive doesn't hold well, put together for its publisher.
//
// Worker thread; no state. Nothing leaves the machine: the files lie in a folder of their own.
#pragma once

#include "scenery/generated_airports.h"

namespace vlt {

// Copies the learned files of linked airports that the archive holds badly to output/offline_learning.
// Skipped when no airport is linked.
void gf_packOfflineLearning(AirportScan& scan);

}  // namespace vlt
