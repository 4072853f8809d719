// Text files of the user, of unknown encoding.
//
// Stateless; any thread.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

enum class Encoding { ANSI, Unicode, Unicode_big_endian, UTF8_with_BOM, UTF8_without_BOM, none_found };

// The encoding's name for the log.
std::string_view gf_encodingName(Encoding encoding);

// By the file's first two bytes. A file that can't be opened is logged and gives none_found.
Encoding detectEncoding(const std::filesystem::path& path);

// Reads the file as lines of UTF-8 text, without line ends, into `lines`. False when it can't be read;
// `lines` then holds what came before.
bool readExtTextFile(const std::filesystem::path& path, std::vector<std::string>& lines);

}  // namespace vlt
