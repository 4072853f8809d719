// Paths of users' files on a disk that knows letters' case and no drives.
#include "platform/paths_form.h"

#include "support/temp_folder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vlt {

class PathsForm : public testing::Test
{
protected:
    std::string native(std::string_view path)
    {
        return gf_toNativeForm(path).string();
    }

    TempFolder folder;
    std::string root = folder.path().string();
    ScopedVariable driveC{"VELATRA_DRIVE_C", root + "/c/"};
    ScopedVariable driveD{"VELATRA_DRIVE_D", ""};
    ScopedVariable programData{"VELATRA_PROGRAMDATA", root + "/pd"};
};

TEST_F(PathsForm, mapsDrivesAndSlashesToNativePaths)
{
    const struct {
        const char* what;
        std::string windows, expected;
    } cases[] = {
        {"drive", "C:\\P3D\\a.bgl", root + "/c/P3D/a.bgl"},
        {"small letter of the drive", "c:\\P3D", root + "/c/P3D"},
        {"drive alone", "C:", root + "/c"},
        {"relative to the drive", "C:P3D", root + "/c/P3D"},
        {"slashes mixed", "C:/P3D\\x/y", root + "/c/P3D/x/y"},
        {"drive without a folder", "D:\\x\\y", "D:/x/y"},
        {"program data", "C:\\ProgramData\\Lockheed Martin", root + "/pd/Lockheed Martin"},
        {"program data in other case", "c:/programDATA", root + "/pd"},
        {"no program data, only its beginning", "C:\\ProgramData2\\x", root + "/c/ProgramData2/x"},
        {"relative", "SimObjects\\Airplanes", "SimObjects/Airplanes"},
        {"native already", "/opt/x y/z", "/opt/x y/z"},
        {"empty", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, native(c.windows)) << c.what;
    }
}

TEST_F(PathsForm, dropsDotsAndBlanksAtTheEndOfNames)
{
    const struct {
        const char* what;
        std::string windows, expected;
    } cases[] = {
        {"empty model", "a\\model.\\model.cfg", "a/model/model.cfg"},
        {"last name", "a\\model.", "a/model"},
        {"several", "a. . \\b  \\c", "a/b/c"},
        {"dots inside stay", "a.b\\c..d", "a.b/c..d"},
        {"blanks at the front stay", "\\ a\\b", "/ a/b"},
        {"folder above and this folder stay", "..\\a\\.\\b", "../a/./b"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, native(c.windows)) << c.what;
    }
}

TEST_F(PathsForm, findsNamesInOtherCase)
{
    folder.write("c/SimObjects/Airplanes/Aircraft.cfg", "x");
    folder.write("c/\xC3\x9C"
                 "bersee/\xD0\x96.txt",
                 "x");
    EXPECT_EQ(root + "/c/SimObjects/Airplanes/Aircraft.cfg",
              native("C:\\simobjects\\AIRPLANES\\aircraft.CFG"));
    EXPECT_EQ(root + "/c/\xC3\x9C"
                     "bersee/\xD0\x96.txt",
              native("C:\\\xC3\xBC"
                     "BERSEE\\\xD0\xB6.TXT"));
    // What isn't there keeps the user's letters, below what is there.
    EXPECT_EQ(root + "/c/SimObjects/Boats/x.cfg", native("C:\\SIMOBJECTS\\Boats\\x.cfg"));
}

TEST_F(PathsForm, prefersTheExactNameAndThenTheFirst)
{
    folder.write("c/abc/exact", "x");
    folder.write("c/ABC/other", "x");
    EXPECT_EQ(root + "/c/abc/exact", native("C:\\abc\\exact"));
    EXPECT_EQ(root + "/c/ABC", native("C:\\Abc"));
}

TEST_F(PathsForm, survivesNamesThatAreNoText)
{
    EXPECT_EQ("\xFF\xC3/x", native("\xFF\xC3\\x"));
    EXPECT_EQ("a/b", native("a/b"));
    EXPECT_EQ(std::string(5000, 'x'), native(std::string(5000, 'x')));
}

TEST_F(PathsForm, givesTheWindowsForm)
{
    const struct {
        const char* what;
        std::string nativePath, expected;
    } cases[] = {
        {"on the drive", root + "/c/P3D/x", "C:\\P3D\\x"},
        {"the drive itself", root + "/c", "C:\\"},
        {"beside the drive", root + "/cc/x", ""},
        {"program data", root + "/pd/Lockheed Martin", "C:\\ProgramData\\Lockheed Martin"},
        {"relative", "output/info", "output\\info"},
        {"windows already", "C:\\a\\b", "C:\\a\\b"},
    };
    for (const auto& c : cases) {
        std::string expected = c.expected;
        if (expected.empty()) {
            expected = c.nativePath;
            std::replace(expected.begin(), expected.end(), '/', '\\');
        }
        EXPECT_EQ(expected, gf_toWindowsForm(c.nativePath)) << c.what;
    }
}

TEST_F(PathsForm, comesBackFromTheWindowsForm)
{
    for (const std::string& path : {root + "/c/A b/c.d", root + "/pd/x", std::string("rel/x"), root + "/z"}) {
        EXPECT_EQ(path, native(gf_toWindowsForm(path)));
    }
}

}  // namespace vlt
