#include "standin/motion_breaks.h"

#include "traffic/geodesy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace vlt {

constexpr double kStepFactor = 1.5;    // a step may exceed the speed by this
constexpr double kStepRounding = 10;   // feet
constexpr double kSettling = 1;        // seconds after the first position that don't count
constexpr double kMovingFeet = 6;      // a shorter step has no direction
constexpr double kPushBackSpeed = 12;  // knots; a faster backward move isn't a push-back
constexpr double kBackwardDeg = 120;   // off the nose
constexpr double kSidewaysGroundDeg = 45;
constexpr double kSidewaysAirDeg = 35;
constexpr double kHoverSpeed = 40;  // knots; a slower helicopter may go where it likes
constexpr double kTurnMargin = 1.5;
constexpr double kFastestClimb = 150;   // feet per second
constexpr double kGroundStepFeet = 15;  // height, in a second on the ground
constexpr double kLowestAgl = 0.5;      // feet, of any centre of gravity
constexpr double kSteepestBankDeg = 60;
constexpr double kSteepestPitchDeg = 30;
constexpr double kLongestSample = 2;  // seconds between two points that belong together

struct TurnRow {
    std::string_view category;
    double degPerSecond;
};
constexpr std::array<TurnRow, 6> kTurnRates{
    {{"Light", 15}, {"Buzjets", 10}, {"Large", 7}, {"Heavy", 5}, {"HighPerf", 10}, {"Rotorcraft", 20}}};
constexpr double kAnyTurnRate = 10;

static double lf_turnRate(const std::string& category)
{
    for (const TurnRow& row : kTurnRates) {
        if (row.category == category) {
            return row.degPerSecond;
        }
    }
    return kAnyTurnRate;
}

// One second of a track.
struct Step {
    const ObjectLife& life;
    const TrackPoint& a;
    const TrackPoint& b;
    double seconds;
    double feet;
    double knots;
};

static void lf_note(std::vector<MotionBreak>& breaks, const Step& step, const char* kind, double size)
{
    breaks.push_back({step.life.id, step.life.tailNumber, step.b.time, kind, size});
}

static void lf_checkStep(std::vector<MotionBreak>& breaks, const Step& step)
{
    const double allowed = kStepFactor * step.knots * kFeetPerSecondPerKnot * step.seconds + kStepRounding;
    if (step.feet > allowed) {
        lf_note(breaks, step, "jump", step.feet - allowed);
    }
}

static void lf_checkDirection(std::vector<MotionBreak>& breaks, const Step& step)
{
    if (step.feet < kMovingFeet) {
        return;
    }
    const double way = bearing(gf_placeOf(step.a), gf_placeOf(step.b));
    // The nose in the middle of the step, so that a turn doesn't count against it.
    const double nose = step.a.heading + angleDiff(step.a.heading, step.b.heading) / 2;
    const double offDeg = std::abs(angleDiff(nose, way)) * kDegPerRad;
    const double moved = step.feet / step.seconds / kFeetPerSecondPerKnot;
    if (step.life.category == "Rotorcraft" && moved < kHoverSpeed) {
        return;  // slow ones are told to be on the ground
    }
    if (step.a.onGround && step.b.onGround) {
        if (offDeg > kBackwardDeg && moved > kPushBackSpeed) {
            lf_note(breaks, step, "backward", offDeg);
        } else if (offDeg > kSidewaysGroundDeg && offDeg <= kBackwardDeg) {
            lf_note(breaks, step, "sideways", offDeg);
        }
    } else if (offDeg > kSidewaysAirDeg) {
        lf_note(breaks, step, offDeg > kBackwardDeg ? "backward" : "sideways", offDeg);
    }
}

static void lf_checkAttitude(std::vector<MotionBreak>& breaks, const Step& step)
{
    const double turnDeg = std::abs(angleDiff(step.a.heading, step.b.heading)) * kDegPerRad;
    const double turnLimit = lf_turnRate(step.life.category) * kTurnMargin * step.seconds;
    if (turnDeg > turnLimit) {
        lf_note(breaks, step, "turn", turnDeg - turnLimit);
    }
    const double bankDeg = std::abs(step.b.bank) * kDegPerRad;
    const double pitchDeg = std::abs(step.b.pitch) * kDegPerRad;
    const double over = std::max(bankDeg - kSteepestBankDeg, pitchDeg - kSteepestPitchDeg);
    if (over > 0) {
        lf_note(breaks, step, "attitude", over);
    }
}

static void lf_checkHeight(std::vector<MotionBreak>& breaks, const Step& step)
{
    const bool ground = step.a.onGround && step.b.onGround;
    const double limit = ground ? kGroundStepFeet : kFastestClimb * step.seconds;
    const double climbed = std::abs(step.b.altitude - step.a.altitude);
    if (climbed > limit) {
        lf_note(breaks, step, "height", climbed - limit);
    }
    if (step.b.agl < kLowestAgl) {
        lf_note(breaks, step, "below ground", kLowestAgl - step.b.agl);
    }
}

std::vector<MotionBreak> gf_motionBreaks(const ObjectLife& life)
{
    std::vector<MotionBreak> breaks;
    if (life.firstPositionAt == kNeverInLife) {
        return breaks;
    }
    for (size_t i = 1; i < life.track.size(); ++i) {
        const TrackPoint& a = life.track[i - 1];
        const TrackPoint& b = life.track[i];
        const double seconds = b.time - a.time;
        if (a.time < life.firstPositionAt + kSettling || seconds <= 0 || seconds > kLongestSample) {
            continue;
        }
        const double feet = distNm(gf_placeOf(a), gf_placeOf(b)) * kFeetPerNm;
        const Step step{life, a, b, seconds, feet, std::max(std::abs(a.tas), std::abs(b.tas))};
        lf_checkStep(breaks, step);
        lf_checkDirection(breaks, step);
        lf_checkAttitude(breaks, step);
        lf_checkHeight(breaks, step);
    }
    return breaks;
}

double gf_controlledHours(const ObjectLife& life, double now)
{
    if (life.firstPositionAt == kNeverInLife) {
        return 0;
    }
    const double end = life.removedAt == kNeverInLife ? now : life.removedAt;
    return (end - life.firstPositionAt) / 3600;
}

}  // namespace vlt
