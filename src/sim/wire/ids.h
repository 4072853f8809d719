// The numbers that identify things towards the simulator. They are fixed: other programs' logs show them.
#pragma once

#include <cstdint>
#include <string_view>

namespace vlt {

// System events.
inline constexpr uint32_t kEventSim = 201;
inline constexpr uint32_t kEventObjectAdded = 202;
inline constexpr uint32_t kEventObjectRemoved = 203;
inline constexpr uint32_t kEventFrame = 204;
inline constexpr uint32_t kEventPositionChanged = 205;
inline constexpr uint32_t kEventFlightLoaded = 206;

// Client events.
enum SimEvent : uint32_t {
    BEACON_LIGHTS_SET = 207,
    NAV_LIGHTS_SET = 208,
    TAXI_LIGHTS_SET = 209,
    STROBES_SET = 210,
    LANDING_LIGHTS_SET = 211,
    CABIN_LIGHTS_SET = 212,
    LOGO_LIGHTS_SET = 213,
    ALL_LIGHTS_TOGGLE = 214,
    FREEZE_LATITUDE_LONGITUDE_SET = 215,
    FREEZE_ALTITUDE_SET = 216,
    FREEZE_ATTITUDE_SET = 217,
    FLAPS_SET = 218,
    SPOILERS_SET = 219,
    GEAR_SET = 220,
    ENGINE_AUTO_START = 221,
    ENGINE_AUTO_SHUTDOWN = 222,
    THROTTLE_SET = 223,
};

inline constexpr uint32_t kEventGroup = 301;
inline constexpr uint32_t kHighestPriority = 1;

// Data definitions.
inline constexpr uint32_t kDefSpoilersThrottles = 401;
inline constexpr uint32_t kDefPosition = 402;
inline constexpr uint32_t kDefUser = 403;
inline constexpr uint32_t kDefAircraft = 404;
inline constexpr uint32_t kDefStatic = 405;
inline constexpr uint32_t kDefLights = 406;
inline constexpr uint32_t kDefTitle = 407;
inline constexpr uint32_t kDefModel = 408;
inline constexpr uint32_t kDefUserOnGround = 409;

// Requests.
inline constexpr uint32_t kReqAircraftInRange = 101;
inline constexpr uint32_t kReqStaticData = 102;
inline constexpr uint32_t kReqReleaseControl = 103;
inline constexpr uint32_t kReqCreate = 104;
inline constexpr uint32_t kReqRemove = 105;
inline constexpr uint32_t kReqTitle = 106;
inline constexpr uint32_t kReqModel = 107;
inline constexpr uint32_t kReqUserOnGround = 108;
inline constexpr uint32_t kReqUser = 109;
inline constexpr uint32_t kReqFlightPlan = 110;

// Throttle lever and flaps handle positions that the engine commands, by level.
inline constexpr uint32_t kThrottleValues[] = {0, 4914, 8191, 11468, 16383};
inline constexpr uint32_t kFlapsValues[] = {0, 3072, 10240, 16383};
inline constexpr uint32_t kSpoilersOut = 16383;

}  // namespace vlt
