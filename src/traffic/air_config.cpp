#include "traffic/air_config.h"

#include "traffic/geodesy.h"
#include "traffic/object_commands.h"
#include "traffic/stand_holding.h"

namespace vlt {

static constexpr double kCruiseLightsFrom = 10000;  // feet
static constexpr double kDescending = -250;         // feet per minute, at or below it
static constexpr double kNearParkAirport = 10;      // nm

//                                                     Light Buzjets Large Heavy HighPerf Rotor
static constexpr PerCategory<double> kHighConfigAbove{625, 2050, 2050, 2050, 625, 625};  // feet above ground

static void lf_cruiseConfig(LiveAc& ac)
{
    if (ac.cruiseLights) {
        return;
    }
    ac.cruiseLights = true;
    gf_commandLights(ac, kLightsAbove10000);
    gf_commandThrottle(ac, kThrottleClimb);
    gf_commandGear(ac, false);
    gf_commandFlaps(ac, 0);
}

static void lf_highThrottle(LiveAc& ac, double vs)
{
    constexpr double kClimbing = 400;  // feet per minute
    const bool rotorcraft = ac.category == AcCategory::Rotorcraft;
    if (vs <= kDescending && ac.throttleLevel == kThrottleClimb) {
        gf_commandThrottle(ac, kThrottleDescent);
    } else if (vs > kClimbing && ac.throttleLevel == kThrottleFull && !rotorcraft) {
        gf_commandThrottle(ac, kThrottleClimb);
    }
}

static void lf_highConfig(LiveAc& ac)
{
    constexpr double kCleanFrom = 2400;  // feet above ground
    constexpr double kFirstFlapsFrom = 2000;
    constexpr double kNotClimbing = 100;  // feet per minute, at most
    const double vs = ac.stream[0].vs;
    gf_commandCabinLights(ac, true);
    ac.takeOff = false;
    ac.approach = false;
    lf_highThrottle(ac, vs);
    if (ac.agl >= kCleanFrom) {
        gf_commandGear(ac, false);
        gf_commandFlaps(ac, 0);
    } else if (vs <= kNotClimbing) {
        if (ac.flapsLevel == 0) {
            gf_commandFlaps(ac, 1);
        } else if (ac.agl < kFirstFlapsFrom && ac.flapsLevel == 1) {
            gf_commandFlaps(ac, 2);
        }
    }
}

static void lf_climbConfig(LiveAc& ac)
{
    if (ac.climbConfigured) {
        return;
    }
    gf_commandThrottle(ac, kThrottleFull);
    gf_commandGear(ac, false);
    ac.climbConfigured = true;
    ac.approach = false;
    gf_commandFlaps(ac, 0);
    ac.flareStage = 0;
}

static void lf_beginApproach(LiveAc& ac)
{
    constexpr uint32_t kLandingFlaps = 3;
    gf_commandThrottle(ac, kThrottleApproach);
    gf_commandFlaps(ac, kLandingFlaps);
    gf_commandGear(ac, true);
    standChangeList.push_back(ac.hexid);
    ac.approach = true;
    ac.climbConfigured = false;
    ac.takeOff = false;
    gf_setSt(ac, StState::Flying);  // also out of an initial climb that was broken off
    gf_forgetStand(ac);
    ac.phaseTicks = 1;
}

static bool lf_nearParkAirport(const LiveAc& ac)
{
    return parkAirport && distNm(gf_placeOf(ac), gf_placeOf(*parkAirport)) <= kNearParkAirport;
}

static void lf_lowConfig(LiveAc& ac)
{
    constexpr double kClimbing = 600;  // feet per minute
    const double vs = ac.stream[0].vs;
    gf_commandCabinLights(ac, false);
    if (vs <= kDescending) {
        if (!ac.approach && lf_nearParkAirport(ac)) {
            lf_beginApproach(ac);
        }
        return;
    }
    const bool level = vs <= kClimbing;
    if (level && (!ac.approach || lf_nearParkAirport(ac))) {
        return;
    }
    lf_climbConfig(ac);
}

void gf_airConfig(LiveAc& ac)
{
    if (ac.stream[0].altitude >= kCruiseLightsFrom) {
        lf_cruiseConfig(ac);
        return;
    }
    if (!ac.belowLights) {
        ac.belowLights = true;
        ac.cruiseLights = false;
        gf_commandLights(ac, kLightsBelow10000);
    }
    if (ac.agl > gf_forCategory(kHighConfigAbove, ac.category)) {
        lf_highConfig(ac);
    } else {
        lf_lowConfig(ac);
    }
}

}  // namespace vlt
