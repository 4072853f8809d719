// What the tools publish of data/world.
#include "standin/publisher.h"

#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/regcode_files.h"
#include "standin/airport_files.h"
#include "standin/world_tables.h"
#include "support/temp_folder.h"
#include "support/world.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <map>

namespace vlt {

class PublisherTest : public testing::Test
{
protected:
    void SetUp() override
    {
        gf_clearWorld();
        const std::string text = gf_dbaseText(world);
        EXPECT_EQ(std::string::npos, text.find("G-DBCJ")) << "nothing plain is published";
        pugi::xml_document document;
        ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
        gf_readDbaseSections(document, "world");
    }
    void TearDown() override
    {
        gf_clearWorld();
    }
    // The cells of a row by column name.
    static std::vector<std::map<std::string, std::string>> rows(const char* table)
    {
        const WorldTable all = gf_readWorldTable(world, table);
        std::vector<std::map<std::string, std::string>> named;
        for (const auto& row : all.rows) {
            auto& cells = named.emplace_back();
            for (size_t i = 0; i < row.size(); ++i) {
                cells[all.header[i]] = row[i];
            }
        }
        return named;
    }

public:
    static inline const std::filesystem::path world =
        std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world";
};

TEST_F(PublisherTest, theWholeWorldComesBackFromThePublishedDataBase)
{
    for (auto& row : rows("types.csv")) {
        const std::string& type = row["type"];
        EXPECT_TRUE(isValidModel(type)) << type;
        EXPECT_EQ(row["category"], kCategoryNames[static_cast<size_t>(categoryOf(type))]) << type;
        EXPECT_EQ(row["cargo"] == "1", dbase.cargo_types.contains(type)) << type;
        if (!row["span_m"].empty()) {
            EXPECT_NEAR(std::stod(row["span_m"]) / 2 / 1852, halfWingspanNm(type), 1e-9) << type;
        }
    }
    for (auto& row : rows("registrations.csv")) {
        const auto known = dbase.registrations.find(row["reg"]);
        ASSERT_NE(dbase.registrations.end(), known) << row["reg"];
        EXPECT_EQ(row["airl"], known->second.airl) << row["reg"];
        EXPECT_EQ(row["type"], known->second.type) << row["reg"];
        EXPECT_EQ(row["opr"], known->second.opr) << row["reg"];
        EXPECT_EQ(row["cargo"] == "1", known->second.cargo) << row["reg"];
    }
    const std::pair<const char*, size_t> sizes[] = {
        {"types.csv", dbase.aircrafts.size()},
        {"registrations.csv", dbase.registrations.size()},
        {"airlines.csv", dbase.ICAO_airlines.size()},
        {"similar.csv", dbase.similarTypes.size()},
        {"fixes.csv", dbase.fixes.size()},
        {"publishers.csv", dbase.publishers.size()},
        {"thirdparties.csv", dbase.thirdParties.size()},
        {"simaddons.csv", dbase.simaddonsP3D.size()},
        {"cargo_operators.csv", dbase.cargo_operators.size()},
    };
    for (const auto& [table, size] : sizes) {
        EXPECT_EQ(rows(table).size(), size) << table;
    }
}

TEST_F(PublisherTest, theRegcodesComeBackAndWereNotPlain)
{
    const std::string text = gf_regcodesText(world);
    EXPECT_EQ(std::string::npos, text.find("reg=\"G-"));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
    std::vector<RegcodeEntry> entries;
    ASSERT_TRUE(gf_readRegcodeDocument(document, "world", entries));
    auto table = rows("regcodes.csv");
    ASSERT_EQ(table.size(), entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(table[i]["title"], entries[i].title);
        EXPECT_EQ(table[i]["special"] == "1", entries[i].special);
        EXPECT_EQ(table[i]["reg"], format("{}", fmt::join(entries[i].regcodes, "|")));
    }
}

TEST_F(PublisherTest, tablesThatCannotBePublishedAreNamed)
{
    const auto told = [](const auto& act) {
        try {
            act();
        } catch (const std::exception& e) {
            return std::string(e.what());
        }
        return std::string("nothing");
    };
    const struct {
        const char *table, *content, *expected;
    } cases[] = {
        {"fixes.csv", "wrong,correct\nA,B\nC\n", "fixes.csv:3: 1 cells, not 2"},
        {"fixes.csv", "wrong,right\nA,B\n", "fixes.csv: no column correct"},
        {"similar.csv", "", "similar.csv: can't be read"},
        {"similar.csv", "types\nA319|A3200\n", "\"A3200\" has no length of a type designator"},
    };
    for (const auto& c : cases) {
        const TempFolder folder;
        std::filesystem::copy(world, folder.path(), std::filesystem::copy_options::recursive);
        folder.write(c.table, c.content);
        EXPECT_EQ(c.expected, told([&] { gf_dbaseText(folder.path()); }));
    }
    const TempFolder folder;
    const auto stands = folder.write("stands.csv", "id,lat,lon,heading,radius_m,kind\nA1,x,1,1,1,gate\n");
    EXPECT_EQ("stands.csv: \"x\" is no number", told([&] { gf_standsOfTable(stands); }));
}

TEST(Catalogue, holdsFourLetterCodesInOrder)
{
    const std::string text = gf_catalogueText(R"([
        {"icao": "LFBO", "iata": "TLS", "elevation": 499, "lat": 43.6291007996, "lon": 1.3638199568},
        {"icao": "EGLL", "iata": "", "elevation": null, "lat": 51.4706001282, "lon": -0.4619410038},
        {"icao": "00AK", "iata": "", "elevation": 450, "lat": 59.9, "lon": -151.6},
        {"icao": "LFBO", "iata": "XXX", "elevation": 1, "lat": 1, "lon": 1},
        {"icao": "EGL", "lat": 1, "lon": 1}, {"lat": 2, "lon": 2}])");
    pugi::xml_document document;
    ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
    std::string airports;
    for (const pugi::xml_node& node : document.child("airports").children("airport")) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            airports += format("{} ", attribute.value());
        }
    }
    EXPECT_EQ("EGLL 51.4706 -0.461941 0 LFBO TLS 43.6291 1.36382 499 ", airports);
}

TEST(WorldAirports, doubledIdsAreToldApart)
{
    ArchivedAirport airport;
    airport.stands = {{"A1", 1, 1, 0, 20, "gate", {}}, {"A1", 1, 2, 0, 20, "heli", {}}};
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(gf_archivedText(airport).c_str()));
    const pugi::xml_node second = document.child("parkpositions").last_child();
    EXPECT_STREQ("A1-2", second.attribute("id").as_string());
    EXPECT_TRUE(second.attribute("heli").as_bool());
}

TEST(WorldAirports, joinTheCatalogueInTheOrderOfTheirCodes)
{
    const TempFolder folder;
    folder.write("base.xml", "<airports><airport code='AAAA'/><airport code='XMMM'/><airport code='ZZZZ'/>"
                             "</airports>");
    pugi::xml_document document;
    ASSERT_TRUE(
        document.load_string(gf_mergedCatalogue(folder.path() / "base.xml", PublisherTest::world).c_str()));
    std::string codes;
    for (const pugi::xml_node& airport : document.child("airports").children()) {
        codes += std::string(airport.attribute("code").as_string()) + " ";
    }
    EXPECT_EQ("AAAA XBRG XMMM XSEE XVEL ZZZZ ", codes);
}

}  // namespace vlt
