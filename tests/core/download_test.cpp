#include "core/base/download.h"

#include "core/base/run_state.h"
#include "core/base/zip_archive.h"
#include "standin/file_server.h"
#include "support/fresh_run.h"
#include "work_folder.h"

#include <filesystem>
#include <memory>
#include <thread>

namespace vlt {

namespace fs = std::filesystem;

// The program in a folder of its own, and a server with faults to play.
class DownloadTest : public WorkFolder
{
protected:
    void SetUp() override
    {
        fs::create_directories(served);
        gf_writeZip(served / "dbase.zip", {{"folder/", ""}, {"dbase.xml", "<new/>"}});
        write("target.xml", "<old/>");
    }
    void TearDown() override
    {
        gf_freshRun();
    }
    void serve(FileFault fault)
    {
        server = std::make_unique<FileServer>(FileServerOptions{served, 0, fault, ""});
        address.set("http://127.0.0.1:" + std::to_string(server->start()));
    }
    // The download fails and leaves what was there, or brings the new text; nothing else lies about.
    void expectTarget(const std::string& text, const char* what) const
    {
        EXPECT_EQ(text != "<old/>", fetchZippedText("dbase.zip", "target.xml")) << what;
        EXPECT_EQ(text, read("target.xml")) << what;
        EXPECT_EQ(1, std::distance(fs::directory_iterator(home), {})) << what;
        EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.path()), {})) << what;
    }

    const fs::path served = folder.path() / "served";
    ScopedVariable address{"VELATRA_SERVER", "http://127.0.0.1:9"};
    std::unique_ptr<FileServer> server;
};

TEST_F(DownloadTest, fetchesTheTextOfAnArchivesFilesOrLeavesWhatWasThere)
{
    expectTarget("<old/>", "nobody there");
    const std::pair<const char*, FileFault> cases[] = {{"404", FileFault::NotFound},
                                                       {"500", FileFault::ServerError},
                                                       {"half a body", FileFault::CutBody},
                                                       {"a text for a zip", FileFault::NotAZip}};
    for (const auto& [what, fault] : cases) {
        serve(fault);
        expectTarget("<old/>", what);
    }
    serve(FileFault::None);
    gf_writeZip(served / "dbase.zip", {{"only/", ""}});
    expectTarget("<old/>", "an archive without files is none");
    gf_writeZip(served / "dbase.zip",
                {{"folder/", ""}, {"../escaped.xml", "<a/>"}, {"/absolute.xml", "<b/>"}});
    expectTarget("<a/><b/>", "an archive's names are not paths");
}

TEST_F(DownloadTest, aStopEndsAWaitForASilentServer)
{
    serve(FileFault::Silent);
    std::jthread stopper([] { gf_requestStop(ExitReason::NewFlight, 30); });
    const auto begin = std::chrono::steady_clock::now();
    expectTarget("<old/>", "stopped");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
}

}  // namespace vlt
