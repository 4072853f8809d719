#include "airports/parking/park_airport.h"

#include "airports/airport_place.h"
#include "airports/parking/park_list.h"
#include "airports/parking/reserved_stand.h"
#include "core/base/display.h"
#include "link/traffic_reader.h"
#include "sim/dispatch.h"
#include "support/feed_line.h"
#include "traffic/geodesy.h"

#include <cmath>

namespace vlt {

class ParkAirportTest : public AirportPlace
{
protected:
    void SetUp() override
    {
        AirportPlace::SetUp();
        airportCatalogue = {{"XAAA", "", 47, 8, 900}, {"XBBB", "", 47.2, 8, 500}, {"XFAR", "", 10, 10, 0}};
        AIRPORT_RANGE.value = 20;
        AIRPORT_HEIGHT.value = 18000;
        tick = 100'000;
    }

    void list(const std::string& text) const
    {
        place.folder.write("airports/my_park_airports.txt", text);
    }
    // The list names this airport alone, and its file has one stand.
    void listWithFile(const std::string& code) const
    {
        archive(code, gf_airportText(gf_standText("A1", 0)));
        list(code);
        lf_readMyParkAirports();
    }
    std::string listFile() const
    {
        return gf_textOfFile("airports/my_park_airports.txt");
    }
    static std::string codes()
    {
        std::string all;
        for (const ParkListEntry& entry : parkAirports) {
            all += entry.code + (entry.stand.empty() ? "" : "," + entry.stand) + " ";
        }
        return all;
    }
    static void fly(double milesNorth, double agl)
    {
        userOnGround = false;
        userNow = UserAc{.lat = 47 + milesNorth / 60, .lon = 8, .agl = agl};
    }
    static void stand(double metresEast)
    {
        const PosSample sample = gf_groundSample(metresEast, 0, 0, 0);
        userOnGround = true;
        userNow = UserAc{.lat = sample.lat, .lon = sample.lon};
    }
    // The airport in sight, and its load at the next look.
    static void load()
    {
        parkAirportCheck();
        parkAirportCheck();
    }
};

// --- the list

TEST_F(ParkAirportTest, theListIsReadInEveryEncoding)
{
    const std::string plain = "XAAA,A1\n\n  \nxbbb , B 2 \nXZZZ\nXAAA\nXFAR,1,2\n";
    std::string little;
    std::string big;
    for (const char c : plain) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    for (const std::string& text : {plain, "\xEF\xBB\xBF" + plain, "\xFF\xFE" + little, "\xFE\xFF" + big}) {
        list(text);
        EXPECT_FALSE(lf_readMyParkAirports()) << "XZZZ is unknown";
        EXPECT_EQ("XAAA,A1 XBBB,B 2 ", codes());
    }
    EXPECT_EQ("airport XZZZ is unknown", display.message.load());
    std::filesystem::remove("airports/my_park_airports.txt");
    place.folder.write("airports/my_thirdparty/XBBB.xml", "");
    place.folder.write("airports/my_thirdparty/XZZZ.xml", "");
    EXPECT_TRUE(lf_readMyParkAirports());
    EXPECT_EQ("XBBB ", codes());
}

TEST_F(ParkAirportTest, aStoredStandKeepsTheOtherLines)
{
    list("# mine\r\nXBBB\r\nxaaa,old\r\nlast");
    lf_readMyParkAirports();
    gf_sortParkAirports({47, 8});
    gf_storeStand("A7");
    EXPECT_EQ("# mine\r\nXBBB\r\nXAAA,A7\r\nlast\r\n", listFile());
    gf_addParkAirport({"XFAR", "Q", 10, 10, 0});
    EXPECT_EQ("# mine\r\nXBBB\r\nXAAA,A7\r\nlast\r\nXFAR,Q\r\n", listFile());
    EXPECT_EQ("XFAR,Q XAAA,A7 XBBB ", codes());
}

// --- in and out of sight

TEST_F(ParkAirportTest, aListedAirportComesInSightAndGoes)
{
    listWithFile("XAAA");
    const struct {
        const char* what;
        int32_t range;
        double miles, agl;
        bool inSight;
    } cases[] = {{"near and low", 20, 5, 3000, true},        {"just in range", 20, 19.999, 3000, true},
                 {"exactly at the range", 0, 0, 3000, true}, {"just out of it", 20, 20.001, 3000, false},
                 {"just low enough", 20, 5, 18000, true},    {"too high", 20, 5, 18001, false}};
    for (const auto& c : cases) {
        reset();
        lf_readMyParkAirports();
        AIRPORT_RANGE.value = c.range;
        fly(-c.miles, c.agl);
        parkAirportCheck();
        EXPECT_EQ(c.inSight ? "XAAA" : "", parkApf.code) << c.what;
        // The same limits, for one that is the park airport already.
        fly(0, 0);
        load();
        EXPECT_EQ(ParkState::Loaded, parkState);
        fly(-c.miles, c.agl);
        parkAirportCheck();
        EXPECT_EQ(c.inSight ? "XAAA" : "", parkApf.code) << c.what;
        EXPECT_EQ(c.inSight ? ParkState::Loaded : ParkState::None, parkState) << c.what;
    }
}

TEST_F(ParkAirportTest, anEmptyListGivesAFlyingUserNone)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    fly(0, 1000);
    load();
    userNow = UserAc{};  // without a position
    userOnGround = true;
    load();
    EXPECT_EQ("", parkApf.code);
    EXPECT_EQ(0U, server.requests());
}

TEST_F(ParkAirportTest, whoIsParkedThereGoesWithTheAirportAndOthersForgetTheirStand)
{
    listWithFile("XAAA");
    fly(-5, 3000);
    load();
    for (const StState st : {StState::Parked, StState::Parking, StState::PushingBack}) {
        gf_addOnGround(20001 + static_cast<uint32_t>(st), "BAW3AK", st).standId = 1;
    }
    fly(-30, 3000);
    parkAirportCheck();
    ASSERT_EQ("", parkApf.code);
    for (const LiveAc& ac : liveAcs) {
        EXPECT_EQ(kNoStand, ac.standId);
        EXPECT_EQ(ac.st == StState::Parked, ac.fs == FsState::RemovingFromSim);
    }
}

TEST_F(ParkAirportTest, aNearerListedAirportTakesOver)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    archive("XBBB", gf_airportText(gf_standText("B1", 0)));
    list("XAAA\nXBBB");
    lf_readMyParkAirports();
    fly(5, 3000);  // XBBB lies 12 miles north of XAAA
    load();
    EXPECT_EQ("XAAA", parkApf.code);
    fly(5.9, 3000);
    parkAirportCheck();
    EXPECT_EQ("XAAA", parkApf.code);
    fly(6.1, 3000);
    parkAirportCheck();
    EXPECT_EQ("", parkApf.code);
    load();
    EXPECT_EQ("XBBB", parkApf.code);
    EXPECT_EQ(1U, parkApf.stands.size());
}

TEST_F(ParkAirportTest, aUserOnTheGroundIsAtHisAirport)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0) + gf_standText("A2", 100)));
    stand(101);
    load();
    EXPECT_EQ("XAAA", parkApf.code);
    EXPECT_EQ("XAAA,A2 ", codes()) << "the airport joins the list, with the user's stand";
    EXPECT_EQ("XAAA,A2\r\n", listFile());
    EXPECT_EQ("A2", reservedStand);
    EXPECT_TRUE(parkApf.stands[1].reserved && !parkApf.stands[0].reserved);
    EXPECT_EQ(1000, parkAirport->elevation) << "the file's, not the catalogue's";
    EXPECT_EQ(1000.0, trafficReader.parkElevation);
    stand(1);
    parkAirportCheck();
    EXPECT_EQ("XAAA", parkApf.code) << "on the ground nothing goes out of sight";
    EXPECT_EQ("A2", reservedStand);
    gf_showUserStand();
    EXPECT_EQ("A1", display.airport.userStand.load());
    gf_noteUserStand();
    EXPECT_EQ("A2", reservedStand) << "nobody asked to note it";
    noteStandRequested = true;
    gf_noteUserStand();
    EXPECT_EQ("A1", reservedStand);
    EXPECT_EQ("XAAA,A1\r\n", listFile());
    EXPECT_TRUE(parkApf.stands[0].reserved && !parkApf.stands[1].reserved);
}

TEST_F(ParkAirportTest, aFieldWithoutAFileIsAskedForOnceInAWhile)
{
    stand(0);
    parkAirportCheck();
    EXPECT_EQ(1U, server.requests());
    for (int i = 0; i < 5; ++i) {
        parkAirportCheck();
    }
    EXPECT_EQ(1U, server.requests());
    tick = tick + 300 * kTicksPerSecond;
    parkAirportCheck();
    EXPECT_EQ(2U, server.requests());
    stand(2000);
    parkAirportCheck();
    EXPECT_EQ(3U, server.requests());
}

// --- failures and settings

TEST_F(ParkAirportTest, aLoadThatFailsLeavesNothingBehind)
{
    const std::pair<std::string, const char*> cases[] = {
        {gf_airportText(gf_standText("A1", 0) + gf_standText("A1", 9)),
         "Parking position A1 appears more than once?"},
        {gf_airportText(""), "no stands found"}};
    stand(0);
    for (const auto& [text, message] : cases) {
        archive("XAAA", text);
        load();
        EXPECT_EQ(message, display.message.load());
        EXPECT_EQ("", parkApf.code);
        EXPECT_TRUE(parkApf.stands.empty());
        EXPECT_FALSE(parkAirport.has_value());
        EXPECT_EQ(ParkState::None, parkState);
        EXPECT_TRUE(std::isnan(trafficReader.parkElevation));
    }
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    load();
    EXPECT_EQ(ParkState::Loaded, parkState) << "the next look tries again";
}

TEST_F(ParkAirportTest, anAirportsSettingsEndWithIt)
{
    std::string stands;
    for (int i = 0; i < 20; ++i) {
        stands += gf_standText("A" + std::to_string(i), i * 60.0);
    }
    archive("XAAA", gf_airportText(stands, "<parameter name='Qf_real' value='45'/>"));
    MAX_LIVE.value = 70;
    stand(0);
    for (const bool learnSoft : {true, false}) {
        LEARN_SOFT.value = learnSoft;
        load();
        EXPECT_FALSE(LEARN_SOFT.value || softLearningAllowed) << "its data are good enough";
        MAX_LIVE.value = 5;  // as a learned file would have it
        closeAirport();
        EXPECT_EQ(learnSoft, LEARN_SOFT.value);
        EXPECT_TRUE(softLearningAllowed);
        EXPECT_EQ(70, MAX_LIVE.value);
    }
}

TEST_F(ParkAirportTest, aLearnedFilesSettingsAreInForceWhileItIsThere)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0), "<parameter name='Qf_real' value='50'/>"));
    stand(0);
    parking_percentage.value = 77;
    load();
    EXPECT_EQ(30, parking_percentage.value) << "there is no learned file";
    EXPECT_FALSE(display.airport.percentageEnabled);
    EXPECT_EQ("Testfield 1 50", format("{} {} {}", display.airport.name.load(),
                                       display.airport.standCount.load(), display.airport.quality.load()));
    closeAirport();
    place.folder.write("airports/learned/stock/XAAA.xml",
                       gf_airportText("", "<parameter name='MAX_LIVE' value='5'/>"
                                          "<parameter name='parking_percentage' value='55'/>"
                                          "<parameter name='PARK_FAKE' value='true'/>"));
    MAX_LIVE.value = 70;
    load();
    EXPECT_TRUE(display.airport.percentageEnabled && PARK_FAKE.value);
    EXPECT_EQ(55, parking_percentage.value);
    EXPECT_EQ(5, MAX_LIVE.value);
    closeAirport();
    EXPECT_EQ(70, MAX_LIVE.value);
    EXPECT_EQ("", display.airport.name.load());
}

TEST_F(ParkAirportTest, whatTheUserChangesWhileItIsThereStays)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    stand(0);
    LEARN_SOFT.value = true;
    load();
    ASSERT_TRUE(softLearningAllowed);
    LEARN_SOFT.value = false;
    closeAirport();
    EXPECT_FALSE(LEARN_SOFT.value);
}

TEST_F(ParkAirportTest, groundReportsComeInWhileItIsThere)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    trafficReader.reset();
    realTrafficHere = true;
    trafficReader.setCentre({47, 8});
    intakeOpen = true;
    const auto taken = [](double milesNorth) {
        feedQueue.clear();
        FeedLine line;
        line.altitude = 0;
        line.speed = 10;
        line.lat = 47 + milesNorth / 60;
        line.other = {{6, "1"}};
        gf_hear(line);
        return feedQueue.size();
    };
    EXPECT_EQ(0U, taken(1));
    stand(0);
    load();
    EXPECT_EQ(1U, taken(4.99));
    EXPECT_EQ(0U, taken(5.01));
    closeAirport();
    EXPECT_EQ(0U, taken(1));
    realTrafficHere = false;
}

}  // namespace vlt
