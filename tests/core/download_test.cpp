#include "core/base/download.h"

#include "core/base/run_state.h"
#include "core/base/zip_archive.h"
#include "standin/file_server.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

namespace vlt {

namespace fs = std::filesystem;

// The program in a folder of its own, and a server with faults to play.
class DownloadTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        closeRequested = false;
        ASSERT_TRUE(gf_resetRunState());
        fs::create_directories(served);
        fs::create_directories(home);
        fs::current_path(home);
        gf_writeZip(served / "dbase.zip", {{"folder/", ""}, {"dbase.xml", "<new/>"}});
        std::ofstream("target.xml") << "<old/>";
    }
    void TearDown() override
    {
        fs::current_path(before);
        closeRequested = false;
        ASSERT_TRUE(gf_resetRunState());
    }

    void serve(FileFault fault)
    {
        server = std::make_unique<FileServer>(FileServerOptions{served, 0, fault, ""});
        address.set("http://127.0.0.1:" + std::to_string(server->start()));
    }
    static std::string target()
    {
        std::ifstream file("target.xml");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // Nothing but the target lies in the working folder, and nothing came beside it.
    void expectNoLeftovers(const char* what) const
    {
        EXPECT_EQ(1, std::distance(fs::directory_iterator(home), {})) << what;
        EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.path()), {})) << what;
    }

    fs::path before = fs::current_path();
    TempFolder folder;
    const fs::path served = folder.path() / "served";
    const fs::path home = folder.path() / "home";
    ScopedVariable address{"VELATRA_SERVER", "http://127.0.0.1:9"};
    std::unique_ptr<FileServer> server;
};

TEST_F(DownloadTest, fetchesTheTextOfAnArchivesFiles)
{
    gf_writeZip(served / "dbase.zip",
                {{"folder/", ""}, {"../escaped.xml", "<a/>"}, {"/absolute.xml", "<b/>"}});
    serve(FileFault::None);
    EXPECT_TRUE(fetchZippedText("dbase.zip", "target.xml"));
    EXPECT_EQ("<a/><b/>", target());
    expectNoLeftovers("an archive's names are not paths");
    std::ofstream("target.xml") << "<old/>";
    gf_writeZip(served / "dbase.zip", {{"only/", ""}});
    EXPECT_FALSE(fetchZippedText("dbase.zip", "target.xml")) << "an archive without files is none";
    EXPECT_EQ("<old/>", target());
}

TEST_F(DownloadTest, aBrokenServerLeavesWhatWasThere)
{
    EXPECT_FALSE(fetchZippedText("dbase.zip", "target.xml")) << "nobody there";
    const std::pair<const char*, FileFault> cases[] = {{"404", FileFault::NotFound},
                                                       {"500", FileFault::ServerError},
                                                       {"half a body", FileFault::CutBody},
                                                       {"a text for a zip", FileFault::NotAZip}};
    for (const auto& [what, fault] : cases) {
        serve(fault);
        EXPECT_FALSE(fetchZippedText("dbase.zip", "target.xml")) << what;
        EXPECT_EQ("<old/>", target()) << what;
        expectNoLeftovers(what);
    }
}

TEST_F(DownloadTest, aStopEndsAWaitForASilentServer)
{
    serve(FileFault::Silent);
    std::jthread stopper([] { gf_requestStop(ExitReason::NewFlight, 30); });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(fetchZippedText("dbase.zip", "target.xml"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_EQ("<old/>", target());
}

}  // namespace vlt
