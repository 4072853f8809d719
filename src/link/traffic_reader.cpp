#include "link/traffic_reader.h"

#include "airports/airports.h"
#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace vlt {

static constexpr size_t kLongestTail = 12;  // characters
static constexpr size_t kLongestType = 4;   // characters
static constexpr size_t kPlacesRead = 29;   // the last place read is 28
static constexpr double kAbsurd = 1e7;      // no aircraft reports a larger number

// Places in a line.
enum Place : size_t {
    kHexid = 1,
    kLat = 2,
    kLon = 3,
    kAltitude = 4,
    kVs = 5,
    kTrack = 7,
    kSpeed = 8,
    kCallsign = 9,
    kType = 10,
    kTail = 11,
    kOrigin = 12,
    kDestination = 13,
    kTimestamp = 14,
    kMessageKind = 17,
    kTas = 20,
    kRoll = 23,
    kHeading = 25,
    kCategory = 28,
};

TrafficReader trafficReader;

std::string_view gf_outcomeText(LineOutcome outcome)
{
    static constexpr std::array<std::string_view, 14> kTexts{
        "taken",
        "the traffic cycle takes no records",
        "a ground vehicle",
        "a field is missing or unreadable",
        "no valid position",
        "out of range",
        "the registration is too long",
        "no type designator",
        "not an aircraft by category or type",
        "the address is too low",
        "a call sign that no aircraft has",
        "neither call sign nor registration",
        "on the ground without a park airport",
        "on the ground away from the park airport",
    };
    return kTexts.at(static_cast<size_t>(outcome));
}

static double lf_number(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || !std::isfinite(value)) {
        throw std::runtime_error("not a number");
    }
    return value;
}

// A number as an aircraft may report it. Larger ones are finite too, but not once they were multiplied.
static double lf_reading(std::string_view text)
{
    const double value = lf_number(text);
    if (std::abs(value) > kAbsurd) {
        throw std::runtime_error("absurd number");
    }
    return value;
}

static uint32_t lf_hexid(std::string_view text)
{
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{}) {
        throw std::runtime_error("not an address");
    }
    return value;
}

static std::string_view lf_given(std::string_view text)
{
    return text == "null" ? std::string_view{} : text;
}

static std::string_view lf_type(std::string_view text)
{
    return text == "null" || text == "0" || text == "ZZZZ" ? std::string_view{} : text;
}

template <size_t N>
static bool lf_isOneOf(std::string_view text, const std::array<std::string_view, N>& list)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

// Whether an object of this type and ADS-B emitter category is an aircraft.
static LineOutcome lf_judgeObject(std::string_view type, std::string_view category)
{
    // Gliders, lighter-than-air craft, ultralights and surface vehicles.
    static constexpr std::array<std::string_view, 5> kOtherCategories{"B1", "B2", "B4", "C1", "C2"};
    static constexpr std::array<std::string_view, 9> kOtherTypes{"BALL", "EMER", "GLID", "GRND", "GND",
                                                                 "PARA", "SERV", "SHIP", "VENT"};
    if (type.empty()) {
        return LineOutcome::NoType;
    }
    if (category.empty() || category == "null") {
        return LineOutcome::Taken;
    }
    const bool other =
        lf_isOneOf(category, kOtherCategories) || type.size() > kLongestType || lf_isOneOf(type, kOtherTypes);
    return other ? LineOutcome::NoAircraft : LineOutcome::Taken;
}

static void lf_takeHeading(PosSample& sample, double degrees)
{
    if (degrees > 360.0) {
        throw std::runtime_error("no heading");
    }
    if (degrees >= 0) {
        sample.heading = degrees == 0 ? kTwoPi : degrees * kRadPerDeg;
        sample.headingValid = true;
        sample.attitudeGiven = true;
    }
}

static void lf_takeRoll(PosSample& sample, double degrees)
{
    constexpr double kNotGiven = -1.0;
    if (degrees != kNotGiven && degrees != 0) {
        sample.roll = -degrees * kRadPerDeg;
        sample.rollValid = true;
    }
}

double gf_groundedAltitude(double altitude, double speed, std::optional<double> parkElevation)
{
    constexpr double kJudgedBelow = 14000;  // feet
    constexpr double kAlwaysGround = 35;    // knots
    // At most this high above the park airport and at most this fast: on the ground.
    struct GroundLimit {
        double height, speed;
    };
    static constexpr std::array<GroundLimit, 4> kGroundLimits{
        {{0, HUGE_VAL}, {45, 120}, {90, 80}, {120, 43}}};
    if (altitude <= 0 || speed <= kAlwaysGround) {
        return 0;
    }
    if (parkElevation && altitude < kJudgedBelow) {
        const double height = altitude - *parkElevation;
        const auto holds = [&](const GroundLimit& l) { return height <= l.height && speed <= l.speed; };
        if (std::any_of(kGroundLimits.begin(), kGroundLimits.end(), holds)) {
            return 0;
        }
    }
    return altitude;
}

double gf_estimatedTas(double altitude)
{
    struct Band {
        double altitude, tas;
    };
    static constexpr std::array<Band, 4> kBands{{{2000, 180}, {5000, 220}, {10000, 250}, {20000, 350}}};
    for (const Band& band : kBands) {
        if (altitude <= band.altitude) {
            return band.tas;
        }
    }
    return 430;
}

TrafficReader::TrafficReader() : UdpReader("Traffic Reader")
{
    constexpr size_t kFieldsReserved = 64;
    fields.reserve(kFieldsReserved);
}

void TrafficReader::setCentre(LatLon position)
{
    centreLat = position.lat;
    centreLon = position.lon;
}

void TrafficReader::setParkAirport(const std::optional<ParkAirportPlace>& place)
{
    parkLat = place ? place->lat : 0.0;
    parkLon = place ? place->lon : 0.0;
    parkElevation = place ? place->elevation : std::numeric_limits<double>::quiet_NaN();
}

std::optional<double> TrafficReader::knownElevation() const
{
    const double elevation = parkElevation;
    return std::isnan(elevation) ? std::nullopt : std::optional(elevation);
}

void TrafficReader::forget()
{
    UdpReader::forget();
    lastTimestamp = 0.0;
    const std::scoped_lock lock(feedMutex);
    callsignsHeard.clear();
}

void TrafficReader::onStarted()
{
    state = FeedState::Receiving;
}

void TrafficReader::onStopped()
{
    state = FeedState::Stopped;
    logLine(format("{} has stopped", name));
}

void TrafficReader::processDatagram()
{
    if (datagram.find(" VEH") != std::string_view::npos) {
        outcome = LineOutcome::Vehicle;
        return;
    }
    fields.clear();
    m_uncut = datagram;
    m_allCut = false;
    outcome = processLine();
}

// Cuts until `enough` fields are there: most lines are out of range, which fifteen fields tell.
void TrafficReader::cutFields(size_t enough)
{
    while (fields.size() < enough && !m_allCut) {
        const size_t comma = m_uncut.find(',');
        m_allCut = comma == std::string_view::npos;
        if (!m_allCut || !m_uncut.empty()) {
            fields.push_back(m_uncut.substr(0, comma));
        }
        if (!m_allCut) {
            m_uncut.remove_prefix(comma + 1);
        }
    }
}

std::string_view TrafficReader::field(size_t place)
{
    if (place >= fields.size()) {
        throw std::runtime_error("missing field");
    }
    return fields[place];
}

LineOutcome TrafficReader::processLine()
{
    try {
        return decodeLine();
    } catch (const std::runtime_error&) {
        return LineOutcome::Malformed;
    } catch (const std::exception& e) {
        logLine(format("exception in processLine: {}", e.what()));
        return LineOutcome::Malformed;
    }
}

static bool lf_isValid(LatLon position)
{
    return position.lat >= -90.0 && position.lat <= 90.0 && position.lon >= -180.0 && position.lon <= 180.0 &&
           !gf_isNullPosition(position);
}

static bool lf_inRange(LatLon centre, LatLon position, double rangeNm)
{
    // A parallel is nowhere nearer than the difference in latitude: this spares most lines the sines.
    constexpr double kNmPerDegree = 60.0;
    return std::abs(centre.lat - position.lat) * kNmPerDegree <= rangeNm &&
           distNm(centre, position) <= rangeNm;
}

void TrafficReader::noteCallsign(std::string_view callsign)
{
    if (!collectCallsigns || lf_given(callsign).empty() || callsign.find('@') != std::string_view::npos) {
        return;
    }
    const std::scoped_lock lock(feedMutex);
    callsignsHeard.emplace(callsign);
}

LineOutcome TrafficReader::takeIdentity()
{
    if (field(kMessageKind) == "adsb_icao") {
        lf_takeHeading(record.sample, lf_reading(field(kHeading)));
    }
    record.hexid = lf_hexid(field(kHexid));
    return record.hexid <= kLastStaticHexid ? LineOutcome::LowHexid : LineOutcome::Taken;
}

LineOutcome TrafficReader::takeCallsign()
{
    const std::string_view callsign = lf_given(field(kCallsign));
    if (callsign == "ERARMTR0" || callsign == "AIRPORT1") {
        return LineOutcome::Blacklisted;
    }
    if (callsign.find('@') == std::string_view::npos) {
        record.callsign = callsign;
    }
    return record.callsign.empty() && record.regcode.empty() ? LineOutcome::Nameless : LineOutcome::Taken;
}

LineOutcome TrafficReader::judgeGround() const
{
    if (record.sample.airborne) {
        return LineOutcome::Taken;
    }
    if (!knownElevation()) {
        return LineOutcome::GroundNoPark;
    }
    const bool near = distNm(gf_placeOf(record.sample), {parkLat, parkLon}) <= kAirportRadius;
    return near ? LineOutcome::Taken : LineOutcome::GroundFar;
}

void TrafficReader::takeMotion()
{
    constexpr double kNotGiven = -1.0;
    PosSample& s = record.sample;
    s.track = field(kTrack).empty() ? 0 : lf_reading(field(kTrack));
    if (s.track == 0 && s.headingValid) {
        s.track = s.heading * kDegPerRad;
    }
    s.vs = lf_reading(field(kVs));
    record.origin = lf_given(field(kOrigin));
    record.destination = lf_given(field(kDestination));
    if (s.airborne) {
        lf_takeRoll(s, lf_reading(field(kRoll)));
    }
    s.tas = lf_reading(field(kTas));
    if (s.tas == kNotGiven) {
        s.tas = gf_estimatedTas(s.altitude);
    }
}

LineOutcome TrafficReader::push()
{
    const std::scoped_lock lock(feedMutex);
    if (!intakeOpen) {
        return LineOutcome::NotOpen;
    }
    record.sample.time = tick + kReplayDelayTicks;
    feedQueue.push_back(std::move(record));
    return LineOutcome::Taken;
}

// Position and range come first, before any work on texts: most lines end there.
LineOutcome TrafficReader::decodeLine()
{
    cutFields(kTimestamp + 1);
    lastTimestamp = lf_number(field(kTimestamp));
    const LatLon position{lf_number(field(kLat)), lf_number(field(kLon))};
    if (!lf_isValid(position)) {
        return LineOutcome::NoPosition;
    }
    if (!lf_inRange({centreLat, centreLon}, position, lateralRangeNm)) {
        return LineOutcome::OutOfRange;
    }
    return decodeNear(position);
}

// A line whose position can concern the user.
LineOutcome TrafficReader::decodeNear(LatLon position)
{
    cutFields(kPlacesRead);
    field(kCategory);
    if (field(kTail).size() > kLongestTail) {
        return LineOutcome::LongTail;
    }
    noteCallsign(field(kCallsign));
    const std::string_view type = lf_type(field(kType));
    if (const LineOutcome object = lf_judgeObject(type, field(kCategory)); object != LineOutcome::Taken) {
        return object;
    }
    record = FeedRecord{};
    record.timestamp = lastTimestamp;
    record.model = type;
    record.regcode = lf_given(field(kTail));
    record.sample.lat = position.lat;
    record.sample.lon = position.lon;
    if (const LineOutcome identity = takeIdentity(); identity != LineOutcome::Taken) {
        return identity;
    }
    record.sample.speed = lf_reading(field(kSpeed));
    record.sample.altitude =
        gf_groundedAltitude(lf_reading(field(kAltitude)), record.sample.speed, knownElevation());
    record.sample.airborne = record.sample.altitude > 0;
    if (const LineOutcome named = takeCallsign(); named != LineOutcome::Taken) {
        return named;
    }
    if (const LineOutcome ground = judgeGround(); ground != LineOutcome::Taken) {
        return ground;
    }
    takeMotion();
    return push();
}

std::jthread startTrafficReader(uint16_t port)
{
    return gf_startReader(trafficReader, port);
}

}  // namespace vlt
