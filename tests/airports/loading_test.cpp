#include "airports/loading.h"

#include "airports/airport_lookup.h"
#include "airports/airport_place.h"
#include "core/base/random.h"
#include "traffic/geodesy.h"

namespace vlt {

class LoadingTest : public AirportPlace
{
protected:
    static AirportLoad load(const std::string& path = "archive/stock/XTST.xml")
    {
        return gf_readApf(path, "XTST");
    }
    // The learned file of the archived XTST.
    void learn(const std::string& text) const
    {
        place.folder.write("airports/learned/stock/XTST.xml", text);
    }
};

// --- where the file is

TEST_F(LoadingTest, theUsersFoldersComeBeforeTheArchiveAndLinksBeforeFiles)
{
    EXPECT_EQ("", findAirportFile("XTST"));
    archive("XTST", gf_airportText(""));
    EXPECT_EQ("archive/stock/XTST.xml", findAirportFile("XTST"));
    EXPECT_FALSE(std::filesystem::exists("XTST.xml")) << "the probe is gone again";
    place.folder.write("airports/my_ORBX/XTST.xml", "x");
    EXPECT_EQ("airports/my_ORBX/XTST.xml", findAirportFile("XTST"));
    place.folder.write("airports/my_ORBX/XTST.txt", "airports/elsewhere/XTST.xml  \r\nmore");
    EXPECT_EQ("airports/elsewhere/XTST.xml", findAirportFile("XTST"));
    place.folder.write("airports/my_thirdparty/XTST.xml", "x");
    EXPECT_EQ("airports/my_thirdparty/XTST.xml", findAirportFile("XTST"));
    place.folder.write("airports/my_thirdparty/XTST.txt", "archive/simaddon/XTST.xml");
    EXPECT_EQ("archive/simaddon/XTST.xml", findAirportFile("XTST"));
}

TEST_F(LoadingTest, aLinkThatLeadsOutCountsAsEmpty)
{
    place.folder.write("airports/my_thirdparty/XTST.xml", "x");
    for (const char* link :
         {"", "\n", "archive", "/etc/passwd.xml", "airports/../../x.xml", "http://x/y.xml", "xx"}) {
        place.folder.write("airports/my_thirdparty/XTST.txt", link);
        EXPECT_EQ("airports/my_thirdparty/XTST.xml", findAirportFile("XTST")) << link;
    }
    for (const char* code : {"", "../XTST", "X TST", "TOOLONGCODE", "X/Y", "\xc3\x84"}) {
        EXPECT_EQ("", findAirportFile(code)) << code;
    }
    EXPECT_EQ(0U, server.requests());
}

TEST_F(LoadingTest, theLearnedFileOfAnAirportFile)
{
    const struct {
        const char *path, *publisher, *learned;
    } cases[] = {
        {"", "stock", ""},
        {"archive/stock/EHAM.xml", "stock", "airports/learned\\stock\\EHAM.xml"},
        {"archive/thirdparty/Fly%20Tampa/EHAM.xml", "x", "airports/learned\\thirdparty\\Fly Tampa\\EHAM.xml"},
        {"airports/my_thirdparty/EHAM.xml", "Aerosoft", "airports/learned/thirdparty\\Aerosoft/EHAM.xml"},
        {"airports/my_thirdparty2024/EHAM.xml", "A B", "airports/learned/thirdparty\\A B/EHAM.xml"},
        {"airports/my_thirdparty/EHAM.xml", "..\\..\\x", "airports/learned/thirdparty\\.._.._x/EHAM.xml"},
        {"airports/my_thirdparty/EHAM.xml", "..", "airports/learned/thirdparty\\unknown/EHAM.xml"},
        {"elsewhere/EHAM.xml", "x", "elsewhere/EHAM.xml"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.learned, learnedPath(c.path, c.publisher)) << c.path;
    }
}

// --- the load

TEST_F(LoadingTest, anArchivedAirportIsReadAndNumbered)
{
    archive("XTST", gf_airportText(gf_standText("A1", 0) + gf_standText("A2", 30),
                                   "<parameter name='RT_traffic_week' value='24'/>"
                                   "<parameter name='Qf_real' value='50'/>"));
    const auto [apf, source, learned, settings, failed] = load();
    EXPECT_EQ("", failed);
    ASSERT_EQ(2U, apf.stands.size());
    EXPECT_EQ(2U, apf.stands[1].index);
    EXPECT_EQ(std::vector<uint32_t>{2}, apf.stands[0].neighbours);
    EXPECT_EQ("Testfield 1000 24", format("{} {} {}", apf.name, apf.altitude, apf.trafficWeek));
    EXPECT_EQ((Quality{50, -1}), apf.quality);
    EXPECT_FALSE(learned || settings);
}

TEST_F(LoadingTest, whatFailsLeavesNoStands)
{
    const std::string path = "archive/stock/XTST.xml";
    EXPECT_EQ("gf_readApf xml is empty...", load("").failed);
    EXPECT_EQ("gf_readApf no park airport set", gf_readApf(path, "").failed);
    EXPECT_TRUE(load().failed.starts_with("failed to download: \"http://127.0.0.1:"));
    const std::pair<std::string, const char*> cases[] = {
        {"no xml", "archive/stock/XTST.xml could not be loaded: No document element found"},
        {gf_airportText(""), "no stands found"},
        {"<parameters><parameter name='altitude' value='99999999999'/></parameters>",
         "gf_readApf: an altitude of 2147483647 ft can't be"},
        {"<parameters/><parkpositions/>", "Parameter altitude not found"},
        {gf_airportText(gf_standText("A1", 0) + gf_standText("A1", 50)),
         "Parking position A1 appears more than once?"}};
    for (const auto& [text, message] : cases) {
        archive("XTST", text);
        const AirportLoad failed = load();
        EXPECT_EQ(message, failed.failed);
        EXPECT_TRUE(failed.apf.stands.empty());
    }
}

// --- the learned file

TEST_F(LoadingTest, whatWasLearnedIsLaidOver)
{
    archive("XTST", gf_airportText(gf_standText("A1", 0, "",
                                                "<opt reg='X-A' airl='BAW' type='A319' day='1' hh='1,2'/>") +
                                   gf_standText("A2", 100)));
    learn(gf_airportText(
        "<parkpos id='A1' radius_change='true' radius='37.04' cargo_change='1' cargo='t'>"
        "<opt reg='X-A' airl='BAW' type='A319' day='1' hh='2,3'/>"
        "<opt reg='X-A' airl='BAW' type='A319' day='1' hh='3'/>"
        "<opt reg='X-A' airl='BAW' type='A319' day='1' hh='1' soft='true'/></parkpos>"
        "<parkpos id='A3'/>"
        "<parkpos id='A2' manual='true' latitude='1' longitude='1' radius='1'/>"
        "<parkpos id='M1' manual='true' latitude='47.01' longitude='8' radius='15'/>"
        "<parkpos id='M2' manual='true' latitude='47.01' longitude='8'/>"
        "<parkpos id='M3' manual='true' latitude='0.0005' longitude='0.01' radius='3'/>",
        "<parameter name='LATERAL_RANGE' value='999'/><parameter name='MAX_FIT' value='11'/>"
        "<parameter name='PARK_FAKE' value='true'/><parameter name='WEEK' value='24'/>"
        "<parameter name='AUTO_RANGE' value='false'/><parameter name='parking_percentage' value='55'/>"));
    WEEK.value = true;
    rangeBeforeAuto = 33;
    const AirportLoad loaded = load();
    const Apf& apf = loaded.apf;
    ASSERT_EQ(3U, apf.stands.size()) << loaded.failed;
    const ParkPos& a1 = apf.stands[0];
    EXPECT_NEAR(0.02, a1.radius, 1e-9);
    EXPECT_TRUE(a1.radiusChanged && a1.cargoChanged && a1.cargo);
    ASSERT_EQ(3U, a1.options.size()) << "what overlaps in one slot is known already";
    EXPECT_EQ("3", setToHours(a1.options[1].hours));
    EXPECT_EQ(2, a1.options[1].sequence);
    EXPECT_FALSE(a1.options[1].archived);
    EXPECT_FALSE(a1.options[2].real);
    EXPECT_TRUE(apf.stands[2].manual && apf.stands[2].id == "M1");
    EXPECT_TRUE(WEEK.value) << "a load reads and nothing else";
    ASSERT_TRUE(loaded.settings);
    gf_applyParkingSettings(*loaded.settings);
    EXPECT_EQ(100, LATERAL_RANGE.value) << "not the one from before the automatic range";
    EXPECT_FALSE(AUTO_RANGE.value);
    EXPECT_FALSE(WEEK.value) << "24 isn't true";
    EXPECT_TRUE(PARK_FAKE.value);
    EXPECT_EQ(55, parking_percentage.value);
    EXPECT_EQ(6.0F, MAX_FIT_FL.value);
}

TEST_F(LoadingTest, aHandmadeFileReplacesTheStands)
{
    archive("XTST", gf_airportText(gf_standText("A1", 0)));
    const char* handmade = "<parameter name='handmade' value='true'/>";
    learn(gf_airportText(gf_standText("MY1", 0) + gf_standText("MY2", 100), handmade));
    const Apf apf = load().apf;
    EXPECT_TRUE(apf.stands.size() == 2 && apf.stands[0].id == "MY1" && apf.handmade);
    learn(gf_airportText("", handmade));
    EXPECT_EQ("no stands found", load().failed);
    learn(gf_airportText(gf_standText("MY1", 0) + gf_standText("MY1", 100), handmade));
    const AirportLoad wrong = load();
    EXPECT_TRUE(wrong.apf.stands.size() == 1 && !wrong.apf.handmade) << "it leaves the archived stands";
    learn("<parkpositions><parkpos");
    const AirportLoad broken = load();
    EXPECT_EQ(1U, broken.apf.stands.size());
    EXPECT_TRUE(broken.learned && !broken.settings);
    EXPECT_FALSE(std::filesystem::exists("airports/learned/stock/XTST.xml"));
    EXPECT_TRUE(std::filesystem::exists("airports/learned/stock/XTST.0.xml"));
}

// --- figures

static StandOption lf_option(int32_t day, const char* hours, bool real, int32_t sequence = 1)
{
    StandOption option;
    option.day = day;
    hoursToSet(hours, option.hours);
    option.real = real;
    option.sequence = sequence;
    return option;
}

TEST(QualityFactor, countsOptionsDaysAndHours)
{
    std::vector<ParkPos> stands(2);
    EXPECT_EQ((Quality{-1, -1}), gf_qualityFactor(stands));
    stands[0].options = {lf_option(1, "1,2,3", true), lf_option(2, "4", true), lf_option(0, "5", true),
                         lf_option(3, "1", true, 0)};
    // 10000 + 20 * 3 + 100 * 2 + 2 * 5 = 10270 on one of two stands; times 0.00625 is 32.09.
    EXPECT_EQ((Quality{32, 0}), gf_qualityFactor(stands));
    stands[1].options = {lf_option(1, "1", false)};
    // 10000 + 20 + 100 + 2 = 10122, halved: 31.6.
    EXPECT_EQ((Quality{32, 32}), gf_qualityFactor(stands));
    stands[1].options.assign(300, lf_option(7, "0,1,2,3,4,5", false));
    // 10000 + 4000 + 100 + 1200 = 15300, halved: 47.8.
    EXPECT_EQ((Quality{32, 48}), gf_qualityFactor(stands));
}

TEST(QualityFactor, isShownInShort)
{
    EXPECT_EQ("  ", gf_qualityText({-1, -1}));
    EXPECT_EQ("44/ 7", gf_qualityText({44, 7}));
    EXPECT_EQ("45", gf_qualityText({45, 7}));
}

TEST(Neighbours, areThoseWhoseCirclesReachWithATenthOfRoom)
{
    const struct {
        const char* what;
        LatLon a, b;
        bool reach;
    } cases[] = {
        {"at 0.018 nm", {47, 8}, {47 + 0.018 / 60, 8}, true},
        {"at 0.0185 nm", {47, 8}, {47 + 0.0185 / 60, 8}, false},
        {"across the date line", {47, 179.9999}, {47, -179.9999}, true},
        {"at the pole", {89.99999, 0}, {89.99999, 180}, true},
    };
    for (const auto& c : cases) {
        std::vector<ParkPos> stands(2);
        for (size_t i = 0; i < 2; ++i) {
            stands[i].lat = (i == 0 ? c.a : c.b).lat;
            stands[i].lon = (i == 0 ? c.a : c.b).lon;
            stands[i].radius = 0.01;
            stands[i].index = static_cast<uint32_t>(i + 1);
        }
        gf_findNeighbours(stands);
        EXPECT_EQ(c.reach, stands[0].neighbours == std::vector<uint32_t>{2}) << c.what;
        EXPECT_EQ(c.reach, stands[1].neighbours == std::vector<uint32_t>{1}) << c.what;
    }
}

}  // namespace vlt
