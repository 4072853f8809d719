#include "liveries/scrambling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>

namespace vlt {

constexpr char kFirst = '-';
constexpr char kLast = 'Z';
constexpr int kAlphabet = kLast - kFirst + 1;

static std::string lf_randomCode(std::mt19937& random, size_t length)
{
    std::uniform_int_distribution<int> letter(kFirst, kLast);
    std::string code(length, ' ');
    for (char& c : code) {
        c = static_cast<char>(letter(random));
    }
    return code;
}

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
    for (const auto& rule : rules) {
        for (size_t length = rule.shortest; length <= rule.longest; ++length) {
            for (int i = 0; i < 200; ++i) {
                const std::string code = lf_randomCode(random, length);
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

// Which place of the published text each plain character comes from: raising that one character by one
// raises the plain one by one, round the alphabet, and changes nothing else.
static void lf_expectPlaces(std::string (*descramble)(std::string_view), size_t length,
                            const std::vector<size_t>& places)
{
    const std::string text(length, 'E');
    const std::string plain = descramble(text);
    ASSERT_EQ(places.size(), plain.size()) << length;
    for (size_t place = 0; place < length; ++place) {
        std::string changed = text;
        changed[place] = 'F';
        std::string expected = plain;
        for (size_t i = 0; i < places.size(); ++i) {
            if (places[i] == place) {
                expected[i] = static_cast<char>((plain[i] - kFirst + 1) % kAlphabet + kFirst);
            }
        }
        EXPECT_EQ(expected, descramble(changed)) << "length " << length << ", place " << place;
    }
}

TEST(Scrambling, plainCharactersComeFromTheirPlaces)
{
    lf_expectPlaces(gf_descrambleType, 2, {1, 0});
    lf_expectPlaces(gf_descrambleType, 3, {1, 2, 0});
    lf_expectPlaces(gf_descrambleType, 4, {2, 3, 1, 0});
    lf_expectPlaces(gf_descrambleType, 5, {1, 0});
    lf_expectPlaces(gf_descrambleAirline, 6, {3, 4, 1});
    std::vector<size_t> inOrder(24);
    std::iota(inOrder.begin(), inOrder.end(), size_t{0});
    lf_expectPlaces(gf_descrambleRegcode, 24, inOrder);
}

TEST(Scrambling, theOffsetOfATypeDependsOnThePlaceInTheResultAlone)
{
    const std::string four = gf_descrambleType("MMMM");
    EXPECT_EQ(four.substr(0, 3), gf_descrambleType("MMM"));
    EXPECT_EQ(four.substr(0, 2), gf_descrambleType("MM"));
}

TEST(Scrambling, airlineTextsOfOtherLengths)
{
    EXPECT_EQ("BAW", gf_descrambleAirline("BAW"));
    for (const std::string_view bad : {"A", "AB", "ABCD", "ABCDE", "ABCDEFG"}) {
        EXPECT_THROW(gf_descrambleAirline(bad), std::runtime_error) << bad;
    }
}

TEST(Scrambling, aPlusInARegistrationIsKeptAndTakesUpItsPlace)
{
    const std::string plain = "AB+CD+EFGH-IJKLMNOPQRSTU";
    ASSERT_EQ(24U, plain.size());
    const std::string text = gf_scrambleRegcode(plain);
    EXPECT_EQ('+', text[2]);
    EXPECT_EQ('+', text[5]);
    EXPECT_EQ(plain, gf_descrambleRegcode(text));
    const std::string without = gf_scrambleRegcode("ABXCDXEFGH-IJKLMNOPQRSTU");
    EXPECT_EQ(without.substr(6), text.substr(6));
}

TEST(Scrambling, aRegistrationEndsAtItsTwentyFourthCharacter)
{
    EXPECT_THROW(gf_descrambleRegcode(std::string(25, 'A')), std::out_of_range);
    EXPECT_NO_THROW(gf_descrambleRegcode(std::string(24, 'A') + "+"));
    EXPECT_THROW(gf_descrambleRegcode(std::string(24, 'A') + "+A"), std::out_of_range);
}

TEST(Scrambling, anyBytesAreDecodedWithoutHarm)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int i = 0; i < 2000; ++i) {
        std::vector<char> bytes(static_cast<size_t>(byte(random)) % 9);
        for (char& c : bytes) {
            c = static_cast<char>(byte(random));
        }
        const std::string_view text(bytes.data(), bytes.size());
        EXPECT_LE(gf_descrambleType(text).size(), 4U);
        EXPECT_EQ(text.size(), gf_descrambleRegcode(text).size());
    }
}

TEST(Scrambling, thePublisherRefusesWhatCannotBeCarried)
{
    for (const char* code : {"A", "PA288", "a319", "A,9"}) {
        EXPECT_THROW(gf_scrambleType(code), std::invalid_argument) << code;
    }
    for (const char* code : {"BA", "BAWX", "B W"}) {
        EXPECT_THROW(gf_scrambleAirline(code), std::invalid_argument) << code;
    }
    for (const char* code : {"ABCDEFGHIJKLMNOPQRSTUVWXY", "G DBCJ"}) {
        EXPECT_THROW(gf_scrambleRegcode(code), std::invalid_argument) << code;
    }
}

}  // namespace vlt
