// The registry's stand-in, and the INI rules under it.
#include "platform/registry.h"

#include "platform/ini_text.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vlt {

class Registry : public testing::Test
{
protected:
    std::optional<std::string> setupPath(std::string_view key = "SOFTWARE\\Lockheed Martin\\Prepar3D v5")
    {
        return gf_registryText(kLocalMachineKey, key, "SetupPath");
    }

    TempFolder folder;
    ScopedVariable appData{"VELATRA_APPDATA", folder.path().string()};
};

constexpr const char* kTwoVersions = "; written by hand\r\n"
                                     "[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\r\n"
                                     "SimConnect_Port_IPv4=5111\r\n"
                                     "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\r\n"
                                     "SetupPath = C:\\P3D v5\\ \r\n"
                                     "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v6]\r\n"
                                     "SetupPath=C:\\P3D v6\r\n";

TEST_F(Registry, readsAValueOfItsKeyOnlyAndKnowsTheKeysAbove)
{
    folder.write("registry.ini", kTwoVersions);
    EXPECT_EQ("C:\\P3D v5\\", setupPath());
    EXPECT_EQ("C:\\P3D v6", setupPath("Software\\LOCKHEED martin\\prepar3d V6"));
    EXPECT_EQ(std::nullopt, setupPath("SOFTWARE\\Lockheed Martin"));
    constexpr auto kKey = "SOFTWARE\\Lockheed Martin\\Prepar3D v6";
    EXPECT_EQ(std::nullopt, gf_registryText(kCurrentUserKey, kKey, "SetupPath"));
    EXPECT_EQ(std::nullopt, gf_registryText(kLocalMachineKey, kKey, "Setup"));
    EXPECT_TRUE(gf_registryHasKey(kLocalMachineKey, kKey));
    EXPECT_TRUE(gf_registryHasKey(kLocalMachineKey, "software\\lockheed martin"));
    EXPECT_FALSE(gf_registryHasKey(kLocalMachineKey, "SOFTWARE\\Lockheed Martin\\Prepar3D"));
    EXPECT_FALSE(gf_registryHasKey(kCurrentUserKey, kKey));
}

TEST_F(Registry, isEmptyWithoutAFileAndDoesNotWaitForAPipe)
{
    const auto file = folder.path() / "registry.ini";
    EXPECT_EQ(std::nullopt, setupPath());
    ASSERT_EQ(0, ::mkfifo(file.c_str(), 0600));
    EXPECT_EQ(std::nullopt, setupPath());
    std::filesystem::remove(file);
    std::filesystem::create_directories(file);
    EXPECT_EQ(std::nullopt, setupPath());
}

TEST_F(Registry, survivesHostileFiles)
{
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes += static_cast<char>(i * 37);
    }
    folder.write("registry.ini", bytes + "\n" + kTwoVersions);
    EXPECT_EQ("C:\\P3D v5\\", setupPath());

    // A line that never ends, and values behind the part that is read.
    folder.write("registry.ini", std::string(3 * kMaxIniBytes, '[') + "\n" + kTwoVersions);
    EXPECT_EQ(std::nullopt, setupPath());

    // Every cut of a good file: in a buffer of its own, so that a sanitizer sees a read past the
    // end.
    const std::string whole = kTwoVersions;
    for (size_t length = 0; length < whole.size(); ++length) {
        const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::string_view text(cut.data(), cut.size());
        const auto value =
            gf_iniValue(text, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v6", "SetupPath");
        ASSERT_TRUE(!value || std::string("C:\\P3D v6").starts_with(*value)) << length;
    }
}

TEST(IniValue, followsTheSystemsRules)
{
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"[s]\nK=v", "v"},
        {" [ S ] \n k \t= v w \n", "v w"},
        {"[S]\nk=\" v \"", " v "},
        {"[S]\nk=\"v", "\"v"},
        {"[S]\nk=\n", ""},
        {"[S]\nk=1\nk=2", "1"},
        {"[S]\na=1\n[S]\nk=2", std::nullopt},  // the first section counts
        {"[S]\n;k=1\nk=2", "2"},
        {"[S]\nk=a=b", "a=b"},
        {"[T]\nk=1\n[S]\nx=1\n[U]\nk=2", std::nullopt},
        {"k=1\n[S]\n", std::nullopt},
        {"[S\nk=v", "v"},  // the bracket may be missing
        {"[S]\nk\nk=v", "v"},
        {"[S]\nkk=1", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [ini, expected] : cases) {
        EXPECT_EQ(expected, gf_iniValue(ini, "S", "k")) << ini;
    }
    const TempFolder folder;
    const auto file = folder.write("x.ini", "\xEF\xBB\xBF[S]\nk=v");
    EXPECT_EQ("[S]\nk=v", gf_readIniFile(file)) << "without the mark at its front";
}

}  // namespace vlt
