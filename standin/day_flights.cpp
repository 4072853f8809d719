#include "standin/day_flights.h"

#include "core/base/text.h"
#include "standin/day_airport.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

constexpr double kSlot = 150;            // seconds from one landing, or take-off, to the next
constexpr double kOverflightRange = 70;  // nm
constexpr double kCrossingRange = 25;
constexpr double kArrivalRange = 60;
constexpr double kDepartureRange = 65;

// clang-format off
const KindSchedule kSchedules[kFlightKinds] = {
    {FlightKind::Overflight, FleetUse::Overflight,  45, 1500},
    {FlightKind::Arrival,    FleetUse::Arrival,     kSlot, 2700},
    {FlightKind::Departure,  FleetUse::Departure,   kSlot, 2400},
    {FlightKind::Crossing,   FleetUse::Light,       300, 2700},
    {FlightKind::Circuits,   FleetUse::Light,       700, 3400},
    {FlightKind::Helicopter, FleetUse::Helicopter,  900, 2400},
    {FlightKind::Patrol,     FleetUse::Fast,        1200, 3900},
};
constexpr std::array<const char*, 20> kCities{
    "LHR", "CDG", "AMS", "FRA", "MUC", "VIE", "ZRH", "FCO", "MAD", "LIS",
    "CPH", "OSL", "ARN", "HEL", "WAW", "PRG", "BUD", "ATH", "IST", "DXB"};
// clang-format on

// The chance of one flight: a row of draws that depends on nothing else.
struct Chance {
    uint64_t key = 0;
    uint64_t count = 0;
    double next()  // 0 to 1
    {
        return static_cast<double>(gf_mixed(key, ++count) >> 11) / 9007199254740992.0;
    }
    double between(double low, double high)
    {
        return low + (high - low) * next();
    }
};

// Numbers below 0 count on downwards.
static size_t lf_modulo(int64_t number, size_t size)
{
    const auto n = static_cast<int64_t>(size);
    return static_cast<size_t>(((number % n) + n) % n);
}

static RoutePoint lf_field(FieldPoint at, double radius, double knots, double feet)
{
    const EastNorth place = gf_eastNorth(at);
    return {place.east, place.north, radius, knots, feet};
}

// `nm` from the airport along `bearingDeg`.
static RoutePoint lf_far(double bearingDeg, double nm, double radius, double knots, double feet)
{
    const double angle = bearingDeg * kRadPerDeg;
    const double metres = nm * kMetresPerNm;
    return {metres * std::sin(angle), metres * std::cos(angle), radius, knots, feet};
}

// The place in its row of the gate that an arrival or a departure uses, from 0.
static int lf_gate(FlightKind kind, int64_t number)
{
    const int64_t step = kind == FlightKind::Arrival ? 7 : 5;
    return static_cast<int>(lf_modulo(number * step, kStandsPerSide));
}

// ---- the routes, one function per kind

static std::vector<RouteLeg> lf_overflight(Chance& chance)
{
    const double from = chance.between(0, 360);
    const double knots = chance.between(420, 485);
    const bool eastbound = from > 180;  // comes from the west
    const double level = 29000 + 2000 * std::floor(chance.between(0, 5.99)) + (eastbound ? 0 : 1000);
    const RoutePoint enter = lf_far(from, kOverflightRange, 0, knots, level - kDayElevation);
    const RoutePoint middle =
        lf_far(chance.between(0, 360), chance.between(2, 25), 18000, knots, level - kDayElevation);
    const RoutePoint leave =
        lf_far(from + 180 + chance.between(-25, 25), kOverflightRange, 0, knots, level - kDayElevation);
    return {{{enter, middle, leave}}};
}

static std::vector<RouteLeg> lf_arrival(Chance& chance, int64_t number)
{
    constexpr double kNm = kMetresPerNm;
    const double threshold = kDayRunways[0].east.along;
    const double left = kDayRunways[0].east.left;
    const double touchdown = threshold - 400;
    const double stand = gf_standAlong(lf_gate(FlightKind::Arrival, number));
    const double finalKnots = chance.between(130, 142);
    RouteLeg leg;
    switch (lf_modulo(number, 3)) {
    case 0:  // from the north-east
        leg.points = {lf_far(40, kArrivalRange, 0, 330, 16000), lf_far(55, 28, 6000, 270, 8000),
                      lf_field({touchdown + 15 * kNm, left + 5 * kNm}, 3500, 210, 4500)};
        break;
    case 1:  // from the east, straight in
        leg.points = {lf_far(100, kArrivalRange, 0, 330, 16000), lf_far(88, 28, 6000, 270, 8000)};
        break;
    default:  // from the north-west by a downwind leg
        leg.points = {lf_far(300, kArrivalRange, 0, 340, 17000),
                      lf_field({-4 * kNm, left + 6 * kNm}, 5000, 250, 8000),
                      lf_field({touchdown + 14 * kNm, left + 6 * kNm}, 3200, 200, 4200),
                      lf_field({touchdown + 14 * kNm, left}, 3000, 185, 3700)};
        break;
    }
    constexpr double kFeetPerNmOfGlide = 318.4;  // three degrees
    leg.points.insert(leg.points.end(),
                      {lf_field({touchdown + 10 * kNm, left}, 3000, 180, 10 * kFeetPerNmOfGlide),
                       lf_field({touchdown + 4 * kNm, left}, 0, finalKnots + 4, 4 * kFeetPerNmOfGlide),
                       lf_field({touchdown + 250, left}, 0, finalKnots, 22),
                       lf_field({touchdown, left}, 0, finalKnots - 4, 0), lf_field({-500, left}, 0, 24, 0),
                       lf_field({-700, left}, 60, 18, 0), lf_field({-700, kTaxilaneLeft}, 45, 13, 0),
                       lf_field({stand, kTaxilaneLeft}, 35, 8, 0), lf_field({stand, kStandsLeft}, 0, 0, 0)});
    leg.pauseAfter = chance.between(240, 480);
    return {leg};
}

// A freighter's stand in its row, from 0: one of those that lie before the runway's end.
static int lf_cargoStand(int64_t number)
{
    constexpr int kBeforeTheEnd = 8;
    return static_cast<int>(lf_modulo(number * 3, kBeforeTheEnd));
}

static double lf_departureStand(int64_t number, bool cargo)
{
    return cargo ? gf_cargoAlong(lf_cargoStand(number))
                 : gf_standAlong(lf_gate(FlightKind::Departure, number));
}

std::string gf_standOfFlight(const DayFlight& flight)
{
    if (flight.kind == FlightKind::Departure && flight.airframe.cargo) {
        return format("C{}", lf_cargoStand(flight.number) + 1);
    }
    const bool arrival = flight.kind == FlightKind::Arrival;
    return arrival || flight.kind == FlightKind::Departure
               ? format("{}{}", arrival ? 'N' : 'S', lf_gate(flight.kind, flight.number) + 1)
               : "";
}

static std::vector<RouteLeg> lf_departure(Chance& chance, int64_t number, bool cargo)
{
    constexpr double kNm = kMetresPerNm;
    const double left = kDayRunways[1].east.left;
    const double lineUp = kDayRunways[1].east.along - 60;
    const double stand = lf_departureStand(number, cargo);
    const double rotate = chance.between(135, 152);
    const double run = chance.between(1300, 1600);  // metres
    const RoutePoint pushed = lf_field({stand - 80, -kTaxilaneLeft}, 0, 0, 0);
    const RoutePoint ready = lf_field({lineUp, left}, 0, 0, 0);
    RouteLeg push{
        {lf_field({stand, -kStandsLeft}, 0, 0, 0), lf_field({stand, -kTaxilaneLeft}, 40, 3, 0), pushed},
        true,
        chance.between(180, 420),
        0};
    RouteLeg taxi{{pushed, lf_field({stand + 100, -kTaxilaneLeft}, 0, 14, 0),
                   lf_field({kDayRunways[1].east.along, -kTaxilaneLeft}, 45, 14, 0),
                   lf_field({kDayRunways[1].east.along, left}, 35, 8, 0), ready},
                  false,
                  chance.between(60, 100),
                  0};
    const double turnTo = 180 + 50 * static_cast<double>(lf_modulo(number, 4));
    const double off = lineUp - run;
    RouteLeg climb{{ready, lf_field({off, left}, 0, rotate, 0),
                    lf_field({off - 1500, left}, 0, rotate + 12, 350),
                    lf_field({off - 4.5 * kNm, left}, 3800, 215, 3600), lf_far(turnTo, 24, 9000, 290, 10500),
                    lf_far(turnTo + chance.between(-15, 15), kDepartureRange, 0, 410, 23000)},
                   false,
                   chance.between(15, 35),
                   0};
    return {push, taxi, climb};
}

static std::vector<RouteLeg> lf_crossing(Chance& chance)
{
    const double from = chance.between(0, 360);
    const double knots = chance.between(95, 145);
    const double feet = 1500 + 500 * std::floor(chance.between(0, 9));
    // Past the airport to the south, clear of the approach and departure paths.
    return {{{lf_far(from, kCrossingRange, 0, knots, feet),
              lf_far(chance.between(150, 190), chance.between(6, 14), 2500, knots, feet),
              lf_far(from + chance.between(140, 220), kCrossingRange, 0, knots, feet)}}};
}

// Left-hand circuits with touch-and-goes on the southern runway, then away again.
static std::vector<RouteLeg> lf_circuits(Chance& chance)
{
    constexpr double kNm = kMetresPerNm;
    constexpr int kRounds = 4;
    const double left = kDayRunways[1].east.left;
    const double side = left - chance.between(0.9, 1.2) * kNm;
    const double east = chance.between(1.6, 2.1) * kNm;
    const double knots = chance.between(84, 96);
    RouteLeg leg;
    leg.points.push_back(lf_far(200, 14, 0, knots + 15, 2500));
    leg.points.push_back(lf_field({-1.5 * kNm, side - 1.5 * kNm}, 700, knots, 1000));
    for (int round = 0; round < kRounds; ++round) {
        leg.points.insert(
            leg.points.end(),
            {lf_field({-1.0 * kNm, side}, 500, knots, 1000), lf_field({east, side}, 500, knots - 8, 1000),
             lf_field({east, left}, 450, 70, 480), lf_field({600, left}, 0, 62, 8),
             lf_field({520, left}, 0, 60, 0), lf_field({250, left}, 0, 52, 0), lf_field({0, left}, 0, 60, 0),
             lf_field({-1.6 * kNm, left}, 500, 72, 640), lf_field({-1.6 * kNm, side}, 500, knots - 6, 1000)});
    }
    leg.points.push_back(lf_far(170, 20, 1500, knots + 15, 2500));
    return {leg};
}

// From the helipad to a place nearby, down there, and back.
static std::vector<RouteLeg> lf_helicopter(Chance& chance)
{
    const double bearingDeg = chance.between(100, 330);
    const double nm = chance.between(6, 13);
    const double knots = chance.between(95, 125);
    const RoutePoint pad = lf_field(kDayHelipad, 0, 0, 0);
    const RoutePoint site = lf_far(bearingDeg, nm, 0, 0, 0);
    const RoutePoint out = lf_far(bearingDeg, 1.6, 400, knots, 800);
    const RoutePoint near = lf_far(bearingDeg, nm - 1.0, 300, knots - 15, 700);
    const RoutePoint home = lf_far(bearingDeg + 12, 1.8, 400, knots - 15, 700);
    RouteLeg there{{pad, out, near, site}, false, chance.between(60, 180), chance.between(150, 300)};
    RouteLeg back{{site, lf_far(bearingDeg + 12, nm - 1.2, 400, knots, 800), home, pad},
                  false,
                  15,
                  chance.between(120, 240)};
    return {there, back};
}

static std::vector<RouteLeg> lf_patrol(Chance& chance)
{
    constexpr int kRounds = 3;
    const double knots = chance.between(400, 440);
    const double feet = 19000 + 1000 * std::floor(chance.between(0, 4)) - kDayElevation;
    RouteLeg leg;
    leg.points.push_back(lf_far(20, 60, 0, knots, feet));
    for (int round = 0; round < kRounds; ++round) {
        leg.points.insert(leg.points.end(),
                          {lf_far(310, 32, 7500, knots, feet), lf_far(288, 24, 7500, knots, feet),
                           lf_far(60, 24, 7500, knots, feet), lf_far(38, 34, 7500, knots, feet)});
    }
    leg.points.push_back(lf_far(350, 70, 9000, knots, feet));
    return {leg};
}

static std::vector<RouteLeg> lf_route(FlightKind kind, int64_t number, bool cargo, Chance& chance)
{
    switch (kind) {
    case FlightKind::Overflight:
        return lf_overflight(chance);
    case FlightKind::Arrival:
        return lf_arrival(chance, number);
    case FlightKind::Departure:
        return lf_departure(chance, number, cargo);
    case FlightKind::Crossing:
        return lf_crossing(chance);
    case FlightKind::Circuits:
        return lf_circuits(chance);
    case FlightKind::Helicopter:
        return lf_helicopter(chance);
    case FlightKind::Patrol:
        return lf_patrol(chance);
    }
    return {};
}

// ---- names and times

// Airlines fly under a number, others under their registration.
static std::string lf_callsign(const Airframe& airframe, FlightKind kind, int64_t number)
{
    if (airframe.airline.empty()) {
        std::string callsign;
        for (const char c : airframe.reg) {
            if (c != '-') {
                callsign += c;
            }
        }
        return callsign;
    }
    const size_t flight = 1 + lf_modulo(number, 97);
    const char letter = static_cast<char>('A' + lf_modulo(number, 23));
    return format("{}{}{}{}", airframe.airline, static_cast<int>(kind) + 1, flight, letter);
}

// When the aircraft passes the moment that the timetable is about: touchdown of an arrival, the
// beginning of a departure's run.
static double lf_keyTime(FlightKind kind, const std::vector<PathState>& journey)
{
    for (size_t i = 1; i < journey.size(); ++i) {
        const bool touchdown = kind == FlightKind::Arrival && journey[i].feet <= 0 && journey[i - 1].feet > 0;
        const bool airborne = kind == FlightKind::Departure && journey[i].feet > 0;
        if (touchdown || airborne) {
            return journey[i].time;
        }
    }
    return 0;
}

static const char* lf_city(Chance& chance)
{
    return kCities[static_cast<size_t>(chance.next() * kCities.size())];
}

// Light aircraft are shared by two kinds, the airframes by number: each kind begins at another
// place.
static const Airframe& lf_airframe(const Fleet& fleet, FlightKind kind, int64_t number)
{
    const auto& list = fleet.airframes[static_cast<size_t>(kSchedules[static_cast<size_t>(kind)].use)];
    if (kind == FlightKind::Crossing || kind == FlightKind::Circuits) {
        const size_t half = list.size() / 2;
        return list[(kind == FlightKind::Crossing ? 0 : half) + lf_modulo(number, half)];
    }
    return list[lf_modulo(number, list.size())];
}

DayFlight gf_namedFlight(FlightKind kind, int64_t number, const Fleet& fleet)
{
    DayFlight flight;
    flight.kind = kind;
    flight.number = number;
    flight.airframe = lf_airframe(fleet, kind, number);
    flight.callsign = lf_callsign(flight.airframe, kind, number);
    return flight;
}

DayFlight gf_dayFlight(FlightKind kind, int64_t number, const Fleet& fleet, uint64_t seed)
{
    const auto index = static_cast<size_t>(kind);
    Chance chance{gf_mixed(gf_mixed(seed, index), static_cast<uint64_t>(number))};
    DayFlight flight = gf_namedFlight(kind, number, fleet);
    flight.journey = gf_journey(lf_route(kind, number, flight.airframe.cargo, chance));
    flight.begin = static_cast<double>(number) * kSchedules[index].interval;
    const double offset = kind == FlightKind::Departure ? kSlot / 2 : 0;
    flight.begin += offset - lf_keyTime(kind, flight.journey);
    if (!flight.airframe.airline.empty()) {
        flight.origin = kind == FlightKind::Departure ? kDayAirportIata : lf_city(chance);
        flight.destination = kind == FlightKind::Arrival ? kDayAirportIata : lf_city(chance);
    }
    return flight;
}

}  // namespace vlt
