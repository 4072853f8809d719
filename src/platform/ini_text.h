// Small INI files: sections in brackets, lines `key=value`.
//
// As the system's own reader does it: letters' case of sections and keys is ignored, the first
// section of a name and the first key in it count, blanks around names and values and one pair of
// quotation marks around a value fall away, a line that begins with `;` is a comment. Whatever else
// a file holds is passed over. Stateless; any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vlt {

// Longer INI files are read up to here.
inline constexpr size_t kMaxIniBytes = 1 << 20;

// The file's bytes, without a UTF-8 mark at the front. Empty for a file that can't be read or isn't
// a plain file.
std::string gf_readIniFile(const std::filesystem::path& path);

// Whether the file has a section of this name.
bool gf_iniHasSection(std::string_view ini, std::string_view section);

// Whether the file has a section whose name begins with `prefix`.
bool gf_iniHasSectionBelow(std::string_view ini, std::string_view prefix);

// The value of a key. none if the section or the key isn't there; a key with nothing behind its `=`
// is there, with an empty value.
std::optional<std::string> gf_iniValue(std::string_view ini, std::string_view section, std::string_view key);

// Equal but for the case of ASCII letters.
bool gf_sameIgnoringCase(std::string_view left, std::string_view right);

}  // namespace vlt
