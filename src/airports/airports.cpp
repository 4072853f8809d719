#include "airports/airports.h"

#include <algorithm>
#include <cctype>

namespace vlt {

std::list<ParkListEntry> parkAirports;
Apf parkApf;
std::string reservedStand;
bool softLearningAllowed = true;
std::vector<PlanEntry> parkPlan;
SharedValue<int32_t> updateCount = 0;
SharedValue<ParkState> parkState = ParkState::None;

ParkPos* gf_stand(uint32_t index)
{
    return index == kNoStand || index > parkApf.stands.size() ? nullptr : &parkApf.stands[index - 1];
}

bool gf_isAirportCode(std::string_view code)
{
    constexpr size_t kLongest = 8;
    return !code.empty() && code.size() <= kLongest &&
           std::ranges::all_of(code, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
}

}  // namespace vlt
