#include "core/base/hours.h"

#include "core/base/log.h"
#include "core/base/text.h"

#include <charconv>

namespace vlt {

// A broken file may hold a list of many thousand: its first bad items tell enough.
static void lf_logInvalid(std::string_view item, std::string_view text, int64_t number)
{
    constexpr int64_t kMostLines = 3;
    constexpr size_t kLongest = 200;
    if (number <= kMostLines) {
        logLine(format("gf_hours2bitset invalid hour \"{}\" in {}", item.substr(0, kLongest),
                       text.substr(0, kLongest)));
    }
}

void hoursToSet(std::string_view text, HoursSet& hours)
{
    int64_t invalid = 0;
    std::vector<std::string_view> items = gf_split(text, ',');
    if (text.empty() || text.ends_with(',')) {
        items.emplace_back();  // an item that is empty, like one between two commas
    }
    for (const std::string_view item : items) {
        std::string_view digits = gf_trimmed(item);
        if (digits.size() > 1 && digits.starts_with('+') && digits[1] != '-') {
            digits.remove_prefix(1);
        }
        int32_t hour = -1;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), hour);
        if (error != std::errc{} || end != digits.data() + digits.size() || hour < 0 ||
            hour >= static_cast<int32_t>(kSlotsPerDay)) {
            lf_logInvalid(item, text, ++invalid);
            continue;
        }
        hours.set(static_cast<size_t>(hour));
    }
}

std::string setToHours(const HoursSet& hours)
{
    std::string text;
    for (size_t hour = 0; hour < kSlotsPerDay; ++hour) {
        if (hours.test(hour)) {
            text += format("{}{}", text.empty() ? "" : ",", hour);
        }
    }
    return text;
}

}  // namespace vlt
