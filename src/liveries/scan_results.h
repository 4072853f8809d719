// The stored result of a livery scan, and what becomes of it at every start: the indexes, and a report
// on the installed liveries.
//
// Worker thread. State: the list `liveries` while reading and processing, `liveriesProcessed`, and the
// indexes of liveries.h.
#pragma once

#include "liveries/liveries.h"

#include <filesystem>

namespace vlt {

// Fills the list `liveries`, sorted, from `path`. Throws UserErrorException 51, 52 or 533 for a file that
// isn't XML, that has no `liveries`, or whose `liveries` is empty.
void readLiveriesScanned(const std::filesystem::path& path);
void readLiveriesScanned();

// Writes the list `liveries` as it stands. False on failure, which is logged.
bool writeLiveriesScanned(const std::filesystem::path& path);
bool writeLiveriesScanned();

// Reads the stored result and builds all indexes from it, the regcodes' too; logs what is installed and
// switches options off for which nothing is. Once per program run: a later call does nothing. Throws what
// readLiveriesScanned throws.
void processScannedLiveries();

// The log's report on the installed liveries of a category. A category that can be switched off, but has
// no livery, is.
void gf_reportCategory(AcCategory category);

}  // namespace vlt
