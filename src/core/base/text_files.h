// Text files of the user, of unknown encoding.
//
// Stateless; any thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

enum class Encoding { ANSI, Unicode, Unicode_big_endian, UTF8_with_BOM, UTF8_without_BOM, none_found };

// By the file's first two bytes. A file that can't be opened is logged and gives none_found.
Encoding detectEncoding(const std::filesystem::path& path);

// A text file as read.
struct ExtText {
    std::vector<std::string> lines;  // in UTF-8, without line ends; of a file that breaks off, those before
    bool whole = true;               // false: it couldn't be read, or not to its end
    std::string forUser;             // what the user should read about that; empty: the log has it all
};

ExtText readExtTextFile(const std::filesystem::path& path);

}  // namespace vlt
