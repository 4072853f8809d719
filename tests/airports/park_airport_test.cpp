#include "airports/park_airport.h"

#include "airports/airport_place.h"
#include "airports/park_list.h"
#include "link/traffic_reader.h"
#include "sim/client.h"
#include "support/feed_line.h"
#include "traffic/geodesy.h"
#include "ui/display.h"

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
    bool logged(const std::string& text) const
    {
        return log().find(text) != std::string::npos;
    }
    static void fly(double milesNorth, double agl)
    {
        userOnGround = false;
        userNow.lat = 47 + milesNorth / 60;
        userNow.lon = 8;
        userNow.agl = agl;
    }
    // A place north of the airport whose distance is this to the last bit.
    static LatLon exactlyAt(double miles)
    {
        LatLon place{47 + miles / 60 - 1e-5, 8};
        for (int i = 0; i < 10'000 && distNm(place, {47, 8}) != miles; ++i) {
            place.lon += 1e-5;
            for (double step = 1e-4; step > 1e-16; step /= 2) {
                place.lat += distNm(place, {47, 8}) < miles ? step : -step;
            }
        }
        return place;
    }
    static void stand(double metresEast)
    {
        const PosSample sample = gf_groundSample(metresEast, 0, 0, 0);
        userOnGround = true;
        userNow.lat = sample.lat;
        userNow.lon = sample.lon;
        userNow.agl = 0;
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
    EXPECT_EQ("airport XZZZ is unknown", gf_textOf(&Display::messageText));
    EXPECT_TRUE(logged("my_park_airports.txt:XAAA double, skipped"));
    EXPECT_TRUE(logged("my_park_airports.txt:XFAR,1,2 wrong syntax, skipped"));
    EXPECT_TRUE(logged("2 park airports read from"));
    list("XAAA");
    EXPECT_TRUE(lf_readMyParkAirports());
    std::filesystem::remove("airports/my_park_airports.txt");
    place.folder.write("airports/my_thirdparty/XBBB.xml", "");
    place.folder.write("airports/my_thirdparty/XZZZ.xml", "");
    EXPECT_TRUE(lf_readMyParkAirports());
    EXPECT_EQ("XBBB ", codes());
    EXPECT_TRUE(logged("my_park_airports.txt not found"));
    EXPECT_TRUE(logged("1 park airport added from my_thirdparty folder(-s) "));
}

TEST_F(ParkAirportTest, aStoredStandKeepsTheOtherLines)
{
    list("# mine\r\nXBBB\r\nxaaa,old\r\nlast");
    lf_readMyParkAirports();
    gf_sortParkAirports({47, 8});
    gf_storeStand("A7");
    EXPECT_EQ("# mine\r\nXBBB\r\nXAAA,A7\r\nlast\r\n", listFile());
    EXPECT_TRUE(logged("my_park_airports.txt:XAAA,A7 updated stand"));
    gf_addParkAirport({"XFAR", "Q", 10, 10, 0});
    EXPECT_EQ("# mine\r\nXBBB\r\nXAAA,A7\r\nlast\r\nXFAR,Q\r\n", listFile());
    EXPECT_TRUE(logged("my_park_airports.txt:XFAR,Q new entry"));
    EXPECT_EQ("XFAR,Q XAAA,A7 XBBB ", codes());
}

// --- in and out of sight

TEST_F(ParkAirportTest, aListedAirportComesInSightAndGoes)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    const struct {
        const char* what;
        double miles, agl;
        bool inSight;
    } cases[] = {{"near and low", 5, 3000, true},
                 {"just in range", 19.999, 3000, true},
                 {"just out of it", 20.001, 3000, false},
                 {"just low enough", 5, 18000, true},
                 {"too high", 5, 18001, false}};
    for (const auto& c : cases) {
        reset();
        list("XAAA");
        lf_readMyParkAirports();
        fly(-c.miles, c.agl);
        parkAirportCheck();
        EXPECT_EQ(c.inSight ? "XAAA" : "", parkApf.code) << c.what;
        if (!c.inSight) {
            // The same limits, for one that is the park airport already.
            fly(0, 0);
            load();
            EXPECT_TRUE(airportLoaded);
            fly(-c.miles, c.agl);
            parkAirportCheck();
            EXPECT_EQ("", parkApf.code) << c.what;
            EXPECT_FALSE(airportLoaded);
            EXPECT_TRUE(logged("XAAA is out of sight ("));
        }
    }
}

TEST_F(ParkAirportTest, anAirportExactlyAtTheRangeIsInSight)
{
    const LatLon user = exactlyAt(20);
    ASSERT_EQ(20.0, distNm(user, {47, 8}));
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    list("XAAA");
    lf_readMyParkAirports();
    fly(0, 5000);
    userNow.lat = user.lat;
    userNow.lon = user.lon;
    parkAirportCheck();
    EXPECT_EQ("XAAA", parkApf.code);
    parkAirportCheck();
    userNow.lat = user.lat + 1e-9;
    parkAirportCheck();
    EXPECT_EQ("", parkApf.code);
}

TEST_F(ParkAirportTest, anEmptyListGivesAFlyingUserNone)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    fly(0, 1000);
    load();
    EXPECT_EQ("", parkApf.code);
    userNow = UserNow{};
    userOnGround = true;
    load();
    EXPECT_EQ("", parkApf.code) << "without a position";
    EXPECT_EQ(0U, server.requests());
}

TEST_F(ParkAirportTest, whoIsParkedThereGoesWithTheAirportAndOthersForgetTheirStand)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    list("XAAA");
    lf_readMyParkAirports();
    fly(-5, 3000);
    parkAirportCheck();
    load();
    for (const StState st : {StState::Parked, StState::Parking, StState::PushingBack}) {
        gf_addOnGround(20001 + static_cast<uint32_t>(st), "BAW3AK", st).standId = 1;
    }
    fly(-30, 3000);
    parkAirportCheck();
    ASSERT_EQ("", parkApf.code);
    EXPECT_EQ(FsState::RemovingFromSim, liveAcs[0].fs);
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
    EXPECT_TRUE(logged("XBBB is in sight (5.9 nm), parked aircraft at XAAA will be removed first"));
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
    EXPECT_TRUE(logged("User aircraft on the ground at XAAA"));
    EXPECT_TRUE(logged("my_park_airports.txt created with XAAA,A2"));
    EXPECT_EQ("A2", reservedStand);
    EXPECT_TRUE(parkApf.stands[1].reserved);
    EXPECT_FALSE(parkApf.stands[0].reserved);
    EXPECT_EQ(1000, parkAirport->elevation) << "the file's, not the catalogue's";
    EXPECT_EQ(1000.0, trafficReader.parkElevation);
    stand(1);
    parkAirportCheck();
    EXPECT_EQ("XAAA", parkApf.code) << "on the ground nothing goes out of sight";
    EXPECT_EQ("A2", reservedStand);
    gf_showUserStand();
    EXPECT_EQ("A1", gf_textOf(&Display::standText));
    gf_noteUserStand();
    EXPECT_EQ("A2", reservedStand) << "nobody asked to note it";
    noteStandRequested = true;
    gf_noteUserStand();
    EXPECT_EQ("A1", reservedStand);
    EXPECT_EQ("XAAA,A1\r\n", listFile());
    EXPECT_TRUE(logged("reserved stand changed from \"A2\" to \"A1\""));
    EXPECT_TRUE(parkApf.stands[0].reserved && !parkApf.stands[1].reserved);
}

TEST_F(ParkAirportTest, aFieldWithoutAFileIsAskedForOnceInAWhile)
{
    stand(0);
    parkAirportCheck();
    EXPECT_EQ(1U, server.requests());
    EXPECT_TRUE(logged("User aircraft on the ground at XAAA, no airport file found"));
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
    userNow.lat = 10;
    userNow.lon = 100;
    parkAirportCheck();
    EXPECT_TRUE(logged("User aircraft on the ground, no airport in sight"));
}

// --- failures and settings

TEST_F(ParkAirportTest, aLoadThatFailsLeavesNothingBehind)
{
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {gf_airportText(gf_standText("A1", 0) + gf_standText("A1", 9)),
         "Parking position A1 appears more than once?"},
        {"<parkpositions/>", "Parameter altitude not found"},
        {gf_airportText(""), "no stands found"},
        {"rubbish", "archive/stock/XAAA.xml could not be loaded: No document element found"},
    };
    for (const auto& c : cases) {
        reset();
        archive("XAAA", c.text);
        stand(0);
        load();
        EXPECT_EQ(c.message, gf_textOf(&Display::messageText));
        EXPECT_EQ("", parkApf.code);
        EXPECT_TRUE(parkApf.stands.empty());
        EXPECT_FALSE(parkAirport.has_value());
        EXPECT_FALSE(airportLoaded);
        EXPECT_TRUE(std::isnan(trafficReader.parkElevation));
        EXPECT_EQ("", gf_textOf(&Display::airportName));
    }
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    load();
    EXPECT_TRUE(airportLoaded) << "the next look tries again";
}

TEST_F(ParkAirportTest, anAirportsSettingsEndWithIt)
{
    std::string stands;
    for (int i = 0; i < 20; ++i) {
        stands += gf_standText("A" + std::to_string(i), i * 60.0);
    }
    archive("XAAA", gf_airportText(stands, "<parameter name='Qf_real' value='45'/>"));
    MAX_LIVE.value = 70;
    savedMaxLive = 70;
    LEARN_SOFT.value = true;
    stand(0);
    load();
    EXPECT_FALSE(LEARN_SOFT.value) << "its data are good enough";
    EXPECT_FALSE(softLearningAllowed);
    EXPECT_FALSE(display.learnSoftEnabled);
    EXPECT_EQ(70, MAX_LIVE.value);
    MAX_LIVE.value = 5;  // as a learned file would have it
    closeAirport();
    EXPECT_TRUE(LEARN_SOFT.value);
    // Off stays off, whatever the airport's own file says.
    LEARN_SOFT.value = false;
    fly(-5, 3000);
    parkAirportCheck();
    load();
    fly(-30, 3000);
    parkAirportCheck();
    EXPECT_FALSE(LEARN_SOFT.value);
    EXPECT_TRUE(softLearningAllowed);
    EXPECT_EQ(70, MAX_LIVE.value);
}

TEST_F(ParkAirportTest, groundReportsComeInWhileItIsThere)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0)));
    trafficReader.reset();
    realTrafficHere = true;
    trafficReader.setCentre({47, 8});
    intakeOpen = true;
    FeedLine line;
    line.altitude = 0;
    line.speed = 10;
    const auto taken = [&line](double lat) {
        feedQueue.clear();
        line.lat = lat;
        line.other = {{6, "1"}};
        gf_hear(line);
        return feedQueue.size();
    };
    EXPECT_EQ(0U, taken(47.01));
    stand(0);
    load();
    EXPECT_EQ(1U, taken(47.01));
    EXPECT_EQ(1U, taken(47 + 4.99 / 60));
    EXPECT_EQ(0U, taken(47 + 5.01 / 60));
    closeAirport();
    EXPECT_EQ(0U, taken(47.01));
    realTrafficHere = false;
}

}  // namespace vlt
