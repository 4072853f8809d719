#include "traffic/object_commands.h"

#include "sim/client.h"
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
