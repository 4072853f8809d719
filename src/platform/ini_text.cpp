#include "platform/ini_text.h"

#include <algorithm>
#include <fstream>

namespace vlt {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\v\f";

static char lf_lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool gf_sameIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lf_lower(a) == lf_lower(b); });
}

static std::string_view lf_withoutBlanks(std::string_view text)
{
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

static std::string_view lf_withoutQuotes(std::string_view text)
{
    const bool quoted = text.size() >= 2 && (text.front() == '"' || text.front() == '\'');
    return quoted && text.front() == text.back() ? text.substr(1, text.size() - 2) : text;
}

// Takes the next line off the front of `rest`, without the blanks around it.
static std::string_view lf_takeLine(std::string_view& rest)
{
    const size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return lf_withoutBlanks(line);
}

// The name in a section's line; none for any other line. The closing bracket may be missing.
static std::optional<std::string_view> lf_sectionName(std::string_view line)
{
    if (line.empty() || line.front() != '[') {
        return std::nullopt;
    }
    return lf_withoutBlanks(line.substr(1, line.find(']') - 1));
}

// Moves `rest` behind the line of the first section that `wanted` accepts. False if there is none.
template <typename Wanted>
static bool lf_enterSection(std::string_view& rest, Wanted wanted)
{
    while (!rest.empty()) {
        const auto name = lf_sectionName(lf_takeLine(rest));
        if (name && wanted(*name)) {
            return true;
        }
    }
    return false;
}

std::string gf_readIniFile(const std::filesystem::path& path)
{
    // A pipe or a device could keep the caller waiting for ever.
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    std::string text(kMaxIniBytes, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.starts_with(kUtf8Mark)) {
        text.erase(0, kUtf8Mark.size());
    }
    return text;
}

bool gf_iniHasSection(std::string_view ini, std::string_view section)
{
    return lf_enterSection(ini, [&](std::string_view name) { return gf_sameIgnoringCase(name, section); });
}

bool gf_iniHasSectionBelow(std::string_view ini, std::string_view prefix)
{
    return lf_enterSection(ini, [&](std::string_view name) {
        return gf_sameIgnoringCase(name.substr(0, prefix.size()), prefix);
    });
}

std::optional<std::string> gf_iniValue(std::string_view ini, std::string_view section, std::string_view key)
{
    if (!lf_enterSection(ini, [&](std::string_view name) { return gf_sameIgnoringCase(name, section); })) {
        return std::nullopt;
    }
    while (!ini.empty()) {
        const std::string_view line = lf_takeLine(ini);
        if (lf_sectionName(line)) {
            break;
        }
        const size_t equals = line.find('=');
        if (equals == std::string_view::npos || line.front() == ';') {
            continue;
        }
        if (gf_sameIgnoringCase(lf_withoutBlanks(line.substr(0, equals)), key)) {
            return std::string(lf_withoutQuotes(lf_withoutBlanks(line.substr(equals + 1))));
        }
    }
    return std::nullopt;
}

}  // namespace vlt
