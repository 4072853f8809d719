#include "standin/record_check.h"

#include <algorithm>

namespace vlt {

// But for the front: its time is that of the arrival, which may be late.
static bool lf_risingTimes(const LiveAc& ac)
{
    const auto falls = [](const PosSample& a, const PosSample& b) { return a.time >= b.time; };
    return ac.stream.empty() ||
           std::adjacent_find(ac.stream.begin() + 1, ac.stream.end(), falls) == ac.stream.end();
}

static bool lf_is(const LiveAc& ac, auto... states)
{
    return ((ac.st == states) || ...);
}

std::string_view gf_impossible(const LiveAc& ac)
{
    using enum StState;
    constexpr uint32_t kLastFlareStage = 4;
    constexpr double kInitialClimb = 600;  // feet, above which the take-off of a small one is over
    struct Law {
        bool holds;
        std::string_view broken;
    };
    const bool stands = ac.standLat != 0 || ac.standLon != 0;
    const Law laws[] = {
        {!ac.stream.empty(), "has no stream"},
        {lf_risingTimes(ac), "has times that fall"},
        {ac.onGround || lf_is(ac, Flying, TakeOff, Birth), "is in the air, its phase on the ground"},
        {!lf_is(ac, TakeOff) || ac.takeOff || ac.agl > kInitialClimb, "rotates without a take-off"},
        {!ac.takeOff || lf_is(ac, Taxi, TakeOff, Flying), "takes off in a phase at a stand"},
        {ac.phaseTicks == 1 || lf_is(ac, TakeOff), "counts a rotation down, but doesn't rotate"},
        {!ac.approach || !ac.climbConfigured, "approaches and climbs"},
        {!ac.approach || !ac.onGround, "approaches on the ground"},
        {!ac.approach || !ac.takeOff, "approaches and takes off"},
        {!ac.landingRoll || ac.onGround, "rolls out in the air"},
        {!ac.landingRoll || lf_is(ac, Taxi, Flying), "rolls out at a stand"},
        {ac.flareStage <= kLastFlareStage, "has a flare beyond its last stage"},
        {ac.flareStage == 0 || ac.approach || ac.touchdownBlend, "flares without an approach"},
        {!ac.touchdownBlend || ac.onGround, "brings its nose down in the air"},
        {!ac.holding || lf_is(ac, Taxi, PushedBack), "holds elsewhere than on a taxiway"},
        {!lf_is(ac, Parking, Parked, PushingBack) || stands, "is at a stand that isn't"},
        {lf_is(ac, PushingBack, PushedBack) == (ac.pushStage != kNotPushed),
         "has a push-back's stage, or none"},
        {!ac.pullOutPending || lf_is(ac, Parked, PushingBack), "leaves a stand where it isn't parked"},
        {!ac.backwards || lf_is(ac, Taxi, PushingBack, PushedBack), "goes backwards in a phase of its own"},
    };
    const auto broken = std::ranges::find(laws, false, &Law::holds);
    return broken == std::end(laws) ? std::string_view() : broken->broken;
}

}  // namespace vlt
