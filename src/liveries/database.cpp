#include "liveries/database.h"

#include <algorithm>

namespace vlt {

constexpr size_t kShortestHyphenated = 5;  // characters of a registration that may lack its hyphen
constexpr size_t kLongestTitlePrefix = 4;  // characters of a registration looked for inside titles

// Typical spans, for a category of which the data base lists no type.
// clang-format off
//                                       Light Buzjets Large Heavy HighPerf Rotor
constexpr PerCategory<double> kTypicalSpanM{11,    18,   34,   62,      11,   12};
// clang-format on

AcCategory categoryOf(std::string_view type)
{
    // The order decides for a type that stands in two sets.
    struct CategorySet {
        TypeSet Dbase::*types;
        AcCategory category;
    };
    static constexpr std::array<CategorySet, 5> kSets{{{&Dbase::large, AcCategory::Large},
                                                       {&Dbase::heavy, AcCategory::Heavy},
                                                       {&Dbase::buzjet, AcCategory::Buzjets},
                                                       {&Dbase::rotorcraft, AcCategory::Rotorcraft},
                                                       {&Dbase::high_performance, AcCategory::HighPerf}}};
    for (const CategorySet& set : kSets) {
        if ((dbase.*set.types).contains(type)) {
            return set.category;
        }
    }
    return AcCategory::Light;
}

bool isValidModel(std::string_view type)
{
    return !type.empty() && dbase.aircrafts.contains(type);
}

bool isValidAirline(std::string_view code)
{
    return !code.empty() && dbase.ICAO_airlines.contains(code);
}

double halfWingspanNm(std::string_view type)
{
    if (const auto listed = dbase.halfWingspans.find(type); listed != dbase.halfWingspans.end()) {
        return listed->second;
    }
    const AcCategory category = categoryOf(type);
    const double mean = gf_forCategory(dbase.meanHalfWingspans, category);
    return mean > 0 ? mean : gf_forCategory(kTypicalSpanM, category) * kHalfSpanNmPerMetre;
}

double largestHalfWingspanNm()
{
    return dbase.largestHalfWingspan;
}

static std::string lf_hyphenated(std::string_view regcode, size_t prefix)
{
    std::string text;
    text.reserve(regcode.size() + 1);
    text.append(regcode.substr(0, prefix)).append(1, '-').append(regcode.substr(prefix));
    return text;
}

RegcodeVariants regcodeVariants(std::string_view regcode)
{
    RegcodeVariants variants;
    if (regcode.size() >= kShortestHyphenated && regcode.front() != 'N' &&
        regcode.find('-') == std::string_view::npos) {
        variants.texts[variants.count++] = lf_hyphenated(regcode, 2);
        variants.texts[variants.count++] = lf_hyphenated(regcode, 1);
    }
    variants.texts[variants.count++] = regcode;
    return variants;
}

const RegRecord* findRegcode(std::string_view regcode)
{
    if (regcode.empty()) {
        return nullptr;
    }
    const RegcodeVariants variants = regcodeVariants(regcode);
    for (size_t i = 0; i < variants.count; ++i) {
        if (const auto row = dbase.registrations.find(variants.texts[i]); row != dbase.registrations.end()) {
            return &row->second;
        }
    }
    return nullptr;
}

const std::string& gf_airlineOf(const RegRecord& record)
{
    return record.opr.empty() ? record.airl : record.opr;
}

std::string_view gf_operatorOfRegcode(std::string_view regcode)
{
    const RegRecord* row = findRegcode(regcode);
    return row == nullptr ? std::string_view{} : row->opr;
}

std::string_view gf_ownerOfRegcode(std::string_view regcode)
{
    const RegRecord* row = findRegcode(regcode);
    return row == nullptr ? std::string_view{} : row->airl;
}

std::string_view findRegPrefixInTitle(std::string_view title)
{
    // Asking the table for each short piece of the title is far less work than walking the table.
    for (size_t length = std::min(kLongestTitlePrefix, title.size()); length > 0; --length) {
        for (size_t start = 0; start + length <= title.size(); ++start) {
            const auto row = dbase.registrations.find(title.substr(start, length));
            if (row != dbase.registrations.end() && row->second.airl == kPrivateAirline) {
                return row->first;
            }
        }
    }
    return {};
}

}  // namespace vlt
