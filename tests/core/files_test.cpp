#include "core/base/hours.h"
#include "core/base/log.h"
#include "core/base/replace_file.h"
#include "core/base/text_files.h"
#include "core/base/version.h"
#include "core/base/zip_archive.h"
#include "work_folder.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace vlt {

using FilesTest = WorkFolder;

TEST_F(FilesTest, readsLinesOfEveryEncoding)
{
    using namespace std::string_literals;
    const std::vector<std::string> umlaut{"Zürich", "LSZH"};
    const struct {
        const char* what;
        std::string bytes;
        std::vector<std::string> lines;
        bool read = true;
    } cases[] = {
        {"line ends of Windows", "a\r\n\r\nb\r\n", {"a", "", "b"}},
        {"UTF-8 without a mark", "Z\xC3\xBCrich\nLSZH\n", umlaut},
        {"UTF-8 with a mark", "\xEF\xBB\xBFZ\xC3\xBCrich\nLSZH\n", umlaut},
        {"UTF-16 little-endian", "\xFF\xFEZ\0\xFC\0r\0i\0c\0h\0\r\0\n\0L\0S\0Z\0H\0"s, umlaut},
        {"UTF-16 big-endian", "\xFE\xFF\0Z\0\xFC\0r\0i\0c\0h\0\n\0L\0S\0Z\0H"s, umlaut},
        {"UTF-16 beyond the first plane", "\xFF\xFE\x3D\xD8\x00\xDE"s, {"\xF0\x9F\x98\x80"}},
        {"a lone surrogate stops the file", "\xFF\xFE"s + "a\0\n\0\x3D\xD8\n\0b\0"s, {"a"}, false},
        {"empty", "", {}},
    };
    for (const auto& c : cases) {
        write("text.txt", c.bytes);
        const ExtText text = readExtTextFile("text.txt");
        EXPECT_EQ(c.read, text.whole) << c.what;
        EXPECT_EQ(c.read, text.forUser.empty()) << c.what;
        EXPECT_EQ(c.lines, text.lines) << c.what;
    }
    EXPECT_FALSE(readExtTextFile("missing.txt").whole);
    EXPECT_FALSE(readExtTextFile(".").whole) << "a folder is no text";
}

TEST_F(FilesTest, aListOfBadHalfHoursIsCutInTheLog)
{
    const std::string cut(200, 'x');
    logStart();
    const size_t begun = read("Log.txt").size();
    HoursSet hours;
    hoursToSet(cut + "and more" + std::string(20'000, ','), hours);
    const std::string log = read("Log.txt").substr(begun);
    gf_logEnd();
    std::string line = "gf_hours2bitset invalid hour \"\" in " + cut;
    EXPECT_EQ(line.insert(line.find("\" in"), cut) + "\n", log.substr(0, log.find('\n') + 1));
    EXPECT_EQ(3, std::ranges::count(log, '\n'));
}

TEST_F(FilesTest, theLogKeepsTwoOlderOnes)
{
    write("Log.txt", "yesterday");
    write("Log0.txt", "the day before");
    write("Log00.txt", "long ago");
    logStart();
    logLine("a line");
    const std::string log = read("Log.txt");
    EXPECT_TRUE(log.ends_with("\na line\n")) << "each line is there at once: " << log;
    gf_logEnd();
    logLine("too late");
    EXPECT_EQ(log, read("Log.txt"));
    EXPECT_EQ("yesterday", read("Log0.txt"));
    EXPECT_EQ("the day before", read("Log00.txt"));
}

TEST_F(FilesTest, theLogGoesOnAfterAFullDiskAndCountsWhatIsLost)
{
    logStart();
    const std::string begin = read("Log.txt");
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit room{};
    ::getrlimit(RLIMIT_FSIZE, &room);
    rlimit full = room;
    full.rlim_cur = begin.size() + 2;
    ::setrlimit(RLIMIT_FSIZE, &full);
    logLine("lost");
    logLine("lost as well");
    ::setrlimit(RLIMIT_FSIZE, &room);
    std::signal(SIGXFSZ, handler);
    logLine("found");
    logLine("the end");
    gf_logEnd();
    EXPECT_EQ(begin + "lo\n(2 lines could not be written)\nfound\nthe end\n", read("Log.txt"));
}

TEST_F(FilesTest, replacingFollowsLinksAndLeavesNothingBehind)
{
    namespace fs = std::filesystem;
    fs::create_directories("elsewhere/taken/by a folder");
    write("elsewhere/file", "old");
    fs::create_symlink("file", "elsewhere/second");
    fs::create_symlink("elsewhere/second", "first");
    EXPECT_TRUE(gf_replaceFile("first", "new"));
    EXPECT_TRUE(fs::is_symlink("first") && fs::is_symlink("elsewhere/second"));
    EXPECT_EQ("new", read("elsewhere/file"));
    EXPECT_FALSE(gf_replaceFile("elsewhere/taken", "new"));
    EXPECT_FALSE(gf_replaceFile("first", [](const fs::path& beside) {
        std::ofstream(beside) << "half";
        return false;
    }));
    EXPECT_EQ("new", read("first"));
    EXPECT_EQ(3, std::distance(fs::directory_iterator("elsewhere"), {})) << "a leftover";
}

TEST_F(FilesTest, archivesGiveTheirEntriesAndRefuseWhatIsNone)
{
    gf_writeZip("a.zip", {{"folder/", ""}, {"folder/text.xml", "<x/>"}});
    const ZipArchive archive("a.zip");
    EXPECT_EQ((std::vector<std::string>{"folder/", "folder/text.xml"}), archive.entries());
    std::string text;
    const auto sink = [&text](std::span<const char> piece) { text.append(piece.data(), piece.size()); };
    archive.read("folder/text.xml", 100, sink);
    EXPECT_EQ("<x/>", text);
    EXPECT_THROW(archive.read("folder/text.xml", 3, sink), std::runtime_error) << "larger than allowed";
    EXPECT_THROW(archive.read("missing", 100, sink), std::runtime_error);
    std::string whole = read("a.zip");
    for (const size_t length : {size_t{0}, size_t{10}, whole.size() / 2, whole.size() - 5}) {
        write("cut.zip", whole.substr(0, length));
        EXPECT_THROW(ZipArchive("cut.zip"), std::runtime_error) << length;
    }
}

TEST(Version, isReadFromLineAndJson)
{
    for (const char* text : {"1.2.3", "1-2-3", R"({"major":1,"minor":2,"patch":3})"}) {
        EXPECT_EQ((VersionData{1, 2, 3}), gf_parseVersion(text).version) << text;
    }
    for (const char* bad : {"", "1.2", "99999999999.0.0", "{", "[1]", "null"}) {
        const ParsedVersion parsed = gf_parseVersion(bad);
        EXPECT_EQ(VersionData{}, parsed.version) << bad;
        EXPECT_EQ(*bad == '\0', parsed.failed.empty()) << bad;
    }
}

}  // namespace vlt
