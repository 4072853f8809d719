// A folder of learned files, as replays leave it for each other and for the plan tool.
//
// Stateless.
#pragma once

#include "airports/loading.h"

#include <filesystem>
#include <string>

namespace vlt {

// The folder's file for the airport.
std::filesystem::path gf_learnedIn(const std::filesystem::path& folder, const std::string& code);

// Lays the folder's file over what was loaded, if there is one; an empty folder has none.
void gf_layLearnedOver(const std::filesystem::path& folder, const std::string& code, AirportLoad& load);

}  // namespace vlt
