// The light disguise of the published files: the three rules that turn their texts into plain codes, and
// back again for the publisher.
//
// A character is shifted by an offset that depends on its place and wrapped into the range '-' to 'Z', so
// that neither side ever meets a comma or a quote. Reader and publisher share the one copy of the offset
// tables in the source file. Stateless; any thread.
#pragma once

#include <string>
#include <string_view>

namespace vlt {

inline constexpr size_t kLongestRegcode = 24;  // characters that have an offset

// The plain type designator. 3 and 4 characters give as many, an empty text stays empty, and every other
// text is taken as one of 2.
std::string gf_descrambleType(std::string_view text);

// The plain airline code out of 6 characters; an empty text stays empty, 3 characters are used as they
// stand and logged. Throws std::runtime_error for any other length.
std::string gf_descrambleAirline(std::string_view text);

// The plain registration; a "+" is kept. Throws std::out_of_range for a character past the 24th.
std::string gf_descrambleRegcode(std::string_view text);

// The publisher's side. Each throws std::invalid_argument for a code that its rule can't carry: a wrong
// length, or a character outside '-' to 'Z'. An empty code gives an empty text.
std::string gf_scrambleType(std::string_view type);
std::string gf_scrambleAirline(std::string_view code);
std::string gf_scrambleRegcode(std::string_view regcode);

}  // namespace vlt
