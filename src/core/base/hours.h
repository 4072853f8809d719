// Sets of half hours of the day, as the airport files write them. Any thread, no state.
#pragma once

#include "core/base/clock.h"

#include <bitset>
#include <string>
#include <string_view>

namespace vlt {

// A set of half hours of the day; bit n begins at n times 30 minutes.
using HoursSet = std::bitset<kSlotsPerDay>;

// Reads a comma-separated list of slots into `hours`. An item that is no slot is logged and left out.
void hoursToSet(std::string_view text, HoursSet& hours);
// The set as a comma-separated list in rising order.
std::string setToHours(const HoursSet& hours);

}  // namespace vlt
