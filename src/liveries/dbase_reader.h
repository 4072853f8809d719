// Reads the data base of the real world, which is published on the download server, into the tables.
//
// Worker thread, once per program run, before any scan. It keeps no state but `dbase`; a failure leaves the
// tables as far as they came.
#pragma once

#include <pugixml.hpp>

#include <filesystem>
#include <string_view>

namespace vlt {

// Fetches the data base from the server and reads it into `dbase`. True when the tables stand. Throws
// std::runtime_error when it can't be fetched, and what gf_readDbaseFile throws.
bool readDbase();

// The part of it that needs no server: reads the file into `dbase` and removes it, whatever
// happens. Throws UserErrorException 60 for a file that isn't XML, and what gf_readDbaseSections throws;
// std::filesystem::filesystem_error if the file can't be removed.
void gf_readDbaseFile(const std::filesystem::path& path);

// Reads all sections of the document into `dbase`, in the order in which later ones lean on earlier
// ones. `path` is named in messages. Throws UserErrorException 61 for a list that may not be empty, and
// std::runtime_error for an airline code of a bad length.
void gf_readDbaseSections(const pugi::xml_document& document, const std::filesystem::path& path);

// The value of an attribute that says yes: its first character is one of 1, t, T, y, Y.
bool gf_isTrue(std::string_view text);

}  // namespace vlt
