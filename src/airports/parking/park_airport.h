// The park airport: which airport it is, and when it changes.
//
// Worker thread. Whether an airport is in sight is looked at every 16 s; the load follows at the next
// look.
#pragma once

#include "airports/loading.h"
#include "traffic/geodesy.h"

#include <atomic>
#include <string_view>

namespace vlt {

// The regular look: loads the airport that came in sight, or looks whether one comes or goes.
void parkAirportCheck();
// Goes on with a look that waits for the server once that has answered. True while it waits.
bool gf_goOnLooking();

// Makes `code` the park airport; the next look loads its file. False when it isn't in the catalogue.
bool setParkAirport(std::string_view code);

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
