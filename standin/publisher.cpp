#include "standin/publisher.h"

#include "core/base/text.h"
#include "liveries/dbase_reader.h"
#include "liveries/scrambling.h"
#include "standin/world_tables.h"

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace vlt {

constexpr size_t kItemsPerElement = 25;
constexpr char kListSeparator = '|';
constexpr size_t kCodeLength = 4;

using Scramble = std::string (*)(std::string_view);

static std::string lf_asItStands(std::string_view text)
{
    return std::string(text);
}

static std::string lf_text(const pugi::xml_document& document)
{
    std::ostringstream text;
    document.save(text, "  ", pugi::format_indent | pugi::format_no_declaration);
    return text.str();
}

static void lf_set(pugi::xml_node& node, const char* name, const std::string& value)
{
    node.append_attribute(name).set_value(value.c_str());
}

// "A|B" as "A,B", each item scrambled.
static std::string lf_list(std::string_view cell, Scramble scramble)
{
    std::string list;
    for (const std::string_view item : gf_split(cell, kListSeparator)) {
        list.append(list.empty() ? "" : ",").append(scramble(item));
    }
    return list;
}

// One list of codes: the items, some to an element.
struct CodeSection {
    const char* section;
    const char* element;
    const char* attribute;
    Scramble scramble;
};

static void lf_addCodes(pugi::xml_document& document, const CodeSection& where,
                        const std::vector<std::string>& items)
{
    pugi::xml_node section = document.append_child(where.section);
    for (size_t first = 0; first < items.size(); first += kItemsPerElement) {
        std::string list;
        for (size_t i = first; i < std::min(first + kItemsPerElement, items.size()); ++i) {
            list.append(list.empty() ? "" : ",").append(where.scramble(items[i]));
        }
        pugi::xml_node element = section.append_child(where.element);
        lf_set(element, where.attribute, list);
    }
}

static std::vector<std::string> lf_typesWith(const WorldTable& types, std::string_view column,
                                             std::string_view value)
{
    const size_t type = gf_columnOf(types, "type");
    const size_t place = gf_columnOf(types, column);
    std::vector<std::string> chosen;
    for (const std::vector<std::string>& row : types.rows) {
        if (row[place] == value) {
            chosen.push_back(row[type]);
        }
    }
    return chosen;
}

static void lf_addTypes(pugi::xml_document& document, const WorldTable& types)
{
    constexpr std::pair<std::string_view, CodeSection> kCategorySections[] = {
        {"HighPerf", {"high_performance", "hpf", "types", gf_scrambleType}},
        {"Heavy", {"heavy", "hvy", "types", gf_scrambleType}},
        {"Large", {"large", "lar", "types", gf_scrambleType}},
        {"Buzjets", {"buzjet", "bzj", "types", gf_scrambleType}},
        {"Rotorcraft", {"rotorcraft", "rot", "types", gf_scrambleType}},
    };
    lf_addCodes(document, {"aircrafts", "aircraft", "types", gf_scrambleType}, gf_columnCells(types, "type"));
    for (const auto& [category, section] : kCategorySections) {
        lf_addCodes(document, section, lf_typesWith(types, "category", category));
    }
    lf_addCodes(document, {"cargo_types", "cargo_type", "types", gf_scrambleType},
                lf_typesWith(types, "cargo", "1"));
}

static void lf_addWingspans(pugi::xml_document& document, const WorldTable& types)
{
    const size_t type = gf_columnOf(types, "type");
    const size_t span = gf_columnOf(types, "span_m");
    pugi::xml_node section = document.append_child("wingspans");
    for (const std::vector<std::string>& row : types.rows) {
        if (!row[span].empty()) {
            pugi::xml_node node = section.append_child("wingspan");
            lf_set(node, "type", gf_scrambleType(row[type]));
            lf_set(node, "meters", row[span]);
        }
    }
}

// A section with one element per row, an attribute per column.
struct ColumnAttribute {
    const char* column;
    const char* attribute;
    Scramble scramble;
};

static void lf_addRows(pugi::xml_document& document, const char* sectionName, const char* element,
                       const WorldTable& table, std::initializer_list<ColumnAttribute> attributes)
{
    pugi::xml_node section = document.append_child(sectionName);
    for (const std::vector<std::string>& row : table.rows) {
        pugi::xml_node node = section.append_child(element);
        for (const ColumnAttribute& a : attributes) {
            lf_set(node, a.attribute, lf_list(row[gf_columnOf(table, a.column)], a.scramble));
        }
    }
}

std::string gf_dbaseText(const std::filesystem::path& world)
{
    const auto table = [&world](const char* name) { return gf_readWorldTable(world, name); };
    const WorldTable types = table("types.csv");
    pugi::xml_document document;
    lf_addTypes(document, types);
    lf_addRows(document, "similar_types", "similar", table("similar.csv"),
               {{"types", "types", gf_scrambleType}});
    lf_addCodes(document, {"ICAO_airlines", "ICAO", "codes", gf_scrambleAirline},
                gf_columnCells(table("airlines.csv"), "code"));
    lf_addCodes(document, {"cargo_operators", "ICAO", "codes", gf_scrambleAirline},
                gf_columnCells(table("cargo_operators.csv"), "code"));
    lf_addRows(document, "publishers", "pub", table("publishers.csv"), {{"names", "names", lf_asItStands}});
    lf_addWingspans(document, types);
    lf_addRows(document, "fixes", "fx", table("fixes.csv"),
               {{"wrong", "wro", lf_asItStands}, {"correct", "cor", lf_asItStands}});
    lf_addCodes(document, {"simaddonsP3D", "simaddonP3D", "arpts", lf_asItStands},
                gf_columnCells(table("simaddons.csv"), "arpts"));
    lf_addRows(document, "thirdpartiesP3D", "thirdpartieP3D", table("thirdparties.csv"),
               {{"pub", "pub", lf_asItStands}, {"arpts", "arpts", lf_asItStands}});
    lf_addRows(document, "dbase", "db", table("registrations.csv"),
               {{"reg", "reg", gf_scrambleRegcode},
                {"airl", "airl", gf_scrambleAirline},
                {"type", "type", gf_scrambleType},
                {"opr", "opr", gf_scrambleAirline},
                {"cargo", "cargo", lf_asItStands}});
    return lf_text(document);
}

std::string gf_regcodesText(const std::filesystem::path& world)
{
    const WorldTable table = gf_readWorldTable(world, "regcodes.csv");
    const size_t title = gf_columnOf(table, "title");
    const size_t reg = gf_columnOf(table, "reg");
    const size_t special = gf_columnOf(table, "special");
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("AIG-regcodes");
    for (const std::vector<std::string>& row : table.rows) {
        pugi::xml_node node = root.append_child("livery");
        lf_set(node, "title", row[title]);
        if (!row[reg].empty()) {
            lf_set(node, "reg", lf_list(row[reg], gf_scrambleRegcode));
        }
        if (gf_isTrue(row[special])) {
            lf_set(node, "special", "true");
        }
    }
    return lf_text(document);
}

std::list<Livery> gf_worldLiveries(const std::filesystem::path& world)
{
    const WorldTable table = gf_readWorldTable(world, "liveries.csv");
    const size_t airl = gf_columnOf(table, "airl");
    const size_t type = gf_columnOf(table, "type");
    const size_t cargo = gf_columnOf(table, "cargo");
    const size_t title = gf_columnOf(table, "title");
    const size_t atcid = gf_columnOf(table, "atcid");
    std::list<Livery> all;
    for (const std::vector<std::string>& row : table.rows) {
        all.push_back({row[airl], row[type], row[title], row[atcid], 1, gf_isTrue(row[cargo])});
    }
    return all;
}

std::list<Livery> gf_scannedWorldLiveries(const std::filesystem::path& world)
{
    const WorldTable table = gf_readWorldTable(world, "regcodes.csv");
    const size_t title = gf_columnOf(table, "title");
    const size_t reg = gf_columnOf(table, "reg");
    std::set<std::string> unused;
    for (const std::vector<std::string>& row : table.rows) {
        if (row[reg].empty()) {
            unused.insert(row[title]);
        }
    }
    std::list<Livery> all = gf_worldLiveries(world);
    std::erase_if(all, [&unused](const Livery& livery) { return unused.contains(livery.title); });
    return all;
}

static bool lf_isFourLetters(std::string_view code)
{
    return code.size() == kCodeLength &&
           std::all_of(code.begin(), code.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

static std::string lf_numberText(const nlohmann::json& airport, const char* key)
{
    const auto value = airport.find(key);
    return value != airport.end() && value->is_number() ? format("{:.7g}", value->get<double>()) : "0";
}

std::string gf_catalogueText(std::string_view airportsJson)
{
    const nlohmann::json list = nlohmann::json::parse(airportsJson);
    std::map<std::string, const nlohmann::json*> byCode;
    for (const nlohmann::json& airport : list) {
        if (const std::string code = gf_upperCase(airport.value("icao", "")); lf_isFourLetters(code)) {
            byCode.emplace(code, &airport);
        }
    }
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("airports");
    for (const auto& [code, airport] : byCode) {
        pugi::xml_node node = root.append_child("airport");
        lf_set(node, "code", code);
        if (const std::string iata = airport->value("iata", ""); !iata.empty()) {
            lf_set(node, "iata", iata);
        }
        lf_set(node, "lat", lf_numberText(*airport, "lat"));
        lf_set(node, "lon", lf_numberText(*airport, "lon"));
        lf_set(node, "alt", lf_numberText(*airport, "elevation"));
    }
    return lf_text(document);
}

}  // namespace vlt
