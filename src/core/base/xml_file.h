// The program's own XML files: saving so that a crash keeps the old file, and the section at their head.
//
// Stateless; any thread.
#pragma once

#include <pugixml.hpp>

#include <filesystem>

namespace vlt {

// Writes the document beside `path` and renames it; logs success or failure. False on failure.
bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path);

// Appends the standard `meta` section.
void gf_addMeta(pugi::xml_document& document);

}  // namespace vlt
