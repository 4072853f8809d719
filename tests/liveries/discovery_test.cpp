// From the simulator's lists to the stored result and the reports, on trees of a few files.
#include "liveries/discovery.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/ordered_tasks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/scan_progress.h"
#include "liveries/livery_packages.h"
#include "liveries/livery_place.h"
#include "liveries/scan_store.h"
#include "support/full_disk.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace vlt {

class DiscoveryTest : public LiveryPlace
{
protected:
    // An aircraft of one section, whole with its folders.
    void plane(const std::string& folder, const std::string& keys, const char* model = "A320",
               const char* file = "aircraft.cfg") const
    {
        workplace.folder.write("C/" + folder + "/model/.air", "");
        std::filesystem::create_directories(workplace.folder.path() / "C" / folder / "texture");
        workplace.folder.write("C/" + folder + "/" + file,
                               format("[fltsim.0]\n{}\n[General]\natc_model={}\n", keys, model));
    }
    [[nodiscard]] std::string stored() const
    {
        return gf_textOfFile(workplace.folder.path() / "output/LiveriesScanned.xml");
    }
    [[nodiscard]] std::string report(const char* name) const
    {
        return gf_textOfFile(workplace.folder.path() / "output" / name);
    }
    [[nodiscard]] std::vector<std::string> scan(const std::vector<std::string>& folders) const
    {
        EXPECT_EQ(LiveryScan::Stored, scanAndStoreLiveries(folders));
        std::vector<std::string> titles;
        const std::string text = stored();
        for (size_t at = text.find("title=\""); at != std::string::npos; at = text.find("title=\"", at + 1)) {
            titles.push_back(text.substr(at + 7, text.find('"', at + 7) - at - 7));
        }
        return titles;
    }

    ScopedVariable drive{"VELATRA_DRIVE_C", (workplace.folder.path() / "C").string()};
};

using Titles = std::vector<std::string>;

static int lf_countOf(std::string_view what, std::string_view text)
{
    int count = 0;
    for (size_t at = text.find(what); at != std::string_view::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(DiscoveryTest, theListsOfTheSimulatorLeadToThePackages)
{
    const ScopedVariable programData{"VELATRA_PROGRAMDATA", (workplace.folder.path() / "PD").string()};
    workplace.folder.write(
        "Lockheed Martin/Prepar3D v5/add-ons.cfg",
        "[Package.0]\r\nTITLE=Flight Path\r\nPATH=C:\\Pack Package\\one\r\nREQUIRED=false\r\n"
        "[PACKAGE.1]\nPath=C:\\gone\n");
    workplace.folder.write(
        "C/Pack Package/one/add-on.xml",
        "\xEF\xBB\xBF<AddOn.Component><Category>Sound</Category><Path>s</Path></AddOn.Component>\n"
        "<!-- <AddOn.Component><Category>SimObjects</Category><Path>no</Path></AddOn.Component> -->\n"
        "<AddOn.Component>\n<Category>simobjects</Category>\n</AddOn.Component><Path>closed</Path>\n"
        "<AddOn.Component><Category>SimObjects</Category><Path>Lights Reborn</Path></AddOn.Component>\n"
        "<AddOn.Component><Category>SimObjects</Category><Name>a</Name><Path>Planes &amp; more</Path>\n"
        "</AddOn.Component><Category>SIMOBJECTS</Category><Path>D:\\abs</Path>");
    workplace.folder.write(
        "PD/Lockheed Martin/Prepar3D v5/simobjects.cfg",
        "[Entry.0]\nTitle=x\nPath=SimObjects\\Airplanes\n[Entry.1]\nPath = C:\\AI SimObjects \n");
    EXPECT_EQ((Titles{"C:\\Pack Package\\one\\Planes & more", "D:\\abs", "C:\\AI SimObjects"}),
              gf_liveryFolders());
    EXPECT_NE(std::string::npos,
              workplace.log().find("C:\\gone\\add-on.xml not found!\n2 AI add-on packages found"));
}

TEST_F(DiscoveryTest, aScanStoresWhatItFindsAndReportsTheRest)
{
    dbase.registrations["PH-BXC"] = {"KLM", "A320", "BAW", true};
    plane("a/B", "title=second\natc_parking_codes=BAW", "A320", "Aircraft.CFG");
    plane("a/a", "title=first\natc_parking_codes=BAW\natc_id=PH-BXC", "A320", "sim.cfg");
    plane("a/C", "title=first\natc_parking_codes=BAW");
    plane("a/Airports", "title=not seen\natc_parking_codes=BAW");
    plane("a/" + std::string(246, 'x'), "title=too long\natc_parking_codes=BAW");
    workplace.folder.write("C/a/aircraft.txt", "");
    workplace.folder.write("C/a/d/aircraft.cfg", "no header");
    std::filesystem::create_directories(workplace.folder.path() / "C/a/e/aircraft.cfg");
    std::filesystem::create_directory_symlink("..", workplace.folder.path() / "C/a/e/circle");
    for (const int threads : {1, 16}) {
        scanThreads = threads;
        EXPECT_EQ((Titles{"first", "second"}),
                  scan({"C:\\none", "C:\\a\\aircraft.txt", "C:\\a", "C:\\a\\B"}));
        EXPECT_EQ(format("{:80} PH-BXC cargo false => true\n", "first"),
                  report("info/AirlineModelConversions.txt"));
        EXPECT_EQ("C:\\a\\C title=first title \"first\" already exists\n",
                  report("errors/IncompleFltsimSections.txt"));
        EXPECT_EQ("C:\\a\\d\\aircraft.cfg\n", report("info/AircraftCfgWithNoFltsimSection.txt"));
        EXPECT_EQ("Line atc_model= is missing in [General] section of C:\\a\\d\\aircraft.cfg\n",
                  report("errors/InvalidAircraftCfgFiles.txt"));
    }
    const std::string log = workplace.log();
    for (const char* line :
         {"C:\\none does not exist, skipped!", "C:\\a\\aircraft.txt is not a folder name, skipped!",
          "2 liveries found in C:\\a\n", "No liveries found in C:\\a\\B", "2 in total"}) {
        EXPECT_NE(std::string::npos, log.find(line)) << line;
    }
}

TEST_F(DiscoveryTest, priorityKeepsTheLiveriesOfTheFirstFolder)
{
    plane("one/x", "title=A\natc_parking_codes=BAW");
    plane("two/x", "title=B\natc_parking_codes=BAW");
    plane("two/y", "title=C\natc_parking_codes=RYR");
    EXPECT_EQ((Titles{"A", "B", "C"}), scan({"C:\\one", "C:\\two"}));
    LIG_PRIORITIZE.value = true;
    EXPECT_EQ((Titles{"A", "C"}), scan({"C:\\one", "C:\\two"}));
    EXPECT_EQ((Titles{"B", "C"}), scan({"C:\\two", "C:\\one"}));
}

TEST_F(DiscoveryTest, theDriverStoresOnceAndLeavesAllWhenStopped)
{
    LIG_AUTOMATIC.value = false;
    EXPECT_THAT([] { scanDriver(); },
                testing::ThrowsMessage<UserErrorException>(testing::StartsWith("48: Set lfolder")));
    lfolders[3].value = "C:\\one";
    EXPECT_THAT([] { scanDriver(); }, testing::ThrowsMessage<UserErrorException>("53: no liveries found"));
    plane("one/x", "title=A\natc_parking_codes=BAW");
    scanDriver();
    EXPECT_FALSE(SCAN_LIVERIES.value);
    EXPECT_TRUE(byModel[0].contains("A320"));
    const std::string before = stored();
    plane("one/y", "title=B\natc_parking_codes=BAW");
    SCAN_LIVERIES.value = true;
    gf_requestClose();
    scanDriver();
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_EQ(before, stored());
}

TEST_F(DiscoveryTest, whateverEndsAScanLeavesTheOldResultWhole)
{
    using Clock = std::chrono::steady_clock;
    constexpr int kPlanes = 1500;
    for (int i = 0; i < kPlanes; ++i) {
        plane(format("all/{}/{}", i % 50, i), format("title=P{}\natc_parking_codes=BAW", i));
    }
    const std::vector<std::string> all{"C:\\all"};
    workplace.folder.write("output/LiveriesScanned.xml", "before");
    // Killed at any moment of it.
    int old = 0, fresh = 0;
    for (int ms = 0; ms < 2000 && fresh < 2; ms += 5) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            scanAndStoreLiveries(all);
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        kill(child, SIGKILL);
        ASSERT_EQ(child, waitpid(child, nullptr, 0));
        if (stored() == "before") {
            ++old;
        } else {
            EXPECT_EQ(kPlanes, lf_countOf("title=\"", stored())) << ms;
            ++fresh;
            workplace.folder.write("output/LiveriesScanned.xml", "before");
        }
    }
    EXPECT_TRUE(old > 3 && fresh == 2) << old;
    {
        const FullDisk full(10'000);
        EXPECT_EQ(LiveryScan::NotStored, scanAndStoreLiveries(all));
    }
    EXPECT_EQ("before", stored());
    // Stopped at any moment of it.
    int cut = 0;
    for (int ms = 0; ms < 2000; ms += 4) {
        std::atomic<int32_t> seen = 0;
        Clock::time_point asked;
        std::thread user([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(ms));
            seen = display.scan.files.load();
            asked = Clock::now();
            gf_requestStop(ExitReason::NewSettings, 0);
        });
        const LiveryScan outcome = scanAndStoreLiveries(all);
        const Clock::time_point ended = Clock::now();
        user.join();
        ASSERT_TRUE(gf_resetRunState());
        if (outcome == LiveryScan::Stored) {
            break;
        }
        EXPECT_EQ(LiveryScan::Stopped, outcome);
        EXPECT_EQ("before", stored()) << ms;
        EXPECT_LT(ended - asked, std::chrono::seconds(3));
        cut += seen > 0 ? 1 : 0;
    }
    EXPECT_GT(cut, 2) << "while it walked";
    EXPECT_EQ(kPlanes, lf_countOf("title=\"", stored()));
}

TEST_F(DiscoveryTest, progressIsToldOnceASecond)
{
    ScanProgress progress("liveries");
    progress.enter("C:\\a");
    progress.seen();
    EXPECT_EQ("", display.message.load());
    std::this_thread::sleep_for(std::chrono::milliseconds(1050));
    progress.found(3);
    const std::string told = "Scanning C:\\a: 1 file seen, 3 liveries found";
    EXPECT_EQ(told, display.message.load());
    progress.seen();
    EXPECT_EQ(told, display.message.load());
    EXPECT_EQ("C:\\a 2 3", format("{} {} {}", display.scan.folder.load(), display.scan.files.load(),
                                  display.scan.found.load()));
}

}  // namespace vlt
