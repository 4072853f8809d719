// Reports for the user: plain text files, one item per line.
//
// Stateless; any thread.
#pragma once

#include <filesystem>
#include <span>
#include <string>

namespace vlt {

// Writes the lines to `path`, making its folder when necessary. A report that can't be written is left
// out; false then.
bool gf_writeReport(const std::filesystem::path& path, std::span<const std::string> lines);

}  // namespace vlt
