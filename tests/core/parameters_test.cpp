#include "core/base/parameters.h"

#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/version.h"
#include "support/fresh_run.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <tuple>

namespace vlt {

// What users, their files and the window rely on: every value of every parameter.
TEST(Parameters, haveTheirDefaultsRangesAndPlaces)
{
    struct Row {
        const char* name;
        int32_t def;
        uint16_t id = 0;
        int32_t y = 0, min = 0, max = 1;
    };
    // clang-format off
    static constexpr Row kSwitches[] = {
        {"RANDOM", 1},                                   {"ALWAYS_ON_TOP", 0, 32771, 147},
        {"GUID_CHANGES", 1, 32773, 203},                 {"AEROWINX", 0, 32775, 203},
        {"LEARN_SOFT", 1, 32777, 175},                   {"NAV_LIGHTS_WHILE_PARKED", 1, 32778, 175},
        {"LOG", 1, 32779, 147},                          {"SCAN_LIVERIES", 1, 32797, 147},
        {"LIG_AUTOMATIC", 1, 32798, 147},                {"LIG_PRIORITIZE", 0, 32799, 147},
        {"SUPPRESS_STUB", 1, 32801, 147},                {"SCAN_AIRPORTS", 1, 32802, 175},
        {"AFG_AUTOMATIC", 1, 32803, 175},                {"LIGHT_AIRCRAFT", 1, 32809, 203},
        {"HELICOPTERS", 1, 32810, 203},                  {"HIGH_PERF_AIRCRAFT", 1, 32811, 203},
        {"AUTO_RANGE", 1, 32819, 231},                   {"COLLISION_USER_AIR", 1, 32833, 287},
        {"COLLISION_USER_GND", 1, 32834, 287},           {"COLLISION_LIVE_PARKED_GND", 0, 32835, 287},
        {"INITIAL_LOAD_ONLY", 0, 32850, 371},            {"PARK_SOFT", 1, 32851, 371},
        {"PARK_FAKE", 0, 32852, 371},                    {"WEEK", 0, 32854, 371},
        {"STRAIGHT_PBS_ONLY", 0, 32856, 315},
    };
    constexpr int32_t kMost = 2147483647;
    static constexpr Row kNumbers[] = {
        {"CUSTOM_PARKING_PERCENTAGE", -1, 0, 0, -1, 100}, {"MAIN_WINDOW_X", 400, 0, 0, -30000, 30000},
        {"MAIN_WINDOW_Y", 20, 0, 0, -30000, 30000},       {"LAST_EPOCH_TIME", 0, 0, 0, 0, kMost},
        {"HOLDING_THRESHOLD_METERS", 250, 0, 0, 10, 4000}, {"MAX_HOLDING_MINUTES", 20, 0, 0, 1, 60},
        {"P3D_VERSION", 5, 0, 0, 5, 6},                   {"MATCHING_DEPTH", 4, 32808, 203, 1, 4},
        {"LATERAL_RANGE", 40, 32818, 231, 2, 100},
        {"AUTO_RANGE_ABOVE_HEIGHT", 49000, 32820, 231, 18000, 49000},
        {"MAX_LIVE", -1, 32821, 315, -1, 300},            {"AIRPORT_RANGE", 20, 32841, 343, 8, 30},
        {"AIRPORT_HEIGHT", 18000, 32842, 343, 2000, 45000}, {"parking_percentage", 30, 32848, 371, 0, 100},
        {"MAX_FIT", 47, 32853, 371, 0, 47},               {"CUSTOM_MAX_PARK", -1, 32865, 315, -1, 500},
    };
    // clang-format on
    const auto compare = [](const auto& table, const auto& parameters) {
        ASSERT_EQ(std::size(table), parameters.size());
        for (size_t i = 0; i < parameters.size(); ++i) {
            const auto* place = dynamic_cast<const Control*>(parameters[i]);
            const auto& p = *parameters[i];
            const Row& row = table[i];
            EXPECT_EQ(row.name, p.name);
            EXPECT_EQ(row.def, p.def) << row.name;
            if constexpr (std::is_same_v<decltype(p.def), int32_t>) {
                EXPECT_EQ(std::tie(row.min, row.max), std::tie(p.min, p.max)) << row.name;
            }
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
        gf_freshRun();
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

    // Every present value.
    static std::map<std::string, std::string> all()
    {
        std::map<std::string, std::string> values;
        const auto add = [&](const auto* p) { values[p->name] = format("{}", p->value.load()); };
        std::ranges::for_each(gf_parameters<bool>(), add);
        std::ranges::for_each(gf_parameters<int32_t>(), add);
        std::ranges::for_each(gf_parameters<std::string>(), add);
        return values;
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
    }
    // What somebody wrote is not lost.
    for (const auto& [name, content] : {std::pair{"parameters.0.xml", "not xml at all"},
                                        {"parameters.1.xml", "<parameters><parameter name="}}) {
        std::string kept;
        std::getline(std::ifstream(gf_parametersFile().replace_filename(name)), kept);
        EXPECT_EQ(content, kept);
    }
}

TEST_F(ParametersTest, anOlderFileGainsWhatIsMissingAndIsClampedWhenRead)
{
    const struct {
        const char *name, *before, *value, *after;  // in the file, as read, in the file; "-" for no element
    } cases[] = {
        {"MAX_LIVE", "5000", "300", "5000"},
        {"LATERAL_RANGE", "1", "2", "1"},
        {"MATCHING_DEPTH", "x", "1", "x"},
        {"MAIN_WINDOW_X", "-99999999999", "-30000", "-99999999999"},
        {"AIRPORT_RANGE", "0x10", "16", "0x10"},
        {"MAIN_WINDOW_Y", "-", "20", "20"},
        {"parking_percentage", "-", "30", "-"},  // belongs to the airport
        {"LOG", "yes", "true", "yes"},
        {"RANDOM", "no", "false", "no"},
        {"lfolder3", "", "", "-"},   // empty folder lines disappear
        {"afolder0", "-", "", "-"},  // and none is added
        {"lfolder4", "D:\\AI & more", "D:\\AI & more", "D:\\AI & more"},
    };
    std::string elements;
    for (const auto& c : cases) {
        elements += std::string_view("-") == c.before ? "" : element(c.name, c.before);
    }
    write(elements);
    readParameters();
    const auto values = all();
    for (const auto& c : cases) {
        EXPECT_EQ(c.value, values.at(c.name)) << c.name;
        EXPECT_EQ(c.after, inFile(c.name)) << c.name;
    }
}

TEST_F(ParametersTest, aNewVersionScansEverythingOnce)
{
    const auto [major, minor, patch] = kProgramVersion;
    const std::pair<VersionData, bool> cases[] = {{{major, minor, patch - 1}, true},
                                                  {{major - 1, minor + 9, patch + 9}, true},
                                                  {kProgramVersion, false},
                                                  {{major, minor, patch + 1}, false},
                                                  {{major + 1, 0, 0}, false}};
    for (const auto& [version, scans] : cases) {
        const std::string stored = gf_text(version);
        write(element("SCAN_LIVERIES", "false") + element("SCAN_AIRPORTS", "false") +
              element("PROGRAM_VERSION", stored));
        readParameters();
        EXPECT_EQ(scans, SCAN_LIVERIES.value) << stored;
        EXPECT_EQ(scans ? "true" : "false", inFile("SCAN_AIRPORTS")) << stored;
        EXPECT_EQ(gf_text(kProgramVersion), inFile("PROGRAM_VERSION")) << stored;
    }
}

// All that stand in the file, with random values, saved one by one.
TEST_F(ParametersTest, comeBackFromTheFileInTheirRanges)
{
    for (uint32_t seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::map<std::string, std::string> expected;
        write("");
        const auto save = [&](auto* p, const auto& saved, const auto& read) {
            if (p->kept == Kept::InFile && p != static_cast<Parameter*>(&PROGRAM_VERSION)) {
                EXPECT_TRUE(expected.try_emplace(p->name, format("{}", read)).second) << p->name;
                p->value = saved;
                saveParameter(*p);
                p->value = p->def;
            }
        };
        for (auto* p : gf_parameters<bool>()) {
            const bool value = random() % 2 == 0;
            save(p, value, value);
        }
        for (auto* p : gf_parameters<int32_t>()) {
            const auto value = static_cast<int32_t>(random()) >> random() % 24;
            save(p, value, std::clamp(value, p->min, p->max));
        }
        for (auto* p : gf_parameters<std::string>()) {
            const std::string value(1 + random() % 9, "\"<&>' ;\\aZ"[random() % 9]);
            save(p, value, value);
        }
        readParameters();
        const auto values = all();
        for (const auto& [name, value] : expected) {
            EXPECT_EQ(value, values.at(name)) << name;
        }
        EXPECT_EQ(LATERAL_RANGE.value, lateralRangeNm);
        EXPECT_EQ(LATERAL_RANGE.value * 1852, lateralRangeMetres);
        EXPECT_EQ(static_cast<float>(MAX_FIT.value + 1) / 2, MAX_FIT_FL.value);
    }
}

TEST_F(ParametersTest, aWindowOnTheBorderComesBack)
{
    write(element("MAIN_WINDOW_X", "30000") + element("MAIN_WINDOW_Y", "29999"));
    gf_readWindowPlace();
    EXPECT_EQ("400", inFile("MAIN_WINDOW_X"));
    EXPECT_EQ(400, MAIN_WINDOW_X.value);
    EXPECT_EQ(29999, MAIN_WINDOW_Y.value);
}

}  // namespace vlt
