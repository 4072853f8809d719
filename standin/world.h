// A world's aircraft, with all their indexes, where no simulator's folders are scanned: for replays,
// tests and benchmarks.
//
// Fills the worker's tables of liveries.h.
#pragma once

#include "liveries/liveries.h"

#include <filesystem>
#include <functional>
#include <list>

namespace vlt {

// Makes these the installed liveries, and binds registrations to them beyond those that they carry; what was
// installed before is gone.
void gf_installWorldLiveries(std::list<Livery> installed, const std::function<void()>& bindRegcodes = {});

// Reads the data base, the liveries and the registrations of a world folder, as they come back from what is
// published of it. Throws what publisher.h tells.
void gf_loadWorld(const std::filesystem::path& folder);

}  // namespace vlt
