#include "liveries/database.h"

#include "core/base/errors.h"
#include "core/base/text.h"
#include "liveries/dbase_reader.h"
#include "liveries/livery_place.h"
#include "liveries/scrambling.h"
#include "standin/publisher.h"

#include <pugixml.hpp>

#include <map>
#include <set>
#include <sstream>

namespace vlt {

constexpr double kNmPerMetre = 1 / 1852.0;

// What is published of data/world, without its registrations; a test changes what it is about.
class DatabaseTest : public LiveryPlace
{
protected:
    DatabaseTest()
    {
        static const std::string text =
            gf_dbaseText(std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world");
        document.load_string(text.c_str());
        document.child("dbase").remove_children();
    }
    void add(const char* section, const char* element, const std::map<const char*, std::string>& attributes)
    {
        pugi::xml_node node = document.child(section).append_child(element);
        for (const auto& [name, value] : attributes) {
            node.append_attribute(name).set_value(value.c_str());
        }
    }
    void addRegistration(const char* reg, const char* airl, const char* type, const char* opr = "",
                         const char* cargo = "")
    {
        add("dbase", "db",
            {{"reg", gf_scrambleRegcode(reg)},
             {"airl", gf_scrambleAirline(airl)},
             {"type", gf_scrambleType(type)},
             {"opr", gf_scrambleAirline(opr)},
             {"cargo", cargo}});
    }
    // The text of what reading throws, empty for nothing.
    [[nodiscard]] static std::string thrown(const pugi::xml_document& document)
    {
        dbase = {};
        try {
            gf_readDbaseSections(document, "input/temp2.xml");
        } catch (const std::exception& e) {
            return e.what();
        }
        return {};
    }
    pugi::xml_document document;
};

TEST_F(DatabaseTest, wingSpansAreHalvedAndAveraged)
{
    document.child("wingspans").remove_children();
    const std::pair<const char*, const char*> spans[] = {
        {"A319", " 34.1"}, {"A320", "+35.8"}, {"B744", "64.4 m"}, {"C172", ""},
        {"C172", "wide"},  {"C172", "m 12"},  {"C172", "-3"},     {"C172", "0"},
        {"C172", "nan"},   {"C172", "inf"},   {"C172", "1e300"},  {"ZZZZ", "90"},
        {"", ""}};
    for (const auto& [type, metres] : spans) {
        add("wingspans", "wingspan", {{"type", gf_scrambleType(type)}, {"meters", metres}});
    }
    EXPECT_EQ("", thrown(document));
    EXPECT_EQ(3U, dbase.halfWingspans.size()) << "useless ones are skipped";
    EXPECT_NEAR(17.05 * kNmPerMetre, halfWingspanNm("A319"), 1e-12);
    EXPECT_NEAR(17.475 * kNmPerMetre, halfWingspanNm("F70"), 1e-12) << "mean of 17.05 and 17.9";
    EXPECT_NEAR(32.2 * kNmPerMetre, largestHalfWingspanNm(), 1e-12);
    EXPECT_NEAR(6, halfWingspanNm("C172") / kNmPerMetre, 3) << "no light type is listed";
}

TEST_F(DatabaseTest, anEmptyListThatIsNeededStopsTheProgram)
{
    const std::set<std::string_view> dispensable{"similar_types", "publishers",      "wingspans",
                                                 "fixes",         "thirdpartiesP3D", "dbase"};
    for (const pugi::xml_node& section : document) {
        const std::string name = section.name();
        const std::string element = section.first_child().name();
        const std::string attribute = section.first_child().first_attribute().name();
        pugi::xml_document changed;
        changed.reset(document);
        changed.child(name.c_str()).remove_children();
        const bool needed = !dispensable.contains(name);
        if (needed) {
            pugi::xml_node list = changed.child(name.c_str()).append_child(element.c_str());
            list.append_attribute(attribute.c_str()).set_value(",,");
        }
        EXPECT_EQ(needed ? format("61: In an xml file section {} {} {} is empty ", name, element, attribute)
                         : "",
                  thrown(changed));
    }
    addRegistration("G-ABCD", "BAW", "A320");
    add("dbase", "db", {{"reg", std::string(25, 'A')}});
    EXPECT_NE(std::string::npos, thrown(document).find(" in row 2 of the registrations in \""));
    add("ICAO_airlines", "ICAO", {{"codes", "ABCDE"}});
    EXPECT_EQ("decrypt airl \"ABCDE\" error", thrown(document));
}

TEST_F(DatabaseTest, groupsFixesAndPublishers)
{
    for (const char* section : {"similar_types", "fixes", "publishers"}) {
        document.child(section).remove_children();
    }
    add("similar_types", "similar", {{"types", gf_scrambleType("A320") + "," + gf_scrambleType("A319")}});
    for (const char* correct : {"A320", "A319"}) {
        add("fixes", "fx", {{"wro", "A32N"}, {"cor", correct}});
    }
    add("fixes", "fx", {{"wro", "X"}, {"cor", "no type"}});
    add("fixes", "fx", {{"cor", "A319"}});
    for (const char* names : {"Zed,Z", "Able", "Zed,Z"}) {
        add("publishers", "pub", {{"names", names}});
    }
    add("large", "lar", {{"types", gf_scrambleType("B744")}});  // which is in the heavy ones too
    EXPECT_EQ("", thrown(document));
    EXPECT_EQ(AcCategory::Large, categoryOf("B744"));
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"A319", "A320"}}), dbase.similarTypes);
    EXPECT_EQ((std::map<std::string, std::string, std::less<>>{{"A32N", "A320"}}), dbase.fixes);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"Able"}, {"Zed", "Z"}}), dbase.publishers);
    EXPECT_EQ("Aerosoft", dbase.thirdParties.at(0).pub);
    EXPECT_EQ("EDDM", dbase.thirdParties[0].arpts.at(1));
    EXPECT_TRUE(isValidModel("F70") && isValidAirline("CFE"));
    EXPECT_FALSE(isValidModel("F7") || isValidModel("") || isValidAirline("X-X") || isValidAirline(""));
}

TEST_F(DatabaseTest, registrationsKeepTheirFirstRowAndAreFoundWithAndWithoutHyphen)
{
    addRegistration("G-DBCJ", "BAW", "A319");
    addRegistration("PH-BXA", "KLM", "B738", "CFE", "yes");
    addRegistration("G-DBCJ", "CFE", "A320");
    addRegistration("AB+12", "", "F16");
    addRegistration("N123AB", "UAL", "B738");
    addRegistration("N-123AC", "UAL", "B738");
    EXPECT_EQ("", thrown(document));
    const std::pair<const char*, const char*> cases[] = {{"GDBCJ", "BAW A319  "},
                                                         {"G-DBCJ", "BAW A319  "},
                                                         {"PHBXA", "KLM B738 CFE cargo"},
                                                         {"AB+12", " F16  "},
                                                         {"PH-BXA", "KLM B738 CFE cargo"},
                                                         {"N123AB", "UAL B738  "},
                                                         {"", "none"},
                                                         {"N123AC", "none"},
                                                         {"P-HBXA", "none"},
                                                         {"PHBX", "none"}};
    for (const auto& [regcode, row] : cases) {
        const RegRecord* r = findRegcode(regcode);
        EXPECT_EQ(row, r == nullptr
                           ? "none"
                           : format("{} {} {} {}", r->airl, r->type, r->opr, r->cargo ? "cargo" : ""))
            << regcode;
        EXPECT_EQ(r == nullptr ? "" : r->opr, gf_operatorOfRegcode(regcode));
        EXPECT_EQ(r == nullptr ? "" : r->airl, gf_ownerOfRegcode(regcode));
    }
}

TEST_F(DatabaseTest, shortPrivateRegistrationsAreFoundInTitles)
{
    for (const char* regcode : {"ABC", "ABCD", "LONGE"}) {
        dbase.registrations[regcode] = {"PVT", "C172", "", false};
    }
    dbase.registrations["XYZ"] = {"BAW", "A319", "", false};
    EXPECT_EQ("ABCD", findRegPrefixInTitle("Cessna ABCDE white"));
    EXPECT_EQ("ABC", findRegPrefixInTitle("ABC"));
    for (const char* title : {"Cessna XYZ LONGE", "AB", ""}) {
        EXPECT_EQ("", findRegPrefixInTitle(title)) << title;
    }
}

TEST_F(DatabaseTest, theFileIsReadAndGone)
{
    std::ostringstream good;
    document.save(good);
    for (const std::string& text : {good.str(), std::string("<aircrafts><aircraft"), std::string()}) {
        workplace.folder.write("input/temp2.xml", text);
        try {
            gf_readDbaseFile("input/temp2.xml");
            EXPECT_EQ(good.str(), text);
            EXPECT_FALSE(dbase.aircrafts.empty());
        } catch (const UserErrorException& e) {
            EXPECT_NE(good.str(), text);
            EXPECT_TRUE(std::string_view(e.what()).starts_with("60: \"")) << e.what();
        }
        EXPECT_FALSE(std::filesystem::exists("input/temp2.xml")) << text;
    }
}

}  // namespace vlt
