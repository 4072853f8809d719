// Arrival and parking of live aircraft: the stand that an aircraft has reached is cleared and taken, and a
// parked aircraft stays there until it leaves, is too old or one too many.
//
// Worker thread. Nobody is erased here: who has to go is removed from the simulator, and its record goes
// once that has confirmed.
#pragma once

#include "airports/airports.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

// How many aircraft are wanted parked at the airport, static and live together; 0 without static parking.
extern int32_t maxPark;  // [worker]

// The id of the stand of an aircraft, "unknown" if it isn't known, "sid==0?" if it has none.
std::string gf_standName(const StaticAc& ac);

// A live aircraft that holds this stand, active and in one of two phases, other than `except`; nullptr for
// none.
LiveAc* gf_holderOf(uint32_t standId, StState st, StState otherSt, const LiveAc& except);

// The two aircraft would touch on these stands.
bool gf_wouldTouch(double halfSpan, const ParkPos& stand, double otherHalfSpan, const ParkPos& otherStand);

// The stand is the reserved one, or the one at which the user is.
bool gf_keptForUser(const ParkPos& stand);

// The aircraft takes the stand: its place becomes the aircraft's.
void gf_takeStand(LiveAc& ac, const ParkPos& stand);

// From now on the aircraft is parked, and its reports are watched for a departure.
void gf_restartStandWatch(LiveAc& ac);

// The stream ends in a stop: looks for the stand there, and drives the aircraft onto it. `wide` allows for
// 55 m between stop and stand, else 20 m.
void try2Park(LiveAc& ac, bool wide);

// Removes static aircraft from the stand and those beside it that would touch.
void clearStandForLive(const LiveAc& ac, const ParkPos& stand);

// A parking aircraft has reached the end of its stream: parked, or taxiing on if it isn't at its stand.
void arrivedAtStand(LiveAc& ac);

// The reports lead away from the stand.
void leaveStand(LiveAc& ac);

// After an aircraft has parked: if they have become too many, the longest parked live one and the oldest
// static one go. `extra` more are counted as parked.
void maxParkCheck(int32_t extra);

// A parked live aircraft.
struct ParkedStay {
    uint32_t standId = kNoStand;
    int32_t minutes = 0;  // parked so far; 0 while it still reports from its stand
    std::string flight;
};

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
