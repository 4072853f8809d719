#include "liveries/section_judge.h"

#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/regcodes.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <cctype>

namespace vlt {

bool gf_incomplete(LiverySection& section, std::string line)
{
    section.scan.reports.incomplete.push_back(std::move(line));
    return false;
}

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
            return gf_incomplete(section, format("{}\\{} {} does not exist", section.file.shownFolder, name,
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
    return gf_incomplete(section,
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
        return gf_incomplete(section,
                             format("\"{}\" \"{}\" has no airline and {}", shown, section.title, why));
    }
    section.airline = kPrivateAirline;
    if (section.atcid.empty()) {
        section.atcid = findRegPrefixInTitle(section.title);
    }
    return true;
}

bool gf_isSoundSection(LiverySection& section)
{
    if (!lf_hasAllFiles(section)) {
        return false;
    }
    if (!section.hasTitle || section.title.empty()) {
        return gf_incomplete(section,
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

}  // namespace vlt
