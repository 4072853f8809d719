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
    auto aside = gf_parametersFile();
    aside.replace_extension(".unreadable.xml");
    std::stringstream kept;
    kept << std::ifstream(aside).rdbuf();
    EXPECT_EQ("<parameters><parameter name=", kept.str()) << "what somebody wrote is not lost";
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
