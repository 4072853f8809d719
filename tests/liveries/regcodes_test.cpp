#include "liveries/regcodes.h"

#include "core/base/text.h"
#include "core/base/zip_archive.h"
#include "liveries/livery_place.h"
#include "liveries/scrambling.h"
#include "standin/file_server.h"

#include <memory>

namespace vlt {

class RegcodesTest : public LiveryPlace
{
protected:
    void serve(const std::string& regcodesXml)
    {
        std::filesystem::create_directories("server");
        gf_writeZip("server/AIG-regcodes.zip", {{"AIG-regcodes.xml", regcodesXml}});
        fileServer = std::make_unique<FileServer>(FileServerOptions{.folder = "server", .faultPath = ""});
        workplace.server.set(format("http://127.0.0.1:{}/", fileServer->start()));
    }

    std::unique_ptr<FileServer> fileServer;
};

// One element of the server's file.
static std::string lf_livery(const char* title, const char* regcode)
{
    return format("<livery title='{}' reg='{}'/>", title, gf_scrambleRegcode(regcode));
}

TEST_F(RegcodesTest, linesOfTheUsersFiles)
{
    const struct {
        const char* line;
        bool good;
        const char* entry;  // the registrations, "#" for special; "-" if the line gives none
    } cases[] = {
        {"", true, "-"},
        {"Title", true, ""},
        {"Title;G-DBCJ", true, " G-DBCJ"},
        {"Title;ABC,ABCDEFGHIJKL", true, " ABC ABCDEFGHIJKL"},
        {"Title;AB,G-DBCJ", false, " G-DBCJ"},
        {"Title;ABCDEFGHIJKLM", false, ""},
        {"Title;G-DBCJ;#", true, " G-DBCJ#"},
        {"Title;G-DBCJ;##", true, " G-DBCJ"},
        {"Title;;#", true, "#"},
        {"Title;", true, ""},
        {"Title;G-DBCJ;#;", false, "-"},
        {";G-DBCJ", false, "-"},
    };
    for (const auto& c : cases) {
        const auto path = workplace.folder.write("one.txt", format("{}\r\nNext;EI-AAA\n", c.line));
        std::vector<RegcodeEntry> entries;
        EXPECT_EQ(c.good, gf_readRegcodeText(path, entries)) << c.line;
        std::string entry = entries.size() == 1 ? "-" : "";
        for (const std::string& regcode :
             entries.at(0).title == "Title" ? entries[0].regcodes : std::vector<std::string>{}) {
            entry += " " + regcode;
        }
        EXPECT_EQ(c.entry, entry + (entries[0].special ? "#" : "")) << c.line;
        EXPECT_EQ("Next", entries.back().title) << c.line << ": the rest of the file is read";
    }
}

TEST_F(RegcodesTest, anElementOfTheServersFileThatIsWrongIsLeftOut)
{
    const std::string text = "<AIG-regcodes><livery reg='AAA'/><livery title='Four' reg='" +
                             std::string(25, 'A') + "'/>" + lf_livery("One", "G-DBCJ") + "</AIG-regcodes>";
    std::vector<RegcodeEntry> entries;
    EXPECT_FALSE(gf_readRegcodeXml(workplace.folder.write("a.xml", text), entries)) << "25 characters";
    EXPECT_FALSE(gf_readRegcodeXml(workplace.folder.write("b.xml", "<AIG-regcodes>"), entries));
    ASSERT_EQ(1U, entries.size());
    EXPECT_EQ((std::vector<std::string>{"G-DBCJ"}), entries[0].regcodes);
}

TEST_F(RegcodesTest, registrationsPrintedOnLiveriesAreEnteredAndTheFirstStays)
{
    const std::string first = "VWorld A319 British Airways";
    regcodeTitles.clear();
    liveries = {{"BAW", "A319", first, "G-AAAA", 1, false},
                {"BAW", "A320", "VWorld A320 British Airways", "G-AAAA", 1, false},
                {"BAW", "A319", first, "G-AAAA", 1, false},
                {"RYR", "B738", "VWorld B738 Ryanair", "", 1, false}};
    collectInlineRegcodes();
    EXPECT_EQ(1U, regcodeTitles.size());
    EXPECT_EQ(first, findRegcodeTitle("GAAAA"));
    EXPECT_EQ("", findRegcodeTitle(""));
    EXPECT_EQ("G-AAAA \"VWorld A320 British Airways\" => already in use by \"VWorld A319 British Airways\"\n",
              gf_textOfFile("output/errors/InlineRegcodes.txt"));
}

TEST_F(RegcodesTest, entriesOfInstalledTitlesWinOverWhatWasThere)
{
    std::vector<std::string> results;
    ASSERT_EQ("VWorld B738 KLM PH-BXA", findRegcodeTitle("PHBXA"));
    gf_processRegcodeEntries({{"VWorld B738 Ryanair", {"PH-BXA", "EI-AAA"}, false},
                              {"not installed", {"EI-BBB"}, true},
                              {"VWorld B738 KLM PH-BXA", {}, true},
                              {"VWorld B738 Ryanair", {"EI-AAA"}, false}},
                             results);
    EXPECT_EQ("VWorld B738 Ryanair", findRegcodeTitle("PHBXA"));
    EXPECT_EQ(0U, regcodeTitles.count("EI-BBB"));
    EXPECT_EQ((TitleViews{"VWorld B738 KLM PH-BXA"}), specialTitles);
    EXPECT_EQ(
        (std::vector<std::string>{"   regcode PH-BXA for \"VWorld B738 Ryanair\", instead of the same for "
                                  "\"VWorld B738 KLM PH-BXA\"",
                                  "1 new regcode added, 1 regcode replaced, 1 regcode defined as special"}),
        results);
}

TEST_F(RegcodesTest, theUsersFilesWinOverTheServersAndAreEnough)
{
    workplace.folder.write("input/my_regcodes/mine.Txt",
                           "VWorld B738 white;EI-AAA\nVWorld B738 Ryanair;;#\n");
    workplace.folder.write("input/my_regcodes/other.doc", "VWorld B738 white;EI-CCC\n");
    const auto reported = [](const char* text) {
        return gf_textOfFile("output/info/OfflineRegcodes.txt").find(text) != std::string::npos;
    };
    processRegcodeFiles();
    EXPECT_TRUE(reported("1 new regcode added, 1 regcode defined as special\n")) << "without a server";
    regcodeTitles.clear();
    serve("<AIG-regcodes>" + lf_livery("VWorld B738 Ryanair", "EI-AAA") +
          lf_livery("VWorld B738 Ryanair", "EI-CCC") + "</AIG-regcodes>");
    processRegcodeFiles();
    EXPECT_EQ("VWorld B738 white", findRegcodeTitle("EIAAA"));
    EXPECT_EQ("VWorld B738 Ryanair", findRegcodeTitle("EICCC"));
    EXPECT_FALSE(std::filesystem::exists("input/AIG-regcodes.xml"));
    EXPECT_TRUE(reported("2 new regcodes added\n"));
    regcodeTitles.clear();
    serve("<AIG-regcodes><livery");
    workplace.folder.write("input/my_regcodes/bad.txt", "Title;A;B;C\n");
    processRegcodeFiles();
    EXPECT_EQ("VWorld B738 white", findRegcodeTitle("EIAAA"));
    EXPECT_TRUE(reported("There were errors in processing the regcode files in folder"));
    EXPECT_TRUE(reported("There were errors in processing the AIG-regcode file \""));
}

TEST_F(RegcodesTest, titlesNotToBeUsed)
{
    serve("<AIG-regcodes>" + lf_livery("Never", "") + lf_livery("Sometimes", "EI-AAA") + "</AIG-regcodes>");
    workplace.folder.write("input/my_regcodes/mine.txt", "Not this\nThat;EI-AAA\nNor that\n");
    readDontUseTitles();
    EXPECT_EQ((std::vector<std::string>{"Never", "Not this", "Nor that"}), dontUseTitles);
    EXPECT_TRUE(isDontUseTitle("Nor that"));
    EXPECT_FALSE(isDontUseTitle("That"));
}

}  // namespace vlt
