#include "airports/airports.h"
#include "airports/catalogue.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking/park_airport.h"
#include "airports/parking/renewal.h"
#include "airports/parking_settings.h"
#include "core/base/display.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/liveries.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "support/fresh_run.h"
#include "support/temp_folder.h"
#include "traffic/collision.h"
#include "traffic/user_wishes.h"
#include "ui/text_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace vlt {

class CommandsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        std::filesystem::create_directories(folder.path() / "Velatra");
        std::filesystem::current_path(folder.path());
        readParameters();
        airportCatalogue = {{"EGLL", "LHR", 51.5, -0.4, 83}, {"EHAM", "AMS", 52.3, 4.8, -11}};
        gf_allowListWishes();
        display.installPathEnabled = true;
    }
    void TearDown() override
    {
        std::filesystem::current_path(before);
        airportCatalogue.clear();
        gf_freshRun();
    }
    static std::string saved(const std::string& name)
    {
        std::ifstream in(gf_parametersFile());
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        const std::string head = format("name=\"{}\" value=\"", name);
        const size_t at = text.find(head);
        return at == std::string::npos
                   ? ""
                   : text.substr(at + head.size(), text.find('"', at + head.size()) - at - head.size());
    }

    const std::filesystem::path before = std::filesystem::current_path();
    const TempFolder folder;
    const ScopedVariable appData{"VELATRA_APPDATA", folder.path().string()};
};

TEST_F(CommandsTest, everyControlIsStoredSavedAndTold)
{
    const struct {
        const char* command;
        const char* message;  // on the message line, or "! " and the answer
        const char* name;     // of the parameter that the file then has as
        const char* value;
    } steps[] = {
        {"LOG=off", "", "LOG", "false"},
        {"collision_user_air = 0", "Be aware, no collision avoidance with user aircraft in the air",
         "COLLISION_USER_AIR", "false"},
        {"COLLISION_USER_AIR=on", "", "COLLISION_USER_AIR", "true"},
        {"AEROWINX=on", "Note: This mode is for Aerowinx PSX users only, please re-start Velatra", "AEROWINX",
         "true"},
        {"AEROWINX=perhaps", "! AEROWINX is switched \"on\" or \"off\"", "AEROWINX", "true"},
        {"ALWAYS_ON_TOP=yes", "Velatra's window will remain visible", "ALWAYS_ON_TOP", "true"},
        {"MAX_LIVE=12", "The new MAX_LIVE is 12", "MAX_LIVE", "12"},
        {"MAX_LIVE=5000", "The new MAX_LIVE is 300", "MAX_LIVE", "300"},
        {"MAX_LIVE=300", "Same MAX_LIVE value 300, no changes made", "MAX_LIVE", "300"},
        {"MAX_LIVE=many", "! MAX_LIVE is a number, and stays 300", "MAX_LIVE", "300"},
        {"MAX_LIVE=99999999999", "! MAX_LIVE is a number, and stays 300", "MAX_LIVE", "300"},
        {"MAX_LIVE=", "The new MAX_LIVE is -1", "MAX_LIVE", "-1"},
        {"LATERAL_RANGE=70", "! LATERAL_RANGE takes no input now", "LATERAL_RANGE", "40"},
        {"AUTO_RANGE=off", "", "AUTO_RANGE", "false"},
        {"LATERAL_RANGE=999", "The new LATERAL_RANGE is 100", "LATERAL_RANGE", "100"},
        {"AUTO_RANGE_ABOVE_HEIGHT=20000", "! AUTO_RANGE_ABOVE_HEIGHT takes no input now",
         "AUTO_RANGE_ABOVE_HEIGHT", "49000"},
        {"MAX_FIT_FL=0.5", "The new MAX_FIT_FL is 0.5", "MAX_FIT", "0"},
        {"MAX_FIT_FL=3.2", "The new MAX_FIT_FL is 3.0", "MAX_FIT", "5"},
        {"MAX_FIT_FL=", "The new MAX_FIT_FL is 24.0", "MAX_FIT", "47"},
        {"MAX_FIT_FL=nan", "! MAX_FIT_FL is a number, and stays 24", "MAX_FIT", "47"},
        {"MAX_FIT=3", "! there is no control \"MAX_FIT\"", "MAX_FIT", "47"},
        {"P3D_VERSION=6", "! there is no control \"P3D_VERSION\"", "P3D_VERSION", "5"},
        {"press unblock", "Nothing to block or unblock...", "BLOCK_CALLSIGN", ""},
        {"BLOCK_CALLSIGN=abc", "callsign \"abc\" is not valid", "BLOCK_CALLSIGN", ""},
        {"BLOCK_CALLSIGN=klm12", "live aircraft with callsign \"KLM12\" will be blocked", "BLOCK_CALLSIGN",
         "KLM12"},
        {"BLOCK_CALLSIGN=KLM12", "callsign \"KLM12\" was already set ...", "BLOCK_CALLSIGN", "KLM12"},
        {"press Unblock", "no more blocking of live aircraft \"KLM12\"", "BLOCK_CALLSIGN", ""},
        {"DESTINATION=ZZZZ", "destination \"ZZZZ\" is unknown ...", "DESTINATION", ""},
        {"DESTINATION=EHA", "destination \"EHA\" is not valid", "DESTINATION", ""},
        {"DESTINATION=eham", "", "DESTINATION", "EHAM"},
        {"DESTINATION=EHAM", "destination \"EHAM\" was already set ...", "DESTINATION", "EHAM"},
        {"DESTINATION=", "destination set to empty", "DESTINATION", ""},
        {"ALL_INSTALL_PATH=C:\\no such folder", "This install path does not exist: C:\\no such folder",
         "SIM_INSTALL_PATH", ""},
        {"press Bell", "! there is no button \"Bell\"", "LOG", "false"},
        {"hello", "! \"hello\" isn't understood: NAME=value, or press NAME", "LOG", "false"},
        {"", "", "LOG", "false"},
    };
    for (const auto& step : steps) {
        clearMessage();
        const std::string answer = gf_runCommand(step.command);
        EXPECT_EQ(step.message, answer.empty() ? display.message.load() : "! " + answer) << step.command;
        EXPECT_EQ(step.value, saved(step.name)) << step.command;
    }
    EXPECT_EQ(ExitReason::NotYetSet, exitReason);
    EXPECT_DOUBLE_EQ(100, lateralRangeNm);
    gf_runCommand("AUTO_RANGE=on");
    gf_runCommand("AUTO_RANGE=off");
    EXPECT_EQ(100, LATERAL_RANGE.value) << "what was typed comes back";
    // A scan that is asked for before RealTraffic is there, and a new install path, begin the work anew.
    settingsOpen = false;
    gf_runCommand("SCAN_AIRPORTS=off");
    gf_runCommand("SCAN_AIRPORTS=on");
    EXPECT_FALSE(stopRequested);
    settingsOpen = true;
    gf_runCommand("SCAN_LIVERIES=off");
    EXPECT_FALSE(stopRequested);
    gf_runCommand("SCAN_LIVERIES=on");
    EXPECT_EQ(ExitReason::NewSettings, exitReason);
    EXPECT_EQ(2, restartDelaySeconds);
    ASSERT_TRUE(gf_resetRunState());
    gf_runCommand("ALL_INSTALL_PATH=" + folder.path().string());
    EXPECT_EQ(3, restartDelaySeconds);
    EXPECT_EQ(folder.path().string(), saved("SIM_INSTALL_PATH"));
}

TEST_F(CommandsTest, whatConcernsTheParkingIsNotedAndAnsweredAtALoadedAirport)
{
    display.airport.parkingEnabled = true;
    for (const ParkState state : {ParkState::None, ParkState::Loaded}) {
        const bool loaded = state == ParkState::Loaded;
        for (const std::string name : {"PARK_FAKE", "PARK_SOFT", "WEEK", "LEARN_SOFT", "AUTO_RANGE"}) {
            const bool responds = loaded && (name[0] == 'P' || name[0] == 'W');
            parkState = state;
            gf_runCommand(name + "=off");
            parkingChanged = false;
            renewalWanted = false;
            display.secondsCounter = 16;
            clearMessage();
            EXPECT_EQ("", gf_runCommand(name + "=on")) << name;
            EXPECT_EQ(loaded || name[0] == 'A', parkingChanged) << name;
            EXPECT_EQ(responds, renewalWanted) << name;
            EXPECT_EQ(responds ? "Velatra will respond in 14 seconds ..." : "", display.message.load())
                << name;
        }
    }
    display.airport.flushStaticEnabled = true;
    gf_runCommand("press Flush static");
    EXPECT_EQ("All static parked aircraft will be removed ...", display.message.load());
    EXPECT_TRUE(flushStaticRequested && !display.airport.flushStaticEnabled);
}

TEST_F(CommandsTest, theWorkerDoesWhatIsAskedForOnce)
{
    LiveAc& ac = liveAcs.emplace_back();
    ac.fs = FsState::Active;
    ac.st = StState::Parked;
    ac.objectid = 77;
    ac.hexid = 20000;
    gf_serviceWishes();
    EXPECT_TRUE(eventQueue.empty()) << "nothing is left of an earlier run";
    gf_runCommand("NAV_LIGHTS_WHILE_PARKED=off");
    gf_runCommand("MAX_LIVE=0");
    gf_serviceWishes();
    ASSERT_EQ(1U, eventQueue.size());
    gf_serviceWishes();
    ASSERT_EQ(1U, eventQueue.size());
    EXPECT_EQ(NAV_LIGHTS_SET, eventQueue.front().event);
    EXPECT_EQ(0U, eventQueue.front().value);
    EXPECT_EQ(FsState::RemovingFromSim, liveAcs.front().fs);

    failedLiveries.insert("KLM B738");
    gf_runCommand("MATCHING_DEPTH=2");
    gf_serviceNoMatchList();
    EXPECT_FALSE(failedLiveries.empty()) << "a lower depth finds no more";
    gf_runCommand("MATCHING_DEPTH=3");
    gf_serviceNoMatchList();
    EXPECT_TRUE(failedLiveries.empty());

    const auto codes = [] {
        std::string all;
        for (const ParkListEntry& entry : parkAirports) {
            all += entry.code + " ";
        }
        return all;
    };
    std::filesystem::create_directories(kMyThirdpartyFolder);
    std::ofstream(kMyParkAirportsFile) << "EGLL\n";
    gf_runCommand("press re-read");
    EXPECT_EQ("DESTINATION takes no input now", gf_runCommand("DESTINATION=EHAM"));
    gf_serviceReRead();
    EXPECT_EQ("EGLL ", codes());
    EXPECT_EQ("park airports and stands are okay", display.message.load());
    userNow.lat = 52.3;  // near the destination
    userNow.lon = 4.8;
    gf_runCommand("DESTINATION=EHAM");
    gf_serviceDestination();
    EXPECT_EQ("EHAM EGLL ", codes());
    gf_runCommand("press Re-read");
    gf_serviceReRead();
    EXPECT_EQ("EHAM EGLL ", codes());
    gf_runCommand("DESTINATION=EGLL");
    gf_serviceDestination();
    EXPECT_EQ("EGLL ", codes());
    gf_runCommand("DESTINATION=");
    gf_serviceDestination();
    EXPECT_EQ("EGLL ", codes()) << "it stands in the file";
}

}  // namespace vlt
