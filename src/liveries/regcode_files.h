// Reads regcode files: the user's text files, and the server's XML file.
//
// Stateless; worker thread. What is wrong in a file is logged, and the rest of it is read.
#pragma once

#include <pugixml.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

// One line or element of a regcode file.
struct RegcodeEntry {
    std::string title;
    std::vector<std::string> regcodes;  // none: a title not to be used at all
    bool special = false;               // to be used through its registration only
};

// Reads one file of the user, line by line, appending to `entries`. False if a line was wrong, which is
// logged; the rest is read.
bool gf_readRegcodeText(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries);

// Reads the server's file, appending to `entries`. False if it isn't XML or an element was wrong, which
// is logged; the rest is read.
bool gf_readRegcodeXml(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries);
// The same from a document in memory; `path` is named in messages.
bool gf_readRegcodeDocument(const pugi::xml_document& document, const std::filesystem::path& path,
                            std::vector<RegcodeEntry>& entries);

}  // namespace vlt
