// The program's own XML files: saving so that a crash keeps the old file, and the section at their head.
//
// Stateless; any thread.
#pragma once

#include <pugixml.hpp>

#include <filesystem>
#include <map>
#include <string>

namespace vlt {

// Writes the document beside `path` and renames it; logs success or failure. False on failure.
bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path);

// Appends the standard `meta` section.
void gf_addMeta(pugi::xml_document& document);

// The `info` elements of a document's `meta` section, name to value. No section is logged and gives none.
std::map<std::string, std::string> gf_readMeta(const pugi::xml_document& document);

// Writes `text` beside `path` and renames it. False on failure.
bool gf_replaceFile(const std::filesystem::path& path, std::string_view text);

}  // namespace vlt
