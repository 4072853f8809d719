// The simulator's lists of libraries: text files with sections in brackets and lines `key=value`.
//
// Unlike a plain INI file one may hold many sections of the same name, all of which count. Stateless; any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vlt {

struct CfgEntry {
    std::string head;                                         // between the brackets
    std::vector<std::pair<std::string, std::string>> values;  // trimmed, in file order
};

// All sections, in file order; what stands before the first belongs to none. Comments (`;` and `//`) and
// lines without `=` are passed over.
std::vector<CfgEntry> gf_cfgEntries(const std::vector<std::string>& lines);

// The first value of the key, in any case of its letters; empty when there is none.
std::string_view gf_cfgValue(const CfgEntry& entry, std::string_view key);

// The text between the tags of a small XML file, as many users edit them by hand: tag by tag, whatever stands
// around, without comments.
struct CfgTag {
    std::string name;  // in capitals, with the slash of an end tag, without attributes
    std::string text;  // up to the next tag, trimmed, with the five entities resolved
};
std::vector<CfgTag> gf_cfgTags(const std::vector<std::string>& lines);

}  // namespace vlt
