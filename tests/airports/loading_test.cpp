#include "airports/loading.h"

#include "airports/airport_lookup.h"
#include "airports/airport_place.h"
#include "traffic/geodesy.h"

#include <tuple>

namespace vlt {

class LoadingTest : public AirportPlace
{
protected:
    static AirportLoad load(const std::string& path = "archive/stock/XTST.xml")
    {
        return gf_readApf(gf_sourceAt(path), "XTST");
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
    EXPECT_EQ("", gf_foundFile("XTST"));
    archive("XTST", gf_airportText(""));
    EXPECT_EQ("archive/stock/XTST.xml", gf_foundFile("XTST"));
    EXPECT_FALSE(std::filesystem::exists("XTST.xml")) << "the probe is gone again";
    const struct {
        const char *file, *text, *found;
    } steps[] = {
        {"airports/my_ORBX/XTST.xml", "x", "airports/my_ORBX/XTST.xml"},
        {"airports/my_ORBX/XTST.txt", "airports/elsewhere/XTST.xml  \r\nmore", "airports/elsewhere/XTST.xml"},
        {"airports/my_thirdparty/XTST.xml", "x", "airports/my_thirdparty/XTST.xml"},
        {"airports/my_thirdparty/XTST.txt", "archive/simaddon/XTST.xml", "archive/simaddon/XTST.xml"},
    };
    for (const auto& step : steps) {
        place.folder.write(step.file, step.text);
        EXPECT_EQ(step.found, gf_foundFile("XTST"));
    }
    for (const char* link : {"", "/etc/passwd.xml", "airports/../../x.xml", "xx"}) {
        place.folder.write("airports/my_thirdparty/XTST.txt", link);
        EXPECT_EQ("airports/my_thirdparty/XTST.xml", gf_foundFile("XTST")) << link;
    }
    const auto asked = server.requests();
    EXPECT_EQ("", gf_foundFile("../XTST"));
    EXPECT_EQ(asked, server.requests());
}

TEST_F(LoadingTest, theServerIsAskedAgainAfterFiveMinutes)
{
    EXPECT_EQ("", gf_foundFile("XTST"));
    archive("XTST", gf_airportText(""));
    for (const int32_t seconds : {299, 1}) {
        tick += seconds * kTicksPerSecond;
        AirportSource source;
        do {
            source = findAirportFile("XTST");
        } while (source.served.awaited);
        EXPECT_EQ(seconds == 1, !source.path.empty());
    }
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

TEST_F(LoadingTest, whatFailsLeavesNoStands)
{
    const std::string path = "archive/stock/XTST.xml";
    EXPECT_EQ("gf_readApf xml is empty...", load("").failed);
    EXPECT_EQ("gf_readApf no park airport set", gf_readApf(gf_sourceAt(path), "").failed);
    EXPECT_TRUE(load().failed.starts_with("failed to download: \"http://127.0.0.1:"));
    std::string many;
    for (size_t i = 0; i <= kMostStands; ++i) {
        many += "<parkpos/>";
    }
    const std::pair<std::string, const char*> cases[] = {
        {"no xml", "archive/stock/XTST.xml could not be loaded: No document element found"},
        {gf_airportText(""), "no stands found"},
        {"<parameters><parameter name='altitude' value='99999999999'/></parameters>",
         "gf_readApf: an altitude of 2147483647 ft can't be"},
        {"<parameters/><parkpositions/>", "Parameter altitude not found"},
        {gf_airportText(many), "5001 parking positions, no airport has more than 5000"},
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

TEST_F(LoadingTest, aLearnedFileCannotSpoilTheArchivedStands)
{
    const std::string a1 = "A1 47.000000 8.000000 90.0 20.0";
    const char* handmade = "<parameter name='handmade' value='true'/>";
    const struct {
        std::string learned;
        std::vector<std::string> stands;
    } cases[] = {
        {gf_airportText("<parkpos id='A1' radius_change='true' radius='1853'/><parkpos id='A3'/>"), {a1}},
        {gf_airportText("<parkpos id='A1' radius='7' cargo='true'/>"), {a1}},
        {gf_airportText("<parkpos id='A1' manual='true' latitude='1' longitude='1' radius='1'/>"), {a1}},
        {gf_airportText("<parkpos id='M' manual='true' latitude='47' longitude='8'/>"), {a1}},
        {gf_airportText("<parkpos id='M' manual='true' latitude='0.0005' longitude='0.01' radius='3'/>"),
         {a1}},
        {gf_airportText(gf_standText("A1", 0) + gf_standText("A1", 9), handmade), {a1}},
        {gf_airportText("", handmade), {}},
        {"<parkpositions><parkpos", {a1}}};
    archive("XTST", gf_airportText(gf_standText("A1", 0)));
    for (const auto& c : cases) {
        learn(c.learned);
        const AirportLoad loaded = load();
        EXPECT_EQ(c.stands, gf_shownStands(loaded.apf.stands)) << c.learned;
        EXPECT_EQ(c.stands.empty() ? "no stands found" : "", loaded.failed);
    }
    EXPECT_FALSE(std::filesystem::exists("airports/learned/stock/XTST.xml")) << "the broken one is put aside";
}

TEST_F(LoadingTest, manualStandsComeInUpToTheMostThatAnAirportHas)
{
    std::string stands;
    for (size_t i = 1; i < kMostStands; ++i) {
        stands += gf_standText(std::to_string(i), static_cast<double>(i) * 100);
    }
    archive("XTST", gf_airportText(stands));
    learn(gf_airportText(gf_standText("M1", 1, "manual='true'") + gf_standText("M2", 2, "manual='true'")));
    const AirportLoad loaded = load();
    EXPECT_EQ(kMostStands, loaded.apf.stands.size()) << loaded.failed;
    EXPECT_EQ("M1", loaded.apf.stands.back().id);
}

// What a learned file with these parameters has written after it came into force.
static pugi::xml_document lf_applied(const std::string& parameters)
{
    pugi::xml_document file;
    file.load_string(format("<parameters>{}</parameters>", parameters).c_str());
    gf_applyParkingSettings(gf_readParkingSettings(file));
    pugi::xml_document written;
    gf_writeParkingSettings(written);
    return written;
}

TEST_F(LoadingTest, eachSettingOfALearnedFileComesIntoForceAndIsWritten)
{
    // Told by a file; written from then on; written after a file that doesn't tell it.
    const struct {
        const char *name, *told, *written, *untold;
    } cases[] = {
        // clang-format off
        {"LATERAL_RANGE",      "999",   "100",   "100"},
        {"LATERAL_RANGE",      "-5",    "2",     "2"},
        {"AUTO_RANGE",         "false", "false", "false"},
        {"AUTO_RANGE",         "1",     "true",  "true"},
        {"WEEK",               "true",  "24",    "24"},
        {"PARK_FAKE",          "true",  "true",  "true"},
        {"PARK_SOFT",          "false", "false", "false"},
        {"parking_percentage", "55",    "55",    "30"},
        {"INITIAL_LOAD_ONLY",  "true",  "true",  "true"},
        {"MAX_FIT",            "11",    "11",    "11"},
        {"MAX_LIVE",           "1e2",   "100",   ""},
        {"MAX_LIVE",           "5",     "5",     ""},
        {"MAX_LIVE",           "-1",    "",      ""},
        {"LEARN_SOFT",         "false", "false", "false"},
        // clang-format on
    };
    for (const auto& c : cases) {
        gf_freshRun();
        const std::string told = format("<parameter name='{}' value='{}'/>", c.name, c.told);
        for (const auto& [parameters, written] : {std::pair{told, c.written}, {std::string(), c.untold}}) {
            EXPECT_STREQ(
                written,
                lf_applied(parameters).find_child_by_attribute("name", c.name).attribute("value").as_string())
                << c.name;
        }
        EXPECT_EQ(std::string_view(c.name) == "WEEK", WEEK.value) << "which is kept in no file";
    }
    rangeBeforeAuto = 33;
    AUTO_RANGE.value = true;
    lf_applied("<parameter name='AUTO_RANGE' value='false'/><parameter name='LATERAL_RANGE' value='77'/>"
               "<parameter name='MAX_FIT' value='11'/>");
    EXPECT_EQ(77, LATERAL_RANGE.value) << "not the one from before the automatic range";
    EXPECT_EQ(6.0F, MAX_FIT_FL.value) << "hours";
}

// --- figures

TEST(QualityFactor, countsOptionsDaysAndHoursAndIsShownInShort)
{
    std::vector<ParkPos> stands(2);
    EXPECT_EQ("  ", gf_qualityText(gf_qualityFactor(stands)));
    const auto option = [](int32_t day, const char* hours, bool real, int32_t sequence) {
        HoursSet set;
        hoursToSet(hours, set);
        return StandOption{"", "", "", "", "", set, sequence, day, true, real};
    };
    // 10000 + 20 * 3 + 100 * 2 + 2 * 5 = 10270 on one of two stands; times 0.00625 is 32.09.
    stands[0].options = {option(1, "1,2,3", true, 1), option(2, "4", true, 1), option(0, "5", true, 1),
                         option(3, "1", true, 0)};
    EXPECT_EQ("32/ 0", gf_qualityText(gf_qualityFactor(stands)));
    // 10000 + 4000 + 100 + 1200 = 15300, halved: 47.8.
    stands[1].options.assign(300, option(7, "0,1,2,3,4,5", false, 1));
    EXPECT_EQ("32/48", gf_qualityText(gf_qualityFactor(stands)));
    EXPECT_EQ("44/ 7", gf_qualityText({44, 7}));
    EXPECT_EQ("45", gf_qualityText({45, 7}));
    EXPECT_EQ("-1/ 0", gf_qualityText({-1, 0}));
}

TEST(Neighbours, areThoseWhoseCirclesReachWithATenthOfRoom)
{
    const std::tuple<LatLon, LatLon, bool> cases[] = {
        {{47, 8}, {47 + 0.018 / 60, 8}, true},
        {{47, 8}, {47 + 0.0185 / 60, 8}, false},
        {{47, 179.9999}, {47, -179.9999}, true},
    };
    for (const auto& [one, other, reach] : cases) {
        std::vector<ParkPos> stands(2);
        for (ParkPos& stand : stands) {
            stand.index = static_cast<uint32_t>(&stand - stands.data()) + 1;
            stand.lat = (stand.index == 1 ? one : other).lat;
            stand.lon = (stand.index == 1 ? one : other).lon;
            stand.radius = 0.01;
        }
        gf_findNeighbours(stands);
        EXPECT_EQ(reach, stands[0].neighbours == std::vector<uint32_t>{2}) << other.lat << " " << other.lon;
        EXPECT_EQ(reach, stands[1].neighbours == std::vector<uint32_t>{1}) << other.lat << " " << other.lon;
    }
}

// --- as people do it

TEST_F(LoadingTest, linksAndNamesAreReadAsPeopleWriteThem)
{
    const std::pair<const char*, const char*> cases[] = {
        {"\"airports\\elsewhere\\XTST.xml\"", "airports/elsewhere/XTST.xml"},
        {"  airports/elsewhere/XTST.xml  ", "airports/elsewhere/XTST.xml"},
        {"Airports\\elsewhere\\XTST.XML", "airports/elsewhere/XTST.XML"},
        {"airportsevil/XTST.xml", ""},
    };
    for (const auto& [link, expected] : cases) {
        place.folder.write("airports/my_ORBX/xtst.TXT", link);
        EXPECT_EQ(expected, gf_foundFile("XTST")) << link;
    }
}

TEST_F(LoadingTest, whatWasLearnedIsFoundWhereItIsSaved)
{
    const std::string path = "airports/my_ORBX/XTST.xml";
    place.folder.write(path, gf_airportText(gf_standText("A1", 0), "<parameter name='BGLpath' value='x'/>"
                                                                   "<parameter name='Qf_real' value='101'/>"
                                                                   "<parameter name='Qf_soft' value='-2'/>"));
    const AirportLoad alone = gf_readApf(gf_sourceAt(path), "XTST");
    EXPECT_TRUE(!alone.learned && alone.apf.quality == (Quality{100, -1}));
    place.folder.write(
        "airports/learned/stock/XTST.xml",
        gf_airportText(gf_standText("M1", 60, "manual='true'"), "<parameter name='handmade' value='true'/>"));
    const AirportLoad load = gf_readApf(gf_sourceAt(path), "XTST");
    ASSERT_EQ(1U, load.apf.stands.size());
    EXPECT_TRUE(load.learned && load.apf.stands[0].manual && load.apf.bglPath == "x");
}

}  // namespace vlt
