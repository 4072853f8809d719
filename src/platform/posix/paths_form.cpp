#include "platform/paths_form.h"

#include "platform/folders.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace vlt {

namespace fs = std::filesystem;

constexpr std::string_view kProgramData = "C:/ProgramData";

static bool lf_isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// `path` lies at or below `folder`: the rest of it, with its leading slash or empty.
static std::optional<std::string_view> lf_restBelow(std::string_view path, std::string_view folder)
{
    if (folder.empty() || path.size() < folder.size()) {
        return std::nullopt;
    }
    const std::string_view rest = path.substr(folder.size());
    const bool atName = rest.empty() || rest.front() == '/';
    return atName ? std::optional(rest) : std::nullopt;
}

// The folder that stands for a drive, without a slash at its end; empty if none does.
static std::string lf_driveFolder(char letter)
{
    const auto capital = static_cast<char>(letter & ~0x20);
    std::string name = "VELATRA_DRIVE_";
    name += capital;
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) {
        return {};
    }
    const std::string_view folder = value;
    const size_t last = folder.find_last_not_of('/');
    return std::string(folder.substr(0, last == std::string_view::npos ? 1 : last + 1));
}

static bool lf_beginsWithDrive(std::string_view path)
{
    return path.size() >= 2 && lf_isLetter(path[0]) && path[1] == ':';
}

static std::string lf_withDriveMapped(const std::string& path)
{
    if (!lf_beginsWithDrive(path)) {
        return path;
    }
    const std::string_view front = std::string_view(path).substr(0, kProgramData.size());
    const auto below = lf_restBelow(path, kProgramData);
    if (below && gf_sameIgnoringCase(front, kProgramData)) {
        return gf_programDataFolder().string().append(*below);
    }
    const std::string folder = lf_driveFolder(path[0]);
    if (folder.empty()) {
        return path;
    }
    const std::string rest = path.substr(2);
    return folder + (rest.starts_with('/') || rest.empty() ? "" : "/") + rest;
}

// Names as the other system would store them: without dots and blanks at their ends.
static std::string_view lf_storedName(std::string_view name)
{
    if (name == "." || name == "..") {
        return name;
    }
    const size_t last = name.find_last_not_of(". ");
    return last == std::string_view::npos ? std::string_view() : name.substr(0, last + 1);
}

static std::string lf_withStoredNames(std::string_view path)
{
    std::string result;
    while (true) {
        const size_t end = std::min(path.find('/'), path.size());
        result += lf_storedName(path.substr(0, end));
        if (end == path.size()) {
            return result;
        }
        result += '/';
        path.remove_prefix(end + 1);
    }
}

// The small letter of a code point in the alphabets that stand in European file names.
static char32_t lf_smallLetter(char32_t c)
{
    const bool latin = (c >= U'A' && c <= U'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    const bool greekOrCyrillic = (c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F);
    if (latin || greekOrCyrillic) {
        return c + 0x20;
    }
    if (c >= 0x400 && c <= 0x40F) {
        return c + 0x50;
    }
    // Latin Extended-A: capital and small letter take turns, in three stretches.
    const bool evenCapitals = (c >= 0x100 && c <= 0x137 && c != 0x130) || (c >= 0x14A && c <= 0x177);
    const bool oddCapitals = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if ((evenCapitals && c % 2 == 0) || (oddCapitals && c % 2 == 1)) {
        return c + 1;
    }
    return c;
}

// The name's code points in small letters. Only two-byte UTF-8 has letters that need it beside
// ASCII, so longer sequences, and bytes that are no UTF-8, are taken byte by byte.
static std::u32string lf_folded(std::string_view name)
{
    std::u32string result;
    for (size_t i = 0; i < name.size(); ++i) {
        const auto byte = static_cast<unsigned char>(name[i]);
        const bool two = (byte & 0xE0) == 0xC0 && i + 1 < name.size() && (name[i + 1] & 0xC0) == 0x80;
        if (two) {
            ++i;
            result += lf_smallLetter((byte & 0x1Fu) << 6 | (static_cast<unsigned char>(name[i]) & 0x3Fu));
        } else {
            result += byte < 0x80 ? lf_smallLetter(byte) : 0x80000000u + byte;
        }
    }
    return result;
}

// The entry of `folder` that is `name` but for the case of letters; `name` itself if there is none.
static std::string lf_nameOnDisk(const fs::path& folder, const std::string& name)
{
    const std::u32string wanted = lf_folded(name);
    std::optional<std::string> found;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::string entry = it->path().filename().string();
        if (lf_folded(entry) == wanted && (!found || entry < *found)) {
            found = std::move(entry);
        }
    }
    return found.value_or(name);
}

static bool lf_exists(const fs::path& path)
{
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

static fs::path lf_withCaseOfDisk(const fs::path& path)
{
    if (lf_exists(path)) {
        return path;
    }
    fs::path result;
    bool onDisk = true;
    for (const fs::path& part : path) {
        const fs::path exact = result / part;
        if (onDisk && !part.empty() && !lf_exists(exact)) {
            const fs::path folder = result.empty() ? fs::path(".") : result;
            result /= lf_nameOnDisk(folder, part.string());
            onDisk = lf_exists(result);
        } else {
            result = exact;
        }
    }
    return result;
}

fs::path gf_toNativeForm(std::string_view path)
{
    std::string text(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return lf_withCaseOfDisk(lf_withStoredNames(lf_withDriveMapped(text)));
}

// `path` with `front` in the place of `folder`, if it lies at or below that.
static std::optional<std::string> lf_moved(std::string_view path, std::string_view folder,
                                           std::string_view front)
{
    const auto rest = lf_restBelow(path, folder);
    if (!rest || !path.starts_with(folder)) {
        return std::nullopt;
    }
    return std::string(front).append(*rest);
}

static std::string lf_withDriveLetter(const std::string& path)
{
    if (const auto moved = lf_moved(path, gf_programDataFolder().string(), kProgramData)) {
        return *moved;
    }
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const char drive[] = {letter, ':', '\0'};
        if (const auto moved = lf_moved(path, lf_driveFolder(letter), drive)) {
            return moved->size() > 2 ? *moved : *moved + '/';
        }
    }
    return path;
}

std::string gf_toWindowsForm(const fs::path& path)
{
    std::string text = lf_withDriveLetter(path.string());
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::u32string gf_comparedForm(std::string_view windowsForm)
{
    return lf_folded(windowsForm);
}

}  // namespace vlt
