// The size categories of aircraft, and tables with one value for each.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vlt {

enum class AcCategory { Light, Buzjets, Large, Heavy, HighPerf, Rotorcraft };
inline constexpr size_t kCategoryCount = 6;

// One value per category, in the order of the enumeration.
template <typename T>
using PerCategory = std::array<T, kCategoryCount>;

template <typename T>
constexpr const T& gf_forCategory(const PerCategory<T>& table, AcCategory category)
{
    return table[static_cast<size_t>(category)];
}

inline constexpr PerCategory<std::string_view> kCategoryNames{"Light", "Buzjets",  "Large",
                                                              "Heavy", "HighPerf", "Rotorcraft"};

}  // namespace vlt
