// Folders from the environment, and where a local pipe lives.
#include "platform/folders.h"

#include "platform/local_pipe.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <tuple>

namespace vlt {

TEST(Folders, preferOwnVariableThenXdgThenHome)
{
    const std::string temporary = "/tmp/velatra-" + std::to_string(::getuid());  // never shared between users
    const struct {
        const char *own, *xdg;
        std::filesystem::path (*folder)();
        std::string byXdg, byHome;
    } cases[] = {
        {"VELATRA_APPDATA", "XDG_CONFIG_HOME", gf_appDataFolder, "/xdg", "/home/u/.config"},
        {"VELATRA_PROGRAMDATA", "XDG_DATA_HOME", gf_programDataFolder, "/xdg/velatra/ProgramData",
         "/home/u/.local/share/velatra/ProgramData"},
        {"VELATRA_DOCUMENTS", "XDG_DOCUMENTS_DIR", gf_documentsFolder, "/xdg", "/home/u/Documents"},
        {"VELATRA_PUBLIC_DOCUMENTS", "XDG_PUBLICSHARE_DIR", gf_publicDocumentsFolder, "/xdg",
         "/home/u/Public"},
        {"VELATRA_RUNTIME", "XDG_RUNTIME_DIR", gf_runtimeFolder, "/xdg/velatra", temporary},
    };
    const ScopedVariable home("HOME", "/home/u");
    const ScopedVariable scratch("TMPDIR", "/tmp");
    ScopedVariable drive("VELATRA_DRIVE_C", "");
    for (const auto& c : cases) {
        ScopedVariable own(c.own, "/own");
        ScopedVariable xdg(c.xdg, "/xdg");
        EXPECT_EQ("/own", c.folder()) << c.own;
        own.set("");
        EXPECT_EQ(c.byXdg, c.folder()) << c.own;
        xdg.set("");
        EXPECT_EQ(c.byHome, c.folder()) << c.own;
    }
    const ScopedVariable programData("VELATRA_PROGRAMDATA", "");
    drive.set("/wine/c");
    EXPECT_EQ("/wine/c/ProgramData", gf_programDataFolder());
    const ScopedVariable own("VELATRA_APPDATA", "/own");
    EXPECT_EQ("/own/Velatra", gf_dataFolder());
}

TEST(Folders, makeTheSharedRuntimeFolderForThisUserAlone)
{
    const TempFolder temporary;
    const ScopedVariable own("VELATRA_RUNTIME", ""), xdg("XDG_RUNTIME_DIR", "");
    const ScopedVariable shared("TMPDIR", temporary.path().string());
    const std::filesystem::path folder = gf_runtimeFolder();
    EXPECT_TRUE(gf_makeRuntimeFolder());
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    EXPECT_TRUE(gf_makeRuntimeFolder());
    EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(folder).permissions());
    std::filesystem::remove(folder);
    std::filesystem::create_directory_symlink(temporary.path(), folder);
    EXPECT_FALSE(gf_makeRuntimeFolder()) << "a link may lead to what is somebody else's";
}

TEST(LocalPipe, liesInTheRuntimeFolderOfItsOwnMachine)
{
    const ScopedVariable runtime("VELATRA_RUNTIME", "/run/v");
    const std::tuple<const char*, const char*, bool> cases[] = {
        {R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)",
         "/run/v/pipe/Lockheed Martin Prepar3D v5/SimConnect", true},
        {R"(\\sim-pc\PIPE\a\b)", "/run/v/pipe/a/b", false},
        {R"(a\b)", "/run/v/pipe/a/b", true},
        {R"(\\host\share\x)", "/run/v/pipe/host/share/x", false},
        {R"(\\host)", "/run/v/pipe/host", false},
    };
    for (const auto& [name, expected, here] : cases) {
        EXPECT_EQ(expected, gf_localPipeFile(name)) << name;
        EXPECT_EQ(here, gf_isPipeOfThisMachine(name)) << name;
    }
}

}  // namespace vlt
