// What a scan makes of aircraft.cfg files: the rules of sections and keys, and the reports on what is wrong.
#include "liveries/aircraft_cfg.h"

#include "liveries/cfg_text.h"
#include "liveries/livery_place.h"
#include "liveries/section_judge.h"

#include <set>

namespace vlt {

class AircraftCfgTest : public LiveryPlace
{
protected:
    AircraftCfgTest()
    {
        dbase.fixes = {{"A32N", "A20N"}};
        dbase.aircrafts.insert({"A320", "C172", "A20N", "B744"});
        dbase.large.insert("A320");
        dbase.ICAO_airlines.insert({"KLM", "BAW", "ZZZ"});
        dbase.registrations["PH-BXA"] = {"KLM", "A320", "", false};
        dbase.registrations["N77"] = {"PVT", "C172", "", false};
        for (const char* name : {"model", "texture", "texture.A", "Model.B"}) {
            std::filesystem::create_directories(home / name);
        }
        workplace.folder.write("plane/model/.air", "");
        workplace.folder.write("plane/Model.B/x.air", "");
    }

    // Of each livery "airline model title atcid cargo", then all reports, lines apart by "|".
    std::string scan(const std::string& sections, const char* model = "A320", bool ivao = false)
    {
        const CfgPlace place{home / "aircraft.cfg",
                             ivao ? "C:\\IVAO_MTL\\IVAO_A320w\\aircraft.cfg" : "C:\\p\\aircraft.cfg"};
        last =
            gf_scanCfgText(3, place, "[General]\natc_model = " + std::string(model) + " \n" + sections, ivao);
        std::string text;
        for (const ScannedLivery& found : last.found) {
            const Livery& l = found.livery;
            text += format("{} {} {} {} {}|", l.airline, l.model, l.title, l.atcid, l.cargo ? 1 : 0);
        }
        const CfgReports& r = last.reports;
        for (const auto* list :
             {&r.withoutSections, &r.invalidFiles, &r.incomplete, &r.airlineCodes, &r.modelCodes, &r.fixes}) {
            for (const std::string& line : *list) {
                text += line + "|";
            }
        }
        return text;
    }

    const std::filesystem::path home = workplace.folder.path() / "plane";
    CfgScan last;
};

TEST_F(AircraftCfgTest, sectionsBecomeLiveriesByTheirKeys)
{
    const std::pair<const char*, const char*> table[] = {
        {"title=T\natc_parking_codes=KLM,BAW", "KLM A320 T  0|"},
        {"title=T\natc_parking_codes=KLMX\natc_parking_types=gate,cargo", "KLM A320 T  1|"},
        {"title=T\natc_parking_codes=KLMC", "KLM A320 T  0|"},
        {"title=T\natc_parking_codes=KLMA\natc_id=PH-BXA",
         "KLM A320 T PH-BXA 0|KLMA         in C:\\p\\aircraft.cfg |"},
        {"title=T\natc_parking_codes=RFO", ""},
        {"title=T\natc_parking_codes=,BJO\natc_id= PHBXA ; tail", "KLM A320 T PHBXA 0|"},
        {"title=T // x ; y\natc_parking_codes=BAW", "BAW A320 T // x ; y  0|"},
        {"title=\"T 1\"\natc_parking_codes=BAW\nmodel=\"\"\ntexture=A // red", "BAW A320 T 1  0|"},
        {"title=T\natc_parking_codes=BAW\nmodel=b\nSIM=X ; y\ntexture=//none", "BAW A320 T  0|"},
        {"title=T\natc_parking_codes=BAW\ntexture=A//b",
         "C:\\p\\texture.A//b C:\\p\\aircraft.cfg does not exist|"},
        {"title=T\natc_parking_codes=BAW\nsim=no",
         "C:\\p\\model.\\no.air C:\\p\\aircraft.cfg does not exist|"},
        {"title=T\ntitle=U", "C:\\p title=T has more than one title key|"},
        {"title=T\natc_id=A1\natc_id=A2", "C:\\p, title=T, has more than one atc_id key|"},
        {"atc_parking_codes=BAW", "C:\\p atc_parking_codes=BAW misses title|"},
        {"title=T\natc_parking_codes=ZZZ\natc_id=PH-BXA", "ZZZ A320 T  0|"},
        {"title=T\natc_parking_codes=BAW\natc_id=PH-BXA,PH-BXB", "BAW A320 T  0|"},
        {"title=T\natc_parking_codes=BAW\natc_id=*", "BAW A320 T  0|"},
        {"title=T\natc_parking_codes=BAW\natc_id=ABCDEFGHIJKLM", "BAW A320 T  0|"},
        {"title=T\natc_id=G-NONE",
         "\"C:\\p\\aircraft.cfg\" \"T\" has no airline and its regcode is not in my dbase (very old liv?)|"},
        {"title=T", "\"C:\\p\\aircraft.cfg\" \"T\" has no airline and no regcode info|"}};
    for (const auto& [keys, expected] : table) {
        EXPECT_EQ(expected, scan("[FLTSIM.0]\n" + std::string(keys) + "\n")) << keys;
    }
    EXPECT_EQ("PVT C172 my N77 bird N77 0|", scan("[fltsim.0]\ntitle=my N77 bird\n", "C172"));
    dontUseTitles = {"T"};
    EXPECT_EQ("", scan("[fltsim.0]\ntitle=T\natc_parking_codes=BAW\n"));
    dontUseTitles.clear();
}

TEST_F(AircraftCfgTest, pathsAreTheSameInAnyCaseAndWithDotsAndBlanksBehindThem)
{
    std::set<uint64_t> all;
    for (int i = 0; i < 1000; ++i) {
        all.insert(gf_pathHash(format("C:\\a\\texture.{}", i)));
        EXPECT_EQ(gf_pathHash(format("C:\\a\\texture.{}", i)),
                  gf_pathHash(format("c:\\A\\TEXTURE.{}. .", i)));
    }
    EXPECT_EQ(1000U, all.size());
}

TEST_F(AircraftCfgTest, headersCountUpFromZeroAndCutTheFile)
{
    const std::string a = "title=A\natc_parking_codes=BAW\n";
    const std::string b = "title=B\natc_parking_codes=KLM\n";
    const std::string invalid = "C:\\p\\aircraft.cfg contains ";
    const std::pair<std::string, std::string> cases[] = {
        {"[fltsim.1]\n" + b + "[fltsim.0]\n" + a, "KLM A320 B  0|BAW A320 A  0|"},
        {"[fltsim.0]\n" + a + "[Other]\n" + b, "BAW A320 A  0|"},
        {"[fltsim.0]\ntitle=A [B] [C]\natc_parking_codes=BAW\n", "BAW A320 A [B] [C]  0|"},
        {"[fltsim.0]\n" + a + "//[fltsim.1]\n  [FltSim.1] \n" + b, "BAW A320 A  0|KLM A320 B  0|"},
        {"[fltsim.0]\n" + a + "[fltsim.1]\n\n// only this\n", "BAW A320 A  0|"},
        {"[fltsim.0]\n[fltsim.1]\n[fltsim.3]\n" + a, invalid + "non-consecutive [fltsim.x] numbers at .x=3|"},
        {"[fltsim.0]\n[fltsim.0]\n" + a, invalid + "non-consecutive [fltsim.x] numbers at .x=0|"},
        {"[fltsim.0]\n[fltsim.x]\n" + a, invalid + "a [fltsim.] section without a number|"},
        {"[fltsim.99999999999]\n" + a, invalid + "fltsim num 99999999999 incorrect|"},
        {a, "C:\\p\\aircraft.cfg|"}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(expected, scan(text)) << text;
    }
}

TEST_F(AircraftCfgTest, modelsAreValidOrFixedOrReported)
{
    const std::string section = "[fltsim.0]\ntitle=A\natc_parking_codes=BAW\n";
    EXPECT_EQ("BAW A20N A  0|Model fix: A32N found in C:\\p\\aircraft.cfg changed into A20N|",
              scan(section, "A32N"));
    EXPECT_EQ("XYZ              in C:\\p\\aircraft.cfg|", scan(section, "XYZ"));
    EXPECT_EQ("Line atc_model= is missing in [General] section of C:\\p\\aircraft.cfg|", scan(section, ""));
    EXPECT_EQ("KLM A320 KLM one  0|", scan("[fltsim.0]\ntitle=KLM one\natc_parking_types=CARGO\n", "", true));
    EXPECT_EQ("XYZ          in C:\\IVAO_MTL\\IVAO_A320w\\aircraft.cfg |",
              scan("[fltsim.0]\ntitle=XYZ one\n", "", true));
    EXPECT_EQ("KLM A320 K PH-BXA 0|", scan("[fltsim.0]\ntitle=K\natc_id=ABCDEFGHIJKLM,PH-BXA,B\n", "", true));
    EXPECT_EQ("C:\\IVAO_MTL\\IVAO_A320w\\aircraft.cfg misses airlinecode in title: K, and no regcode|",
              scan("[fltsim.0]\ntitle=K\n", "", true));
}

TEST_F(AircraftCfgTest, filesComeInAnyEncodingAndSize)
{
    const std::string text =
        "[fltsim.0]\ntitle=J\xFCrgen\natc_parking_codes=BAW\n[General]\natc_model=A320\n";
    std::string wide = "\xFE\xFF";
    for (const char c : text) {
        wide.append({'\0', c});
    }
    std::string utf8 = "\xEF\xBB\xBF" + text;
    utf8.replace(utf8.find('\xFC'), 1, "\xC3\xBC");
    for (const std::string& bytes : {text, wide, utf8, text.substr(0, text.size() - 1)}) {
        const CfgPlace place{workplace.folder.write("plane/aircraft.cfg", bytes), "C:\\p\\aircraft.cfg"};
        const CfgScan scanned = lf_searchLiveriesinFile(1, place);
        ASSERT_EQ(1U, scanned.found.size());
        EXPECT_EQ("J\xC3\xBCrgen", scanned.found[0].livery.title);
    }
    const CfgPlace huge{workplace.folder.write("plane/aircraft.cfg", std::string(kMaxCfgBytes + 1, 'x')),
                        "C:\\p"};
    EXPECT_EQ("C:\\p contains more than 8 MB", lf_searchLiveriesinFile(1, huge).reports.invalidFiles.at(0));
    std::string many;
    for (int i = 0; i < 10000; ++i) {
        many += format("[fltsim.{}]\ntitle=T{}\natc_parking_codes=BAW\n", i, i);
    }
    scan(many);
    EXPECT_EQ(10000U, last.found.size());
}

}  // namespace vlt
