// Flight plans for aircraft whose origin and destination the feed knows: one small file each, given to the
// simulator. Worker thread; the call into the simulator takes simCallMutex. State: the folder of the run.
#pragma once

#include "platform/folders.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <filesystem>

namespace vlt {

// Makes the folder of the flight plans. Throws std::filesystem::filesystem_error ("create_directory").
void makeFlightPlanFolder(const std::filesystem::path& folder = gf_dataFolder() / "orig_dest");
// Writes the aircraft's plan and has the simulator load it; `flightPlanLoaded` tells if that worked. An
// aircraft without origin or destination gets none, nor does any while there is no folder.
void loadFlightPlan(LiveAc& ac);
// Removes the plan of the object, if it has one.
void removeFlightPlan(uint32_t objectid);
// Removes the folder with all plans, if it was made; a failure is shown.
void gf_removeFlightPlanFolder();

}  // namespace vlt
