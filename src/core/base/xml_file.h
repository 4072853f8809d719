// The program's own XML files: saving so that a crash keeps the old file, and the section at their head.
//
// Stateless; any thread.
#pragma once

#include <pugixml.hpp>

#include <cstdint>
#include <filesystem>

namespace vlt {

// Writes the document beside `path` and renames it; logs success or failure. False on failure.
bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path);

// A whole number as the C library reads it: "1e3" is 1000, and what follows the number doesn't count. What is
// beyond 32 bits is the nearest that isn't; 0 where there is none.
int32_t gf_wholeNumber(const pugi::xml_attribute& attribute);

// Appends the standard `meta` section.
void gf_addMeta(pugi::xml_document& document);

}  // namespace vlt
