// What the files of a live run and those of a replay have in common: how they are opened and written, the
// cells of their tables, and the motion breaks that both report.
//
// No state; any thread.
#pragma once

#include "standin/motion_breaks.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// A file opened for writing, its folder made if need be. Throws std::runtime_error if that can't be done.
std::ofstream gf_openRunFile(const std::filesystem::path& path);

// A whole file. Throws std::runtime_error if it can't be written.
void gf_writeRunFile(const std::filesystem::path& path, std::string_view text);

// A text as the cell of a table, in quotes where it needs them: the feed's texts may hold anything.
std::string gf_csvCell(std::string_view text);

struct RunMotion {
    std::vector<MotionBreak> breaks;        // in the order of the objects
    std::map<std::string, int64_t> byKind;  // how many of each
};
RunMotion gf_runMotion(const std::vector<ObjectLife>& lives);

}  // namespace vlt
