#include "traffic/object_commands.h"

#include "sim/requests.h"
#include "sim/wire/ids.h"

#include <array>
#include <utility>

namespace vlt {

static bool lf_isRotorcraft(const StaticAc& ac)
{
    return ac.category == AcCategory::Rotorcraft;
}

void gf_commandThrottle(StaticAc& ac, uint32_t level, uint32_t rotorLevel)
{
    const uint32_t wanted = lf_isRotorcraft(ac) ? rotorLevel : level;
    if (ac.throttleLevel != wanted) {
        ac.throttleLevel = wanted;
        queueEvent(ac.objectid, THROTTLE_SET, kThrottleValues[wanted]);
    }
}

void gf_commandFlaps(StaticAc& ac, uint32_t level)
{
    if (!lf_isRotorcraft(ac) && ac.flapsLevel != level) {
        ac.flapsLevel = level;
        queueEvent(ac.objectid, FLAPS_SET, kFlapsValues[level]);
    }
}

void gf_commandGear(const StaticAc& ac, bool down)
{
    if (!lf_isRotorcraft(ac)) {
        queueEvent(ac.objectid, GEAR_SET, down ? 1 : 0);
    }
}

void gf_commandSpoilers(const StaticAc& ac, uint32_t value)
{
    if (!lf_isRotorcraft(ac)) {
        queueEvent(ac.objectid, SPOILERS_SET, value);
    }
}

void gf_commandEngines(const StaticAc& ac, bool run)
{
    queueEvent(ac.objectid, run ? ENGINE_AUTO_START : ENGINE_AUTO_SHUTDOWN, 0);
}

void gf_commandBrakes(const StaticAc& ac, bool on)
{
    constexpr double kFullPercent = 100;
    gf_commandSpoilers(ac, on ? kSpoilersOut : 0);
    if (ac.category != AcCategory::Light) {
        const double spoilers = on ? kFullPercent : 0;
        const double throttles = on && ac.fsltl ? -kFullPercent : spoilers;
        gf_mustSend(gf_setSpoilersAndThrottles(ac.objectid, spoilers, throttles),
                    "SimConnect set spoilers and throttles fails");
    }
}

void gf_commandCabinLights(const StaticAc& ac, bool on)
{
    queueEvent(ac.objectid, CABIN_LIGHTS_SET, on ? 1 : 0);
}

void gf_commandLights(const StaticAc& ac, const Lights& lights)
{
    const std::array<std::pair<uint32_t, uint32_t>, 7> events{{{NAV_LIGHTS_SET, lights.nav},
                                                               {BEACON_LIGHTS_SET, lights.beacon},
                                                               {LANDING_LIGHTS_SET, lights.landing},
                                                               {TAXI_LIGHTS_SET, lights.taxi},
                                                               {STROBES_SET, lights.strobes},
                                                               {LOGO_LIGHTS_SET, lights.logo},
                                                               {CABIN_LIGHTS_SET, lights.cabin}}};
    gf_queueEvents(ac.objectid, events);
}

}  // namespace vlt
