// Paths of users' files on a disk that knows letters' case and no drives.
#include "platform/paths_form.h"

#include "support/temp_folder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vlt {

class PathsForm : public testing::Test
{
protected:
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    static void expectNative(const Pairs& windowsAndNative)
    {
        for (const auto& [windows, expected] : windowsAndNative) {
            EXPECT_EQ(expected, gf_toNativeForm(windows).string()) << windows;
        }
    }

    TempFolder folder;
    std::string root = folder.path().string();
    ScopedVariable driveC{"VELATRA_DRIVE_C", root + "/c/"};
    ScopedVariable driveD{"VELATRA_DRIVE_D", ""};
    ScopedVariable programData{"VELATRA_PROGRAMDATA", root + "/pd"};
};

TEST_F(PathsForm, mapsDrivesSlashesAndEndsOfNames)
{
    expectNative({
        {"C:\\P3D\\a.bgl", root + "/c/P3D/a.bgl"},
        {"c:\\P3D", root + "/c/P3D"},
        {"C:", root + "/c"},
        {"C:P3D", root + "/c/P3D"},  // relative to the drive
        {"C:/P3D\\x/y", root + "/c/P3D/x/y"},
        {"D:\\x\\y", "D:/x/y"},  // no folder stands for it
        {"C:\\ProgramData\\Lockheed Martin", root + "/pd/Lockheed Martin"},
        {"c:/programDATA", root + "/pd"},
        {"C:\\ProgramData2\\x", root + "/c/ProgramData2/x"},
        {"SimObjects\\Airplanes", "SimObjects/Airplanes"},
        {"/opt/x y/z", "/opt/x y/z"},
        {"", ""},
        {"\xFF\xC3\\x", "\xFF\xC3/x"},  // no text
        {std::string(5000, 'x'), std::string(5000, 'x')},
        // Dots and blanks at the end of names go.
        {"a\\model.\\model.cfg", "a/model/model.cfg"},
        {"a\\model.", "a/model"},
        {"a. . \\b  \\c", "a/b/c"},
        {"a.b\\c..d", "a.b/c..d"},
        {"\\ a\\b", "/ a/b"},
        {"..\\a\\.\\b", "../a/./b"},
    });
}

TEST_F(PathsForm, findsNamesInOtherCaseButTheExactNameAndTheFirstBefore)
{
    folder.write("c/SimObjects/Airplanes/Aircraft.cfg", "x");
    folder.write("c/\u00DCbersee/\u0416.txt", "x");
    folder.write("c/abc/exact", "x");
    folder.write("c/ABC/other", "x");
    expectNative({
        {"C:\\simobjects\\AIRPLANES\\aircraft.CFG", root + "/c/SimObjects/Airplanes/Aircraft.cfg"},
        {"C:\\\u00FCBERSEE\\\u0436.TXT", root + "/c/\u00DCbersee/\u0416.txt"},
        // What isn't there keeps the user's letters, below what is there.
        {"C:\\SIMOBJECTS\\Boats\\x.cfg", root + "/c/SimObjects/Boats/x.cfg"},
        {"C:\\abc\\exact", root + "/c/abc/exact"},
        {"C:\\Abc", root + "/c/ABC"},
    });
}

TEST_F(PathsForm, givesTheWindowsFormAndComesBackFromIt)
{
    std::string beside = root + "/cc/x";
    std::ranges::replace(beside, '/', '\\');
    const Pairs cases = {
        {root + "/c/P3D/A b/c.d", "C:\\P3D\\A b\\c.d"},
        {root + "/cc/x", beside},
        {root + "/pd/Lockheed Martin", "C:\\ProgramData\\Lockheed Martin"},
        {"output/info", "output\\info"},
    };
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(expected, gf_toWindowsForm(path));
        EXPECT_EQ(path, gf_toNativeForm(expected).string());
    }
    EXPECT_EQ("C:\\", gf_toWindowsForm(root + "/c"));
    EXPECT_EQ("C:\\a\\b", gf_toWindowsForm("C:\\a\\b"));
}

}  // namespace vlt
