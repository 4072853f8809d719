// Commands to an aircraft's object, the only way to command one: engines, throttle and flaps by level, gear,
// spoilers, brakes, lights.
//
// Worker thread; each goes to the simulator client's event queue. Helicopters have neither gear, spoilers
// nor flaps to command, and their throttle has one level.
#pragma once

#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr uint32_t kThrottleIdle = 0;
inline constexpr uint32_t kThrottleApproach = 1;
inline constexpr uint32_t kThrottleDescent = 2;
inline constexpr uint32_t kThrottleClimb = 3;
inline constexpr uint32_t kThrottleFull = 4;

// Sends the level's throttle value unless it is in force. A helicopter gets `rotorLevel`.
void gf_commandThrottle(StaticAc& ac, uint32_t level, uint32_t rotorLevel = kThrottleFull);
// Sends the level's flaps value unless it is in force.
void gf_commandFlaps(StaticAc& ac, uint32_t level);
void gf_commandGear(const StaticAc& ac, bool down);
void gf_commandSpoilers(const StaticAc& ac, uint32_t value);
void gf_commandEngines(const StaticAc& ac, bool run);
// After touchdown: spoilers out, and reverse thrust or brakes by the throttles' position; light aircraft have
// the spoilers only. Off takes both back.
void gf_commandBrakes(const StaticAc& ac, bool on);

// One row of lights, in the order in which they are sent.
struct Lights {
    bool nav, beacon, landing, taxi, strobes, logo, cabin;
};
//                                             nav   beacon landing taxi strobes logo  cabin
inline constexpr Lights kLightsBelow10000{true, true, true, true, true, true, true};
inline constexpr Lights kLightsAbove10000{true, true, false, false, false, false, true};
inline constexpr Lights kLightsTakeOff{true, true, true, true, true, true, false};
inline constexpr Lights kLightsAfterLanding{true, true, false, true, false, true, true};
inline constexpr Lights kLightsPushBack{true, true, false, true, false, true, false};

void gf_commandLights(const StaticAc& ac, const Lights& lights);
void gf_commandCabinLights(const StaticAc& ac, bool on);

}  // namespace vlt
