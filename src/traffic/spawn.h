// Into the simulator: the gate that decides that an aircraft may appear, its initial state, the request
// for its object, and the set-up once the simulator has shown it. Worker thread.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vlt {

// Each tick of an aircraft in the buffer: nothing, one sample dropped, erased, or spawned.
void spawnGate(LiveAc& ac);

// Matches a livery, fixes the initial state from the front sample and asks for the object.
void spawnLiveAc(LiveAc& ac);

// Builds the request for the aircraft's object and queues it.
void makeCreateRequest(uint32_t hexid);

// A call sign as it fits the simulator's tail number.
std::string gf_tailNumber(std::string_view callsign);

// What came back from the simulator since the last tick, worked through and emptied. Takes messageMutex.
void gf_handleSimMessages();
void handleSimMessage(const SimMessage& message);

// The created objects that wait for their set-up: one tick further.
void gf_stepAckWaits();

// Engines, lights, throttle and flaps of a new object; from now on it is driven.
void setUpLiveAc(LiveAc& ac);
// The configuration of a parked aircraft.
void parkedConfig(StaticAc& ac);

}  // namespace vlt
