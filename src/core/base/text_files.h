// Text files of the user, of unknown encoding.
//
// Stateless; any thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

// A text file as read.
struct ExtText {
    std::vector<std::string> lines;  // in UTF-8, without line ends; of a file that breaks off, those before
    bool whole = true;               // false: it couldn't be read, or not to its end
    std::string forUser;             // what the user should read about that; empty: the log has it all
};

ExtText readExtTextFile(const std::filesystem::path& path);

}  // namespace vlt
