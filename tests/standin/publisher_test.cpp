#include "standin/publisher.h"

#include "core/text.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/regcode_files.h"
#include "standin/installed_titles.h"
#include "standin/world_tables.h"
#include "support/temp_folder.h"
#include "support/world.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <charconv>
#include <map>
#include <stdexcept>

namespace vlt {

class PublisherTest : public testing::Test
{
protected:
    PublisherTest()
    {
        gf_clearWorld();
    }
    ~PublisherTest() override
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
    static void load(const std::string& text)
    {
        pugi::xml_document document;
        ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
        gf_readDbaseSections(document, "world");
    }

    static inline const std::filesystem::path world =
        std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world";
};

TEST_F(PublisherTest, theWholeWorldComesBackFromThePublishedDataBase)
{
    load(gf_dbaseText(world));
    for (auto& row : rows("types.csv")) {
        EXPECT_TRUE(isValidModel(row["type"])) << row["type"];
        EXPECT_EQ(row["category"], kCategoryNames[static_cast<size_t>(categoryOf(row["type"]))])
            << row["type"];
        EXPECT_EQ(row["cargo"] == "1", dbase.cargo_types.contains(row["type"])) << row["type"];
        if (!row["span_m"].empty()) {
            EXPECT_NEAR(std::stod(row["span_m"]) / 2 / 1852, halfWingspanNm(row["type"]), 1e-9)
                << row["type"];
        }
    }
    EXPECT_EQ(rows("types.csv").size(), dbase.aircrafts.size());
    for (auto& row : rows("airlines.csv")) {
        EXPECT_TRUE(isValidAirline(row["code"])) << row["code"];
    }
    const auto registrations = rows("registrations.csv");
    EXPECT_EQ(registrations.size(), dbase.registrations.size());
    for (auto row : registrations) {
        const auto known = dbase.registrations.find(row["reg"]);
        ASSERT_NE(dbase.registrations.end(), known) << row["reg"];
        EXPECT_EQ(row["airl"], known->second.airl) << row["reg"];
        EXPECT_EQ(row["type"], known->second.type) << row["reg"];
        EXPECT_EQ(row["opr"], known->second.opr) << row["reg"];
        EXPECT_EQ(row["cargo"] == "1", known->second.cargo) << row["reg"];
    }
    EXPECT_EQ(rows("similar.csv").size(), dbase.similarTypes.size());
    EXPECT_EQ(rows("fixes.csv").size(), dbase.fixes.size());
    EXPECT_EQ(rows("publishers.csv").size(), dbase.publishers.size());
    EXPECT_EQ(rows("thirdparties.csv").size(), dbase.thirdParties.size());
    EXPECT_EQ(rows("simaddons.csv").size(), dbase.simaddonsP3D.size());
    EXPECT_EQ(rows("cargo_operators.csv").size(), dbase.cargo_operators.size());
}

TEST_F(PublisherTest, nothingPlainStandsInThePublishedRows)
{
    const std::string text = gf_dbaseText(world);
    EXPECT_EQ(std::string::npos, text.find("G-DBCJ"));
    EXPECT_EQ(std::string::npos, gf_regcodesText(world).find("reg=\"G-"));
}

TEST_F(PublisherTest, theRegcodesComeBack)
{
    const std::string text = gf_regcodesText(world);
    pugi::xml_document document;
    ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
    std::vector<RegcodeEntry> entries;
    ASSERT_TRUE(gf_readRegcodeDocument(document, "world", entries));
    const auto table = rows("regcodes.csv");
    ASSERT_EQ(table.size(), entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        auto row = table[i];
        EXPECT_EQ(row["title"], entries[i].title);
        EXPECT_EQ(row["special"] == "1", entries[i].special);
        EXPECT_EQ(row["reg"], format("{}", fmt::join(entries[i].regcodes, "|")));
    }
}

TEST_F(PublisherTest, theWorldIsOfOnePiece)
{
    load(gf_dbaseText(world));
    std::set<std::string> titles;
    size_t registered = 0;
    for (const Livery& livery : gf_worldLiveries(world)) {
        EXPECT_TRUE(isValidModel(livery.model)) << livery.title;
        EXPECT_TRUE(isValidAirline(livery.airline)) << livery.title;
        EXPECT_TRUE(titles.insert(livery.title).second) << livery.title << " stands there twice";
        if (!livery.atcid.empty()) {
            ++registered;
            EXPECT_NE(nullptr, findRegcode(livery.atcid)) << livery.title;
        }
    }
    EXPECT_GT(registered, 100U);
    size_t installed = 0;
    for (const InstalledTitle& title : gf_readTitles(world / "titles.csv")) {
        ++installed;
        EXPECT_TRUE(titles.contains(title.title)) << title.title;
    }
    EXPECT_EQ(titles.size() - 3, installed) << "three liveries are left to be refused";
}

TEST_F(PublisherTest, tablesThatCannotBePublishedAreNamed)
{
    const TempFolder folder;
    std::filesystem::copy(world, folder.path(), std::filesystem::copy_options::recursive);
    const struct {
        const char *what, *table, *content, *expected;
    } cases[] = {
        {"a row too short", "fixes.csv", "wrong,correct\nA,B\nC\n", "fixes.csv:3: 1 cells, not 2"},
        {"no such column", "fixes.csv", "wrong,right\nA,B\n", "fixes.csv: no column correct"},
        {"an empty file", "similar.csv", "", "similar.csv: can't be read"},
        {"a type of five letters", "similar.csv", "types\nA319|A3200\n",
         "\"A3200\" has no length of a type designator"},
    };
    for (const auto& c : cases) {
        const std::filesystem::path file = folder.path() / c.table;
        folder.write(c.table, c.content);
        try {
            gf_dbaseText(folder.path());
            ADD_FAILURE() << c.what;
        } catch (const std::exception& e) {
            EXPECT_STREQ(c.expected, e.what()) << c.what;
        }
        std::filesystem::copy_file(world / c.table, file, std::filesystem::copy_options::overwrite_existing);
    }
}

TEST_F(PublisherTest, theCatalogueHoldsFourLetterCodesInOrder)
{
    const std::string text = gf_catalogueText(R"([
        {"icao": "LFBO", "iata": "TLS", "elevation": 499, "lat": 43.6291007996, "lon": 1.3638199568},
        {"icao": "EGLL", "iata": "", "elevation": null, "lat": 51.4706001282, "lon": -0.4619410038},
        {"icao": "00AK", "iata": "", "elevation": 450, "lat": 59.9, "lon": -151.6},
        {"icao": "LFBO", "iata": "XXX", "elevation": 1, "lat": 1, "lon": 1},
        {"icao": "EGL", "lat": 1, "lon": 1}, {"lat": 2, "lon": 2}])");
    pugi::xml_document document;
    ASSERT_TRUE(document.load_buffer(text.data(), text.size()));
    std::vector<std::string> airports;
    for (const pugi::xml_node& node : document.child("airports").children("airport")) {
        airports.push_back(format("{} {} {} {} {}", node.attribute("code").value(),
                                  node.attribute("iata") ? node.attribute("iata").value() : "none",
                                  node.attribute("lat").value(), node.attribute("lon").value(),
                                  node.attribute("alt").value()));
    }
    EXPECT_EQ((std::vector<std::string>{"EGLL none 51.4706 -0.461941 0", "LFBO TLS 43.6291 1.36382 499"}),
              airports);
}

}  // namespace vlt
