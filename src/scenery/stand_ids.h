// The ids of an airport's stands, which sceneries give more than once.
//
// Plain functions on the state of one airport; any thread.
#pragma once

#include "airports/airports.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace vlt {

struct StandIds {
    std::unordered_set<std::string> used;
    std::vector<size_t> marked;  // places in the list of those that needed a letter
};

// The id itself when it is free, else with the first free letter of "a" to "f" behind it; none when all are
// taken. `place` is where its stand will stand in the list.
std::optional<std::string> gf_freeId(StandIds& ids, const std::string& id, size_t place);

// Gives the stands of each doubled id its letters anew, so that the largest keeps the plain id and another
// scan of the same scenery gives each stand the same.
void gf_renumber(const StandIds& ids, std::vector<ParkPos>& stands);

// A width in metres of which half is a stand's radius that can be.
bool gf_isStandWidth(double widthM);

}  // namespace vlt
