#include "airports/catalogue.h"

#include "airports/airport_lookup.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>

namespace vlt {

std::vector<AirportRecord> airportCatalogue;

// What is wrong with a row; empty for nothing.
static std::string_view lf_faultOf(const pugi::xml_node& row, const AirportRecord& airport)
{
    constexpr double kLowest = -2000;  // feet
    constexpr double kHighest = 30000;
    if (airport.code.empty()) {
        return "code";
    }
    if (!row.attribute("lat") || !row.attribute("lon") || !(std::abs(airport.lat) <= 90) ||
        !(std::abs(airport.lon) <= 180)) {
        return "possible position";
    }
    return airport.altitude >= kLowest && airport.altitude <= kHighest ? "" : "possible altitude";
}

// Of several rows with one code the first counts.
static void lf_dropDoubles(const std::string& shown)
{
    std::ranges::stable_sort(airportCatalogue, {}, &AirportRecord::code);
    const auto sameCode = [](const AirportRecord& a, const AirportRecord& b) { return a.code == b.code; };
    const auto doubles = std::unique(airportCatalogue.begin(), airportCatalogue.end(), sameCode);
    if (const auto count = airportCatalogue.end() - doubles; count > 0) {
        logLine(
            format("{} airport{} in \"{}\" stand there already, skipped", count, gf_plural(count), shown));
    }
    airportCatalogue.erase(doubles, airportCatalogue.end());
}

bool readAirports()
{
    constexpr size_t kRoom = 44000;
    if (!airportCatalogue.empty()) {
        return true;
    }
    const std::string shown = gf_shown(kAirportsCatalogueFile);
    if (!std::filesystem::exists(kAirportsCatalogueFile)) {
        throw UserErrorException(kPlainUserError, shown + " not found");
    }
    pugi::xml_document document;
    if (const auto parsed = document.load_file(kAirportsCatalogueFile.c_str()); !parsed) {
        throw std::runtime_error(format("{} not loaded {}", shown, parsed.description()));
    }
    airportCatalogue.reserve(kRoom);
    for (const pugi::xml_node& node : document.child("airports").children("airport")) {
        AirportRecord airport{node.attribute("code").as_string(), node.attribute("iata").as_string(),
                              node.attribute("lat").as_double(), node.attribute("lon").as_double(),
                              node.attribute("alt").as_double()};
        if (const std::string_view fault = lf_faultOf(node, airport); !fault.empty()) {
            logLine(format("airport {} in \"{}\" has no {}, skipped", airport.code, shown, fault));
        } else {
            airportCatalogue.push_back(std::move(airport));
        }
    }
    lf_dropDoubles(shown);
    airportCatalogue.shrink_to_fit();
    logLine(format("{} airports read from \"{}\"", airportCatalogue.size(), shown));
    return !airportCatalogue.empty();
}

const AirportRecord* findAirport(std::string_view code)
{
    const auto found = std::ranges::lower_bound(airportCatalogue, code, {}, &AirportRecord::code);
    return found != airportCatalogue.end() && found->code == code ? &*found : nullptr;
}

// The two airports closest to a position, nullptr where there is none.
struct Closest {
    const AirportRecord* nearest = nullptr;
    const AirportRecord* neighbour = nullptr;
};

static Closest lf_closestTwo(LatLon position)
{
    constexpr double kQuickLook = 0.09;  // degrees of latitude, more than kAirportRadius
    Closest closest;
    double nearest = kNoStandNearNm;
    double next = kNoStandNearNm;
    for (const AirportRecord& airport : airportCatalogue) {
        if (std::abs(airport.lat - position.lat) > kQuickLook) {
            continue;
        }
        const double distance = distNm(position, gf_placeOf(airport));
        if (distance > kAirportRadius) {
            continue;
        }
        if (distance < nearest) {
            closest = {&airport, closest.nearest};
            next = nearest;
            nearest = distance;
        } else if (distance < next) {
            closest.neighbour = &airport;
            next = distance;
        }
    }
    return closest;
}

const AirportRecord* gf_nearestReference(LatLon position)
{
    return lf_closestTwo(position).nearest;
}

std::optional<const AirportRecord*> closestAirport(LatLon position)
{
    const Closest closest = lf_closestTwo(position);
    if (closest.neighbour == nullptr) {
        return closest.nearest;
    }
    const std::string& code = closest.nearest->code;
    const std::string& neighbour = closest.neighbour->code;
    const auto own = gf_readDestApfForClosestStand(code, position);
    const auto other = gf_readDestApfForClosestStand(neighbour, position);
    if (!own || !other) {
        return std::nullopt;
    }
    logLine(format("Airport {} is closest, neighbour is {}", code, neighbour));
    if (other->distance >= own->distance) {
        return closest.nearest;
    }
    logLine(
        format("Airport {} is closest, but stand {} at neighbouring airport {} is closest at {:.0F} meters "
               "...",
               code, other->id, neighbour, other->distance * kMetresPerNm));
    return closest.neighbour;
}

}  // namespace vlt
