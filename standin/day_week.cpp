#include "standin/day_week.h"

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

// One in four flights, so that the file stays of a size that real ones have.
static void lf_addGates(Week& week, FlightKind kind)
{
    constexpr int64_t kOneIn = 4;
    constexpr int64_t kSlotsAtGate = 3;
    constexpr uint64_t kSoftOneIn = 5;
    const double interval = kSchedules[static_cast<size_t>(kind)].interval;
    const bool arrival = kind == FlightKind::Arrival;
    const auto flights = static_cast<int64_t>(kDays * 86400 / interval);
    for (int64_t number = 0; number < flights; number += kOneIn) {
        const DayFlight flight = gf_namedFlight(kind, number, week.fleet);
        const auto slot = static_cast<int64_t>(static_cast<double>(number) * interval) / kSlotSeconds;
        const int64_t slotOfDay = slot % static_cast<int64_t>(kSlotsPerDay);
        ArchivedOption option =
            lf_option(week, flight.airframe, static_cast<int>(slot / static_cast<int64_t>(kSlotsPerDay)) + 1);
        option.hours = lf_hours(arrival ? slotOfDay : slotOfDay - kSlotsAtGate + 1, kSlotsAtGate);
        option.soft = gf_mixed(kSeed, static_cast<uint64_t>(number)) % kSoftOneIn == 0;
        option.callsigns = flight.callsign;
        if (arrival && !flight.airframe.airline.empty()) {
            // It leaves again under the number of an outbound flight.
            option.callsigns += ":" + flight.airframe.airline + std::to_string(900 + number % 97);
        }
        lf_stand(week, (arrival ? "N" : "S") + std::to_string(gf_gateOfFlight(kind, number) + 1))
            .options.push_back(option);
    }
}

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
    lf_addGates(week, FlightKind::Arrival);
    lf_addGates(week, FlightKind::Departure);
    lf_addResidents(week, FleetUse::Light, "R", kRampStands);
    lf_addResidents(week, FleetUse::Helicopter, "H", kHelipads);
    lf_addFreighters(week);
    return week.stands;
}

}  // namespace vlt
