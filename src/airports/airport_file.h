// The airport file: one XML document with an airport's stands and who stood on them.
//
// Archived files come from the server, generated ones from the scan of the user's scenery, learned ones
// from live traffic; a learned file that the user completed by hand counts as handmade. All share one
// layout: `meta`, `parameters`, `parkpositions`. Worker thread; no state but the data base, which tells
// airline and type of a known registration.
#pragma once

#include "airports/airports.h"

#include <pugixml.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

enum class AirportFileMode { Generated, Learned };

// A parameter of the document by its name; none when it isn't there.
std::optional<bool> gf_boolParameter(const pugi::xml_document& document, const char* name);
std::optional<int32_t> gf_intParameter(const pugi::xml_document& document, const char* name);
std::optional<std::string> gf_textParameter(const pugi::xml_document& document, const char* name);

// The `opt` element; `archived` goes into the option.
StandOption gf_readOption(const pugi::xml_node& node, bool archived, int32_t sequence);

// A number of the element with a decimal point, or with the comma of people's own country; 0 where there is
// none.
double gf_decimal(const pugi::xml_node& node, const char* name);

// A radius in nm that a stand can have.
bool gf_isStandRadius(double radius);

// Appends the stand of a `parkpos` element to `stands`, under an id that the caller has tested. False for
// one without a position, which is passed over in silence, and for one whose numbers can't be, which is
// logged.
bool readParkPos(const pugi::xml_node& node, const std::string& id, bool archived,
                 std::vector<ParkPos>& stands);

// The `parkpos` elements of the document. Throws UserErrorException for more than kMostStands.
std::vector<pugi::xml_node> gf_parkPositions(const pugi::xml_document& document);

// Reads all `parkpos` elements into `stands`. Throws UserErrorException for an id that stands there twice
// and for more than kMostStands.
void gf_readParkPositions(const pugi::xml_document& document, std::vector<ParkPos>& stands);

// The first number of a stand that has a decimal comma, as `latitude="51,47" of A1`; empty for none. Such
// numbers are read as they are meant.
std::string gf_decimalComma(const pugi::xml_document& document);

// Writes the document with the stands of `apf`. False when that fails, which the caller reports.
// Learned mode writes the parking settings in force, and of a stand only what was learned, unless the file
// is handmade.
bool saveAirportFile(const Apf& apf, const std::filesystem::path& path, AirportFileMode mode);

}  // namespace vlt
