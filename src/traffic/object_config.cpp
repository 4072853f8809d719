#include "traffic/object_config.h"

#include "core/base/parameters.h"
#include "core/base/random.h"
#include "traffic/object_commands.h"

namespace vlt {

static Lights lf_parkedLights(bool cabin)
{
    return {NAV_LIGHTS_WHILE_PARKED.value, false, false, false, false, true, cabin};
}

static void lf_setUpInAir(LiveAc& ac)
{
    constexpr double kLandingLightsBelow = 10000;  // feet
    constexpr double kCabinLightsFrom = 2000;      // feet above ground
    gf_commandEngines(ac, true);
    gf_commandSpoilers(ac, 0);
    const bool low = ac.alt < kLandingLightsBelow;
    gf_commandLights(ac, {true, true, low, false, true, low, ac.agl >= kCabinLightsFrom});
}

static void lf_setUpOnGround(LiveAc& ac)
{
    const bool parked = ac.st == StState::Parked;
    const bool taxiing = ac.st == StState::Taxi;
    gf_commandSpoilers(ac, 0);
    gf_commandEngines(ac, !parked);
    gf_commandLights(ac,
                     parked ? lf_parkedLights(true) : Lights{true, true, false, taxiing, false, true, true});
    gf_commandThrottle(ac, kThrottleIdle);
    gf_commandFlaps(ac, taxiing ? 1 : 0);
}

void setUpLiveAc(LiveAc& ac)
{
    if (!ac.stream.empty() && ac.stream.front().airborne) {
        lf_setUpInAir(ac);
    } else {
        lf_setUpOnGround(ac);
    }
    ac.fs = FsState::Active;
}

void parkedConfig(StaticAc& ac)
{
    constexpr uint32_t kChances = 10;  // one of them has its cabin dark
    gf_commandThrottle(ac, kThrottleIdle, kThrottleIdle);
    gf_commandFlaps(ac, 0);
    gf_commandEngines(ac, false);
    const bool dark = ac.soft || (gf_randomAllowed() && gf_randomNumber() % kChances == 0);
    gf_commandLights(ac, lf_parkedLights(!dark));
}

}  // namespace vlt
