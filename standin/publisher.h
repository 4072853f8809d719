// The publisher's side: turns the plain tables of a world folder into the files that the download server
// offers, scrambling what its readers descramble.
//
// Stateless; any thread. Every function throws std::runtime_error or std::invalid_argument for a table
// that can't be published, naming what is wrong. Lists inside a cell are separated by "|".
#pragma once

#include "liveries/liveries.h"

#include <filesystem>
#include <list>
#include <string>
#include <string_view>

namespace vlt {

// The document inside `dbase.zip`, from types.csv, similar.csv, airlines.csv, cargo_operators.csv,
// registrations.csv, fixes.csv, publishers.csv, simaddons.csv and thirdparties.csv.
std::string gf_dbaseText(const std::filesystem::path& world);

// The document inside `AIG-regcodes.zip`, from regcodes.csv.
std::string gf_regcodesText(const std::filesystem::path& world);

// The liveries of liveries.csv.
std::list<Livery> gf_worldLiveries(const std::filesystem::path& world);

// Those of them that a scan takes: without the titles that regcodes.csv says not to use.
std::list<Livery> gf_scannedWorldLiveries(const std::filesystem::path& world);

// The catalogue of airports from a JSON list of objects with icao, iata, lat, lon and elevation in feet:
// those whose code is four letters, by code, each code once. An airport without an elevation lies at 0.
std::string gf_catalogueText(std::string_view airportsJson);

}  // namespace vlt
