// What aircraft of each size category can do: the constants that every aircraft copies on creation, and
// those that are looked up.
#pragma once

#include "traffic/category.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <string>

namespace vlt {

// clang-format off
//                                                   Light Buzjets Large Heavy HighPerf Rotor
inline constexpr PerCategory<double>  kTurnRateDegPerTick{ 0.15,  0.10,  0.07,  0.05,  0.10,  0.20};
inline constexpr PerCategory<int32_t> kFlareTicks        {  250,   300,   400,   450,   150,   100};
inline constexpr PerCategory<int32_t> kDerotateTicks     {  250,   300,   350,   450,   150,   100};
inline constexpr PerCategory<int32_t> kRotateTicks       {  100,   200,   200,   250,   100,   100};
inline constexpr PerCategory<int32_t> kInitialClimbTicks {  200,   250,   300,   400,   200,   100};
inline constexpr PerCategory<double>  kRotatePitchDeg    { -9.0,  -8.0,  -6.0,  -5.0,  -6.0, -20.0};
inline constexpr PerCategory<double>  kClimbPitchDeg     {-15.0, -18.0, -16.5, -12.5, -20.0, -30.0};
inline constexpr PerCategory<double>  kMaxClimbRate      {  0.5,  0.75,   0.6,   0.5,   1.0,  0.75};  // feet per tick
inline constexpr PerCategory<double>  kStandSpeed        {  5.0,   4.5,   4.0,   3.0,   4.5,   5.0};  // knots
inline constexpr PerCategory<double>  kRotateSpeed       {   90,   110,   140,   150,   220,     0};  // knots
inline constexpr PerCategory<double>  kMaxBankDeg        {   40,    35,    30,    20,    90,    75};
inline constexpr PerCategory<double>  kMaxBankRateDegPerS{  3.5,  2.75,   2.0,   1.5,    10,     6};
inline constexpr PerCategory<double>  kMaxPitchRateDegPerS{ 1.0,  0.85,  0.75,   0.5,   3.0,   3.0};
// clang-format on

// The bank limit in radians, and the limits of the rates in radians per tick.
inline double gf_maxBank(AcCategory category)
{
    return gf_forCategory(kMaxBankDeg, category) * kRadPerDeg;
}
inline double gf_maxBankRate(AcCategory category)
{
    return gf_forCategory(kMaxBankRateDegPerS, category) * kRadPerDeg / kTicksPerSecond;
}
inline double gf_maxPitchRate(AcCategory category)
{
    return gf_forCategory(kMaxPitchRateDegPerS, category) * kRadPerDeg / kTicksPerSecond;
}

// Copies the constants of the aircraft's category into it; the two pitches vary a little by chance, so
// that no two take-offs look the same.
void gf_applyPerformance(AcBase& ac);

// The aircraft is of this model, ICAO type designator: its category, radius and constants follow it.
void gf_setModel(AcBase& ac, const std::string& model);

}  // namespace vlt
