// The aircraft that the stand-in's simulator has installed.
//
// File reading only; no state.
#pragma once

#include "standin/sim_object.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

// The rows of a world's `titles.csv`, with the header title,model,category,cg_ft,static_pitch_deg
// in any order of columns. A title may stand in quotation marks. Rows without a title or with
// numbers that don't read are left out; a missing file gives an empty list.
std::vector<InstalledTitle> gf_readTitles(const std::filesystem::path& file);

}  // namespace vlt
