// What the user's commands ask of the park airports: the destination, which is one of them for this flight
// without standing in the file, and a fresh look at the file.
//
// Any thread sets the flags, the worker serves them.
#pragma once

#include <atomic>

namespace vlt {

extern std::atomic<bool>
    listWishesAllowed;  // [atomic] the list and the catalogue are there, no re-read is due
extern std::atomic<bool> destinationChanged;  // [atomic] DESTINATION is new; the worker clears
extern std::atomic<bool> reReadRequested;  // [atomic] the list's file is to be read anew; the worker clears

// At a run's start, once the list was read: wishes are allowed from now on, and a destination that the
// settings name counts.
void gf_allowListWishes();

// The destination, once a second.
void gf_serviceDestination();
// The re-read, every 15 s.
void gf_serviceReRead();

// As at the start of a run.
void gf_forgetListWishes();

}  // namespace vlt
