#include "core/base/text.h"

#include <algorithm>

namespace vlt {

static bool lf_isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::vector<std::string_view> gf_split(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
    return pieces;
}

std::string_view gf_trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string gf_upperCase(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return result;
}

std::string_view gf_plural(int64_t count)
{
    return count == 1 ? "" : "s";
}

std::string gf_airlineOfCallsign(std::string_view callsign)
{
    constexpr size_t kLetters = 3;
    if (callsign.size() <= kLetters ||
        !std::all_of(callsign.begin(), callsign.begin() + kLetters, lf_isLetter) ||
        callsign[kLetters] < '0' || callsign[kLetters] > '9') {
        return {};
    }
    return gf_upperCase(callsign.substr(0, kLetters));
}

}  // namespace vlt
