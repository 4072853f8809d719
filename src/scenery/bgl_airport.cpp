#include "scenery/bgl_airport.h"

#include "core/base/encoding.h"
#include "core/base/text.h"
#include "scenery/stand_ids.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <set>

namespace vlt {

constexpr uint32_t kName = 0x19;
constexpr uint32_t kHelipad = 0x26;
constexpr uint32_t kOlderParkings = 0x3D;
constexpr uint32_t kNewerParkings = 0xAD;
constexpr uint64_t kRecordHead = 6;  // bytes

// An airport on its way.
struct AirportWalk {
    BglWords& words;
    BglWalk& file;
    BglAirport& airport;
    int helipads = 0;
    std::set<std::pair<double, double>> helipadPlaces;
    bool nameDiffers = false;
    StandIds ids;
};

BglRecord gf_bglRecord(BglWords& words, uint64_t at, uint64_t limit)
{
    words.step();
    const uint32_t head = words[at];
    const uint32_t bytes = at + 1 < words.size() ? head >> 16 | words[at + 1] << 16 : 0;
    const uint64_t next = at + bytes / 4;
    return {head & 0xFFFF, at, std::min(next, limit), next, bytes, next > at};
}

std::string lf_decodeIdentifierOrRegionCode(uint32_t word, bool& valid)
{
    constexpr uint32_t kBase = 38;
    std::string code;
    valid = true;
    for (uint32_t rest = word >> 5; rest > 0; rest /= kBase) {
        const uint32_t digit = rest % kBase;
        valid = valid && digit != 0;
        const uint32_t letter = digit == 0 ? ' ' : digit >= 2 && digit <= 11 ? digit + 46 : digit + 53;
        code.insert(code.begin(), static_cast<char>(letter));
    }
    valid = valid && code.size() == 4;
    return code;
}

static LatLon lf_unpacked(uint32_t lat, uint32_t lon)
{
    constexpr double kLatStep = 180.0 / (1U << 29);  // degrees
    constexpr double kLonStep = 360.0 / (3.0 * (1U << 28));
    return {90.0 - lat * kLatStep, lon * kLonStep - 180.0};
}

static bool lf_isPlace(LatLon place)
{
    return std::abs(place.lat) <= 90 && std::abs(place.lon) <= 180 && !gf_isNullPosition(place);
}

static std::string lf_placeText(LatLon place)
{
    return format("{:.6f},{:.6f}", place.lat, place.lon);
}

static double lf_heading(float headingDeg)
{
    return headingDeg == 0.0F ? 2 * std::numbers::pi : std::remainder(headingDeg, 720.0) * kRadPerDeg;
}

static void lf_skip(AirportWalk& walk, std::string id, std::string reason, std::string logged)
{
    walk.airport.skipped.push_back({std::move(id), std::move(reason)});
    if (!logged.empty()) {
        walk.file.file.log.push_back(std::move(logged));
    }
}

// --- name

static std::string lf_decodeAirportNAME(AirportWalk& walk, uint64_t index, uint64_t count)
{
    constexpr uint64_t kLongest = 45;  // bytes
    if (index + (kRecordHead + count + 3) / 4 > walk.words.size()) {
        walk.file.file.log.push_back(
            format("! o3: {} of d out of range nrDWORDS: {}", index, walk.words.size()));
        return {};
    }
    std::string name;
    for (uint64_t i = 0; i < std::min(count, kLongest); ++i) {
        name += static_cast<char>(walk.words.byte(index * 4 + kRecordHead + i));
    }
    name.erase(std::min(name.find_last_not_of('\0') + 1, name.size()));
    return gf_asUtf8(std::move(name));
}

static void lf_takeName(AirportWalk& walk, const BglRecord& record)
{
    const uint64_t bytes = std::min<uint64_t>(record.bytes, (record.end - record.at) * 4 + 3);
    const std::string name =
        lf_decodeAirportNAME(walk, record.at, bytes > kRecordHead ? bytes - kRecordHead : 0);
    std::string& stored = walk.airport.apf.name;
    if (stored.empty() && !walk.nameDiffers) {
        stored = name;
    } else if (stored != name) {
        stored.clear();
        walk.nameDiffers = true;
    }
}

// --- helipads

static void lf_takeHelipad(AirportWalk& walk, const BglRecord& record)
{
    constexpr uint64_t kWords = 9;
    constexpr float kLeastWidth = 0.2F;  // metres; the file would tell a radius of 0
    if (record.at + kWords > record.end) {
        lf_skip(walk, "helipad", "its record is too short", "");
        return;
    }
    const LatLon place = lf_unpacked(walk.words[record.at + 4], walk.words[record.at + 3]);
    const std::string text = lf_placeText(place);
    const float width = walk.words.real(record.at + 7);
    const float heading = walk.words.real(record.at + 8);
    if (!lf_isPlace(place)) {
        lf_skip(walk, "helipad", "its place can't be: " + text,
                "lat/lon helipad incorrect (skipped): " + text);
        return;
    }
    if (!std::isfinite(heading) || !(width >= kLeastWidth) || !gf_isStandWidth(width)) {
        lf_skip(walk, "helipad", "its size or heading can't be",
                format("helipad at {} incorrect (skipped), in {}", text, walk.file.shown));
        return;
    }
    if (!walk.helipadPlaces.emplace(place.lat, place.lon).second) {
        lf_skip(walk, "helipad", "another one lies at " + text,
                text + " (skipped) double helipad " + walk.file.shown);
        return;
    }
    ParkPos stand;
    stand.id = format("helipad{}", ++walk.helipads);
    stand.lat = place.lat;
    stand.lon = place.lon;
    stand.heading = lf_heading(heading);
    stand.radius = width / 2 / kMetresPerNm;
    stand.heli = true;
    walk.airport.apf.stands.push_back(std::move(stand));
}

// --- parkings

// The fields of a parking, by its words.
struct Parking {
    uint32_t nameCode, type, number;
    float radiusM, headingDeg;
    LatLon place;
};

static Parking lf_parking(BglWords& words, uint64_t at)
{
    const uint32_t head = words[at];
    return {head & 0x3F,        head >> 8 & 0xF,    head >> 12 & 0xFFF,
            words.real(at + 1), words.real(at + 2), lf_unpacked(words[at + 8], words[at + 7])};
}

static std::string lf_standId(const Parking& parking)
{
    constexpr std::array<std::string_view, 12> kPrefixes = {"",   "r",   "p",  "np",  "ep", "sep",
                                                            "sp", "swp", "wp", "nwp", "g",  ""};
    if (parking.nameCode < kPrefixes.size()) {
        return std::string(kPrefixes[parking.nameCode]) + std::to_string(parking.number);
    }
    return static_cast<char>(parking.nameCode + 53) + std::to_string(parking.number);
}

static void lf_takeParking(AirportWalk& walk, const Parking& parking)
{
    constexpr float kLeastRadius = 1.0F;  // metres, both exclusive
    constexpr float kMostRadius = 200.0F;
    constexpr uint32_t kCargo = 5, kFirstGate = 8, kLastType = 11;
    const std::string id = lf_standId(parking);
    const std::string& shown = walk.file.shown;
    if (!(parking.radiusM > kLeastRadius && parking.radiusM < kMostRadius)) {
        lf_skip(walk, id, format("its radius is {:.1F} metres", parking.radiusM),
                format("skipped position with radius {:.1F} meters, in {}", parking.radiusM, shown));
        return;
    }
    if (parking.type < 1 || parking.type > kLastType) {
        lf_skip(walk, id, format("no aircraft parks at one of type {}", parking.type), "");
        return;
    }
    if (!lf_isPlace(parking.place) || !std::isfinite(parking.headingDeg)) {
        const std::string text = lf_placeText(parking.place);
        lf_skip(walk, id, "its place or heading can't be: " + text,
                format("lat/lon: {}, incorrect (skipped) ", text));
        return;
    }
    const std::optional<std::string> free = gf_freeId(walk.ids, id, walk.airport.apf.stands.size());
    if (!free) {
        lf_skip(walk, id, "more than seven have this id",
                format("===> Warning more then 6 the same ids {}, in {}", id, shown));
        return;
    }
    ParkPos& stand = walk.airport.apf.stands.emplace_back();
    stand.id = *free;
    stand.lat = parking.place.lat;
    stand.lon = parking.place.lon;
    stand.heading = lf_heading(parking.headingDeg);
    stand.radius = parking.radiusM / kMetresPerNm;
    stand.cargo = parking.type == kCargo;
    stand.ramp = parking.type < kFirstGate;
}

static void lf_takeParkings(AirportWalk& walk, const BglRecord& record)
{
    constexpr uint64_t kFirst = 2;  // words
    constexpr uint64_t kOlder = 9;
    const uint64_t words = walk.airport.newer ? kOlder + 1 : kOlder;
    if (record.at + kFirst > record.end) {
        return;
    }
    const uint32_t count = walk.words[record.at + 1] >> 16;
    uint64_t at = record.at + kFirst;
    const uint64_t likely = std::min<uint64_t>(count, (record.end - at) / words);
    walk.airport.apf.stands.reserve(walk.airport.apf.stands.size() + likely);
    walk.ids.used.reserve(likely);
    for (uint32_t i = 0; i < count; ++i) {
        if (at + words > record.end) {
            lf_skip(walk, "", format("{} of {} parkings lie beyond the end of their list", count - i, count),
                    format("{} of {} parkings lie beyond the end of their list, in {}", count - i, count,
                           walk.file.shown));
            return;
        }
        walk.words.step();
        const uint64_t airlines = walk.words[at] >> 24;
        lf_takeParking(walk, lf_parking(walk.words, at));
        at += words + airlines;
    }
}

// --- the airport

static void lf_walkAirport(AirportWalk& walk, const BglRecord& record)
{
    const bool newer = walk.airport.newer;
    uint64_t at = record.at + (newer ? 60 : 56) / 4;
    while (at < record.end) {
        const BglRecord inner = gf_bglRecord(walk.words, at, record.end);
        if (inner.id == kName) {
            lf_takeName(walk, inner);
        } else if (inner.id == kHelipad) {
            lf_takeHelipad(walk, inner);
        } else if (inner.id == (newer ? kNewerParkings : kOlderParkings)) {
            lf_takeParkings(walk, inner);
            return;
        }
        if (!inner.advances) {
            return;
        }
        at = inner.next;
    }
}

static int32_t lf_feet(uint32_t millimetres)
{
    constexpr double kFeetPerMetre = 3.2808399;
    constexpr int64_t kTooHigh = 10001;
    const int64_t feet = std::llround(millimetres * kFeetPerMetre / 1000);
    return feet >= kTooHigh ? 0 : static_cast<int32_t>(feet);
}

void gf_decodeAirport(BglWords& words, const BglRecord& record, bool newer, BglWalk& walk)
{
    bool valid = false;
    const std::string code = lf_decodeIdentifierOrRegionCode(words[record.at + 10], valid);
    if (!valid) {
        return;
    }
    BglAirport airport;
    airport.newer = newer;
    airport.apf.code = code;
    airport.apf.bglPath = walk.shown;
    airport.apf.altitude = lf_feet(words[record.at + 5]);
    AirportWalk inner{words, walk, airport, 0, {}, false, {}};
    lf_walkAirport(inner, record);
    gf_renumber(inner.ids, airport.apf.stands);
    walk.file.airports.push_back(std::move(airport));
}

}  // namespace vlt
