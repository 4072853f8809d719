// A week at the stands of the built-in day's airport: who of the day's fleet stood where and when.
//
// Pure but for the world's tables; any thread.
#pragma once

#include "standin/archived_airport.h"

#include <filesystem>
#include <vector>

namespace vlt {

// The stands with a week of options: arrivals at the northern gates and departures at the southern ones, as
// the day's timetable has them, some of them towed to the western apron, light aircraft on the ramp,
// freighters on the cargo stands and helicopters on their pads.
std::vector<ArchivedStand> gf_dayWeek(const std::filesystem::path& world);

}  // namespace vlt
