// Questions to the data base of the real world: types, categories, wing spans, airlines and registrations.
//
// Any thread, without a lock: `dbase` is only read once it stands.
#pragma once

#include "liveries/liveries.h"
#include "traffic/category.h"

#include <array>
#include <string>
#include <string_view>

namespace vlt {

// The type's size category. Light for every type that no set of a category holds, also an unknown one.
AcCategory categoryOf(std::string_view type);

// Membership of `aircrafts` and `ICAO_airlines`; false for an empty text.
bool isValidModel(std::string_view type);
bool isValidAirline(std::string_view code);

// Half the wing span, nm: the type's own, else the mean of its category. A category without a listed
// type answers with a built-in value.
double halfWingspanNm(std::string_view type);
// The largest half span listed, nm; 0 when none is.
double largestHalfWingspanNm();

// The spellings under which a registration is looked up, in the order tried.
struct RegcodeVariants {
    std::array<std::string, 3> texts;
    size_t count = 0;  // how many of them are in use, at least 1
};

// Feeds leave out the hyphen: "PHBXA" is tried as "PH-BXA" and "P-HBXA" before it is taken as it stands.
RegcodeVariants regcodeVariants(std::string_view regcode);

// The row of the first known variant; nullptr for an empty text or when none is known.
const RegRecord* findRegcode(std::string_view regcode);
// The airline that flies the aircraft: its operator, else its owner.
const std::string& gf_airlineOf(const RegRecord& record);
// The operator's or the owner's code of that row; empty when nothing is known.
std::string_view gf_operatorOfRegcode(std::string_view regcode);
std::string_view gf_ownerOfRegcode(std::string_view regcode);

// A registration of fewer than 5 characters of a private owner that occurs in `title`, the longest and
// then the leftmost one; empty when there is none.
std::string_view findRegPrefixInTitle(std::string_view title);

}  // namespace vlt
