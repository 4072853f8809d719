#include "standin/day_week.h"

#include "standin/builtin_day.h"
#include "standin/day_airport.h"
#include "standin/day_flights.h"
#include "standin/world_tables.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>

namespace vlt {

static constexpr int64_t kSlotSeconds = 1800;
static constexpr int kDays = 7;
static constexpr int64_t kWeekSeconds = int64_t{kDays} * 86400;
static constexpr int64_t kSlotsPerWeek = kWeekSeconds / kSlotSeconds;
static constexpr int64_t kFlightsOneIn = 4;
static constexpr int64_t kSlotsAtGate = 3;
static constexpr uint64_t kSeed = 1;  // of the fleet, as the stand-in has it by default

// What the options are made of.
struct Week {
    Fleet fleet;
    std::set<std::string> known;                         // registrations of the data base
    std::vector<std::array<std::string, 3>> freighters;  // registration, airline, type
    std::vector<ArchivedStand> stands;
};

static const char* lf_kindWord(StandKind kind)
{
    switch (kind) {
    case StandKind::Gate:
        return "gate";
    case StandKind::Ramp:
        return "ramp";
    case StandKind::Cargo:
        return "cargo";
    case StandKind::Helipad:
        return "heli";
    }
    return "gate";
}

static Week lf_week(const std::filesystem::path& world)
{
    Week week;
    week.fleet = gf_fleet(world, kSeed);
    const WorldTable table = gf_readWorldTable(world, "registrations.csv");
    const size_t reg = gf_columnOf(table, "reg");
    const size_t airline = gf_columnOf(table, "airl");
    const size_t type = gf_columnOf(table, "type");
    const size_t cargo = gf_columnOf(table, "cargo");
    for (const std::vector<std::string>& row : table.rows) {
        week.known.insert(row[reg]);
        if (row[cargo] == "1") {
            week.freighters.push_back({row[reg], row[airline], row[type]});
        }
    }
    for (const DayStand& stand : gf_dayStands()) {
        const LatLon at = gf_fieldPosition(stand.at);
        week.stands.push_back(
            {stand.id, at.lat, at.lon, stand.headingDeg, stand.radiusM, lf_kindWord(stand.kind), {}});
    }
    return week;
}

static ArchivedStand& lf_stand(Week& week, const std::string& id)
{
    return *std::ranges::find(week.stands, id, &ArchivedStand::id);
}

static ArchivedOption lf_option(const Week& week, const Airframe& airframe, int day)
{
    ArchivedOption option;
    option.reg = airframe.reg;
    option.airline = airframe.airline.empty() ? "PVT" : airframe.airline;
    option.type = airframe.type;
    option.day = day;
    option.known = week.known.contains(airframe.reg);
    return option;
}

// Half hours from `slot` on, `count` of them, not beyond midnight.
static HoursSet lf_hours(int64_t slot, int64_t count)
{
    HoursSet hours;
    for (int64_t s = std::max<int64_t>(slot, 0); s < std::min<int64_t>(slot + count, kSlotsPerDay); ++s) {
        hours.set(static_cast<size_t>(s));
    }
    return hours;
}

// --- the airliners

// The half hour of the week, from Monday's first on, in which a moment of the timetable lies.
static int64_t lf_placeInWeek(double seconds)
{
    constexpr int64_t kAnyMonday = 345600;  // seconds since 1970
    const int64_t second = kDayStart - kAnyMonday + static_cast<int64_t>(seconds);
    return second / kSlotSeconds % kSlotsPerWeek;
}

// `count` half hours at a stand; over midnight it is another option.
static void lf_addStay(Week& week, const std::string& stand, ArchivedOption option, int64_t place,
                       int64_t count)
{
    constexpr auto kSlots = static_cast<int64_t>(kSlotsPerDay);
    while (count > 0) {
        place = (place + kSlotsPerWeek) % kSlotsPerWeek;
        const int64_t today = std::min(count, kSlots - place % kSlots);
        option.day = static_cast<int>(place / kSlots) + 1;
        option.hours = lf_hours(place % kSlots, today);
        lf_stand(week, stand).options.push_back(option);
        place += today;
        count -= today;
    }
}

static double lf_time(FlightKind kind, int64_t number)
{
    return static_cast<double>(number) * kSchedules[static_cast<size_t>(kind)].interval;
}

// The call sign under which an arrival leaves again: that of a departure of its airline about that time, if
// there is one; rather of one that the history knows too.
static std::string lf_leavesAs(const Week& week, const DayFlight& flight, int64_t slotsAtGate)
{
    constexpr int64_t kLooks = 24;
    const double interval = kSchedules[static_cast<size_t>(FlightKind::Departure)].interval;
    const double leaves =
        lf_time(FlightKind::Arrival, flight.number) + static_cast<double>(slotsAtGate * kSlotSeconds);
    const int64_t middle = static_cast<int64_t>(leaves / interval) / kFlightsOneIn * kFlightsOneIn;
    for (const int64_t step : {kFlightsOneIn, int64_t{1}}) {
        for (int64_t number = middle - kLooks; number < middle + kLooks; number += step) {
            const DayFlight departure = gf_namedFlight(FlightKind::Departure, number, week.fleet);
            if (departure.airframe.airline == flight.airframe.airline) {
                return departure.callsign;
            }
        }
    }
    return flight.airframe.airline + std::to_string(900 + flight.number % 97);
}

static ArchivedOption lf_flightOption(const Week& week, const DayFlight& flight)
{
    constexpr uint64_t kSoftOneIn = 5;
    ArchivedOption option = lf_option(week, flight.airframe, 0);
    option.soft = gf_mixed(kSeed, static_cast<uint64_t>(flight.number)) % kSoftOneIn == 0;
    option.callsigns = flight.callsign;
    return option;
}

// One in `kFlightsOneIn`, so that the file stays of a size that real ones have. Of these, some stay long, so
// that their stand is shared with others, and some are towed to the apron: once in a while both stands were
// noted in one half hour.
static void lf_addArrivals(Week& week)
{
    constexpr int64_t kLongOneIn = 5;
    constexpr int64_t kSlotsOfLong = 9;
    constexpr int64_t kTowedOneIn = 7;
    constexpr int64_t kSlotsOnApron = 10;
    int64_t count = 0;
    for (int64_t number = 0; lf_time(FlightKind::Arrival, number) < kWeekSeconds;
         number += kFlightsOneIn, ++count) {
        const DayFlight flight = gf_namedFlight(FlightKind::Arrival, number, week.fleet);
        const int64_t slots = count % kLongOneIn == 0 ? kSlotsOfLong : kSlotsAtGate;
        const int64_t place = lf_placeInWeek(lf_time(FlightKind::Arrival, number));
        ArchivedOption option = lf_flightOption(week, flight);
        if (!flight.airframe.airline.empty()) {
            option.callsigns += ":" + lf_leavesAs(week, flight, slots);
        }
        lf_addStay(week, gf_standOfFlight(flight), option, place, slots);
        if (count % kTowedOneIn == 0) {
            const std::string apron = "W" + std::to_string(count / kTowedOneIn % kApronStands + 1);
            lf_addStay(week, apron, option, place + slots - 1, kSlotsOnApron);
        }
    }
}

static void lf_addDepartures(Week& week)
{
    for (int64_t number = 0; lf_time(FlightKind::Departure, number) < kWeekSeconds; number += kFlightsOneIn) {
        const DayFlight flight = gf_namedFlight(FlightKind::Departure, number, week.fleet);
        const int64_t place = lf_placeInWeek(lf_time(FlightKind::Departure, number));
        lf_addStay(week, gf_standOfFlight(flight), lf_flightOption(week, flight), place - kSlotsAtGate + 1,
                   kSlotsAtGate);
    }
}

// --- who lives there

// Small aircraft live at the airport: they stand there by night, and on some days all day.
static void lf_addResidents(Week& week, FleetUse use, const std::string& row, int stands)
{
    const std::vector<Airframe>& airframes = week.fleet.airframes[static_cast<size_t>(use)];
    for (int n = 0; n < stands; ++n) {
        const Airframe& airframe = airframes[static_cast<size_t>(n) % airframes.size()];
        for (int day = 1; day <= kDays; ++day) {
            ArchivedOption option = lf_option(week, airframe, day);
            const bool staysIn = (n + day) % 3 == 0;
            option.hours = staysIn ? lf_hours(0, 48) : lf_hours(0, 14) | lf_hours(38, 10);
            option.soft = n % 2 == 1;
            lf_stand(week, row + std::to_string(n + 1)).options.push_back(option);
        }
    }
}

static void lf_addFreighters(Week& week)
{
    constexpr int64_t kNightSlots = 12;
    for (int n = 0; n < kCargoStands && !week.freighters.empty(); ++n) {
        for (int day = 1; day <= kDays; ++day) {
            const size_t pick = static_cast<size_t>(n * kDays + day) % week.freighters.size();
            const auto& [reg, airline, type] = week.freighters[pick];
            ArchivedOption option;
            option.reg = reg;
            option.day = day;
            option.known = true;
            option.hours = lf_hours(n % 2 == 0 ? 0 : 36, kNightSlots);
            option.callsigns = airline + std::to_string(100 + n * 10 + day);
            lf_stand(week, "C" + std::to_string(n + 1)).options.push_back(option);
        }
    }
}

std::vector<ArchivedStand> gf_dayWeek(const std::filesystem::path& world)
{
    constexpr int kHelipads = 2;
    Week week = lf_week(world);
    lf_addArrivals(week);
    lf_addDepartures(week);
    lf_addResidents(week, FleetUse::Light, "R", kRampStands);
    lf_addResidents(week, FleetUse::Helicopter, "H", kHelipads);
    lf_addFreighters(week);
    return week.stands;
}

}  // namespace vlt
