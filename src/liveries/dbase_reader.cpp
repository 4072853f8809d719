#include "liveries/dbase_reader.h"

#include "core/base/download.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/scrambling.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>

namespace vlt {

constexpr double kWidestSpanM = 200;            // above it a wing span is a slip of the pen
constexpr uintmax_t kLargestFile = 256U << 20;  // bytes; a real one has a tenth of that

using Descramble = std::string (*)(std::string_view);

// One list of codes: where it stands, and how an item is read.
struct CodeList {
    TypeSet Dbase::*target;
    const char* section;
    const char* element;
    const char* attribute;
    Descramble descramble;
};

static std::string lf_asItStands(std::string_view text)
{
    return std::string(text);
}

constexpr std::array<CodeList, 7> kTypeLists{{
    {&Dbase::aircrafts, "aircrafts", "aircraft", "types", gf_descrambleType},
    {&Dbase::high_performance, "high_performance", "hpf", "types", gf_descrambleType},
    {&Dbase::heavy, "heavy", "hvy", "types", gf_descrambleType},
    {&Dbase::large, "large", "lar", "types", gf_descrambleType},
    {&Dbase::buzjet, "buzjet", "bzj", "types", gf_descrambleType},
    {&Dbase::rotorcraft, "rotorcraft", "rot", "types", gf_descrambleType},
    {&Dbase::cargo_types, "cargo_types", "cargo_type", "types", gf_descrambleType},
}};
constexpr std::array<CodeList, 2> kAirlineLists{{
    {&Dbase::ICAO_airlines, "ICAO_airlines", "ICAO", "codes", gf_descrambleAirline},
    {&Dbase::cargo_operators, "cargo_operators", "ICAO", "codes", gf_descrambleAirline},
}};
constexpr CodeList kAddonList{&Dbase::simaddonsP3D, "simaddonsP3D", "simaddonP3D", "arpts", lf_asItStands};

static void lf_readList(const pugi::xml_document& document, const CodeList& list)
{
    TypeSet& target = dbase.*list.target;
    for (const pugi::xml_node& node : document.child(list.section).children(list.element)) {
        for (const std::string_view item : gf_split(node.attribute(list.attribute).as_string(), ',')) {
            if (!item.empty()) {
                target.insert(list.descramble(item));
            }
        }
    }
    if (target.empty()) {
        throw UserErrorException(61, format("In an xml file section {} {} {} is empty ", list.section,
                                            list.element, list.attribute));
    }
}

static void lf_readSimilarTypes(const pugi::xml_document& document)
{
    constexpr size_t kUsualGroups = 64;
    dbase.similarTypes.reserve(kUsualGroups);
    for (const pugi::xml_node& node : document.child("similar_types").children("similar")) {
        std::vector<std::string> group;
        for (const std::string_view item : gf_split(node.attribute("types").as_string(), ',')) {
            group.push_back(gf_descrambleType(item));
        }
        std::sort(group.begin(), group.end());
        dbase.similarTypes.push_back(std::move(group));
    }
}

static std::vector<std::string> lf_texts(std::string_view list)
{
    const std::vector<std::string_view> pieces = gf_split(list, ',');
    return {pieces.begin(), pieces.end()};
}

static void lf_readPublishers(const pugi::xml_document& document)
{
    constexpr size_t kUsualPublishers = 640;
    dbase.publishers.reserve(kUsualPublishers);
    std::set<std::string_view> groups;
    for (const pugi::xml_node& node : document.child("publishers").children("pub")) {
        groups.insert(node.attribute("names").as_string());
    }
    for (const std::string_view names : groups) {
        dbase.publishers.push_back(lf_texts(names));
    }
}

// As people write it: blanks or a sign in front and a unit behind don't matter.
static std::optional<double> lf_spanMetres(std::string_view text)
{
    double metres = 0;
    text.remove_prefix(std::min(text.find_first_not_of(" \t+"), text.size()));
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), metres);
    const bool usable = error == std::errc{} && metres > 0 && metres < kWidestSpanM;
    return usable ? std::optional(metres) : std::nullopt;
}

static void lf_readWingspan(const pugi::xml_node& node)
{
    const std::string type = gf_descrambleType(node.attribute("type").as_string());
    if (!isValidModel(type)) {
        logLine(format("wingspan model {} is no valid model, skipped", type));
        return;
    }
    const std::string_view meters = node.attribute("meters").as_string();
    const std::optional<double> span = lf_spanMetres(meters);
    if (!span) {
        logLine(format("wingspan \"{}\" of {} is no wing span, skipped", meters, type));
        return;
    }
    const double halfSpan = *span * kHalfSpanNmPerMetre;
    dbase.halfWingspans[type] = halfSpan;
    dbase.largestHalfWingspan = std::max(dbase.largestHalfWingspan, halfSpan);
}

static void lf_averageWingspans()
{
    PerCategory<int32_t> counts{};
    for (const auto& [type, halfSpan] : dbase.halfWingspans) {
        const auto category = static_cast<size_t>(categoryOf(type));
        dbase.meanHalfWingspans[category] += halfSpan;
        ++counts[category];
    }
    for (size_t i = 0; i < kCategoryCount; ++i) {
        dbase.meanHalfWingspans[i] /= std::max(counts[i], 1);
    }
}

static void lf_readWingspans(const pugi::xml_document& document)
{
    for (const pugi::xml_node& node : document.child("wingspans").children("wingspan")) {
        lf_readWingspan(node);
    }
    lf_averageWingspans();
}

// A section whose failure is told with the file's name.
static void lf_readNamed(void (*read)(const pugi::xml_document&), const char* what,
                         const pugi::xml_document& document, const std::filesystem::path& path)
{
    try {
        read(document);
    } catch (const std::exception& e) {
        throw std::runtime_error(
            format("exception {} in reading {} from \"{}\"", e.what(), what, gf_shown(path)));
    }
}

static void lf_readFixes(const pugi::xml_document& document)
{
    for (const pugi::xml_node& node : document.child("fixes").children("fx")) {
        const pugi::xml_attribute wrong = node.attribute("wro");
        const pugi::xml_attribute correct = node.attribute("cor");
        if (!wrong || !correct) {
            continue;
        }
        if (!isValidModel(correct.value())) {
            logLine(
                format("wrong fix {}->{}, the latter is not a valid model", wrong.value(), correct.value()));
        } else if (!dbase.fixes.emplace(wrong.value(), correct.value()).second) {
            logLine(format("wrong part of fix: \"{}\", already exists, skipped", wrong.value()));
        }
    }
}

static void lf_readThirdParties(const pugi::xml_document& document)
{
    constexpr size_t kUsualParties = 200;
    dbase.thirdParties.reserve(kUsualParties);
    for (const pugi::xml_node& node : document.child("thirdpartiesP3D").children("thirdpartieP3D")) {
        dbase.thirdParties.push_back(
            {node.attribute("pub").as_string(), lf_texts(node.attribute("arpts").as_string())});
    }
}

static void lf_readRegistration(const pugi::xml_node& node)
{
    std::string_view reg, airl, type, opr, cargo;
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        const std::string_view name = attribute.name();
        std::string_view* const field = name == "reg"     ? &reg
                                        : name == "airl"  ? &airl
                                        : name == "type"  ? &type
                                        : name == "opr"   ? &opr
                                        : name == "cargo" ? &cargo
                                                          : nullptr;
        if (field != nullptr && field->data() == nullptr) {
            *field = attribute.value();
        }
    }
    std::string key = gf_descrambleRegcode(reg);
    RegRecord row{gf_descrambleAirline(airl), gf_descrambleType(type), gf_descrambleAirline(opr),
                  gf_isTrue(cargo)};
    const auto [place, inserted] = dbase.registrations.try_emplace(std::move(key), std::move(row));
    if (!inserted) {
        logLine(format("regcode {} already exists", place->first));
    }
}

// A row that can't be read ends the reading: the user is told which one.
static void lf_readRegistrations(const pugi::xml_document& document, const std::filesystem::path& path)
{
    dbase.registrations.clear();
    const auto rows = document.child("dbase").children("db");
    dbase.registrations.reserve(static_cast<size_t>(std::distance(rows.begin(), rows.end())));
    int64_t number = 0;
    for (const pugi::xml_node& node : rows) {
        ++number;
        try {
            lf_readRegistration(node);
        } catch (const std::exception& e) {
            throw std::runtime_error(
                format("{} in row {} of the registrations in \"{}\"", e.what(), number, gf_shown(path)));
        }
    }
}

void gf_readDbaseSections(const pugi::xml_document& document, const std::filesystem::path& path)
{
    for (const CodeList& list : kTypeLists) {
        lf_readList(document, list);
    }
    lf_readSimilarTypes(document);
    for (const CodeList& list : kAirlineLists) {
        lf_readList(document, list);
    }
    lf_readNamed(lf_readPublishers, "publishers", document, path);
    lf_readNamed(lf_readWingspans, "wingspans", document, path);
    lf_readFixes(document);
    lf_readList(document, kAddonList);
    lf_readThirdParties(document);
    lf_readRegistrations(document, path);
}

static void lf_readFile(const std::filesystem::path& path)
{
    std::error_code noSize;
    if (const uintmax_t size = std::filesystem::file_size(path, noSize); !noSize && size > kLargestFile) {
        throw UserErrorException(60, format("\"{}\" not read because of {}", gf_shown(path), "its size"));
    }
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_file(path.c_str());
    if (!parsed) {
        throw UserErrorException(
            60, format("\"{}\" not read because of {}", gf_shown(path), parsed.description()));
    }
    gf_readDbaseSections(document, path);
}

void gf_readDbaseFile(const std::filesystem::path& path)
{
    try {
        lf_readFile(path);
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        throw;
    }
    std::filesystem::remove(path);
}

bool readDbase()
{
    const std::filesystem::path path = kInputFolder / "temp2.xml";
    if (!fetchZippedText("dbase.zip", path)) {
        throw std::runtime_error("data base could not be read from on-line?");
    }
    gf_readDbaseFile(path);
    return true;
}

bool gf_isTrue(std::string_view text)
{
    constexpr std::string_view kYes = "1tTyY";
    return !text.empty() && kYes.find(text.front()) != std::string_view::npos;
}

}  // namespace vlt
