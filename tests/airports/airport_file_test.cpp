#include "airports/airport_file.h"

#include "airports/airport_place.h"
#include "airports/learned_file.h"
#include "airports/loading.h"
#include "core/base/errors.h"
#include "core/base/random.h"
#include "support/world.h"
#include "traffic/geodesy.h"

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
    static std::string withoutMeta(pugi::xml_document& document)
    {
        document.remove_child("meta");
        std::ostringstream text;
        document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
        return text.str();
    }
    static std::string withoutMeta(const std::filesystem::path& file)
    {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_file(file.c_str())) << file;
        return withoutMeta(document);
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
        const char *what, *attributes, *callsign, *coupled, *airline, *type, *hours;
    } cases[] = {
        {"two call signs", "cs='ABC123:ABC456' hh='0,47'", "ABC123", "ABC456", "", "", "0,47"},
        {"one", "cs='ABC123' hh='1'", "ABC123", "", "", "", "1"},
        {"the second alone", "cs=':ABC456' hh='1'", "", "ABC456", "", "", "1"},
        {"too many colons", "cs='A:B:C' hh='1'", "A", "", "", "", "1"},
        {"junk among the hours", "hh='5,48,-1,x,,+6,7.5,3'", "", "", "", "", "3,5,6"},
        {"a known registration", "reg='G-DBCJ' airl='XXX' type='YYYY' hh='1'", "", "", "BAW", "A319", "1"},
        {"another operator's", "reg='G-EUUU' hh='1'", "", "", "SHT", "A320", "1"},
        {"an unknown one", "reg='X-Y' airl='XXX' type='YYYY' hh='1'", "", "", "XXX", "YYYY", "1"},
    };
    for (const auto& c : cases) {
        const auto document = parsed(format("<opt {}/>", c.attributes));
        const StandOption option = gf_readOption(document.child("opt"), true, 3);
        EXPECT_EQ(c.callsign, option.callsign) << c.what;
        EXPECT_EQ(c.coupled, option.coupledCs) << c.what;
        EXPECT_EQ(c.airline, option.airline) << c.what;
        EXPECT_EQ(c.type, option.type) << c.what;
        EXPECT_EQ(c.hours, setToHours(option.hours)) << c.what;
        EXPECT_TRUE(option.real && option.archived) << c.what;
        EXPECT_EQ(0, option.day) << c.what;
    }
    EXPECT_NE(std::string::npos, log().find("gf_hours2bitset invalid hour \"48\" in 5,48,-1,x,,+6,7.5,3"));
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
        const AirportLoad load = gf_readApf("airports/my_thirdparty/XTST.xml", "XTST");
        EXPECT_NE("", load.failed) << length;
        EXPECT_TRUE(load.apf.stands.empty()) << length;
    }
}

// --- round trips

TEST_F(AirportFileTest, aGeneratedFileIsWrittenAsItWasRead)
{
    const std::filesystem::path file = sample("my_thirdparty/XSEE.xml");
    place.folder.write("airports/my_thirdparty/XSEE.xml", gf_textOfFile(file));
    Apf apf = gf_readApf("airports/my_thirdparty/XSEE.xml", "XSEE").apf;
    ASSERT_FALSE(apf.stands.empty());
    apf.stands[0].options.push_back({"PVT", "C172", "X-Y", "A", "B", HoursSet(1), 1, 1, false, true});
    ASSERT_TRUE(saveAirportFile(apf, "out.xml", AirportFileMode::Generated));
    EXPECT_EQ(withoutMeta(file), withoutMeta("out.xml")) << "without the options of the moment";
}

TEST_F(AirportFileTest, aLearnedFileIsWrittenAsItWasRead)
{
    for (const char* code : {"XVEL", "XBRG"}) {
        const std::filesystem::path file = sample("learned/stock") / (std::string(code) + ".xml");
        std::string stands;
        for (const char* id : {"N3", "N5", "S2", "R16"}) {
            stands += gf_standText(id, 100 + static_cast<double>(stands.size()), "",
                                   "<opt reg='OLD' airl='BAW' type='A319' day='1' hh='1'/>");
        }
        std::string text = gf_airportText(stands);
        text.replace(text.find("Testfield"), 9, std::string(code) == "XVEL" ? "Velatra Field" : "Bergstadt");
        text.replace(text.find("1000"), 4, "2400");
        archive(code, text);
        place.folder.write(format("airports/learned/stock/{}.xml", code), gf_textOfFile(file));
        AirportLoad load = gf_readApf(format("archive/stock/{}.xml", code), code);
        ASSERT_TRUE(load.settings) << load.failed;
        gf_applyParkingSettings(*load.settings);
        Apf& apf = load.apf;
        if (!apf.handmade) {
            for (ParkPos& stand : apf.stands) {
                std::erase_if(stand.options, [](const StandOption& option) { return option.archived; });
            }
        }
        Quality inFile{22, 0};
        apf.quality = inFile;
        ASSERT_TRUE(saveAirportFile(apf, "out.xml", AirportFileMode::Learned));
        EXPECT_EQ(withoutMeta(file), withoutMeta("out.xml")) << code;
        EXPECT_EQ(std::string(code) == "XBRG", apf.handmade);
    }
}

TEST_F(AirportFileTest, anyAirportReadsBackAsItWasSaved)
{
    gf_seedRandom(7);
    const auto draw = [](uint32_t n) { return gf_randomNumber() % n; };
    for (int round = 0; round < 40; ++round) {
        Apf apf;
        apf.name = "R&D <\"Field\">";
        apf.publisher = "A&B";
        apf.handmade = true;
        for (uint32_t i = draw(30); i > 0; --i) {
            ParkPos stand;
            stand.id = format("{}\"'<&>{}", draw(9), i);
            stand.lat = draw(180'000'000) / 1e6 - 90;
            stand.lon = draw(360'000'000) / 1e6 - 180 + 1e-6;
            stand.heading = draw(3600) / 10.0 * kRadPerDeg;
            stand.radius = draw(900) / 10.0 / kMetresPerNm;
            stand.heli = draw(5) == 0;
            stand.cargo = !stand.heli && draw(2) == 0;
            stand.ramp = draw(2) == 0;
            for (uint32_t k = draw(4); k > 0; --k) {
                stand.options.push_back({"BAW", "A319", format("R{}", draw(9)), draw(2) == 0 ? "" : "C1",
                                         draw(2) == 0 ? "" : "C2", HoursSet(1 + draw(1u << 30)),
                                         static_cast<int32_t>(stand.options.size()) + 1,
                                         static_cast<int32_t>(1 + draw(7)), true, draw(2) == 0});
            }
            apf.stands.push_back(stand);
        }
        ASSERT_TRUE(saveAirportFile(apf, "one.xml", AirportFileMode::Learned));
        pugi::xml_document document;
        ASSERT_TRUE(document.load_file("one.xml"));
        Apf again = apf;
        again.stands.clear();
        gf_readParkPositions(document, again.stands);
        ASSERT_EQ(apf.stands.size(), again.stands.size());
        for (size_t i = 0; i < apf.stands.size(); ++i) {
            const ParkPos& a = apf.stands[i];
            const ParkPos& b = again.stands[i];
            EXPECT_EQ(a.id, b.id);
            EXPECT_NEAR(a.lat, b.lat, 6e-7);
            EXPECT_NEAR(a.lon, b.lon, 6e-7);
            EXPECT_NEAR(a.radius, b.radius, 0.06 / kMetresPerNm);
            EXPECT_NEAR(a.heading, b.heading, 0.06 * kRadPerDeg);
            EXPECT_EQ(std::tie(a.heli, a.cargo, a.ramp), std::tie(b.heli, b.cargo, b.ramp));
            ASSERT_EQ(a.options.size(), b.options.size());
            for (size_t k = 0; k < a.options.size(); ++k) {
                const auto all = [](const StandOption& o) {
                    return std::tie(o.airline, o.type, o.reg, o.callsign, o.coupledCs, o.sequence, o.day,
                                    o.real);
                };
                EXPECT_EQ(all(a.options[k]), all(b.options[k]));
                EXPECT_EQ(a.options[k].hours, b.options[k].hours);
            }
        }
        ASSERT_TRUE(saveAirportFile(again, "two.xml", AirportFileMode::Learned));
        EXPECT_EQ(withoutMeta("one.xml"), withoutMeta("two.xml"));
    }
}

}  // namespace vlt
