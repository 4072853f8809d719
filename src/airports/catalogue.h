// The catalogue: every airport of the simulator by code, with its place and elevation.
//
// Read once per program run by the worker and only read afterwards.
#pragma once

#include "airports/airports.h"
#include "traffic/geodesy.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vlt {

extern std::vector<AirportRecord> airportCatalogue;  // [const] sorted by code

// Reads `airports_p3d.xml` once; later calls return at once. True when there is at least one airport.
// Throws UserErrorException when the file is missing, std::runtime_error when it can't be parsed.
bool readAirports();

// The airport with this code, nullptr for none.
const AirportRecord* findAirport(std::string_view code);

// The airport whose reference point is the nearest within 5 nm, nullptr for none.
const AirportRecord* gf_nearestReference(LatLon position);

// The airport at which a position lies, nullptr for none within 5 nm. Of two that lie so close the one
// with the closer stand: their files are asked for, and none is the answer while the server is asked.
std::optional<const AirportRecord*> closestAirport(LatLon position);

}  // namespace vlt
