// The simulator's events that act on one aircraft: lights, gear, flaps, engines, freezes.
//
// A table in the code and one function on an object; stateless.
#pragma once

#include "standin/sim_object.h"

#include <cstdint>
#include <string_view>

namespace vlt {

enum class SimEventKind {
    Light,
    AllLights,
    FreezePosition,
    FreezeAltitude,
    FreezeAttitude,
    Flaps,
    Spoilers,
    Gear,
    EngineStart,
    EngineShutdown,
    Throttle,
};

struct SimEventRow {
    std::string_view name;
    SimEventKind kind = SimEventKind::Light;
    uint32_t light = 0;    // SimLight, of SimEventKind::Light
    uint32_t highest = 0;  // the largest value that means something
};

// The event of this name; nullptr if the simulator has none.
const SimEventRow* gf_simEvent(std::string_view name);

// What the event does to the object. Flaps give the object back to the simulator's AI, as the
// simulator does, until control is released anew.
void gf_applyEvent(SimObject& object, const SimEventRow& event, uint32_t value);

}  // namespace vlt
