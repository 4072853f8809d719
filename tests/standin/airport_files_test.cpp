#include "standin/airport_files.h"

#include "core/text.h"
#include "standin/day_airport.h"
#include "support/temp_folder.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

namespace vlt {

static const std::filesystem::path kWorld = std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world";

static ArchivedAirport lf_airport(const std::string& code)
{
    for (const ArchivedAirport& airport : gf_worldAirports(kWorld)) {
        if (airport.code == code) {
            return airport;
        }
    }
    throw std::runtime_error("no airport " + code);
}

TEST(WorldAirports, theDaysAirportStandsInTheTableAsInTheDay)
{
    const ArchivedAirport airport = lf_airport(kDayAirportCode);
    EXPECT_EQ(kDayAirportIata, airport.iata);
    EXPECT_DOUBLE_EQ(kDayAirport.lat, airport.lat);
    EXPECT_DOUBLE_EQ(kDayAirport.lon, airport.lon);
    EXPECT_EQ(kDayElevation, airport.elevation);
    std::map<std::string, int> kinds;
    std::set<std::string> ids;
    for (const ArchivedStand& stand : airport.stands) {
        ++kinds[stand.kind];
        EXPECT_TRUE(ids.insert(stand.id).second) << stand.id;
    }
    EXPECT_GE(airport.stands.size(), 60U);
    EXPECT_EQ(2, kinds["heli"]);
    EXPECT_TRUE(kinds["gate"] >= 30 && kinds["ramp"] >= 10 && kinds["cargo"] >= 8);
}

TEST(WorldAirports, noTwoStandsLieOnEachOther)
{
    for (const ArchivedAirport& airport : gf_worldAirports(kWorld)) {
        for (const ArchivedStand& a : airport.stands) {
            for (const ArchivedStand& b : airport.stands) {
                const double metres = distNm({a.lat, a.lon}, {b.lat, b.lon}) * kMetresPerNm;
                EXPECT_TRUE(&a == &b || metres > std::max(a.radiusM, b.radiusM)) << a.id << ' ' << b.id;
            }
        }
    }
}

TEST(WorldAirports, everyDayHasItsAircraft)
{
    const ArchivedAirport airport = lf_airport(kDayAirportCode);
    std::map<int, int> days;
    int soft = 0;
    int coupled = 0;
    int all = 0;
    for (const ArchivedStand& stand : airport.stands) {
        EXPECT_FALSE(stand.options.empty()) << stand.id;
        for (const ArchivedOption& option : stand.options) {
            EXPECT_TRUE(option.hours.any()) << stand.id << ' ' << option.reg;
            ++days[option.day];
            soft += option.soft;
            coupled += option.callsigns.find(':') != std::string::npos;
            ++all;
        }
    }
    EXPECT_EQ(7U, days.size());
    EXPECT_TRUE(soft > 0 && soft < all / 2) << soft;
    EXPECT_GT(coupled, 100);
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
    EXPECT_TRUE(second.attribute("cargo").empty()) << "a helipad isn't told whether it is for freight";
}

TEST(WorldAirports, aTableThatCannotBeReadIsNamed)
{
    const TempFolder folder;
    folder.write("stands.csv", "id,lat,lon,heading,radius_m,kind\nA1,x,1,1,1,gate\n");
    try {
        gf_standsOfTable(folder.path() / "stands.csv");
        FAIL() << "a latitude of x was taken";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ("stands.csv: \"x\" is no number", e.what());
    }
}

TEST(WorldAirports, joinTheCatalogueInTheOrderOfTheirCodes)
{
    const TempFolder folder;
    folder.write("base.xml", "<airports><airport code='AAAA' lat='1' lon='1' alt='1'/><airport code='XMMM'/>"
                             "<airport code='ZZZZ'/></airports>");
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(gf_mergedCatalogue(folder.path() / "base.xml", kWorld).c_str()));
    std::string codes;
    for (const pugi::xml_node& airport : document.child("airports").children()) {
        codes += std::string(airport.attribute("code").as_string()) + " ";
    }
    EXPECT_EQ("AAAA XBRG XMMM XSEE XVEL ZZZZ ", codes);
}

}  // namespace vlt
