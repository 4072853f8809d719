#include "airports/airport_file.h"

#include "airports/airport_place.h"
#include "airports/learned_file.h"
#include "airports/loading.h"
#include "core/errors.h"
#include "support/world.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <sstream>

namespace vlt {

class AirportFileTest : public AirportPlace
{
protected:
    void SetUp() override
    {
        AirportPlace::SetUp();
        gf_loadSmallWorld();
    }
    void TearDown() override
    {
        gf_clearWorld();
        AirportPlace::TearDown();
    }

    static pugi::xml_document parsed(const std::string& text)
    {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_string(text.c_str())) << text;
        return document;
    }
    static std::vector<ParkPos> read(const std::string& text)
    {
        std::vector<ParkPos> stands;
        gf_readParkPositions(parsed(text), stands);
        return stands;
    }
    // A document's text without what tells when and by whom it was written.
    static std::string withoutMeta(const std::filesystem::path& file)
    {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_file(file.c_str())) << file;
        document.remove_child("meta");
        std::ostringstream text;
        document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
        return text.str();
    }
    static std::filesystem::path sample(const char* name)
    {
        return std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world/user_airports" / name;
    }
};

TEST_F(AirportFileTest, readsAStandInItsUnits)
{
    const std::vector<ParkPos> stands =
        read(gf_airportText("<parkpos id='A1' latitude='47.5' longitude='-8.25' heading='90.0' "
                            "radius='18.52' ramp='true' cargo='yes'/>"
                            "<parkpos id='H' latitude='1' longitude='0' heli='1'/><parkpos id='NO' "
                            "latitude='0' longitude='0'/>"));
    ASSERT_EQ(2U, stands.size()) << "one at 0/0 has no position";
    EXPECT_DOUBLE_EQ(47.5, stands[0].lat);
    EXPECT_DOUBLE_EQ(-8.25, stands[0].lon);
    EXPECT_NEAR(1.5707963, stands[0].heading, 1e-6);
    EXPECT_NEAR(0.01, stands[0].radius, 1e-9);
    EXPECT_TRUE(stands[0].ramp && stands[0].cargo && !stands[0].heli);
    EXPECT_TRUE(stands[1].heli);
    EXPECT_EQ(0, stands[1].heading);
}

TEST_F(AirportFileTest, readsWhoStoodThere)
{
    const struct {
        const char *what, *attributes, *expected;  // call signs, airline, type and hours
    } cases[] = {
        {"two call signs", "cs='ABC123:ABC456' hh='0,47'", "ABC123:ABC456   0,47"},
        {"one", "cs='ABC123' hh='1'", "ABC123:   1"},
        {"the second alone", "cs=':ABC456' hh='1'", ":ABC456   1"},
        {"too many colons", "cs='A:B:C' hh='1'", "A:   1"},
        {"junk among the hours", "hh='5,48,-1,x,,+6,7.5,3'", ":   3,5,6"},
        {"a known registration", "reg='G-DBCJ' airl='XXX' type='YYYY' hh='1'", ": BAW A319 1"},
        {"another operator's", "reg='G-EUUU' hh='1'", ": SHT A320 1"},
        {"an unknown one", "reg='X-Y' airl='XXX' type='YYYY' hh='1'", ": XXX YYYY 1"},
    };
    for (const auto& c : cases) {
        const auto document = parsed(format("<opt {}/>", c.attributes));
        const StandOption option = gf_readOption(document.child("opt"), true, 3);
        EXPECT_EQ(c.expected, format("{}:{} {} {} {}", option.callsign, option.coupledCs, option.airline,
                                     option.type, setToHours(option.hours)))
            << c.what;
        EXPECT_TRUE(option.real && option.archived) << c.what;
    }
}

TEST_F(AirportFileTest, refusesWhatNoAirportHas)
{
    EXPECT_THROW(read(gf_airportText(gf_standText("A1", 0) + gf_standText("A1", 50))), UserErrorException);
    std::string many;
    for (size_t i = 0; i <= kMostStands; ++i) {
        many += "<parkpos/>";
    }
    EXPECT_THROW(read(gf_airportText(many)), UserErrorException);
    for (const char* junk :
         {"latitude='nan' longitude='8'", "latitude='91' longitude='8'", "latitude='47' longitude='inf'",
          "latitude='47' longitude='181'", "latitude='47' longitude='8' radius='-1'",
          "latitude='47' longitude='8' radius='1e300'", "latitude='47' longitude='8' heading='nan'"}) {
        EXPECT_TRUE(read(gf_airportText(format("<parkpos id='A' {}/>", junk))).empty()) << junk;
    }
    for (const char* edge :
         {"latitude='90' longitude='8'", "latitude='-90' longitude='0'", "latitude='0.1' longitude='180'"}) {
        EXPECT_EQ(1U, read(gf_airportText(format("<parkpos id='A' {}/>", edge))).size()) << edge;
    }
    EXPECT_TRUE(read("<parkpositions/>").empty());
    EXPECT_TRUE(read("<something/>").empty());
}

TEST_F(AirportFileTest, everyPrefixOfAFileLoadsWholeOrNotAtAll)
{
    const std::string text = gf_airportText(
        gf_standText("A1", 0, "cargo='true'", "<opt reg='G-DBCJ' day='1' hh='1,2' cs='A:B'/>") +
        gf_standText("A2", 60));
    for (size_t length = 0; length < text.size(); ++length) {
        place.folder.write("airports/my_thirdparty/XTST.xml", text.substr(0, length));
        Apf apf;
        apf.code = "XTST";
        bool loaded = false;
        try {
            loaded = gf_readApf("airports/my_thirdparty/XTST.xml", apf).empty();
        } catch (const UserErrorException&) {  // whole, but without an altitude
        }
        EXPECT_FALSE(loaded) << length;
        EXPECT_TRUE(apf.stands.empty()) << length;
    }
}

// --- round trips

TEST_F(AirportFileTest, aGeneratedFileIsWrittenAsItWasRead)
{
    const std::filesystem::path file = sample("my_thirdparty/XSEE.xml");
    place.folder.write("airports/my_thirdparty/XSEE.xml", gf_textOfFile(file));
    Apf apf;
    apf.code = "XSEE";
    ASSERT_EQ("", gf_readApf("airports/my_thirdparty/XSEE.xml", apf));
    apf.stands[0].options.push_back({"PVT", "C172", "X-Y", "A", "B", HoursSet(1), 1, 1, false, true});
    ASSERT_TRUE(saveAirportFile(apf, "out.xml", AirportFileMode::Generated));
    EXPECT_EQ(withoutMeta(file), withoutMeta("out.xml")) << "without the options of the moment";
}

TEST_F(AirportFileTest, aLearnedFileIsWrittenAsItWasRead)
{
    const std::filesystem::path file = sample("learned/stock/XVEL.xml");
    std::string stands;
    for (const char* id : {"N3", "N5", "S2", "R16"}) {
        stands += gf_standText(id, 100 + static_cast<double>(stands.size()));
    }
    archive("XVEL", gf_airportText(stands));
    place.folder.write("airports/learned/stock/XVEL.xml", gf_textOfFile(file));
    Apf apf;
    apf.code = "XVEL";
    ASSERT_EQ("", gf_readApf("archive/stock/XVEL.xml", apf));
    apf.name = "Velatra Field";
    ASSERT_TRUE(saveAirportFile(apf, "out.xml", AirportFileMode::Learned));
    EXPECT_EQ(withoutMeta(file), withoutMeta("out.xml"));
}

TEST_F(AirportFileTest, anyAirportReadsBackAsItWasSaved)
{
    Apf apf;
    apf.name = "R&D <\"Field\">";
    apf.publisher = "A&B";
    apf.handmade = true;
    const LatLon places[] = {{-89.999999, 179.999999}, {90, -180}, {1e-6, -1e-6}, {47.123456, 8.654321}};
    for (const LatLon& at : places) {
        ParkPos stand;
        const auto i = static_cast<int32_t>(apf.stands.size());
        stand.id = format("{}\"'<&>", i);
        stand.lat = at.lat;
        stand.lon = at.lon;
        stand.heading = (359.9 - 90 * i) * kRadPerDeg;
        stand.radius = (0.1 + 29.9 * i) / kMetresPerNm;
        stand.heli = i == 1;
        stand.cargo = i > 1;
        stand.ramp = i == 2;
        for (int32_t k = 1; k <= i; ++k) {
            stand.options.push_back({"BAW", "A319", format("R{}", k), k == 1 ? "" : "C1", k == 2 ? "" : "C2",
                                     HoursSet(0x800000000001 << k), k, 2 * k + 1, true, k != 2});
        }
        apf.stands.push_back(stand);
    }
    ASSERT_TRUE(saveAirportFile(apf, "one.xml", AirportFileMode::Learned));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file("one.xml"));
    std::vector<ParkPos> again;
    gf_readParkPositions(document, again);
    ASSERT_EQ(apf.stands.size(), again.size());
    for (size_t i = 0; i < again.size(); ++i) {
        const ParkPos& a = apf.stands[i];
        const ParkPos& b = again[i];
        EXPECT_EQ(std::tie(a.id, a.heli, a.cargo, a.ramp), std::tie(b.id, b.heli, b.cargo, b.ramp));
        EXPECT_NEAR(a.lat, b.lat, 6e-7);
        EXPECT_NEAR(a.lon, b.lon, 6e-7);
        EXPECT_NEAR(a.radius, b.radius, 0.06 / kMetresPerNm);
        EXPECT_NEAR(a.heading, b.heading, 0.06 * kRadPerDeg);
        const auto same = [](const StandOption& o, const StandOption& p) {
            const auto all = [](const StandOption& x) {
                return std::tie(x.airline, x.type, x.reg, x.callsign, x.coupledCs, x.sequence, x.day, x.real);
            };
            return all(o) == all(p) && o.hours == p.hours;
        };
        EXPECT_TRUE(std::ranges::equal(a.options, b.options, same)) << a.id;
    }
}

}  // namespace vlt
