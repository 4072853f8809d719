#include "liveries/scrambling.h"

#include "core/base/log.h"
#include "core/base/text.h"

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>

namespace vlt {

constexpr int kLowest = 45;   // '-'
constexpr int kHighest = 90;  // 'Z'
constexpr int kRange = kHighest - kLowest + 1;
constexpr char kKeptAsIs = '+';

// What is added to a published character to make the plain one, by its place in the plain code.
constexpr std::array<int, 4> kTypeOffsets{17, -9, 23, -14};
constexpr std::array<int, 3> kAirlineOffsets{-21, 12, 8};
constexpr std::array<int, kLongestRegcode> kRegcodeOffsets{11, -7, 19, -22, 5, -16, 20, -3,  14, -18, 9,  -12,
                                                           22, -5, 16, -20, 3, -10, 18, -15, 7,  -23, 13, -8};

// Where the plain characters stand in a published type, by its length.
constexpr std::array<size_t, 2> kTypePlaces2{1, 0};
constexpr std::array<size_t, 3> kTypePlaces3{1, 2, 0};
constexpr std::array<size_t, 4> kTypePlaces4{2, 3, 1, 0};

constexpr size_t kPlainAirlineLength = 3;
constexpr size_t kPublishedAirlineLength = 6;
constexpr std::array<size_t, kPlainAirlineLength> kAirlinePlaces{3, 4, 1};
constexpr std::string_view kAirlineFiller = "QJ7X4M";  // the other places; means nothing

static constexpr bool lf_staysInRange(std::span<const int> offsets)
{
    return std::all_of(offsets.begin(), offsets.end(), [](int o) { return o > -kRange && o < kRange; });
}
static_assert(lf_staysInRange(kTypeOffsets) && lf_staysInRange(kAirlineOffsets) &&
                  lf_staysInRange(kRegcodeOffsets),
              "one wrap must bring every shifted character back into the range");

static char lf_shifted(char c, int offset)
{
    const int code = static_cast<unsigned char>(c) + offset;
    return static_cast<char>(code < kLowest ? code + kRange : code > kHighest ? code - kRange : code);
}

static void lf_checkAlphabet(std::string_view code)
{
    if (!std::all_of(code.begin(), code.end(), [](char c) { return c >= kLowest && c <= kHighest; })) {
        throw std::invalid_argument(format("\"{}\" has a character that can't be published", code));
    }
}

static std::span<const size_t> lf_typePlaces(size_t length)
{
    switch (length) {
    case kTypePlaces3.size():
        return kTypePlaces3;
    case kTypePlaces4.size():
        return kTypePlaces4;
    default:
        return kTypePlaces2;
    }
}

std::string gf_descrambleType(std::string_view text)
{
    std::string plain;
    if (text.empty()) {
        return plain;
    }
    const std::span<const size_t> places = lf_typePlaces(text.size());
    for (size_t i = 0; i < places.size(); ++i) {
        plain += lf_shifted(places[i] < text.size() ? text[places[i]] : '\0', kTypeOffsets[i]);
    }
    return plain;
}

std::string gf_descrambleAirline(std::string_view text)
{
    std::string plain(text);
    if (text.size() == kPublishedAirlineLength) {
        plain.resize(kPlainAirlineLength);
        for (size_t i = 0; i < kPlainAirlineLength; ++i) {
            plain[i] = lf_shifted(text[kAirlinePlaces[i]], kAirlineOffsets[i]);
        }
    } else if (text.size() == kPlainAirlineLength) {
        logLine(format("Unencrypted airline {} in decrypt airl?", text));
    } else if (!text.empty()) {
        throw std::runtime_error(format("decrypt airl \"{}\" error", text));
    }
    return plain;
}

// Each character shifted by its offset times `direction`; a "+" takes up a place.
static std::string lf_shiftedRegcode(std::string_view text, int direction)
{
    std::string result(text);
    for (size_t i = 0; i < result.size(); ++i) {
        if (result[i] != kKeptAsIs) {
            result[i] = lf_shifted(result[i], direction * kRegcodeOffsets.at(i));
        }
    }
    return result;
}

std::string gf_descrambleRegcode(std::string_view text)
{
    return lf_shiftedRegcode(text, 1);
}

std::string gf_scrambleType(std::string_view type)
{
    std::string text(type.size(), ' ');
    if (type.empty()) {
        return text;
    }
    const std::span<const size_t> places = lf_typePlaces(type.size());
    if (places.size() != type.size()) {
        throw std::invalid_argument(format("\"{}\" has no length of a type designator", type));
    }
    lf_checkAlphabet(type);
    for (size_t i = 0; i < places.size(); ++i) {
        text[places[i]] = lf_shifted(type[i], -kTypeOffsets[i]);
    }
    return text;
}

std::string gf_scrambleAirline(std::string_view code)
{
    if (code.empty()) {
        return {};
    }
    if (code.size() != kPlainAirlineLength) {
        throw std::invalid_argument(format("\"{}\" has no length of an airline code", code));
    }
    lf_checkAlphabet(code);
    std::string text(kAirlineFiller);
    for (size_t i = 0; i < kPlainAirlineLength; ++i) {
        text[kAirlinePlaces[i]] = lf_shifted(code[i], -kAirlineOffsets[i]);
    }
    return text;
}

std::string gf_scrambleRegcode(std::string_view regcode)
{
    if (regcode.size() > kLongestRegcode) {
        throw std::invalid_argument(format("\"{}\" is too long for a registration", regcode));
    }
    std::string withoutKept(regcode);
    std::erase(withoutKept, kKeptAsIs);
    lf_checkAlphabet(withoutKept);
    return lf_shiftedRegcode(regcode, -1);
}

}  // namespace vlt
