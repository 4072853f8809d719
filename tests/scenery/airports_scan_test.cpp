// The scan of sceneries: which files count, who publishes them, what is linked and what is generated.
#include "scenery/airports_scan.h"

#include "airports/airport_file.h"
#include "core/base/errors.h"
#include "core/base/ordered_tasks.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "liveries/livery_place.h"
#include "scenery/generated_airports.h"
#include "scenery/scenery_list.h"
#include "standin/bgl_writer.h"
#include "standin/file_server.h"
#include "support/full_disk.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace vlt {

class AirportsScanTest : public LiveryPlace
{
protected:
    AirportsScanTest()
    {
        makeFolders();
        dbase.publishers = {{"Aerosoft", "AES"}, {"Two Words"}};
        dbase.simaddonsP3D = {"KSEA"};
        dbase.thirdParties = {{"Aerosoft", {"EDDF"}}, {"Two Words", {"LSZH"}}};
        SIM_INSTALL_PATH.value = "C:\\Prepar3D v6";
    }
    void airport(const std::string& path, const std::string& code, size_t stands) const
    {
        BglAirportPlan plan{code, 10, false, {code}, {}, {}};
        for (size_t i = 0; i < stands; ++i) {
            plan.parkings.push_back(
                {format("g{}", stands - i), 9, 20.0 + static_cast<double>(stands), 1, 47, 11, {}});
        }
        workplace.folder.write("C/" + path, gf_bglFile({plan}));
    }
    [[nodiscard]] std::string made(const std::string& name) const
    {
        return gf_textOfFile(workplace.folder.path() / "airports" / name);
    }
    [[nodiscard]] size_t stands(const std::string& name) const
    {
        pugi::xml_document document;
        document.load_string(made(name).c_str());
        return gf_parkPositions(document).size();
    }

    ScopedVariable drive{"VELATRA_DRIVE_C", (workplace.folder.path() / "C").string()};
};

TEST_F(AirportsScanTest, airportsAreLinkedOrGenerated)
{
    airport("s/orbx/x.bgl", "KSEA", 2);
    airport("s/Orbx/y.BGL", "KBFI", 3);
    airport("s/Aerosoft/EDDF.bgl", "EDDF", 2);
    airport("s/Two Words/LSZH.bgl", "LSZH", 2);
    airport("s/AES/EDDK.bgl", "EDDK", 2);
    airport("s/a/one.bgl", "LFPG", 3);
    airport("s/b/two.bgl", "LFPG", 2);
    airport("s/c/three.bgl", "LFPG", 0);
    airport("s/d/none.bgl", "LFPO", 0);
    for (const char* passedOver : {"statics/p.bgl", "x_heliports.bgl", "q.Bgl", "q.bgl.off"}) {
        airport(std::string("s/e/") + passedOver, "EGLL", 2);
    }
    airport("s2\\World/w.bgl", "EGKK", 2);
    workplace.folder.write("airports/my_ORBX/OLD.xml", "");
    for (const int threads : {1, 16}) {
        scanThreads = threads;
        ASSERT_TRUE(gf_scanSceneries({"C:\\gone", "C:\\s\\a\\one.bgl", "C:\\s\\World", "C:\\s", "C:\\s\\a"}));
        EXPECT_EQ("archive/simaddon/KSEA.xml\n", made("my_ORBX/KSEA.txt"));
        EXPECT_EQ("archive/thirdparty/Aerosoft/EDDF.xml\n", made("my_thirdparty/EDDF.txt"));
        EXPECT_EQ("archive/thirdparty/Two%20Words/LSZH.xml\n", made("my_thirdparty/LSZH.txt"));
        EXPECT_EQ(3U, stands("my_ORBX/KBFI.xml"));
        EXPECT_EQ(2U, stands("my_thirdparty/EDDK.xml"));
        EXPECT_EQ(3U, stands("my_thirdparty/LFPG.xml")) << "the richer one stays";
        EXPECT_LT(made("my_thirdparty/LFPG.xml").find("\"g1\""),
                  made("my_thirdparty/LFPG.xml").find("\"g2\""));
        for (const char* none :
             {"my_ORBX/OLD.xml", "my_ORBX/KSEA.xml", "my_thirdparty/EDDF.xml", "my_thirdparty/LFPO.xml",
              "my_thirdparty/EGLL.xml", "my_thirdparty/EGKK.xml"}) {
            EXPECT_EQ("", made(none)) << none;
        }
    }
    const std::string told = gf_textOfFile(workplace.folder.path() / "output/info/AirportsScanLog.txt");
    for (const char* line : {"C:\\gone does not exist, skipped!", "one.bgl is not a folder name, skipped!",
                             "simaddon airport KSEA linked to archive/simaddon/KSEA.xml",
                             "KBFI does not exist as simaddon", "thirdparty airport EDDF linked to",
                             "thirdparty Aerosoft EDDK does not exist", "Generated LFPG: 3 positions\n"}) {
        EXPECT_NE(std::string::npos, told.find(line)) << line;
    }
}

TEST_F(AirportsScanTest, aSceneryWithMoreStandsThanItsArchivedFileIsGeneratedToo)
{
    AirportScan scan;
    scan.linked["EDDF"] = {"Aerosoft", ArchivedAirportInfo{.stands = 2}};
    Apf apf;
    apf.code = "EDDF";
    apf.publisher = "Aerosoft";
    const LinkOutcome link = linkOrGenerate(apf, scan);
    EXPECT_TRUE(link.linked);
    EXPECT_EQ(2U, link.archivedStands);
    apf.publisher = kUnknownPublisher;
    EXPECT_FALSE(linkOrGenerate(apf, scan).linked);
}

TEST_F(AirportsScanTest, aStopOrAnEndInTheMiddleLeavesTheOldResults)
{
    airport("s/a.bgl", "LFPG", 1);
    ASSERT_TRUE(gf_scanSceneries({"C:\\s"}));
    airport("s/b.bgl", "LFPO", 1);
    gf_requestClose();
    EXPECT_FALSE(gf_scanSceneries({"C:\\s"}));
    EXPECT_EQ("", made("my_thirdparty/LFPO.xml"));
    EXPECT_EQ(1U, stands("my_thirdparty/LFPG.xml"));
    EXPECT_FALSE(std::filesystem::exists("airports/my_thirdparty.new"));
    // As an end between the two renames of the change leaves it, with the folder that the next start makes.
    std::filesystem::rename("airports/my_thirdparty", "airports/my_thirdparty.old");
    std::filesystem::create_directory("airports/my_thirdparty.new");
    makeFolders();
    gf_recoverResults();
    EXPECT_EQ(1U, stands("my_thirdparty/LFPG.xml"));
    EXPECT_FALSE(std::filesystem::exists("airports/my_thirdparty.old"));
    EXPECT_FALSE(std::filesystem::exists("airports/my_thirdparty.new"));
    // A result that can't be put in place costs neither folder.
    workplace.folder.write("airports/my_ORBX/OWN.xml", "x");
    gf_beginResults();
    std::filesystem::remove("airports/my_thirdparty.new");
    EXPECT_FALSE(gf_placeResults());
    EXPECT_EQ("x", made("my_ORBX/OWN.xml"));
}

// How many stands the archive has, and whether it holds an airport so well that nothing learned is wanted.
TEST_F(AirportsScanTest, theArchiveIsAskedForEachLinkedAirport)
{
    dbase.thirdParties = {{"Aerosoft", {"EDDF", "EDDK", "EDDM"}}};
    FileServer server{FileServerOptions{"served", 0, FileFault::None, ""}};
    const auto scanned = [this] {
        EXPECT_TRUE(gf_scanSceneries({"C:\\s"}));
        return gf_textOfFile(workplace.folder.path() / "output/info/AirportsScanLog.txt");
    };
    for (const char* code : {"EDDF", "EDDK", "EDDM"}) {
        airport(format("s/Aerosoft/{}.bgl", code), code, 3);
        const bool well = code[3] == 'F';
        const std::string stands(code[3] == 'M' ? 3 : 2, '#');
        std::string text = format("<parameters><parameter name='Qf_real' value='{}'/><parameter "
                                  "name='RT_traffic_week' value='{}'/></parameters><parkpositions>",
                                  well ? 45 : 44, code[3] == 'M' ? 23 : 24);
        for (size_t i = 0; i < stands.size(); ++i) {
            text += format("<parkpos id='{}'/>", i);
        }
        workplace.folder.write(format("served/archive/thirdparty/Aerosoft/{}.xml", code),
                               text + "</parkpositions>");
    }
    workplace.folder.write("airports/learned/thirdparty/Aerosoft/EDDK.xml", "learned");
    const std::string silent = scanned();
    EXPECT_EQ(std::string::npos, silent.find("while archived one has")) << "nobody listens there";
    workplace.server.set("http://127.0.0.1:" + std::to_string(server.start()) + "/");
    const std::string told = scanned();
    EXPECT_NE(std::string::npos, told.find("===> EDDF has 3 parkpos while archived one has 2"));
    EXPECT_EQ(std::string::npos, told.find("===> EDDM has"));
    EXPECT_EQ(3U, stands("my_thirdparty/EDDF.xml"));
    EXPECT_EQ("", made("my_thirdparty/EDDM.xml"));
    EXPECT_NE(std::string::npos, told.find("EDDK Not suitable for offline learning"));
    EXPECT_NE(std::string::npos, told.find("EDDM Not suitable for offline learning"));
    EXPECT_EQ(std::string::npos, told.find("EDDF Not suitable"));
    EXPECT_EQ("learned", gf_textOfFile("output/offline_learning/EDDK.xml"));
    EXPECT_FALSE(std::filesystem::exists("output/offline_learning/EDDM.xml"));
    EXPECT_EQ(std::string::npos, told.find("are done, no off line learning needed"));
    dbase.thirdParties = {{"Aerosoft", {"EDDF"}}};
    EXPECT_NE(std::string::npos,
              scanned().find("All your third party airports are done, no off line learning needed."));
}

TEST_F(AirportsScanTest, aKillAtAnyMomentOrAFullDiskLeavesTheOldOrTheNewResults)
{
    constexpr size_t kAirports = 150;
    for (size_t i = 0; i < kAirports; ++i) {
        airport(format("s/{}/{}.bgl", i % 10, i), format("L{:03}", i), 20);
    }
    const auto begin = [this] {
        std::filesystem::remove_all("airports/my_thirdparty");
        workplace.folder.write("airports/my_thirdparty/OLD.xml", "before");
    };
    const auto files = [] {
        const std::filesystem::directory_iterator all("airports/my_thirdparty");
        return static_cast<size_t>(std::distance(std::filesystem::begin(all), std::filesystem::end(all)));
    };
    begin();
    int old = 0, fresh = 0;
    for (int ms = 0; ms < 3000 && fresh < 3; ms += 2) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            gf_scanSceneries({"C:\\s"});
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        kill(child, SIGKILL);
        ASSERT_EQ(child, waitpid(child, nullptr, 0));
        makeFolders();
        gf_recoverResults();
        if (made("my_thirdparty/OLD.xml") == "before") {
            ++old;
            EXPECT_EQ(1U, files()) << ms;
        } else {
            ++fresh;
            EXPECT_EQ(kAirports, files()) << ms;
            begin();
        }
    }
    EXPECT_TRUE(old > 3 && fresh == 3) << old;
    {
        const FullDisk full(500);
        EXPECT_FALSE(gf_scanSceneries({"C:\\s"}));
    }
    EXPECT_EQ(1U, files());
    EXPECT_EQ("before", made("my_thirdparty/OLD.xml"));
}

TEST_F(AirportsScanTest, theListsTellTheFoldersOfAddOns)
{
    const ScopedVariable programData{"VELATRA_PROGRAMDATA", (workplace.folder.path() / "PD").string()};
    workplace.folder.write(
        "PD/Lockheed Martin/Prepar3D v6/scenery.cfg",
        "[General]\nLocal=C:\\no\nActive=TRUE\n[Area.001]\nTitle=a\nLocal=Scenery\\World\nActive=TRUE\n"
        "[AREA.2]\nLOCAL=Addon\\Own\nACTIVE=true\nLayer=2\n[area.3]\nlocal=C:\\Off\nactive=FALSE\n");
    workplace.folder.write("PD/Lockheed Martin/Prepar3D v6/scenery_add-ons.xml",
                           "<List><Path>C:\\A</Path> <Path> C:\\B </Path>\n<!--<Path>C:\\C</Path>--></List>");
    EXPECT_EQ((std::vector<std::string>{"C:\\Prepar3D v6\\Addon\\Own", "C:\\A", "C:\\B"}),
              gf_sceneryFolders());
    AFG_AUTOMATIC.value = false;
    afolders[1].value = "C:\\P3D\\Scenery\\World";
    EXPECT_THROW(scanAirports(), UserErrorException);
    afolders[2].value = "C:\\own";
    EXPECT_EQ((std::vector<std::string>{"C:\\own"}), gf_sceneryFolders());
    scanAirports();
    EXPECT_FALSE(SCAN_AIRPORTS.value);
    EXPECT_NE(
        std::string::npos,
        workplace.log().find("parameter afolder1 points to stock airports instead of add-on airports!"));
}

}  // namespace vlt
