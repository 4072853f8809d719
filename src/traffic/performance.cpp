#include "traffic/performance.h"

#include "core/base/random.h"
#include "liveries/database.h"

namespace vlt {

// `value` and a few percent of it more or less, by one fair random bit.
static double lf_varied(double value, double percent)
{
    const double sign = (gf_randomNumber() & 1) != 0 ? 1 : -1;
    return value + sign * value * percent / 100;
}

void gf_applyPerformance(AcBase& ac)
{
    constexpr double kRotateVariation = 2.5;  // percent
    constexpr double kClimbVariation = 5.0;   // percent
    const AcCategory c = ac.category;
    ac.turnRateNominal = gf_forCategory(kTurnRateDegPerTick, c) * kRadPerDeg;
    ac.flareTicks = gf_forCategory(kFlareTicks, c);
    ac.derotateTicks = gf_forCategory(kDerotateTicks, c);
    ac.rotateTicks = gf_forCategory(kRotateTicks, c);
    ac.initialClimbTicks = gf_forCategory(kInitialClimbTicks, c);
    ac.rotatePitch = lf_varied(gf_forCategory(kRotatePitchDeg, c), kRotateVariation) * kRadPerDeg;
    ac.climbPitch = lf_varied(gf_forCategory(kClimbPitchDeg, c), kClimbVariation) * kRadPerDeg;
    ac.maxClimbRate = gf_forCategory(kMaxClimbRate, c);
    ac.standSpeed = gf_forCategory(kStandSpeed, c);
}

void gf_setModel(AcBase& ac, const std::string& model)
{
    if (model == ac.model) {
        return;
    }
    ac.model = model;
    ac.category = categoryOf(model);
    ac.radius = halfWingspanNm(model);
    gf_applyPerformance(ac);
}

}  // namespace vlt
