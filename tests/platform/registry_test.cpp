// The registry's stand-in, and the INI rules under it.
#include "platform/registry.h"

#include "platform/ini_text.h"
#include "support/temp_folder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace vlt {

class Registry : public testing::Test
{
protected:
    static std::optional<std::string> setupPath()
    {
        return gf_registryText(kLocalMachineKey, "SOFTWARE\\Lockheed Martin\\Prepar3D v5", "SetupPath");
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
    constexpr const char* kFive = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
    const struct {
        std::string_view root, key, name;
        std::optional<std::string> value;
        bool hasKey;
    } cases[] = {
        {kLocalMachineKey, kFive, "SetupPath", "C:\\P3D v5\\", true},
        {kLocalMachineKey, "Software\\LOCKHEED martin\\prepar3d V6", "setuppath", "C:\\P3D v6", true},
        {kLocalMachineKey, kFive, "Setup", std::nullopt, true},
        {kLocalMachineKey, "software\\lockheed martin", "SetupPath", std::nullopt, true},
        {kLocalMachineKey, "SOFTWARE\\Lockheed Martin\\Prepar3D", "SetupPath", std::nullopt, false},
        {kCurrentUserKey, kFive, "SetupPath", std::nullopt, true},
        {kCurrentUserKey, kFive, "SimConnect_Port_IPv4", "5111", true},
        {kCurrentUserKey, "SOFTWARE\\Lockheed Martin\\Prepar3D v6", "SetupPath", std::nullopt, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value, gf_registryText(c.root, c.key, c.name)) << c.root << c.key << c.name;
        EXPECT_EQ(c.hasKey, gf_registryHasKey(c.root, c.key)) << c.root << c.key;
    }
}

TEST_F(Registry, isEmptyWithoutATextFileAndSurvivesHostileOnes)
{
    const auto file = folder.path() / "registry.ini";
    EXPECT_EQ(std::nullopt, setupPath());
    ASSERT_EQ(0, ::mkfifo(file.c_str(), 0600));
    EXPECT_EQ(std::nullopt, setupPath()) << "nor does it wait for a pipe";
    std::filesystem::remove(file);
    std::filesystem::create_directories(file);
    EXPECT_EQ(std::nullopt, setupPath());
    std::filesystem::remove(file);
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes += static_cast<char>(i * 37);
    }
    folder.write("registry.ini", bytes + "\n" + kTwoVersions);
    EXPECT_EQ("C:\\P3D v5\\", setupPath());
    // A line that never ends, and values behind the part that is read.
    folder.write("registry.ini", std::string(3 * kMaxIniBytes, '[') + "\n" + kTwoVersions);
    EXPECT_EQ(std::nullopt, setupPath());
}

TEST(IniValue, followsTheSystemsRules)
{
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        // clang-format off
        {"[s]\nK=v", "v"},               {" [ S ] \n k \t= v w \n", "v w"},
        {"[S]\nk=\" v \"", " v "},       {"[S]\nk=\"v", "\"v"},
        {"[S]\nk=\n", ""},               {"[S]\nk=1\nk=2", "1"},
        {"[S]\n;k=1\nk=2", "2"},         {"[S]\nk=a=b", "a=b"},
        {"[S]\nk\nk=v", "v"},            {"[S\nk=v", "v"},  // the bracket may be missing
        {"[S]\nkk=1", std::nullopt},     {"[S]\na=1\n[S]\nk=2", std::nullopt},  // the first section counts
        {"", std::nullopt},              {"[T]\nk=1\n[S]\nx=1\n[U]\nk=2", std::nullopt},
        {"k=1\n[S]\n", std::nullopt},
        // clang-format on
    };
    for (const auto& [ini, expected] : cases) {
        // In memory of exactly its size, so that a sanitizer sees a read past the end.
        const std::vector<char> exact(ini, ini + std::strlen(ini));
        EXPECT_EQ(expected, gf_iniValue({exact.data(), exact.size()}, "S", "k")) << ini;
    }
    const TempFolder folder;
    const auto file = folder.write("x.ini", "\xEF\xBB\xBF[S]\nk=v");
    EXPECT_EQ("[S]\nk=v", gf_readIniFile(file)) << "without the mark at its front";
}

}  // namespace vlt
