// The livery packages of a user's installation, made from the plain tables: what a livery scan is to find
// again.
//
// File writing; no state. Throws std::runtime_error for a table that can't be read or a file that can't be
// written.
#pragma once

#include <filesystem>

namespace vlt {

// Writes the liveries of liveries.csv as an add-on package below `folder`: an add-on.xml, and an aircraft for
// each type with its aircraft.cfg, model and textures. The files take turns in their encodings and in the
// spelling of their keys, as those of different authors do.
void gf_writeLiveryTree(const std::filesystem::path& world, const std::filesystem::path& folder);

}  // namespace vlt
