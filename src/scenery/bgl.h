// The airports of a scenery file (BGL): name, elevation, helipads and parkings of each; everything else is
// passed over by its size.
//
// Any number of threads, each on its own file; no state. What is wrong in a file is told beside its airports.
#pragma once

#include "scenery/bgl_airport.h"

#include <filesystem>
#include <istream>
#include <string>

namespace vlt {

// Whether the file has a section of airports: reads its header and section table only.
bool holdsAirports(const std::filesystem::path& path);
bool gf_holdsAirports(std::istream& file);

// All airports with a code of four letters or digits; `shown` is the file's path for messages. A file that
// can't be opened, or isn't a scenery file, gives none.
BglFile decodeBglFile(const std::filesystem::path& path, const std::string& shown);
BglFile gf_decodeBgl(std::istream& file, const std::string& shown);

}  // namespace vlt
