#include "liveries/livery_section.h"

#include "core/base/text.h"
#include "liveries/cfg_text.h"
#include "liveries/database.h"
#include "liveries/regcodes.h"
#include "platform/ini_text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace vlt {

constexpr size_t kLongestRegcode = 12;  // characters of one printed on a livery

// A section on its way.
struct LiverySection {
    LiverySection(CfgFile& itsFile, CfgScan& itsScan, std::string first)
        : file(itsFile), scan(itsScan), firstLine(std::move(first))
    {
    }

    CfgFile& file;
    CfgScan& scan;
    std::string firstLine;
    std::string title, airline, types, atcid;
    std::optional<std::string> model, sim, texture;
    bool hasTitle = false, hasCodes = false, hasTypes = false, hasIds = false;
};

static void lf_log(LiverySection& section, std::string line)
{
    section.scan.log.push_back(std::move(line));
}

// Gives false, for the end of a section.
static bool lf_incomplete(LiverySection& section, std::string line)
{
    section.scan.reports.incomplete.push_back(std::move(line));
    return false;
}

static bool lf_wasThere(LiverySection& section, bool& has, std::string_view what)
{
    const bool before = std::exchange(has, true);
    if (before) {
        lf_incomplete(section, format("{} {} {}", section.file.shownFolder, section.firstLine, what));
    }
    return before;
}

// --- the keys; each gives false when it ends the section

static bool lf_takeTitle(LiverySection& section, std::string_view value)
{
    if (lf_wasThere(section, section.hasTitle, "has more than one title key")) {
        return false;
    }
    const std::string_view trimmed = gf_trimmed(value);
    if (trimmed != value && section.file.ivao) {
        lf_log(section, format("removed spaces around title \"{}\" --> \"{}\"", value, trimmed));
    } else if (trimmed != value) {
        lf_log(section, format("There are spaces around title: \"{}\"", value));
        lf_log(section, format("removed spaces around: \"{}\"-> \"{}\"", value, trimmed));
    }
    section.title = trimmed;
    return true;
}

static bool lf_takeCodes(LiverySection& section, std::string_view value)
{
    constexpr size_t kWithSuffix = 4;
    if (lf_wasThere(section, section.hasCodes, "has more than one atc_parking_codes key")) {
        return false;
    }
    std::string_view code = gf_trimmed(value.substr(0, value.find(',')));
    if (code.size() == kWithSuffix && (code.ends_with('X') || code.ends_with('C'))) {
        code.remove_suffix(1);
    }
    if (code == "RFO") {
        return false;
    }
    if (isValidAirline(code)) {
        section.airline = code;
    } else if (!code.empty()) {
        section.scan.reports.airlineCodes.push_back(format("{:12} in {} ", code, section.file.place.shown));
    }
    return true;
}

static bool lf_takeTypes(LiverySection& section, std::string_view value)
{
    if (lf_wasThere(section, section.hasTypes, "has more than one atc_parking_types key")) {
        return false;
    }
    section.types = gf_upperCase(gf_trimmed(value));
    return true;
}

// What is wrong with an item of atc_id, as the log tells it; empty if nothing is.
static std::string lf_faultOf(const LiverySection& section, std::string_view item, std::string_view value)
{
    const std::string& shown = section.file.place.shown;
    const std::string_view code = gf_trimmed(item);
    if (item == " " && !section.file.ivao) {
        return format("regcode is a space char? {} {}", value, shown);
    }
    if (code.empty()) {
        return section.file.ivao ? format("empty regcode in: {}", shown)
                                 : format("empty regcode in {} {}", value, shown);
    }
    if (code.size() > kLongestRegcode) {
        return section.file.ivao
                   ? format("regcode: {}, has more than 12 chars in title: {}", code, section.title)
                   : format("regcode: {}, has more than 12 chars or contains UTF16 chars in \"{}\"?", code,
                            shown);
    }
    if (code.find('*') != std::string_view::npos) {
        return format("{} {} wild cards no longer supported, atc_id skipped ", code, shown);
    }
    return {};
}

static bool lf_takeIds(LiverySection& section, std::string_view value)
{
    if (std::exchange(section.hasIds, true)) {
        return lf_incomplete(section, format("{}, {}, has more than one atc_id key", section.file.shownFolder,
                                             section.firstLine));
    }
    const std::vector<std::string_view> items = gf_split(value.substr(0, value.find(';')), ',');
    if (items.empty()) {
        lf_log(section, format("invalid atc_id={} ==> in: {}", value, section.file.place.shown));
    }
    for (const std::string_view item : items) {
        const std::string fault = lf_faultOf(section, item, value);
        if (!fault.empty()) {
            lf_log(section, fault);
            if (!section.file.ivao) {
                return true;
            }
        } else if (section.file.ivao) {
            section.atcid = gf_trimmed(item);
            return true;
        }
    }
    if (items.size() == 1 && !section.file.ivao) {
        section.atcid = gf_trimmed(items.front());
    }
    return true;
}

static bool lf_takeFirst(std::optional<std::string>& place, std::string_view value)
{
    if (!place) {
        place = value;
    }
    return true;
}

// Without the quotation marks that enclose a whole value.
static std::string_view lf_unquoted(LiverySection& section, std::string_view value)
{
    if (value.size() < 2 || !value.starts_with('"') || !value.ends_with('"')) {
        return value;
    }
    const std::string_view inner = value.substr(1, value.size() - 2);
    lf_log(section, format("removed quotation marks around: {}-> \"{}\"", value, inner));
    return inner;
}

static bool lf_takeKey(LiverySection& section, const CfgKeyValue& line)
{
    const auto is = [&line](std::string_view key) { return gf_sameIgnoringCase(line.key, key); };
    const auto value = [&] { return lf_unquoted(section, line.value); };
    const auto name = [&] { return lf_unquoted(section, gf_withoutComment(line.value)); };
    if (is("title")) {
        return lf_takeTitle(section, value());
    }
    if (is("atc_parking_codes") && !section.file.ivao) {
        return lf_takeCodes(section, value());
    }
    if (is("atc_parking_types")) {
        return lf_takeTypes(section, value());
    }
    if (is("atc_id")) {
        return lf_takeIds(section, value());
    }
    if (is("model")) {
        return lf_takeFirst(section.model, name());
    }
    if (is("sim")) {
        return lf_takeFirst(section.sim, name());
    }
    return !is("texture") || lf_takeFirst(section.texture, name());
}

// --- the end of a section

uint64_t gf_pathHash(std::string_view shown)
{
    std::string text(shown);
    while (text.ends_with('.') || text.ends_with(' ')) {
        text.pop_back();
    }
    uint64_t hash = 0xcbf29ce484222325;
    for (const char32_t c : gf_comparedForm(text)) {
        hash = (hash ^ c) * 0x100000001b3;
    }
    return hash;
}

// Whether a folder, or a plain file, of this name lies below the file's folder.
static bool lf_isThere(CfgFile& file, const std::string& name, bool folder)
{
    if (const auto known = file.known.find(name); known != file.known.end()) {
        return known->second;
    }
    if (file.onDisk.hashes.contains(gf_pathHash(file.shownFolder + '\\' + name) + (folder ? 1 : 0))) {
        return file.known.emplace(name, true).first->second;
    }
    const auto test = [folder](const std::filesystem::path& path) {
        std::error_code error;
        return folder ? std::filesystem::is_directory(path, error)
                      : std::filesystem::is_regular_file(path, error);
    };
    // Mostly the name stands on the disk as it is told; else its case, or a dot at its end, differs.
    std::string plain = name;
    std::replace(plain.begin(), plain.end(), '\\', '/');
    const bool there = test(file.folder / plain) || test(gf_toNativeForm((file.folder / plain).string()));
    return file.known.emplace(name, there).first->second;
}

static bool lf_hasAllFiles(LiverySection& section)
{
    const std::string model = "model." + section.model.value_or("");
    const std::string texture = "texture." + section.texture.value_or("");
    const std::string sim = model + "\\" + section.sim.value_or("") + ".air";
    const std::pair<const std::string&, bool> wanted[] = {{model, true}, {texture, true}, {sim, false}};
    for (const auto& [name, folder] : wanted) {
        if (!lf_isThere(section.file, name, folder)) {
            return lf_incomplete(section, format("{}\\{} {} does not exist", section.file.shownFolder, name,
                                                 section.file.place.shown));
        }
    }
    return true;
}

// The airline by the first three letters of the title.
static bool lf_findIvaoAirline(LiverySection& section)
{
    constexpr size_t kLetters = 3;
    const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    const std::string_view code = std::string_view(section.title).substr(0, kLetters);
    const std::string& shown = section.file.place.shown;
    if (code.size() == kLetters && std::all_of(code.begin(), code.end(), isWord)) {
        section.airline = code;
        if (!isValidAirline(code)) {
            section.scan.reports.airlineCodes.push_back(format("{:12} in {} ", code, shown));
        }
        return isValidAirline(code);
    }
    if (const RegRecord* record = findRegcode(section.atcid)) {
        section.airline = record->airl;
        return true;
    }
    return lf_incomplete(section,
                         format("{} misses airlinecode in title: {}{}", shown, section.title,
                                section.atcid.empty() ? ", and no regcode" : ", and regcode unknown"));
}

// The airline of a livery that names none: its registration's owner, or nobody for what private people fly.
static bool lf_findAirline(LiverySection& section)
{
    const AcCategory category = categoryOf(section.file.model);
    const bool airliner = category == AcCategory::Large || category == AcCategory::Heavy;
    const std::string& shown = section.file.place.shown;
    if (const RegRecord* record = findRegcode(section.atcid)) {
        section.airline = record->airl;
        return true;
    }
    if (airliner) {
        const char* why =
            section.atcid.empty() ? "no regcode info" : "its regcode is not in my dbase (very old liv?)";
        return lf_incomplete(section,
                             format("\"{}\" \"{}\" has no airline and {}", shown, section.title, why));
    }
    section.airline = kPrivateAirline;
    if (section.atcid.empty()) {
        section.atcid = findRegPrefixInTitle(section.title);
    }
    return true;
}

static bool lf_isSound(LiverySection& section)
{
    if (!lf_hasAllFiles(section)) {
        return false;
    }
    if (!section.hasTitle || section.title.empty()) {
        return lf_incomplete(section,
                             format("{} {} misses title", section.file.shownFolder, section.firstLine));
    }
    if (isDontUseTitle(section.title)) {
        return false;
    }
    if (section.file.ivao) {
        return lf_findIvaoAirline(section);
    }
    if (section.airline == kGenericAirline) {
        section.atcid.clear();
    }
    return !section.airline.empty() || lf_findAirline(section);
}

static std::string lf_firstWords(const std::vector<std::string_view>& lines)
{
    for (const std::string_view line : lines) {
        if (const std::string_view text = gf_withoutSpace(line); !text.empty()) {
            return std::string(text);
        }
    }
    return {};
}

void lf_procesFltSimSection(const std::vector<std::string_view>& lines, CfgFile& file, CfgScan& scan)
{
    LiverySection section(file, scan, lf_firstWords(lines));
    for (const std::string_view line : lines) {
        const std::optional<CfgKeyValue> keyValue = gf_cfgKeyValue(line);
        if (keyValue && !lf_takeKey(section, *keyValue)) {
            return;
        }
    }
    if (!lf_isSound(section)) {
        return;
    }
    const bool cargo = !file.ivao && section.types.find("CARGO") != std::string::npos;
    std::string doubled = file.ivao ? format("{} title already exists: {}", file.place.shown, section.title)
                                    : format("{} {} title \"{}\" already exists", file.shownFolder,
                                             section.firstLine, section.title);
    scan.found.push_back({{std::move(section.airline), file.model, std::move(section.title),
                           std::move(section.atcid), file.folderNumber, cargo},
                          std::move(doubled)});
}

}  // namespace vlt
