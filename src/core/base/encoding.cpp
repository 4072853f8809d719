#include "core/base/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vlt {

static bool lf_isAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

// The length of the sequence that begins the text, 0 if it is none: too long a form, a surrogate, or cut off.
static size_t lf_sequence(std::string_view text)
{
    // The first byte tells the length; the second one's range keeps out what can be said shorter.
    struct Form {
        uint8_t first, last, secondFrom, secondTo, length;
    };
    constexpr Form kForms[] = {
        {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
    const auto byte = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
    for (const Form& form : kForms) {
        if (byte(0) < form.first || byte(0) > form.last) {
            continue;
        }
        bool good = form.length <= text.size();
        for (size_t i = 1; good && i < form.length; ++i) {
            const uint8_t from = i == 1 ? form.secondFrom : 0x80;
            const uint8_t to = i == 1 ? form.secondTo : 0xBF;
            good = byte(i) >= from && byte(i) <= to;
        }
        return good ? form.length : 0;
    }
    return 0;
}

bool gf_isUtf8(std::string_view text)
{
    while (true) {
        const auto beyond = std::find_if_not(text.begin(), text.end(), lf_isAscii);
        text.remove_prefix(static_cast<size_t>(beyond - text.begin()));
        if (text.empty()) {
            return true;
        }
        const size_t length = lf_sequence(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
}

static void lf_append(std::string& text, uint32_t c)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | c >> 6);
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | c >> 12);
        text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string gf_asUtf8(std::string text)
{
    // 80 to 9F of Windows-1252; the five that it leaves open stand for themselves, as the system does it.
    constexpr std::array<uint16_t, 32> kSpecial = {
        0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
    if (gf_isUtf8(text)) {
        return text;
    }
    std::string converted;
    converted.reserve(text.size() + text.size() / 8);
    for (const char c : text) {
        const auto byte = static_cast<uint8_t>(c);
        lf_append(converted, byte >= 0x80 && byte < 0xA0 ? kSpecial[byte - 0x80] : byte);
    }
    return converted;
}

}  // namespace vlt
