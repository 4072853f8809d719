#include "standin/sim_events.h"
#include "sim/wire/ids.h"

#include <array>

namespace vlt {

constexpr uint32_t kFullTravel = 16383;  // of flaps, spoilers and throttles
constexpr uint32_t kAllLights =
    kLightNav | kLightBeacon | kLightLanding | kLightTaxi | kLightStrobe | kLightLogo | kLightCabin;

// clang-format off
constexpr std::array<SimEventRow, 17> kEvents{{
    {"BEACON_LIGHTS_SET",             SimEventKind::Light,          kLightBeacon,  1},
    {"NAV_LIGHTS_SET",                SimEventKind::Light,          kLightNav,     1},
    {"TAXI_LIGHTS_SET",               SimEventKind::Light,          kLightTaxi,    1},
    {"STROBES_SET",                   SimEventKind::Light,          kLightStrobe,  1},
    {"LANDING_LIGHTS_SET",            SimEventKind::Light,          kLightLanding, 1},
    {"CABIN_LIGHTS_SET",              SimEventKind::Light,          kLightCabin,   1},
    {"LOGO_LIGHTS_SET",               SimEventKind::Light,          kLightLogo,    1},
    {"ALL_LIGHTS_TOGGLE",             SimEventKind::AllLights,      0,             0},
    {"FREEZE_LATITUDE_LONGITUDE_SET", SimEventKind::FreezePosition, 0,             1},
    {"FREEZE_ALTITUDE_SET",           SimEventKind::FreezeAltitude, 0,             1},
    {"FREEZE_ATTITUDE_SET",           SimEventKind::FreezeAttitude, 0,             1},
    {"FLAPS_SET",                     SimEventKind::Flaps,          0,             kFullTravel},
    {"SPOILERS_SET",                  SimEventKind::Spoilers,       0,             kFullTravel},
    {"GEAR_SET",                      SimEventKind::Gear,           0,             1},
    {"ENGINE_AUTO_START",             SimEventKind::EngineStart,    0,             1},
    {"ENGINE_AUTO_SHUTDOWN",          SimEventKind::EngineShutdown, 0,             1},
    {"THROTTLE_SET",                  SimEventKind::Throttle,       0,             kFullTravel},
}};
// clang-format on

const SimEventRow* gf_simEvent(std::string_view name)
{
    for (const SimEventRow& row : kEvents) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

static void lf_switchLight(SimObject& object, uint32_t light, bool on)
{
    object.lights = on ? object.lights | light : object.lights & ~light;
}

void gf_applyEvent(SimObject& object, const SimEventRow& event, uint32_t value)
{
    switch (event.kind) {
    case SimEventKind::Light:
        lf_switchLight(object, event.light, value != 0);
        break;
    case SimEventKind::AllLights:
        object.lights ^= kAllLights;
        break;
    case SimEventKind::FreezePosition:
        object.frozenPosition = value != 0;
        break;
    case SimEventKind::FreezeAltitude:
        object.frozenAltitude = value != 0;
        break;
    case SimEventKind::FreezeAttitude:
        object.frozenAttitude = value != 0;
        break;
    case SimEventKind::Flaps:
        object.flaps = value;
        object.released = false;
        break;
    case SimEventKind::Spoilers:
        object.spoilers = value * 100.0 / kFullTravel;
        break;
    case SimEventKind::Gear:
        object.gearDown = value != 0;
        break;
    case SimEventKind::EngineStart:
        object.enginesOn = true;
        break;
    case SimEventKind::EngineShutdown:
        object.enginesOn = false;
        break;
    case SimEventKind::Throttle:
        object.throttle = value;
        break;
    }
}

}  // namespace vlt
