// Who flies on the built-in day: airframes out of the world's tables, or out of a small list of its
// own.
//
// Built once, then read only.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

// One aircraft, and what its reports tell about it.
struct Airframe {
    uint32_t hexid = 0;
    std::string reg;
    std::string airline;  // ICAO code, empty for a private aircraft
    std::string type;     // ICAO designator
    std::string emitter;  // emitter category such as "A3"
    bool cargo = false;   // a freighter: of the uses it has the overflights and departures only
};

// The uses of the day, each with airframes of its own, so that no aircraft flies twice at once.
enum class FleetUse { Overflight, Arrival, Departure, Light, Helicopter, Fast };
inline constexpr size_t kFleetUses = 6;

struct Fleet {
    std::array<std::vector<Airframe>, kFleetUses> airframes;  // none is empty
};

// From `registrations.csv` of the world (reg,airline,type,...), those first whose airline and type
// have a row in `liveries.csv` (airline,type,...). What they don't give is made up from a short
// list of airlines and types. The same folder and seed give the same fleet.
Fleet gf_fleet(const std::filesystem::path& world, uint64_t seed);

// A number made from two others, evenly spread: the day's chance, the same on every system.
uint64_t gf_mixed(uint64_t a, uint64_t b);

}  // namespace vlt
