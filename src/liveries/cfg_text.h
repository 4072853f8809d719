// The text of an aircraft.cfg, cut into what the scan judges: lines, sections of liveries, keys with values.
//
// Stateless; any thread. Nothing is judged here but the numbering of the sections.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// Longer files hold no aircraft: the longest known have some hundred thousand bytes.
inline constexpr size_t kMaxCfgBytes = 8 << 20;

// The file's text in UTF-8, whatever it was written in, without NUL bytes.
struct CfgText {
    std::string text;
    bool readable = false;
    bool tooLong = false;  // beyond kMaxCfgBytes; not read
    std::string forUser;   // what went wrong in the middle of it, or empty
};
CfgText gf_readCfgText(const std::filesystem::path& path);

// The same from bytes of a file without a mark of UTF-16.
std::string gf_cfgTextOf(std::string bytes);

// The lines, without their ends; views into `text`.
std::vector<std::string_view> gf_cfgLines(std::string_view text);

struct CfgSections {
    bool any = false;   // there is a header at all
    std::string fault;  // of the headers' numbers; empty: they count up from 0
    std::vector<std::vector<std::string_view>> sections;  // lines of those that have some
};
CfgSections gf_cfgSections(const std::vector<std::string_view>& lines);

// A line `key = value`; the value, without blanks around it, isn't empty.
struct CfgKeyValue {
    std::string_view key;
    std::string_view value;
};
std::optional<CfgKeyValue> gf_cfgKeyValue(std::string_view line);

// The value before a comment that clearly is one: `//` or `;` at its beginning or after a blank.
std::string_view gf_withoutComment(std::string_view value);

// Without what ECMAScript's \s takes on both sides.
std::string_view gf_withoutSpace(std::string_view text);

}  // namespace vlt
