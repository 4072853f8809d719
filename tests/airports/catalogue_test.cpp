#include "airports/catalogue.h"

#include "airports/airport_place.h"
#include "core/base/errors.h"

namespace vlt {

// When the server has told what it has.
static const AirportRecord* lf_closest(LatLon position)
{
    gf_forgetServerFiles();
    std::optional<const AirportRecord*> closest;
    while (!(closest = closestAirport(position))) {
    }
    return *closest;
}

using CatalogueTest = AirportPlace;

TEST_F(CatalogueTest, isReadOnceAndSortedByCode)
{
    EXPECT_THROW(readAirports(), UserErrorException);
    place.folder.write("airports_p3d.xml", "<airports><airport code='A'");
    EXPECT_THROW(readAirports(), std::runtime_error);
    place.folder.write(
        "airports_p3d.xml",
        "<airports><airport code='LFBO' iata='TLS' lat='43.6' lon='1.37' alt='499'/>"
        "<airport code='EGLL' lat='51.47' lon='-0.46' alt='83'/><airport code='BAD' lat='nan' lon='1'/>"
        "<airport code='FAR' lat='90.1' lon='1'/><airport code='EAST' lat='1' lon='180.1'/></airports>");
    EXPECT_TRUE(readAirports());
    std::filesystem::remove("airports_p3d.xml");
    EXPECT_TRUE(readAirports()) << "the file isn't read again";
    ASSERT_EQ(2U, airportCatalogue.size());
    EXPECT_EQ("EGLL", airportCatalogue[0].code);
    const AirportRecord* found = findAirport("LFBO");
    EXPECT_TRUE(found != nullptr && found->iata == "TLS" && found->altitude == 499);
    for (const char* code : {"LFB", "LFBOX", "", "lfbo", "ZZZZ"}) {
        EXPECT_EQ(nullptr, findAirport(code)) << code;
    }
}

TEST_F(CatalogueTest, ofTwoFieldsTheOneWithTheNearerStandCounts)
{
    // The user stands at 47 N 8 E. One field's reference point is a mile off, the other's three; but it is
    // the farther one that has a stand there.
    for (const auto& [near, far] : {std::pair{"AAAA", "ZZZZ"}, {"ZZZZ", "AAAA"}}) {
        airportCatalogue = {{near, "", 47 + 1 / 60.0, 8, 0}, {far, "", 47 - 3 / 60.0, 8, 0}};
        std::ranges::sort(airportCatalogue, {}, &AirportRecord::code);
        archive(far, gf_airportText(gf_standText("F1", 30)));
        for (const double metres : {800.0, 30.0}) {
            archive(near, gf_airportText(gf_standText("N1", metres)));
            EXPECT_EQ(metres == 30 ? near : far, lf_closest({47, 8})->code)
                << "a tie stays with the nearer one";
        }
        std::filesystem::remove_all("served/archive/stock");
        EXPECT_EQ(near, lf_closest({47, 8})->code) << "without files the reference point decides";
    }
}

TEST_F(CatalogueTest, rowsThatCannotBeAreSkipped)
{
    place.folder.write("airports_p3d.xml", "<airports><airport code='' lat='1' lon='1' alt='0'/>"
                                           "<airport code='LOW' lat='1' lon='1' alt='-2001'/>"
                                           "<airport code='HIGH' lat='1' lon='1' alt='30001'/>"
                                           "<airport code='TWICE' lat='1' lon='1' alt='1'/>"
                                           "<airport code='TWICE' lat='2' lon='2' alt='2'/>"
                                           "<airport code='DEEP' lat='1' lon='1' alt='-1266'/></airports>");
    airportCatalogue.clear();
    ASSERT_TRUE(readAirports());
    ASSERT_EQ(2U, airportCatalogue.size());
    EXPECT_EQ("DEEP", airportCatalogue[0].code);
    EXPECT_EQ(1, airportCatalogue[1].lat);
}

}  // namespace vlt
