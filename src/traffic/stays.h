// How long aircraft stay parked, and how many: the oldest make room, and all go with their airport.
//
// Worker thread. Nobody is erased here: who has to go is removed from the simulator, and its record goes
// once that has confirmed.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

// How many aircraft are wanted parked at the airport, static and live together; 0 without static parking.
extern int32_t maxPark;  // [worker]

// After an aircraft has parked: if they have become too many, the longest parked live one and the oldest
// static one go. `extra` more are counted as parked.
void maxParkCheck(int32_t extra);

// A parked live aircraft.
struct ParkedStay {
    uint32_t standId = kNoStand;
    int32_t minutes = 0;  // parked so far; 0 while it still reports from its stand
    std::string flight;
    std::string callsign;
    uint32_t hexid = 0;
};

// The half hours that have passed since a stamp, the week running round: from -167 to 168, below 0 for a
// stamp that a clock put back has left in the future.
int32_t gf_halfHoursSince(HourStamp stamp, HourStamp now);

// Removes the live aircraft that have been parked for too long, unless parking isn't renewed, and gives
// the others, the latest first.
std::vector<ParkedStay> oldParkedRound();

// Removes the `count` live aircraft that have been parked for the longest time.
void removeOldestParked(int32_t count);

// The airport's stands go: so do all that are parked there, and who is on the way to a stand forgets it.
void gf_flushParked();

// Removes an aircraft from the reserved stand: a static one, else a parked live one.
void clearReservedStand();

}  // namespace vlt
