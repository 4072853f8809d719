// Units, converted once, where a value comes in or goes out.
#pragma once

#include <numbers>

namespace vlt {

inline constexpr double kMetresPerNm = 1852.0;
inline constexpr double kFeetPerNm = 6076.11549;
inline constexpr double kFeetPerSecondPerKnot = kFeetPerNm / 3600;
inline constexpr double kRadPerDeg = std::numbers::pi / 180.0;
inline constexpr double kDegPerRad = 180.0 / std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

}  // namespace vlt
