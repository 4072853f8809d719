#include "standin/builtin_day.h"

#include "core/base/text.h"
#include "standin/day_airport.h"

#include <algorithm>
#include <cmath>

namespace vlt {

constexpr double kAirborneNoiseM = 4;
constexpr double kGroundNoiseM = 1.2;
constexpr double kStandingSpeed = 0.4;    // knots; slower counts as standing
constexpr double kSlowestGap = 15;        // seconds, the longest of the long gaps is four times that
constexpr double kLongGapChance = 0.006;  // of a report being followed by a long gap
constexpr double kDoubledChance = 0.01;   // of a report being sent twice
constexpr double kGhostDelay = 7;         // seconds by which a ghost follows its twin
constexpr double kVehiclePeriod = 9;      // seconds between the reports of the airport's car

enum class MessageKind { Adsb, MultilaterationLike, Rebroadcast };

// How the reports of one flight look.
struct ReportStyle {
    uint64_t key = 0;
    MessageKind kind = MessageKind::Adsb;
    double period = 4;      // seconds between reports
    double namedAfter = 0;  // seconds until the call sign is known
    bool tellsAirspeed = true;
    bool tellsCategory = true;
    bool ghost = false;
};

static double lf_draw(uint64_t key, uint64_t n)
{
    return static_cast<double>(gf_mixed(key, n) >> 11) / 9007199254740992.0;
}

// Nearly normal with a spread of 1: the sum of a few even draws.
static double lf_noise(uint64_t key, uint64_t n)
{
    double sum = -2;
    for (uint64_t i = 0; i < 4; ++i) {
        sum += lf_draw(key, n * 4 + i);
    }
    return sum * std::sqrt(3.0);
}

static ReportStyle lf_style(const DayFlight& flight, uint64_t seed)
{
    ReportStyle style;
    style.key = gf_mixed(gf_mixed(seed + 17, static_cast<uint64_t>(flight.kind)),
                         static_cast<uint64_t>(flight.number));
    const double kind = lf_draw(style.key, 1);
    style.kind = kind < 0.78  ? MessageKind::Adsb
                 : kind < 0.9 ? MessageKind::MultilaterationLike
                              : MessageKind::Rebroadcast;
    style.period = 2 + 4 * lf_draw(style.key, 2);
    style.namedAfter = lf_draw(style.key, 3) < 0.12 ? 20 + 60 * lf_draw(style.key, 4) : 0;
    style.tellsAirspeed = style.kind == MessageKind::Adsb && lf_draw(style.key, 5) < 0.8;
    style.tellsCategory = lf_draw(style.key, 6) < 0.85;
    return style;
}

static const char* lf_messageType(MessageKind kind)
{
    switch (kind) {
    case MessageKind::Adsb:
        return "adsb_icao";
    case MessageKind::MultilaterationLike:
        return "mlat";
    case MessageKind::Rebroadcast:
        return "adsr_icao";
    }
    return "null";
}

static std::string lf_or(const std::string& text)
{
    return text.empty() ? "null" : text;
}

// What one line tells besides who it is about.
struct ReportFigures {
    LatLon at;
    double altitude = 0;
    double climb = 0;
    double trackDeg = 0;
    double knots = 0;
    bool onGround = false;
};

static ReportFigures lf_figures(const PathState& state, uint64_t key, uint64_t n)
{
    ReportFigures figures;
    figures.onGround = state.feet < 1;
    const double spread = figures.onGround ? kGroundNoiseM : kAirborneNoiseM;
    figures.at = gf_positionAround(state.east + spread * lf_noise(key, 2 * n),
                                   state.north + spread * lf_noise(key, 2 * n + 1));
    if (!figures.onGround) {
        figures.altitude = std::round((state.feet + kDayElevation) / 25) * 25;
        figures.climb = std::round(state.climb / 64) * 64;
    }
    // On the ground the feed's track is where the nose points.
    figures.trackDeg = (figures.onGround ? state.heading : state.track) * kDegPerRad;
    figures.knots = state.knots < kStandingSpeed ? 0 : state.knots;
    return figures;
}

// The 43 places of a line.
static std::string lf_line(const DayFlight& flight, const ReportStyle& style, const PathState& state,
                           double time, double stamp, uint64_t n)
{
    const ReportFigures f = lf_figures(state, style.key, n);
    const bool full = style.kind == MessageKind::Adsb;
    const bool airborne = !f.onGround;
    const bool named = time - flight.begin >= style.namedAfter;
    const std::string callsign = named ? flight.callsign + (style.ghost ? "_" : "") : "null";
    const std::string tas = airborne && style.tellsAirspeed ? format("{:.0f}", f.knots) : "-1";
    const std::string roll = airborne && full ? format("{:.2f}", state.bank * kDegPerRad) : "-1";
    const std::string heading = full ? format("{:.2f}", state.heading * kDegPerRad) : "-1";
    const std::string track = full || airborne ? format("{:.1f}", f.trackDeg) : "";
    const std::string category = style.tellsCategory ? flight.airframe.emitter : "null";
    const uint32_t hexid = flight.airframe.hexid + (style.ghost ? 1u << 22 : 0);
    return format("RTTFC,{},{:.6f},{:.6f},{:.0f},{:.0f},{},{},{:.1f},{},{},{},{},{},{:.1f},X2,null,{},"
                  "-1,-1,{},-1,-1,{},{},{},-1,none,{},-1,-1,-1,-1,null,0.0,-1,-1,-1,-1,-1,1,0,0",
                  hexid, f.at.lat, f.at.lon, f.altitude, f.climb, f.onGround ? 1 : 0, track, f.knots,
                  callsign, flight.airframe.type, flight.airframe.reg, lf_or(flight.origin),
                  lf_or(flight.destination), stamp, lf_messageType(style.kind), tas, roll,
                  airborne && full ? heading : "-1", heading, category);
}

static double lf_gap(const ReportStyle& style, const PathState& state, uint64_t n)
{
    const double draw = lf_draw(style.key ^ 0x5A5A, n);
    if (draw < kLongGapChance) {
        return kSlowestGap * (1 + 3 * lf_draw(style.key ^ 0xA5A5, n));
    }
    const bool standing = state.knots < kStandingSpeed;
    return (standing ? 3 : 1) * style.period * (0.7 + 0.6 * lf_draw(style.key ^ 0x3C3C, n));
}

// All reports of one flight that fall into a stretch of time.
static void lf_report(std::vector<DayLine>& lines, const DayFlight& flight, const ReportStyle& style,
                      double startTime, double from, double to)
{
    const double delay = style.ghost ? kGhostDelay : 0;
    const double length = flight.journey.back().time;
    uint64_t n = 0;
    for (double at = lf_draw(style.key, 9) * style.period; at < length; ++n) {
        const double time = flight.begin + at + delay;
        const PathState state = gf_stateAt(flight.journey, at);
        if (time >= from && time < to) {
            lines.push_back({time, lf_line(flight, style, state, time, startTime + time, n)});
            if (lf_draw(style.key ^ 0x0F0F, n) < kDoubledChance) {
                lines.push_back(lines.back());
            }
        }
        at += lf_gap(style, state, n);
    }
}

// A car on the airport, as feeds have them: nothing that flies, and to be ignored.
static void lf_reportVehicle(std::vector<DayLine>& lines, double startTime, double from, double to)
{
    for (auto n = static_cast<int64_t>(std::ceil(from / kVehiclePeriod));
         static_cast<double>(n) * kVehiclePeriod < to; ++n) {
        const double time = static_cast<double>(n) * kVehiclePeriod;
        const LatLon at = gf_fieldPosition({500 * std::sin(time / 120), 40});
        lines.push_back(
            {time,
             format("RTTFC,3950001,{:.6f},{:.6f},0,0,1,90.0,12.0,FOLLOW1,GRND,null,null,null,{:.1f},X2,null,"
                    "adsb_icao_nt,-1,-1,-1,-1,-1,-1,-1,90.0,-1,none,C2,-1,-1,-1,-1,null,0.0,-1,-1,-1,-1,-1,"
                    "1,0,0",
                    at.lat, at.lon, startTime + time)});
    }
}

BuiltinDay::BuiltinDay(DayOptions options)
    : m_options(std::move(options)), m_fleet(gf_fleet(m_options.world, m_options.seed))
{
}

std::vector<DayFlight> BuiltinDay::flights(double from, double to, const std::stop_token& stop) const
{
    std::vector<DayFlight> found;
    for (const KindSchedule& schedule : kSchedules) {
        // Flights of some kinds begin up to `longest` before their number's time; none lasts
        // longer.
        const bool early = schedule.kind == FlightKind::Arrival || schedule.kind == FlightKind::Departure;
        const double latest = to + (early ? schedule.longest : 0);
        const auto first =
            static_cast<int64_t>(std::floor((from - schedule.longest) / schedule.interval)) - 1;
        const auto last = static_cast<int64_t>(std::ceil(latest / schedule.interval));
        for (int64_t number = first; number <= last && !stop.stop_requested(); ++number) {
            DayFlight flight = gf_dayFlight(schedule.kind, number, m_fleet, m_options.seed);
            if (flight.begin < to && flight.begin + flight.journey.back().time + kGhostDelay >= from) {
                found.push_back(std::move(flight));
            }
        }
    }
    return found;
}

std::vector<DayLine> BuiltinDay::lines(double from, double to, const std::stop_token& stop) const
{
    std::vector<DayLine> lines;
    for (const DayFlight& flight : flights(from, to, stop)) {
        if (stop.stop_requested()) {
            break;
        }
        ReportStyle style = lf_style(flight, m_options.seed);
        lf_report(lines, flight, style, m_options.startTime, from, to);
        if (flight.kind == FlightKind::Arrival && flight.number % 6 == 0) {
            style.ghost = true;
            style.namedAfter = 0;
            lf_report(lines, flight, style, m_options.startTime, from, to);
        }
    }
    lf_reportVehicle(lines, m_options.startTime, from, to);
    std::stable_sort(lines.begin(), lines.end(),
                     [](const DayLine& a, const DayLine& b) { return a.time < b.time; });
    return lines;
}

}  // namespace vlt
