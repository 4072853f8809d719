#include "liveries/regcodes.h"

#include "core/base/download.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/report_file.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace vlt {

constexpr const char* kServerArchive = "AIG-regcodes.zip";

static std::vector<std::string> resultLines;  // [worker] what the processing tells

static std::filesystem::path lf_serverFile()
{
    return kInputFolder / "AIG-regcodes.xml";
}

// The texts of all installed titles.
using InstalledTitles = std::unordered_map<std::string_view, std::string_view, Fnv1a, std::equal_to<>>;

static InstalledTitles lf_installedTitles()
{
    InstalledTitles titles;
    for (const auto& [airline, models] : airlineLiveries) {
        for (const auto& [model, entries] : models) {
            for (const LiveryEntry& entry : entries) {
                titles.emplace(entry.title, entry.title);
            }
        }
    }
    return titles;
}

// Fetches the server's file, reads it and takes it away again. Nothing if it can't be fetched, else
// whether it was good.
static std::optional<bool> lf_fetchServerEntries(std::vector<RegcodeEntry>& entries)
{
    if (!fetchZippedText(kServerArchive, lf_serverFile())) {
        return std::nullopt;
    }
    const bool good = gf_readRegcodeXml(lf_serverFile(), entries);
    std::error_code ignored;
    std::filesystem::remove(lf_serverFile(), ignored);
    return good;
}

static bool lf_readUserFile(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries)
{
    logLine(format("Processing regcodes file \"{}\"", gf_shown(path)));
    const size_t before = entries.size();
    bool good = false;
    try {
        good = gf_readRegcodeText(path, entries);
    } catch (const std::exception& e) {
        logLine(format("Error in reading regcode file {}, what: {}", gf_shown(path), e.what()));
    }
    const size_t count = entries.size() - before;
    logLine(format("{} liverie{} read", count, gf_plural(static_cast<int64_t>(count))));
    return good;
}

static std::vector<std::filesystem::path> lf_userFiles()
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator it(kMyRegcodesFolder, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code unknown;
        if (it->is_regular_file(unknown) && gf_upperCase(it->path().extension().string()) == ".TXT") {
            files.push_back(it->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Reads all files of the user; the failure of one is told in the results.
static std::vector<RegcodeEntry> lf_userEntries()
{
    std::vector<RegcodeEntry> entries;
    bool good = true;
    for (const std::filesystem::path& path : lf_userFiles()) {
        good = lf_readUserFile(path, entries) && good;
    }
    if (!good) {
        resultLines.push_back(
            format("There were errors in processing the regcode files in folder \"{}\", see the "
                   "Log.txt",
                   gf_shown(kMyRegcodesFolder)));
    }
    return entries;
}

static bool lf_hasUserFolder()
{
    std::error_code error;
    return std::filesystem::exists(kMyRegcodesFolder, error);
}

// Appends the titles of entries without registrations, and gives their number.
static int64_t lf_addDontUseTitles(const std::vector<RegcodeEntry>& entries)
{
    int64_t count = 0;
    for (const RegcodeEntry& entry : entries) {
        if (entry.regcodes.empty()) {
            dontUseTitles.push_back(entry.title);
            ++count;
        }
    }
    return count;
}

void readDontUseTitles()
{
    std::vector<RegcodeEntry> entries;
    const std::optional<bool> good = lf_fetchServerEntries(entries);
    if (!good) {
        logLine(format("reading {} failed?", gf_shown(lf_serverFile())));
    } else if (!*good) {
        resultLines.push_back(format("There were errors in processing the file \"{}\", see the Log.txt",
                                     gf_shown(lf_serverFile())));
    }
    const int64_t count = lf_addDontUseTitles(entries);
    logLine(format("{} don't use title{} read", count, gf_plural(count)));
    if (lf_hasUserFolder()) {
        const int64_t own = lf_addDontUseTitles(lf_userEntries());
        logLine(format("{} don't use title{} read from files in {}", own, gf_plural(own),
                       gf_shown(kMyRegcodesFolder)));
    }
}

bool isDontUseTitle(std::string_view title)
{
    return std::find(dontUseTitles.begin(), dontUseTitles.end(), title) != dontUseTitles.end();
}

static void lf_collectInline(const Livery& livery, const InstalledTitles& installed,
                             std::vector<std::string>& clashes)
{
    const auto title = installed.find(livery.title);
    if (title == installed.end()) {
        clashes.push_back(format("==> [{}] {} \"{}\" not available, system error, should not happen?",
                                 livery.airline, livery.model, livery.title));
        return;
    }
    const auto [place, added] = regcodeTitles.try_emplace(livery.atcid, title->second);
    if (!added && place->second != livery.title) {
        clashes.push_back(
            format("{} \"{}\" => already in use by \"{}\"", livery.atcid, livery.title, place->second));
    }
}

void collectInlineRegcodes()
{
    const InstalledTitles installed = lf_installedTitles();
    std::vector<std::string> clashes;
    for (const Livery& livery : liveries) {
        if (!livery.atcid.empty()) {
            lf_collectInline(livery, installed, clashes);
        }
    }
    if (!clashes.empty()) {
        const std::filesystem::path report = kErrorsFolder / "InlineRegcodes.txt";
        gf_writeReport(report, clashes);
        logLine(format("{} in-line regcode clashes, see \"{}\"", clashes.size(), gf_shown(report)));
    }
}

// What the entries of one source did.
struct EntryCounts {
    int64_t added = 0;
    int64_t replaced = 0;
    int64_t special = 0;
};

static void lf_enter(std::string_view regcode, std::string_view title, EntryCounts& counts,
                     std::vector<std::string>& results)
{
    const auto [place, added] = regcodeTitles.try_emplace(std::string(regcode), title);
    if (added) {
        ++counts.added;
    } else if (place->second != title) {
        results.push_back(format("   regcode {} for \"{}\", instead of the same for \"{}\"", regcode, title,
                                 place->second));
        place->second = title;
        ++counts.replaced;
    }
}

static std::string lf_countsText(const EntryCounts& counts)
{
    std::string text = format("{} new regcode{} added", counts.added, gf_plural(counts.added));
    if (counts.replaced > 0) {
        text += format(", {} regcode{} replaced", counts.replaced, gf_plural(counts.replaced));
    }
    if (counts.special > 0) {
        text += format(", {} regcode{} defined as special", counts.special, gf_plural(counts.special));
    }
    return text;
}

void gf_processRegcodeEntries(const std::vector<RegcodeEntry>& entries, std::vector<std::string>& results)
{
    constexpr size_t kUsualSpecials = 4096;
    const InstalledTitles installed = lf_installedTitles();
    specialTitles.reserve(kUsualSpecials);
    EntryCounts counts;
    for (const RegcodeEntry& entry : entries) {
        const auto title = installed.find(entry.title);
        if (title == installed.end()) {
            continue;
        }
        for (const std::string& regcode : entry.regcodes) {
            lf_enter(regcode, title->second, counts, results);
        }
        if (entry.special) {
            specialTitles.push_back(title->second);
            ++counts.special;
        }
    }
    results.push_back(lf_countsText(counts));
}

static void lf_processServerFile()
{
    std::vector<RegcodeEntry> entries;
    const std::optional<bool> good = lf_fetchServerEntries(entries);
    if (!good) {
        logLine("reading AIG-regcodes failed?");
        return;
    }
    resultLines.push_back(format("Processing file {}", gf_shown(lf_serverFile())));
    if (!*good) {
        resultLines.push_back(
            format("There were errors in processing the AIG-regcode file \"{}\", see the Log.txt",
                   gf_shown(lf_serverFile())));
    }
    gf_processRegcodeEntries(entries, resultLines);
}

static void lf_processUserFiles()
{
    if (lf_hasUserFolder()) {
        resultLines.push_back(format("Processing files in {}", gf_shown(kMyRegcodesFolder)));
        const std::vector<RegcodeEntry> entries = lf_userEntries();
        gf_processRegcodeEntries(entries, resultLines);
    }
}

void processRegcodeFiles()
{
    resultLines.clear();
    lf_processServerFile();
    lf_processUserFiles();
    const std::filesystem::path report = kInfoFolder / "OfflineRegcodes.txt";
    std::error_code ignored;
    std::filesystem::remove(report, ignored);
    if (!resultLines.empty() && gf_writeReport(report, resultLines)) {
        logLine(format("Offline regcode files processed, results can be found in \"{}\"", gf_shown(report)));
    }
    if (!specialTitles.empty()) {
        logLine(format("{} special liveries", specialTitles.size()));
    }
}

std::string_view findRegcodeTitle(std::string_view regcode)
{
    const RegcodeVariants variants = regcodeVariants(regcode);
    for (size_t i = 0; i < variants.count; ++i) {
        if (const auto known = regcodeTitles.find(variants.texts[i]); known != regcodeTitles.end()) {
            return known->second;
        }
    }
    return {};
}

}  // namespace vlt
