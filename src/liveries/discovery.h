// The driver of the livery scan: which folders are searched, and what follows from what they hold.
//
// Worker thread. State: a request of the user thread to begin anew.
#pragma once

#include <string>
#include <vector>

namespace vlt {

// At every start of the work. With SCAN_LIVERIES on scans, stores the result and switches the option off;
// then takes the stored result into the indexes. A scan that is stopped leaves all as it was, the option too.
// Throws UserErrorException 43, 48 or 53 when no liveries were found or no folders given, and what
// processScannedLiveries throws.
void scanDriver();

// The folders to be searched, in order: the simulator's own lists, or the user's folders.
std::vector<std::string> gf_liveryFolders();

// The next start of the work forgets the liveries that are known, so that it takes a new scan's. Any thread.
void gf_resetLiveriesAtNextRun();

}  // namespace vlt
