// The data base and its documents from where an option says.
#pragma once

#include <pugixml.hpp>

#include <string>

namespace vlt {

// Parses a document, or the one in a zip archive. Throws std::runtime_error if it can't be.
void gf_parseDocument(pugi::xml_document& document, const std::string& path);

// Fills the data base from dbase.zip or the document in it, or from the server for an empty path.
void gf_loadDbase(const std::string& path);

}  // namespace vlt
