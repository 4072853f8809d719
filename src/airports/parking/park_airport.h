// The park airport: how an airport becomes it, and how it ceases to be it.
//
// Worker thread. State: what the user has asked for, and whether the first planning of a run was told.
#pragma once

#include "airports/airport_lookup.h"
#include "airports/loading.h"
#include "traffic/geodesy.h"

#include <atomic>
#include <string>
#include <string_view>

namespace vlt {

// Makes `code` the park airport; the next look loads its file. False when it isn't in the catalogue.
bool setParkAirport(std::string_view code);
// The same for one that came in sight: until the load the flights in the air are noted.
void gf_comeInSight(std::string_view code);

// Loads the park airport's file and plans its parking. What is wrong with the file; empty on success.
std::string gf_loadParkAirport(const AirportSource& source);

// The only place where a load takes effect: settings, stands, the reader's judgement of the ground, the
// window. `place` is the airport's reference point; the load hasn't failed.
void gf_installParkAirport(AirportLoad load, LatLon place);

// Saves what was learned. There is no park airport any more; the user's own settings are back in force.
void closeAirport();

// Takes all parked aircraft away and closes the airport.
void flushStatic();

extern std::atomic<bool> flushStaticRequested;  // [atomic] the user sets, the worker clears
// Once a second: does what the user has asked for.
void gf_serviceFlush();

// As at the start of a run.
void gf_resetParkAirport();

}  // namespace vlt
