#include "core/base/parameters.h"

#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/version.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

namespace vlt {

// What users, their files and the window rely on: every value of every parameter.
TEST(Parameters, haveTheirDefaultsRangesAndPlaces)
{
    struct Row {
        const char* name;
        int32_t def, min, max;
        uint16_t id;
        int32_t y;
    };
    // clang-format off
    static constexpr Row kSwitches[] = {
        {"RANDOM", 1, 1, 1, 0, 0},
        {"ALWAYS_ON_TOP", 0, 0, 0, 32771, 147},
        {"GUID_CHANGES", 1, 1, 1, 32773, 203},
        {"AEROWINX", 0, 0, 0, 32775, 203},
        {"LEARN_SOFT", 1, 1, 1, 32777, 175},
        {"NAV_LIGHTS_WHILE_PARKED", 1, 1, 1, 32778, 175},
        {"LOG", 1, 1, 1, 32779, 147},
        {"SCAN_LIVERIES", 1, 1, 1, 32797, 147},
        {"LIG_AUTOMATIC", 1, 1, 1, 32798, 147},
        {"LIG_PRIORITIZE", 0, 0, 0, 32799, 147},
        {"SUPPRESS_STUB", 1, 1, 1, 32801, 147},
        {"SCAN_AIRPORTS", 1, 1, 1, 32802, 175},
        {"AFG_AUTOMATIC", 1, 1, 1, 32803, 175},
        {"LIGHT_AIRCRAFT", 1, 1, 1, 32809, 203},
        {"HELICOPTERS", 1, 1, 1, 32810, 203},
        {"HIGH_PERF_AIRCRAFT", 1, 1, 1, 32811, 203},
        {"AUTO_RANGE", 1, 1, 1, 32819, 231},
        {"COLLISION_USER_AIR", 1, 1, 1, 32833, 287},
        {"COLLISION_USER_GND", 1, 1, 1, 32834, 287},
        {"COLLISION_LIVE_PARKED_GND", 0, 0, 0, 32835, 287},
        {"INITIAL_LOAD_ONLY", 0, 0, 0, 32850, 371},
        {"PARK_SOFT", 1, 1, 1, 32851, 371},
        {"PARK_FAKE", 0, 0, 0, 32852, 371},
        {"WEEK", 0, 0, 0, 32854, 371},
        {"STRAIGHT_PBS_ONLY", 0, 0, 0, 32856, 315},
    };
    static constexpr Row kNumbers[] = {
        {"CUSTOM_PARKING_PERCENTAGE", -1, -1, 100, 0, 0},
        {"MAIN_WINDOW_X", 400, -30000, 30000, 0, 0},
        {"MAIN_WINDOW_Y", 20, -30000, 30000, 0, 0},
        {"LAST_EPOCH_TIME", 0, 0, 2147483647, 0, 0},
        {"HOLDING_THRESHOLD_METERS", 250, 10, 4000, 0, 0},
        {"MAX_HOLDING_MINUTES", 20, 1, 60, 0, 0},
        {"P3D_VERSION", 5, 5, 6, 0, 0},
        {"MATCHING_DEPTH", 4, 1, 4, 32808, 203},
        {"LATERAL_RANGE", 40, 2, 100, 32818, 231},
        {"AUTO_RANGE_ABOVE_HEIGHT", 49000, 18000, 49000, 32820, 231},
        {"MAX_LIVE", -1, -1, 300, 32821, 315},
        {"AIRPORT_RANGE", 20, 8, 30, 32841, 343},
        {"AIRPORT_HEIGHT", 18000, 2000, 45000, 32842, 343},
        {"parking_percentage", 30, 0, 100, 32848, 371},
        {"MAX_FIT", 47, 0, 47, 32853, 371},
        {"CUSTOM_MAX_PARK", -1, -1, 500, 32865, 315},
    };
    // clang-format on
    const auto compare = [](const auto& table, const auto& parameters) {
        ASSERT_EQ(std::size(table), parameters.size());
        for (size_t i = 0; i < parameters.size(); ++i) {
            const auto* place = dynamic_cast<const Control*>(parameters[i]);
            const Row& row = table[i];
            EXPECT_EQ(row.name, parameters[i]->name);
            EXPECT_EQ(row.def, parameters[i]->def) << row.name;
            EXPECT_EQ(row.min, parameters[i]->min) << row.name;
            EXPECT_EQ(row.max, parameters[i]->max) << row.name;
            EXPECT_EQ(row.id, place != nullptr ? place->id : 0) << row.name;
            EXPECT_EQ(row.y, place != nullptr ? place->y : 0) << row.name;
        }
    };
    compare(kSwitches, gf_parameters<bool>());
    compare(kNumbers, gf_parameters<int32_t>());
}

class ParametersTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(gf_parametersFile().parent_path());
    }
    void TearDown() override
    {
        // Other tests find the defaults.
        std::filesystem::remove(gf_parametersFile());
        const auto restore = [](auto* p) { p->value = p->def; };
        std::ranges::for_each(gf_parameters<bool>(), restore);
        std::ranges::for_each(gf_parameters<int32_t>(), restore);
        std::ranges::for_each(gf_parameters<std::string>(), restore);
        gf_applyLateralRange();
    }

    static void write(const std::string& parameters)
    {
        std::ofstream(gf_parametersFile()) << "<meta/><parameters>" << parameters << "</parameters>";
    }
    static std::string element(const std::string& name, const std::string& value)
    {
        return format("<parameter name=\"{}\" value=\"{}\"/>", name, value);
    }
    // The value in the file; "-" if there is no element.
    static std::string inFile(const std::string& name)
    {
        pugi::xml_document document;
        document.load_file(gf_parametersFile().c_str());
        const auto node =
            document.select_node(format("parameters/parameter[@name='{}']", name).c_str()).node();
        return node ? node.attribute("value").as_string() : "-";
    }

    TempFolder folder;
    ScopedVariable appData{"VELATRA_APPDATA", folder.path().string()};
};

TEST_F(ParametersTest, aMissingEmptyOrDamagedFileGivesDefaults)
{
    for (const char* content : {"", "not xml at all", "<parameters><parameter name="}) {
        MAX_LIVE.value = MAX_LIVE.def;
        std::ofstream(gf_parametersFile()) << content;
        readParameters();
        EXPECT_EQ("-1", inFile("MAX_LIVE")) << content;
        EXPECT_EQ("true", inFile("SCAN_LIVERIES")) << content;
        EXPECT_EQ(gf_text(kProgramVersion), inFile("PROGRAM_VERSION")) << content;
    }
    // What somebody wrote is not lost.
    for (const auto& [name, content] : {std::pair{"parameters.0.xml", "not xml at all"},
                                        {"parameters.1.xml", "<parameters><parameter name="}}) {
        std::stringstream kept;
        kept << std::ifstream(gf_parametersFile().replace_filename(name)).rdbuf();
        EXPECT_EQ(content, kept.str());
    }
}

TEST_F(ParametersTest, clampsWhatTheFileHolds)
{
    write(element("MAX_LIVE", "5000") + element("LATERAL_RANGE", "1") + element("MATCHING_DEPTH", "x") +
          element("MAIN_WINDOW_X", "-99999999999") + element("AIRPORT_RANGE", "0x10"));
    readParameters();
    EXPECT_EQ(300, MAX_LIVE.value);
    EXPECT_EQ(2, LATERAL_RANGE.value);
    EXPECT_EQ(1, MATCHING_DEPTH.value);
    EXPECT_EQ(-30000, MAIN_WINDOW_X.value);
    EXPECT_EQ(16, AIRPORT_RANGE.value);
    EXPECT_EQ(2.0, lateralRangeNm);
    EXPECT_EQ(3704, lateralRangeMetres);
}

TEST_F(ParametersTest, anOlderFileGainsWhatIsMissingAndKeepsTheRest)
{
    write(element("MAX_LIVE", "77") + element("LOG", "yes") + element("RANDOM", "no") +
          element("lfolder3", "") + element("lfolder4", "D:\\AI & more"));
    readParameters();
    EXPECT_TRUE(LOG.value);
    EXPECT_FALSE(RANDOM.value);
    EXPECT_EQ("D:\\AI & more", lfolders[4].value);
    const std::pair<const char*, const char*> cases[] = {
        {"MAX_LIVE", "77"},
        {"LATERAL_RANGE", "40"},
        {"parking_percentage", "-"},  // belongs to the airport
        {"lfolder3", "-"},            // empty folder lines disappear
        {"afolder0", "-"},            // and none is added
        {"lfolder4", "D:\\AI & more"}};
    for (const auto& [name, value] : cases) {
        EXPECT_EQ(value, inFile(name)) << name;
    }
}

TEST_F(ParametersTest, aNewVersionScansEverythingOnce)
{
    const std::string off = element("SCAN_LIVERIES", "false") + element("SCAN_AIRPORTS", "false");
    const struct {
        const char* stored;
        bool scans;
    } cases[] = {
        {"10.9.99", true}, {"9.99.99", true}, {"10.10.10", false}, {"10.10.11", false}, {"11.0.0", false}};
    for (const auto& c : cases) {
        write(off + element("PROGRAM_VERSION", c.stored));
        readParameters();
        EXPECT_EQ(c.scans, SCAN_LIVERIES.value) << c.stored;
        EXPECT_EQ(c.scans ? "true" : "false", inFile("SCAN_AIRPORTS")) << c.stored;
        EXPECT_EQ("10.10.10", inFile("PROGRAM_VERSION")) << c.stored;
    }
}

TEST_F(ParametersTest, savesOneValueAndLeavesTheOthers)
{
    write(element("MAX_LIVE", "77") + element("MAIN_WINDOW_X", "30000") + element("MAIN_WINDOW_Y", "29999"));
    MAX_LIVE.value = 12;
    saveParameter(MAX_LIVE);
    DESTINATION.value = "EG\"<L&";
    saveParameter(DESTINATION);
    EXPECT_EQ("12", inFile("MAX_LIVE"));
    EXPECT_EQ("29999", inFile("MAIN_WINDOW_Y"));
    EXPECT_EQ("EG\"<L&", inFile("DESTINATION")) << "added, since the file had none";
    gf_readWindowPlace();
    EXPECT_EQ("400", inFile("MAIN_WINDOW_X")) << "a window on the border comes back";
    EXPECT_EQ(400, MAIN_WINDOW_X.value);
    EXPECT_EQ(29999, MAIN_WINDOW_Y.value);
}

}  // namespace vlt
