#include "liveries/database.h"

#include "core/base/errors.h"
#include "core/base/text.h"
#include "liveries/dbase_reader.h"
#include "liveries/scrambling.h"
#include "liveries/workplace.h"
#include "support/world.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

namespace vlt {

constexpr double kNmPerMetre = 1 / 1852.0;

// `<` and `>` are letters of the scrambled alphabet.
static std::string lf_escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        escaped += c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    }
    return escaped;
}

static std::string lf_row(const char* reg, const char* airl, const char* type, const char* opr,
                          const char* rest = "")
{
    return format("<db reg=\"{}\" airl=\"{}\" type=\"{}\" opr=\"{}\" {}/>",
                  lf_escaped(gf_scrambleRegcode(reg)), lf_escaped(gf_scrambleAirline(airl)),
                  lf_escaped(gf_scrambleType(type)), lf_escaped(gf_scrambleAirline(opr)), rest);
}

static std::string lf_span(std::string_view type, const char* metres)
{
    return format("<wingspan type=\"{}\" meters=\"{}\"/>", lf_escaped(gf_scrambleType(type)), metres);
}

// The lists of a good document. Those that are needed stop the program when they are empty.
constexpr struct {
    const char *section, *element, *attribute, *list;
    bool needed;
} kLists[] = {
    {"aircrafts", "aircraft", "types", "A319,A320,B744,C172,C25A,F16,R44,F70", true},
    {"high_performance", "hpf", "types", "F16", true},
    {"heavy", "hvy", "types", "B744,A320", true},
    {"large", "lar", "types", "A319,A320,F70", true},
    {"buzjet", "bzj", "types", "C25A", true},
    {"rotorcraft", "rot", "types", "R44", true},
    {"cargo_types", "cargo_type", "types", "B744", true},
    {"similar_types", "similar", "types", "A320,A319", false},
    {"ICAO_airlines", "ICAO", "codes", "BAW,CFE", true},
    {"cargo_operators", "ICAO", "codes", "BAW,CFE", true},
    {"simaddonsP3D", "simaddonP3D", "arpts", "KSEA,EGLL", true},
};

// The sections of a document, by name; a test changes what it is about.
using Sections = std::map<std::string, std::string>;

static Sections lf_goodSections()
{
    Sections sections{
        {"publishers", "<pub names=\"Zed,Z\"/><pub names=\"Able\"/><pub names=\"Zed,Z\"/>"},
        {"wingspans", lf_span("A319", " 34.1") + lf_span("A320", "+35.8") + lf_span("B744", "64.4 m")},
        {"fixes", "<fx wro=\"A32N\" cor=\"A320\"/>"},
        {"thirdpartiesP3D", "<thirdpartieP3D pub=\"Able\" arpts=\"EDDF,EDDM\"/>"},
        {"dbase",
         lf_row("G-DBCJ", "BAW", "A319", "") + lf_row("PH-BXA", "KLM", "B738", "CFE", "cargo=\"yes\"")},
    };
    for (const auto& l : kLists) {
        std::string list;
        for (const std::string_view code : gf_split(l.list, ',')) {
            list += list.empty() ? "" : ",";
            list += l.attribute == std::string_view("types")   ? gf_scrambleType(code)
                    : l.attribute == std::string_view("codes") ? gf_scrambleAirline(code)
                                                               : std::string(code);
        }
        sections[l.section] = format("<{} {}=\"{}\"/>", l.element, l.attribute, lf_escaped(list));
    }
    return sections;
}

static std::string lf_document(const Sections& sections)
{
    std::string text = "<?xml version=\"1.0\"?>";
    for (const auto& [name, content] : sections) {
        text += format("<{}>{}</{}>", name, content, name);
    }
    return text;
}

static void lf_read(const Sections& sections)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(lf_document(sections).c_str()));
    gf_readDbaseSections(document, "input/temp2.xml");
}

class DatabaseTest : public testing::Test
{
protected:
    DatabaseTest()
    {
        gf_clearWorld();
    }
    ~DatabaseTest() override
    {
        gf_clearWorld();
    }
    // The text of what reading throws, empty for nothing.
    static std::string thrown(const Sections& sections)
    {
        try {
            lf_read(sections);
        } catch (const std::exception& e) {
            return e.what();
        }
        return {};
    }
    Workplace workplace;
};

TEST_F(DatabaseTest, typesAirlinesAndCategories)
{
    lf_read(lf_goodSections());
    EXPECT_EQ(8U, dbase.aircrafts.size());
    EXPECT_TRUE(isValidModel("F70") && isValidAirline("CFE"));
    EXPECT_FALSE(isValidModel("F7") || isValidModel("") || isValidAirline("KLM") || isValidAirline(""));
    std::string categories;
    for (const char* type : {"C172", "XXXX", "C25A", "A319", "A320", "B744", "F16", "R44"}) {
        categories += std::to_string(static_cast<int>(categoryOf(type)));
    }
    EXPECT_EQ("00122345", categories) << "light, business, large, heavy, high performance, rotorcraft";
}

TEST_F(DatabaseTest, wingSpansAreHalvedAndAveraged)
{
    Sections sections = lf_goodSections();
    for (const char* bad : {"", "wide", "m 12", "-3", "0", "nan", "inf", "1e300"}) {
        sections["wingspans"] += lf_span("C172", bad);
    }
    sections["wingspans"] += lf_span("ZZZZ", "90") + "<wingspan/>";
    lf_read(sections);
    EXPECT_EQ(3U, dbase.halfWingspans.size()) << "useless ones are skipped";
    EXPECT_NEAR(17.05 * kNmPerMetre, halfWingspanNm("A319"), 1e-12);
    EXPECT_NEAR(17.475 * kNmPerMetre, halfWingspanNm("F70"), 1e-12) << "mean of 17.05 and 17.9";
    EXPECT_NEAR(32.2 * kNmPerMetre, largestHalfWingspanNm(), 1e-12);
    EXPECT_NEAR(6, halfWingspanNm("C172") / kNmPerMetre, 3) << "no light type is listed";
}

TEST_F(DatabaseTest, anEmptyListThatIsNeededStopsTheProgram)
{
    for (const auto& l : kLists) {
        for (const std::string& empty :
             {std::string(), format("<{0}/><{0} {1}=\",,\"/>", l.element, l.attribute)}) {
            dbase = {};
            Sections sections = lf_goodSections();
            sections[l.section] = empty;
            EXPECT_EQ(!l.needed ? ""
                                : format("61: In an xml file section {} {} {} is empty ", l.section,
                                         l.element, l.attribute),
                      thrown(sections));
        }
    }
    dbase = {};
    Sections sections = lf_goodSections();
    for (const char* dispensable : {"publishers", "wingspans", "fixes", "thirdpartiesP3D", "dbase"}) {
        sections.erase(dispensable);
    }
    EXPECT_EQ("", thrown(sections));
    sections["ICAO_airlines"] += "<ICAO codes=\"ABCDE\"/>";
    EXPECT_EQ("decrypt airl \"ABCDE\" error", thrown(sections));
    sections = lf_goodSections();
    sections["dbase"] = lf_row("G-ABCD", "BAW", "A320", "") + "<db reg=\"" + std::string(25, 'A') + "\"/>";
    EXPECT_NE(std::string::npos, thrown(sections).find(" in row 2 of the registrations in \""))
        << thrown(sections);
}

TEST_F(DatabaseTest, groupsFixesAndPublishers)
{
    Sections sections = lf_goodSections();
    sections["fixes"] +=
        "<fx wro=\"A32N\" cor=\"A319\"/><fx wro=\"B73H\" cor=\"B738\"/><fx wro=\"X\" cor=\"\"/>"
        "<fx wro=\"Y\"/><fx cor=\"A319\"/>";
    lf_read(sections);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"A319", "A320"}}), dbase.similarTypes);
    EXPECT_EQ((std::map<std::string, std::string, std::less<>>{{"A32N", "A320"}}), dbase.fixes);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"Able"}, {"Zed", "Z"}}), dbase.publishers);
    EXPECT_EQ((TypeSet{"EGLL", "KSEA"}), dbase.simaddonsP3D);
    ASSERT_EQ(1U, dbase.thirdParties.size());
    EXPECT_EQ("Able", dbase.thirdParties[0].pub);
    EXPECT_EQ((std::vector<std::string>{"EDDF", "EDDM"}), dbase.thirdParties[0].arpts);
}

TEST_F(DatabaseTest, registrationsKeepTheirFirstRow)
{
    Sections sections = lf_goodSections();
    sections["dbase"] += lf_row("G-DBCJ", "CFE", "A320", "") + lf_row("AB+12", "", "F16", "") + "<db/>";
    lf_read(sections);
    const auto row = [](const char* regcode) {
        const RegRecord& r = dbase.registrations.at(regcode);
        return format("{}/{}/{}/{}", r.airl, r.type, r.opr, r.cargo ? "cargo" : "");
    };
    EXPECT_EQ("BAW/A319//", row("G-DBCJ"));
    EXPECT_EQ("KLM/B738/CFE/cargo", row("PH-BXA"));
    EXPECT_EQ("/F16//", row("AB+12"));
}

TEST_F(DatabaseTest, truthIsReadFromTheFirstCharacter)
{
    for (const char* text : {"1", "t", "T", "y", "Y", "true", "Yes", "", "0", "false", "no", " true", "on"}) {
        EXPECT_EQ(std::string_view("1tTyY").find(*text) != std::string_view::npos && *text != '\0',
                  gf_isTrue(text))
            << text;
    }
}

TEST_F(DatabaseTest, registrationsAreFoundWithAndWithoutHyphen)
{
    lf_read(lf_goodSections());
    dbase.registrations["N123AB"] = {"UAL", "B738", "", false};
    dbase.registrations["N-123AC"] = {"UAL", "B738", "", false};
    for (const char* known : {"PHBXA", "PH-BXA", "GDBCJ", "N123AB"}) {
        EXPECT_NE(nullptr, findRegcode(known)) << known;
    }
    for (const char* unknown : {"", "N123AC", "P-HBXA", "PHBX"}) {
        EXPECT_EQ(nullptr, findRegcode(unknown)) << unknown;
    }
    EXPECT_EQ("CFE", gf_operatorOfRegcode("PHBXA"));
    EXPECT_EQ("KLM", gf_ownerOfRegcode("PHBXA"));
    EXPECT_EQ("", gf_operatorOfRegcode("GDBCJ"));
    EXPECT_EQ("", gf_ownerOfRegcode("XXXXX"));
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
    const std::string good = lf_document(lf_goodSections());
    for (const std::string& text :
         {good, std::string("<aircrafts><aircraft"), std::string(), std::string("x")}) {
        workplace.folder.write("input/temp2.xml", text);
        try {
            gf_readDbaseFile("input/temp2.xml");
            EXPECT_EQ(good, text);
            EXPECT_EQ(2U, dbase.registrations.size());
        } catch (const UserErrorException& e) {
            EXPECT_NE(good, text);
            EXPECT_TRUE(std::string_view(e.what()).starts_with("60: \"")) << e.what();
        }
        EXPECT_FALSE(std::filesystem::exists("input/temp2.xml")) << text;
    }
}

}  // namespace vlt
