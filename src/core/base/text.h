// Text helpers that every room uses: formatting, splitting, and the hash of string-keyed tables.
//
// Stateless; any thread.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vlt {

inline constexpr std::string_view kProgramName = "Velatra";

using fmt::format;

// The pieces between `separator`s, as views into `text`; an empty text gives no piece.
std::vector<std::string_view> gf_split(std::string_view text, char separator);

// Without blanks, tabs and line ends on both sides.
std::string_view gf_trimmed(std::string_view text);

// ASCII letters in capitals; other bytes as they are.
std::string gf_upperCase(std::string_view text);

// "s" unless `count` is 1: for messages that count things.
std::string_view gf_plural(int64_t count);

// An airline code out of a call sign: its three letters in capitals if a digit follows them, else empty.
std::string gf_airlineOfCallsign(std::string_view callsign);

// 64-bit FNV-1a over the bytes (Fowler, Noll, Vo). `is_transparent` lets tables be searched by a view
// without making a string.
struct Fnv1a {
    using is_transparent = void;
    size_t operator()(std::string_view text) const noexcept
    {
        uint64_t hash = 0xcbf29ce484222325;
        for (const char c : text) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        }
        return hash;
    }
};

// A hash table keyed by text.
template <typename Value>
using TextMap = std::unordered_map<std::string, Value, Fnv1a, std::equal_to<>>;

}  // namespace vlt
