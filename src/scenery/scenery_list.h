// Which folders hold the user's add-on sceneries: as the simulator's own lists tell, or as the user does.
//
// Worker thread; no state. What is found, and what is missing, is logged. Paths are in the Windows form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// A path of the simulator's own scenery.
bool gf_isStockScenery(std::string_view path);

// The folders to be searched, in order. Throws UserErrorException when the user is to name them and hasn't.
std::vector<std::string> gf_sceneryFolders();

// The paths of the active areas of a scenery.cfg; relative ones lie below the simulator's folder.
std::vector<std::string> gf_areasOf(const std::vector<std::string>& lines);

// The paths of a scenery_add-ons.xml.
std::vector<std::string> gf_addOnPathsOf(const std::vector<std::string>& lines);

}  // namespace vlt
