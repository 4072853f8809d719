#include "standin/airport_files.h"

#include "core/base/text.h"
#include "core/base/xml_file.h"
#include "standin/day_airport.h"
#include "standin/day_week.h"
#include "standin/world_tables.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>

namespace vlt {

static void lf_set(pugi::xml_node& node, const char* name, const std::string& value)
{
    node.append_attribute(name).set_value(value.c_str());
}

static std::string lf_text(const pugi::xml_document& document)
{
    std::ostringstream text;
    document.save(text, "  ", pugi::format_indent | pugi::format_no_declaration);
    return text.str();
}

// --- the document

static void lf_addParameters(pugi::xml_document& document, const ArchivedAirport& airport)
{
    constexpr int kTrafficWeek = 24;
    bool anyOption = false;
    for (const ArchivedStand& stand : airport.stands) {
        anyOption = anyOption || !stand.options.empty();
    }
    const std::pair<const char*, std::string> rows[] = {
        {"airport_name", airport.name},
        {"publisher", airport.publisher},
        {"altitude", std::to_string(airport.elevation)},
        {"num_parkpos", std::to_string(airport.stands.size())},
        {"Qf_real", anyOption ? "60" : "-1"},
        {"Qf_soft", anyOption ? "20" : "-1"},
        {"RT_traffic_week", std::to_string(kTrafficWeek)},
    };
    pugi::xml_node parameters = document.append_child("parameters");
    for (const auto& [name, value] : rows) {
        pugi::xml_node parameter = parameters.append_child("parameter");
        lf_set(parameter, "name", name);
        lf_set(parameter, "value", value);
    }
}

static void lf_addOption(pugi::xml_node& stand, const ArchivedOption& option)
{
    pugi::xml_node node = stand.append_child("opt");
    lf_set(node, "reg", option.reg);
    if (!option.known) {
        lf_set(node, "airl", option.airline);
        lf_set(node, "type", option.type);
    }
    if (option.soft) {
        lf_set(node, "soft", "true");
    }
    lf_set(node, "day", std::to_string(option.day));
    lf_set(node, "hh", setToHours(option.hours));
    if (!option.callsigns.empty()) {
        lf_set(node, "cs", option.callsigns);
    }
}

static void lf_addStand(pugi::xml_node& list, const ArchivedStand& stand, const std::string& id)
{
    const bool heli = stand.kind == "heli";
    pugi::xml_node node = list.append_child("parkpos");
    lf_set(node, "id", id);
    lf_set(node, "latitude", format("{:.6f}", stand.lat));
    lf_set(node, "longitude", format("{:.6f}", stand.lon));
    lf_set(node, "heading", format("{:.1f}", stand.headingDeg));
    lf_set(node, "radius", format("{:.1f}", stand.radiusM));
    lf_set(node, heli ? "heli" : "cargo", heli || stand.kind == "cargo" ? "true" : "false");
    lf_set(node, "ramp", stand.kind == "ramp" ? "true" : "false");
    for (const ArchivedOption& option : stand.options) {
        lf_addOption(node, option);
    }
}

std::string gf_archivedText(const ArchivedAirport& airport)
{
    pugi::xml_document document;
    gf_addMeta(document);
    lf_addParameters(document, airport);
    pugi::xml_node list = document.append_child("parkpositions");
    std::map<std::string, int> seen;
    for (const ArchivedStand& stand : airport.stands) {
        const int count = ++seen[stand.id];
        lf_addStand(list, stand, count == 1 ? stand.id : format("{}-{}", stand.id, count));
    }
    return lf_text(document);
}

// --- the tables

static double lf_number(const std::string& cell, const std::string& where)
{
    char* end = nullptr;
    const double value = std::strtod(cell.c_str(), &end);
    if (cell.empty() || *end != '\0') {
        throw std::runtime_error(format("{}: \"{}\" is no number", where, cell));
    }
    return value;
}

static std::vector<ArchivedStand> lf_stands(const WorldTable& table, const std::string& airport)
{
    const size_t id = gf_columnOf(table, "id");
    const size_t lat = gf_columnOf(table, "lat");
    const size_t lon = gf_columnOf(table, "lon");
    const size_t heading = gf_columnOf(table, "heading");
    const size_t radius = gf_columnOf(table, "radius_m");
    const size_t kind = gf_columnOf(table, "kind");
    const size_t owner = airport.empty() ? id : gf_columnOf(table, "airport");
    std::vector<ArchivedStand> stands;
    for (const std::vector<std::string>& row : table.rows) {
        if (airport.empty() || row[owner] == airport) {
            stands.push_back({row[id],
                              lf_number(row[lat], table.name),
                              lf_number(row[lon], table.name),
                              lf_number(row[heading], table.name),
                              lf_number(row[radius], table.name),
                              row[kind],
                              {}});
        }
    }
    return stands;
}

std::vector<ArchivedStand> gf_standsOfTable(const std::filesystem::path& file)
{
    return lf_stands(gf_readWorldTable(file.parent_path(), file.filename().string()), "");
}

static std::vector<ArchivedAirport> lf_airports(const std::filesystem::path& world)
{
    const WorldTable table = gf_readWorldTable(world, "airports.csv");
    std::vector<ArchivedAirport> airports;
    for (const std::vector<std::string>& row : table.rows) {
        const auto cell = [&](const char* column) { return row[gf_columnOf(table, column)]; };
        airports.push_back({cell("code"),
                            cell("iata"),
                            cell("name"),
                            lf_number(cell("lat"), table.name),
                            lf_number(cell("lon"), table.name),
                            static_cast<int>(lf_number(cell("elevation_ft"), table.name)),
                            {},
                            "stock"});
    }
    return airports;
}

// Who publishes the airport: a third party, else nobody but the archive itself.
static std::string lf_publisher(const WorldTable& thirdParties, const std::string& code)
{
    for (const std::vector<std::string>& row : thirdParties.rows) {
        const std::vector<std::string_view> codes = gf_split(row[gf_columnOf(thirdParties, "arpts")], '|');
        if (std::find(codes.begin(), codes.end(), code) != codes.end()) {
            return row[gf_columnOf(thirdParties, "pub")];
        }
    }
    return "stock";
}

std::vector<ArchivedAirport> gf_worldAirports(const std::filesystem::path& world)
{
    const WorldTable stands = gf_readWorldTable(world, "stands.csv");
    const WorldTable thirdParties = gf_readWorldTable(world, "thirdparties.csv");
    std::vector<ArchivedAirport> airports = lf_airports(world);
    for (ArchivedAirport& airport : airports) {
        airport.stands =
            airport.code == kDayAirportCode ? gf_dayWeek(world) : lf_stands(stands, airport.code);
        airport.publisher = lf_publisher(thirdParties, airport.code);
    }
    return airports;
}

std::string gf_mergedCatalogue(const std::filesystem::path& base, const std::filesystem::path& world)
{
    pugi::xml_document document;
    if (const auto parsed = document.load_file(base.c_str()); !parsed) {
        throw std::runtime_error(format("{}: {}", base.string(), parsed.description()));
    }
    pugi::xml_node root = document.child("airports");
    for (const ArchivedAirport& airport : lf_airports(world)) {
        const auto isLater = [&airport](const pugi::xml_node& node) {
            return airport.code < node.attribute("code").as_string();
        };
        const pugi::xml_node later = root.find_child(isLater);
        pugi::xml_node node =
            later ? root.insert_child_before("airport", later) : root.append_child("airport");
        lf_set(node, "code", airport.code);
        lf_set(node, "iata", airport.iata);
        lf_set(node, "lat", format("{:.6f}", airport.lat));
        lf_set(node, "lon", format("{:.6f}", airport.lon));
        lf_set(node, "alt", std::to_string(airport.elevation));
    }
    return lf_text(document);
}

}  // namespace vlt
