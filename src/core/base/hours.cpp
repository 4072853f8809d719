#include "core/base/hours.h"

#include "core/base/log.h"
#include "core/base/text.h"

#include <charconv>

namespace vlt {

void hoursToSet(std::string_view text, HoursSet& hours)
{
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
            logLine(format("gf_hours2bitset invalid hour \"{}\" in {}", item, text));
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
