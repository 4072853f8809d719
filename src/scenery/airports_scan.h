// The scan of the user's add-on sceneries: finds their airports, links those that the server's archive knows,
// and generates airport files for the others.
//
// Worker thread, which alone keeps the scan's state; the tasks that decode files share nothing with it. New
// results are made beside the old ones, which stay whatever stops the scan before its end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// The whole scan, with SCAN_AIRPORTS switched off at its end. Throws UserErrorException when the user is to
// name folders and hasn't.
void scanAirports();

// Scans these folders, in the Windows form. False when a stop of the run ended it, or its results can't be
// put in place; all is as before then.
bool gf_scanSceneries(const std::vector<std::string>& folders);

// Whose scenery a file is of: "simaddon", the name of a third party of the data base, or "unknown".
std::string publisherOfFile(std::string_view shown);

}  // namespace vlt
