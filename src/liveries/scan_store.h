// A livery scan from its folders to the stored result and the reports for the user.
//
// Worker thread. Old results and reports stay until new ones are there: a scan that is stopped, or killed,
// leaves all as it was.
#pragma once

#include "liveries/liveries.h"

#include <string>
#include <vector>

namespace vlt {

enum class LiveryScan {
    Stored,
    NothingFound,
    Stopped,    // the run is to stop; nothing is changed
    NotStored,  // the result can't be written, which is logged and shown
};

// Scans the folders, given in the Windows form, in their order; the earlier one has a title that several
// offer.
LiveryScan scanAndStoreLiveries(const std::vector<std::string>& folders);

// Gives a livery the cargo use, airline and model that the data base knows for its registration, so that real
// data win over what the livery's author wrote. Each change is a line of `conversions`.
void liveryDbCorrection(Livery& livery, std::vector<std::string>& conversions);

}  // namespace vlt
