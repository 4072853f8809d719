#include "airports/airport_file.h"

#include "airports/parking_settings.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/text.h"
#include "core/base/xml_file.h"
#include "liveries/database.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

namespace vlt {

// --- reading

static pugi::xml_attribute lf_parameter(const pugi::xml_document& document, const char* name)
{
    return document.child("parameters").find_child_by_attribute("parameter", "name", name).attribute("value");
}

std::optional<bool> gf_boolParameter(const pugi::xml_document& document, const char* name)
{
    const pugi::xml_attribute value = lf_parameter(document, name);
    return value ? std::optional(value.as_bool()) : std::nullopt;
}

std::optional<int32_t> gf_intParameter(const pugi::xml_document& document, const char* name)
{
    const pugi::xml_attribute value = lf_parameter(document, name);
    return value ? std::optional(gf_wholeNumber(value)) : std::nullopt;
}

std::optional<std::string> gf_textParameter(const pugi::xml_document& document, const char* name)
{
    const pugi::xml_attribute value = lf_parameter(document, name);
    return value ? std::optional<std::string>(value.as_string()) : std::nullopt;
}

static void lf_readCallsigns(std::string_view text, StandOption& option)
{
    const size_t colon = text.find(':');
    option.callsign = text.substr(0, colon);
    if (colon != std::string_view::npos && text.find(':', colon + 1) == std::string_view::npos) {
        option.coupledCs = text.substr(colon + 1);
    }
}

StandOption gf_readOption(const pugi::xml_node& node, bool archived, int32_t sequence)
{
    StandOption option;
    lf_readCallsigns(node.attribute("cs").as_string(), option);
    option.reg = node.attribute("reg").as_string();
    if (const RegRecord* known = findRegcode(option.reg)) {
        option.airline = gf_airlineOf(*known);
        option.type = known->type;
    } else {
        option.airline = node.attribute("airl").as_string();
        option.type = node.attribute("type").as_string();
    }
    option.real = !node.attribute("soft").as_bool();
    option.day = gf_wholeNumber(node.attribute("day"));
    hoursToSet(node.attribute("hh").as_string(), option.hours);
    option.archived = archived;
    option.sequence = sequence;
    return option;
}

double gf_decimal(const pugi::xml_node& node, const char* name)
{
    std::string text = node.attribute(name).as_string();
    std::ranges::replace(text, ',', '.');
    return std::strtod(text.c_str(), nullptr);
}

bool gf_isStandRadius(double radius)
{
    constexpr double kWidest = 1.0;  // nm, far beyond every aircraft
    return radius >= 0 && radius <= kWidest;
}

static bool lf_hasPossibleNumbers(const ParkPos& stand)
{
    return std::abs(stand.lat) <= 90 && std::abs(stand.lon) <= 180 && std::isfinite(stand.heading) &&
           gf_isStandRadius(stand.radius);
}

bool readParkPos(const pugi::xml_node& node, const std::string& id, bool archived,
                 std::vector<ParkPos>& stands)
{
    ParkPos stand;
    stand.lat = gf_decimal(node, "latitude");
    stand.lon = gf_decimal(node, "longitude");
    if (stand.lat == 0 && stand.lon == 0) {
        return false;
    }
    stand.radius = gf_decimal(node, "radius") / kMetresPerNm;
    stand.heading = gf_decimal(node, "heading") * kRadPerDeg;
    if (!lf_hasPossibleNumbers(stand)) {
        logLine(format("Parking position {} has impossible numbers, skipped", id));
        return false;
    }
    const auto elements = node.children("opt");
    stand.options.reserve(static_cast<size_t>(std::distance(elements.begin(), elements.end())));
    for (const pugi::xml_node& element : elements) {
        stand.options.push_back(
            gf_readOption(element, archived, static_cast<int32_t>(stand.options.size()) + 1));
    }
    stand.heli = node.attribute("heli").as_bool();
    stand.ramp = node.attribute("ramp").as_bool();
    stand.cargo = node.attribute("cargo").as_bool();
    stand.id = id;
    stands.push_back(std::move(stand));
    return true;
}

std::vector<pugi::xml_node> gf_parkPositions(const pugi::xml_document& document)
{
    const auto elements = document.child("parkpositions").children("parkpos");
    std::vector<pugi::xml_node> nodes(elements.begin(), elements.end());
    if (nodes.size() > kMostStands) {
        throw UserErrorException(kPlainUserError, format("{} parking positions, no airport has more than {}",
                                                         nodes.size(), kMostStands));
    }
    return nodes;
}

std::string gf_decimalComma(const pugi::xml_document& document)
{
    for (const pugi::xml_node& node : document.child("parkpositions").children("parkpos")) {
        for (const char* name : {"latitude", "longitude", "heading", "radius"}) {
            const std::string text = node.attribute(name).as_string();
            if (text.find(',') != std::string::npos) {
                return format("{}=\"{}\" of {}", name, text, node.attribute("id").as_string());
            }
        }
    }
    return {};
}

void gf_readParkPositions(const pugi::xml_document& document, std::vector<ParkPos>& stands)
{
    const std::vector<pugi::xml_node> nodes = gf_parkPositions(document);
    stands.reserve(nodes.size());
    std::set<std::string> ids;
    for (const pugi::xml_node& node : nodes) {
        const std::string id = node.attribute("id").as_string();
        if (!ids.insert(id).second) {
            throw UserErrorException(kPlainUserError,
                                     format("Parking position {} appears more than once?", id));
        }
        readParkPos(node, id, true, stands);
    }
}

// --- writing

static const char* lf_word(bool value)
{
    return value ? "true" : "false";
}

static void lf_attribute(pugi::xml_node& node, const char* name, const std::string& value)
{
    node.append_attribute(name).set_value(value.c_str());
}

static void lf_parameter(pugi::xml_node& parameters, const std::string& name, const std::string& value)
{
    pugi::xml_node parameter = parameters.append_child("parameter");
    lf_attribute(parameter, "name", name);
    lf_attribute(parameter, "value", value);
}

static void lf_writeParameters(pugi::xml_document& document, const Apf& apf, AirportFileMode mode)
{
    pugi::xml_node parameters = document.append_child("parameters");
    const bool generated = mode == AirportFileMode::Generated;
    lf_parameter(parameters, "airport_name", apf.name);
    lf_parameter(parameters, "publisher", apf.publisher.empty() ? "unknown" : apf.publisher);
    if (apf.handmade) {
        lf_parameter(parameters, "handmade", "true");
    }
    if (generated || apf.handmade) {
        lf_parameter(parameters, "altitude", std::to_string(apf.altitude));
    }
    lf_parameter(parameters, "num_parkpos", std::to_string(apf.stands.size()));
    if (apf.handmade) {
        lf_parameter(parameters, "Qf_real", std::to_string(apf.quality.real));
        lf_parameter(parameters, "Qf_soft", std::to_string(apf.quality.soft));
    }
    if (apf.publisher.empty() || apf.publisher == "unknown") {
        lf_parameter(parameters, "BGLpath", apf.bglPath);
    }
    if (!generated) {
        gf_writeParkingSettings(parameters);
    }
}

static void lf_writeOption(pugi::xml_node& stand, const StandOption& option)
{
    if (option.hours.none()) {
        return;
    }
    pugi::xml_node node = stand.append_child("opt");
    lf_attribute(node, "reg", option.reg);
    if (findRegcode(option.reg) == nullptr) {
        lf_attribute(node, "airl", option.airline);
        lf_attribute(node, "type", option.type);
    }
    if (!option.real) {
        lf_attribute(node, "soft", "true");
    }
    lf_attribute(node, "day", std::to_string(option.day));
    lf_attribute(node, "hh", setToHours(option.hours));
    const std::string callsigns =
        option.coupledCs.empty() ? option.callsign : option.callsign + ":" + option.coupledCs;
    if (!callsigns.empty()) {
        lf_attribute(node, "cs", callsigns);
    }
}

static void lf_writeRadius(pugi::xml_node& node, const ParkPos& stand)
{
    lf_attribute(node, "radius", format("{:.1F}", stand.radius * kMetresPerNm));
}

static void lf_writeWhole(pugi::xml_node& node, const ParkPos& stand, AirportFileMode mode)
{
    lf_attribute(node, "latitude", format("{:.6f}", stand.lat));
    lf_attribute(node, "longitude", format("{:.6f}", stand.lon));
    lf_attribute(node, "heading", format("{:.1F}", stand.heading * kDegPerRad));
    lf_writeRadius(node, stand);
    lf_attribute(node, stand.heli ? "heli" : "cargo", lf_word(stand.heli || stand.cargo));
    lf_attribute(node, "ramp", lf_word(stand.ramp));
    if (mode == AirportFileMode::Learned && stand.manual) {
        lf_attribute(node, "manual", "true");
    }
}

static void lf_writeChanges(pugi::xml_node& node, const ParkPos& stand)
{
    if (stand.radiusChanged) {
        lf_attribute(node, "radius_change", "true");
        lf_writeRadius(node, stand);
    }
    if (stand.cargoChanged) {
        lf_attribute(node, "cargo_change", "true");
        lf_attribute(node, "cargo", lf_word(stand.cargo));
    }
}

static void lf_writeStand(pugi::xml_node& list, const ParkPos& stand, const Apf& apf, AirportFileMode mode)
{
    pugi::xml_node node = list.append_child("parkpos");
    lf_attribute(node, "id", stand.id);
    const bool learned = mode == AirportFileMode::Learned;
    if (!learned || stand.manual || apf.handmade) {
        lf_writeWhole(node, stand, mode);
    } else {
        lf_writeChanges(node, stand);
    }
    if (learned) {
        for (const StandOption& option : stand.options) {
            lf_writeOption(node, option);
        }
    }
}

bool saveAirportFile(const Apf& apf, const std::filesystem::path& path, AirportFileMode mode)
{
    pugi::xml_document document;
    gf_addMeta(document);
    lf_writeParameters(document, apf, mode);
    pugi::xml_node list = document.append_child("parkpositions");
    for (const ParkPos& stand : apf.stands) {
        lf_writeStand(list, stand, apf, mode);
    }
    return saveXml(document, path);
}

}  // namespace vlt
