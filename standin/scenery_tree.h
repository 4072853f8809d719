// The add-on sceneries of a user's installation, made from the plain tables: what a scenery scan is to find
// again.
//
// File writing; no state. Throws std::runtime_error for a table that can't be read or a file that can't be
// written.
#pragma once

#include "standin/archived_airport.h"
#include "standin/bgl_writer.h"

#include <filesystem>

namespace vlt {

// Writes each airport of a world's airports.csv with its stands as a scenery of its own below `folder`, in
// the name of the publisher that thirdparties.csv has for it, else of nobody. Their forms take turns.
void gf_writeSceneryTree(const std::filesystem::path& world, const std::filesystem::path& folder);

// An airport as a scenery's author has it.
BglAirportPlan gf_bglPlan(const ArchivedAirport& airport, bool newer);

}  // namespace vlt
