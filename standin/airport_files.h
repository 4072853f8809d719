// The publisher's side of airport files: archived files, with stands and who stood on them.
//
// File reading and texts; no state. Throws std::runtime_error for a table that can't be published.
#pragma once

#include "standin/archived_airport.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

// The document. Of two stands with one id the later one gets "-2" behind it.
std::string gf_archivedText(const ArchivedAirport& airport);

// The airports of a world's airports.csv with the stands of stands.csv; the built-in day's with its own
// stands and a week of the aircraft that use them.
std::vector<ArchivedAirport> gf_worldAirports(const std::filesystem::path& world);

// The stands of a table with the columns id,lat,lon,heading,radius_m,kind.
std::vector<ArchivedStand> gf_standsOfTable(const std::filesystem::path& file);

// The catalogue `base`, an airports_p3d.xml, with the airports of a world's airports.csv among its own.
std::string gf_mergedCatalogue(const std::filesystem::path& base, const std::filesystem::path& world);

}  // namespace vlt
