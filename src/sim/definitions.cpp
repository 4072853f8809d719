#include "sim/definitions.h"

#include "sim/wire/ids.h"

#include <algorithm>
#include <iterator>

namespace vlt {

struct SystemEvent {
    uint32_t id;
    std::string_view name;
};

static constexpr SystemEvent kSystemEvents[] = {
    {kEventSim, "Sim"},
    {kEventObjectAdded, "ObjectAdded"},
    {kEventObjectRemoved, "ObjectRemoved"},
    {kEventFrame, "Frame"},
    {kEventPositionChanged, "PositionChanged"},
    {kEventFlightLoaded, "FlightLoaded"},
};

struct DefinitionEntry {
    uint32_t definition;
    std::string_view variable;
    std::string_view unit;  // empty: none
    SimDataType type = SimDataType::Float64;
};

static constexpr DefinitionEntry kDefinitionEntries[] = {
    {kDefSpoilersThrottles, "SPOILERS HANDLE POSITION", "percent"},
    {kDefSpoilersThrottles, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent"},
    {kDefSpoilersThrottles, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent"},
    {kDefPosition, "Plane Latitude", "degree"},
    {kDefPosition, "Plane Longitude", "degree"},
    {kDefPosition, "Plane Pitch degrees", "radians"},
    {kDefPosition, "Plane Bank degrees", "radians"},
    {kDefPosition, "Plane Heading degrees true", "radians"},
    {kDefPosition, "Plane Altitude", "feet"},
    {kDefPosition, "Vertical Speed", "feet per second"},
    {kDefPosition, "Airspeed True", "knots"},
    {kDefUser, "Plane Latitude", "degree"},
    {kDefUser, "Plane Longitude", "degree"},
    {kDefUser, "Plane Pitch degrees", "radians"},
    {kDefUser, "Plane Bank degrees", "radians"},
    {kDefUser, "Plane Heading degrees true", "radians"},
    {kDefUser, "Plane Altitude", "feet"},
    {kDefUser, "Plane Alt Above Ground", "feet"},
    {kDefUser, "Ground Velocity", "knots"},
    {kDefUser, "ZULU TIME", "Seconds", SimDataType::Int64},
    {kDefUser, "ZULU DAY OF YEAR", "Number", SimDataType::Int64},
    {kDefUser, "ZULU YEAR", "Number", SimDataType::Int64},
    {kDefUser, "LIGHT STATES", "Mask", SimDataType::Int64},
    {kDefAircraft, "Plane Alt Above Ground", "feet"},
    {kDefAircraft, "Ground Altitude", "feet"},
    {kDefAircraft, "SIM ON GROUND", "Bool", SimDataType::Int64},
    {kDefAircraft, "ATC ID", "", SimDataType::String32},
    {kDefStatic, "Static CG to Ground", "feet"},
    {kDefStatic, "Static Pitch", "radians"},
    {kDefLights, "Light On States", "Mask", SimDataType::Int64},
    {kDefTitle, "TITLE", "", SimDataType::StringV},
    {kDefModel, "ATC MODEL", "", SimDataType::String32},
    {kDefUserOnGround, "SIM ON GROUND", "Bool", SimDataType::Int64},
};

struct ClientEvent {
    SimEvent id;
    std::string_view name;
};

static constexpr ClientEvent kClientEvents[] = {
    {BEACON_LIGHTS_SET, "BEACON_LIGHTS_SET"},
    {NAV_LIGHTS_SET, "NAV_LIGHTS_SET"},
    {TAXI_LIGHTS_SET, "TAXI_LIGHTS_SET"},
    {STROBES_SET, "STROBES_SET"},
    {LANDING_LIGHTS_SET, "LANDING_LIGHTS_SET"},
    {CABIN_LIGHTS_SET, "CABIN_LIGHTS_SET"},
    {LOGO_LIGHTS_SET, "LOGO_LIGHTS_SET"},
    {ALL_LIGHTS_TOGGLE, "ALL_LIGHTS_TOGGLE"},
    {FREEZE_LATITUDE_LONGITUDE_SET, "FREEZE_LATITUDE_LONGITUDE_SET"},
    {FREEZE_ALTITUDE_SET, "FREEZE_ALTITUDE_SET"},
    {FREEZE_ATTITUDE_SET, "FREEZE_ATTITUDE_SET"},
    {FLAPS_SET, "FLAPS_SET"},
    {SPOILERS_SET, "SPOILERS_SET"},
    {GEAR_SET, "GEAR_SET"},
    {ENGINE_AUTO_START, "ENGINE_AUTO_START"},
    {ENGINE_AUTO_SHUTDOWN, "ENGINE_AUTO_SHUTDOWN"},
    {THROTTLE_SET, "THROTTLE_SET"},
};
static_assert(std::size(kClientEvents) == THROTTLE_SET - BEACON_LIGHTS_SET + 1,
              "every client event is mapped");

static bool lf_addToGroup(SimHandle handle, const ClientEvent& event)
{
    return event.id == ENGINE_AUTO_START ||
           SimConnect_AddClientEventToNotificationGroup(handle, kEventGroup, event.id, true) == kSimOk;
}

bool gf_defineEverything(SimHandle handle)
{
    const bool subscribed = std::ranges::all_of(kSystemEvents, [handle](const SystemEvent& e) {
        return SimConnect_SubscribeToSystemEvent(handle, e.id, e.name) == kSimOk;
    });
    const bool defined =
        subscribed && std::ranges::all_of(kDefinitionEntries, [handle](const DefinitionEntry& e) {
            return SimConnect_AddToDataDefinition(handle, e.definition, e.variable, e.unit, e.type) == kSimOk;
        });
    const bool mapped = defined && std::ranges::all_of(kClientEvents, [handle](const ClientEvent& e) {
                            return SimConnect_MapClientEventToSimEvent(handle, e.id, e.name) == kSimOk;
                        });
    return mapped &&
           std::ranges::all_of(kClientEvents,
                               [handle](const ClientEvent& e) { return lf_addToGroup(handle, e); }) &&
           SimConnect_SetNotificationGroupPriority(handle, kEventGroup, kHighestPriority) == kSimOk;
}

}  // namespace vlt
