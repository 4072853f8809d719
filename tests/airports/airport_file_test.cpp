#include "airports/airport_file.h"

#include "airports/airport_place.h"
#include "airports/loading.h"
#include "support/world.h"

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

    // Few values, so that options are alike now and then; the data base knows a G-DBCJ.
    static StandOption option(bool archived, int32_t sequence)
    {
        const bool known = draw(3) == 0;
        StandOption made{known ? "BAW" : one({"BAW", "KLM"}),
                         known ? "A319" : one({"A319", "B738"}),
                         known ? "G-DBCJ" : one({"R1", "R2"}),
                         one({"", "C1"}),
                         one({"", "C2"}),
                         {}};
        hoursToSet(one({"0,1", "1,2", "3", "46,47"}), made.hours);
        made.sequence = sequence;
        made.day = one({1, 2});
        made.archived = archived;
        made.real = draw(4) != 0;
        return made;
    }
    static ParkPos stand(uint32_t number, uint32_t options)
    {
        ParkPos made;
        made.id = format("{}\"'<&>{}", draw(9), number);
        made.lat = draw(180'000'000) / 1e6 - 90;
        made.lon = draw(360'000'000) / 1e6 - 180 + 1e-6;
        made.heading = draw(3600) / 10.0 * kRadPerDeg;
        made.radius = (1 + draw(900)) / 10.0 / kMetresPerNm;
        made.heli = draw(5) == 0;
        made.cargo = !made.heli && draw(2) == 0;
        made.ramp = draw(2) == 0;
        for (uint32_t i = 1; i <= options; ++i) {
            made.options.push_back(option(true, static_cast<int32_t>(i)));
        }
        return made;
    }
};

TEST_F(AirportFileTest, aStandIsReadInItsUnitsOrLeftOutWithWhomTheDataBaseKnows)
{
    const struct {
        const char *attributes, *option, *shown;
    } cases[] = {
        // clang-format off
        {"latitude='47.5' longitude='0' radius='18.52' cargo='yes'", "", "A 47.500000 0.000000 90.0 18.5 cargo"},
        {"latitude='0' longitude='-180' heli='1' radius='1852'",     "", "A 0.000000 -180.000000 90.0 1852.0 heli"},
        {"latitude='0' longitude='0'",                "", ""},
        {"latitude='nan' longitude='8'",              "", ""},
        {"latitude='90.1' longitude='8'",             "", ""},
        {"latitude='47' longitude='-180.1'",          "", ""},
        {"latitude='47' longitude='8' radius='-0.1'", "", ""},
        {"latitude='47' longitude='8' radius='1853'", "", ""},
        {nullptr, "cs='ABC123:ABC456' hh='0,47' day='7.9'",   " [   ABC123:ABC456 day 7 at 0,47 #1]"},
        {nullptr, "cs='ABC123' hh='1' soft='true'",         " [   ABC123: day 0 at 1 soft #1]"},
        {nullptr, "cs=':ABC456' hh='1'",                    " [   :ABC456 day 0 at 1 #1]"},
        {nullptr, "cs='too:many:colons'",                   " [   too: day 0 at  #1]"},
        {nullptr, "hh='5,48,-1,x,,+6,7.5,3'",               " [   : day 0 at 3,5,6 #1]"},
        {nullptr, "reg='G-EUUU' airl='XXX' type='YYYY'",    " [G-EUUU SHT A320 : day 0 at  #1]"},
        {nullptr, "reg='X-Y' airl='XXX' type='YYYY'",       " [X-Y XXX YYYY : day 0 at  #1]"},
        // clang-format on
    };
    for (const auto& c : cases) {
        const char* where = c.attributes == nullptr ? "latitude='1' longitude='1'" : c.attributes;
        pugi::xml_document document;
        document.load_string(
            gf_airportText(format("<parkpos id='A' heading='90' {}><opt {}/></parkpos>", where, c.option))
                .c_str());
        std::vector<ParkPos> stands;
        gf_readParkPositions(document, stands);
        std::string shown = stands.empty() ? "" : gf_shownOption(stands[0].options.at(0));
        if (c.attributes != nullptr && !stands.empty()) {
            stands[0].options.clear();
            shown = gf_shownStand(stands[0]);
        }
        EXPECT_EQ(c.shown, shown) << where << c.option;
    }
}

// An archived airport, and what was taught about it, come back as they were saved; of two options that
// mean the same aircraft in a common half hour the earlier one stays.
TEST_F(AirportFileTest, whatWasLearnedComesBackOverItsArchivedAirport)
{
    std::filesystem::create_directories("airports/learned/stock");
    const char* learned = "airports/learned/stock/XTST.xml";
    EXPECT_FALSE(saveAirportFile({}, "airports/nowhere/XTST.xml", AirportFileMode::Learned));
    for (uint32_t round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        std::filesystem::remove(learned);
        Apf apf;
        apf.name = "R&D <\"Field\">";
        apf.publisher = one({"A&B", "stock"});
        apf.altitude = one({-12, 1400});
        apf.quality = {one({0, 44}), one({7, 100})};
        apf.handmade = true;  // so that all of a stand is written
        for (uint32_t i = 1 + draw(9); i > 0; --i) {
            apf.stands.push_back(stand(i, draw(4)));
        }
        ASSERT_TRUE(saveAirportFile(apf, "served/archive/stock/XTST.xml", AirportFileMode::Learned));
        AirportLoad load = gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST");
        ASSERT_EQ(gf_shownStands(apf.stands), gf_shownStands(load.apf.stands)) << load.failed;
        EXPECT_EQ(apf.quality, load.apf.quality);
        EXPECT_EQ(std::tie(apf.name, apf.publisher, apf.altitude),
                  std::tie(load.apf.name, load.apf.publisher, load.apf.altitude));
        EXPECT_FALSE(load.learned || load.apf.handmade);

        apf.handmade = round % 3 == 0;
        Apf expected = apf;
        for (size_t i = 0; i < apf.stands.size() && !apf.handmade; ++i) {
            ParkPos& taught = apf.stands[i];
            taught.radiusChanged = draw(3) == 0;
            taught.radius = taught.radiusChanged ? (1 + draw(900)) / 10.0 / kMetresPerNm : taught.radius;
            taught.cargoChanged = draw(3) == 0;
            taught.cargo = taught.cargoChanged ? draw(2) == 0 : taught.cargo;
            std::vector<StandOption> before = std::exchange(taught.options, {});
            expected.stands[i] = taught;
            for (uint32_t k = draw(4); k > 0; --k) {
                taught.options.push_back(option(false, 0));
                const StandOption& o = taught.options.back();
                const auto same = [&o](const StandOption& b) {
                    return std::tie(b.reg, b.airline, b.type, b.day, b.real) ==
                               std::tie(o.reg, o.airline, o.type, o.day, o.real) &&
                           (b.hours & o.hours).any();
                };
                if (std::ranges::none_of(before, same)) {
                    before.push_back(o);
                    before.back().sequence = static_cast<int32_t>(before.size());
                }
            }
            expected.stands[i].options = before;
        }
        if (!apf.handmade) {
            apf.stands.push_back(stand(99, 2));
            apf.stands.back().manual = true;
            expected.stands.push_back(apf.stands.back());
            std::ranges::for_each(expected.stands.back().options, [](auto& o) { o.archived = false; });
        }
        ASSERT_TRUE(saveAirportFile(apf, learned, AirportFileMode::Learned));
        load = gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST");
        EXPECT_EQ(gf_shownStands(expected.stands), gf_shownStands(load.apf.stands));
        EXPECT_EQ(gf_qualityFactor(expected.stands), load.apf.quality);
        EXPECT_EQ(load.apf.stands.size(), load.apf.stands.back().index);
        EXPECT_TRUE(load.learned && load.settings);
        EXPECT_EQ(apf.handmade, load.apf.handmade);
    }
}

}  // namespace vlt
