// What the tools publish of data/world.
#include "standin/publisher.h"

#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/regcode_files.h"
#include "standin/world_tables.h"
#include "support/temp_folder.h"
#include "support/world.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <map>

namespace vlt {

static const std::filesystem::path kWorld = std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world";

// The cells of each row by column name.
static std::vector<std::map<std::string, std::string>> lf_rows(const char* table)
{
    const WorldTable all = gf_readWorldTable(kWorld, table);
    std::vector<std::map<std::string, std::string>> named(all.rows.size());
    for (size_t row = 0; row < all.rows.size(); ++row) {
        for (size_t i = 0; i < all.rows[row].size(); ++i) {
            named[row][all.header[i]] = all.rows[row][i];
        }
    }
    return named;
}

TEST(Publisher, theWholeWorldComesBackFromThePublishedDataBase)
{
    gf_clearWorld();
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(gf_dbaseText(kWorld).c_str()));
    gf_readDbaseSections(document, "world");
    for (auto& row : lf_rows("types.csv")) {
        const std::string& type = row["type"];
        EXPECT_TRUE(isValidModel(type)) << type;
        EXPECT_EQ(row["category"], kCategoryNames[static_cast<size_t>(categoryOf(type))]) << type;
        EXPECT_EQ(row["cargo"] == "1", dbase.cargo_types.contains(type)) << type;
        if (!row["span_m"].empty()) {
            EXPECT_NEAR(std::stod(row["span_m"]) / 2 / 1852, halfWingspanNm(type), 1e-9) << type;
        }
    }
    for (auto& row : lf_rows("registrations.csv")) {
        const auto& known = dbase.registrations[row["reg"]];
        EXPECT_EQ(std::tie(row["airl"], row["type"], row["opr"]),
                  std::tie(known.airl, known.type, known.opr));
        EXPECT_EQ(row["cargo"] == "1", known.cargo) << row["reg"];
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
        EXPECT_EQ(lf_rows(table).size(), size) << table;
    }
    gf_clearWorld();
}

TEST(Publisher, theRegcodesComeBackAndWereNotPlain)
{
    EXPECT_EQ(std::string::npos, gf_dbaseText(kWorld).find("G-DBCJ"));
    const std::string text = gf_regcodesText(kWorld);
    EXPECT_EQ(std::string::npos, text.find("reg=\"G-"));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(text.c_str()));
    std::vector<RegcodeEntry> entries;
    ASSERT_TRUE(gf_readRegcodeDocument(document, "world", entries));
    auto table = lf_rows("regcodes.csv");
    ASSERT_EQ(table.size(), entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(table[i]["title"], entries[i].title);
        EXPECT_EQ(table[i]["special"] == "1", entries[i].special);
        EXPECT_EQ(table[i]["reg"], format("{}", fmt::join(entries[i].regcodes, "|")));
    }
}

TEST(Publisher, tablesThatCannotBePublishedAreNamed)
{
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
        std::filesystem::copy(kWorld, folder.path(), std::filesystem::copy_options::recursive);
        folder.write(c.table, c.content);
        try {
            gf_dbaseText(folder.path());
            ADD_FAILURE() << c.expected;
        } catch (const std::exception& e) {
            EXPECT_TRUE(std::string_view(e.what()).ends_with(c.expected));
        }
    }
}

}  // namespace vlt
