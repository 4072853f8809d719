// The timetable of the built-in day: who flies where and when.
//
// Every flight is made out of its kind, its number and the day's seed alone, so that any stretch of
// the day can be made without what came before. Pure functions; any thread.
#pragma once

#include "standin/day_fleet.h"
#include "standin/day_path.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

enum class FlightKind { Overflight, Arrival, Departure, Crossing, Circuits, Helicopter, Patrol };
inline constexpr size_t kFlightKinds = 7;

// How a kind of flight repeats.
struct KindSchedule {
    FlightKind kind;
    FleetUse use;
    double interval;  // seconds from one to the next
    double longest;   // seconds that one may take at most
};

// In the order of FlightKind.
extern const KindSchedule kSchedules[kFlightKinds];

struct DayFlight {
    FlightKind kind = FlightKind::Overflight;
    int64_t number = 0;
    double begin = 0;  // seconds of the day
    Airframe airframe;
    std::string callsign;
    std::string origin;       // IATA, empty if unknown
    std::string destination;  // IATA, empty if unknown
    std::vector<PathState> journey;
};

// The same flight as gf_dayFlight gives, with neither times nor journey: who flies it, and its call sign.
DayFlight gf_namedFlight(FlightKind kind, int64_t number, const Fleet& fleet);

// The stand that an arrival comes to or a departure leaves, as `gf_dayStands` names it; empty for other
// kinds.
std::string gf_standOfFlight(const DayFlight& flight);

// The flight of a kind with this number; numbers below 0 began before the day.
DayFlight gf_dayFlight(FlightKind kind, int64_t number, const Fleet& fleet, uint64_t seed);

}  // namespace vlt
