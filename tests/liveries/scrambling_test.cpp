#include "liveries/scrambling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace vlt {

constexpr char kFirst = '-';
constexpr char kLast = 'Z';

TEST(Scrambling, everyCodeComesBackAndStaysInItsAlphabet)
{
    const struct {
        const char* what;
        size_t shortest, longest;
        std::string (*scramble)(std::string_view);
        std::string (*descramble)(std::string_view);
    } rules[] = {
        {"type", 2, 4, gf_scrambleType, gf_descrambleType},
        {"airline", 3, 3, gf_scrambleAirline, gf_descrambleAirline},
        {"regcode", 1, 24, gf_scrambleRegcode, gf_descrambleRegcode},
    };
    std::mt19937 random(5);
    std::uniform_int_distribution<int> letter(kFirst, kLast);
    for (const auto& rule : rules) {
        for (size_t length = rule.shortest; length <= rule.longest; ++length) {
            for (int i = 0; i < 200; ++i) {
                std::string code(length, ' ');
                std::ranges::generate(code, [&] { return static_cast<char>(letter(random)); });
                const std::string text = rule.scramble(code);
                EXPECT_EQ(code, rule.descramble(text)) << rule.what;
                EXPECT_TRUE(std::ranges::all_of(text, [](char c) { return c >= kFirst && c <= kLast; }))
                    << text;
                EXPECT_NE(code, text.substr(0, length)) << rule.what << ": not scrambled at all";
            }
        }
        EXPECT_EQ("", rule.scramble("")) << rule.what;
        EXPECT_EQ("", rule.descramble("")) << rule.what;
    }
}

// What is published already must read the same for ever.
TEST(Scrambling, eachPlainCharacterComesFromItsPlace)
{
    const struct {
        std::string (*descramble)(std::string_view);
        const char *published, *plain;
    } cases[] = {
        {gf_descrambleType, "AB", "S8"},
        {gf_descrambleType, "ABC", "S:X"},
        {gf_descrambleType, "ABCD", "T;Y3"},
        {gf_descrambleType, "ABCDE", "S8"},
        {gf_descrambleAirline, "ABCDEF", "/QJ"},
        {gf_descrambleAirline, "BAW", "BAW"},
        {gf_descrambleRegcode, "ABCDEFGHIJKLMNOPQRSTUVWX", "L;V.J6-EW8T@5I1<TH7E.?6P"},
        {gf_descrambleRegcode, "AB+DE+GHIJKLMNOPQRSTUVWX", "L;+.J+-EW8T@5I1<TH7E.?6P"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.plain, c.descramble(c.published)) << c.published;
    }
    EXPECT_EQ(cases[7].published, gf_scrambleRegcode(cases[7].plain)) << "a plus takes up its place";
}

TEST(Scrambling, whatCannotBeCarriedIsRefused)
{
    const struct {
        std::string (*change)(std::string_view);
        std::vector<std::string> refused;
    } cases[] = {
        {gf_scrambleType, {"A", "PA288", "a319", "A,9"}},
        {gf_scrambleAirline, {"BA", "BAWX", "B W"}},
        {gf_scrambleRegcode, {"ABCDEFGHIJKLMNOPQRSTUVWXY", "G DBCJ"}},
        {gf_descrambleAirline, {"A", "AB", "ABCD", "ABCDE", "ABCDEFG"}},
        {gf_descrambleRegcode, {std::string(25, 'A'), std::string(24, 'A') + "+A"}},
    };
    for (const auto& [change, refused] : cases) {
        for (const std::string& code : refused) {
            EXPECT_ANY_THROW(change(code)) << code;
        }
    }
    EXPECT_NO_THROW(gf_descrambleRegcode(std::string(24, 'A') + "+"));
}

}  // namespace vlt
