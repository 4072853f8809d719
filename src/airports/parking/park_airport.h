// The park airport: which airport it is, when it changes, and the stand that stays free for the user.
//
// Worker thread. Whether an airport is in sight is looked at every 16 s; the load follows at the next
// look.
#pragma once

#include "airports/loading.h"
#include "traffic/geodesy.h"

#include <string_view>

namespace vlt {

// The regular look: loads the airport that came in sight, or looks whether one comes or goes.
void parkAirportCheck();

// Makes `code` the park airport; the next look loads its file. False when it isn't in the catalogue.
bool setParkAirport(std::string_view code);

// The only place where a load takes effect: settings, stands, the reader's judgement of the ground, the
// window. `place` is the airport's reference point; the load hasn't failed.
void gf_installParkAirport(AirportLoad load, LatLon place);

// After a load, or when the user's stand was noted: takes the user's stand into the list, finds the
// reserved stand, and marks the stands that are closed to static parking.
void updateReservedStand();

// There is no park airport any more; the user's own settings are back in force.
void closeAirport();

// Shows the name of the stand at which the user is.
void gf_showUserStand();

// Stores the stand at which the user stands, if the simulator client has asked for that.
void gf_noteUserStand();

// As at the start of a run.
void gf_resetParkAirport();

}  // namespace vlt
