// The user's list of airports that may become the park airport, `my_park_airports.txt`: a line for each,
// "CODE" or "CODE,STAND" with the stand that is to stay free.
//
// Worker thread. The list itself, `parkAirports`, stands with the records.
#pragma once

#include "airports/airports.h"
#include "traffic/geodesy.h"

#include <string>

namespace vlt {

// Reads the list anew: the file, then the airports of the user's third-party sceneries. False when a line
// named an airport that isn't known, or when the reading failed.
bool lf_readMyParkAirports();

// Renews the distances to the user and sorts the list by them.
void gf_sortParkAirports(LatLon user);

// Stores the stand of the list's first airport, in the list and in the file, whose other lines stay.
void gf_storeStand(const std::string& stand);

// Puts an airport at the list's front and into the file, which is made when it isn't there.
void gf_addParkAirport(const ParkListEntry& entry);

}  // namespace vlt
