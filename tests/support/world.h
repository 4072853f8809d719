// A small world of aircraft for tests: a data base of a few types and airlines, and some thirty
// installed liveries with all their indexes.
//
// Worker tables only; call gf_clearWorld before the test's end.
#pragma once

#include "liveries/liveries.h"

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// Fills `dbase`, the master index and all other indexes, regcodeTitles among them. Whatever was there
// before is gone. What it holds is best read in the tables of world.cpp.
void gf_loadSmallWorld();

// The same with other installed liveries: those of `installed` alone. Titles that begin with "special"
// become special ones.
void gf_installLiveries(const std::vector<Livery>& installed);

// Empties all of it, what has grown on it too.
void gf_clearWorld();

}  // namespace vlt
