#include "liveries/livery_section.h"

#include "core/base/text.h"
#include "liveries/cfg_text.h"
#include "liveries/database.h"
#include "liveries/section_judge.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vlt {

constexpr size_t kLongestRegcode = 12;  // characters of one printed on a livery

static void lf_log(LiverySection& section, std::string line)
{
    section.scan.log.push_back(std::move(line));
}

static bool lf_wasThere(LiverySection& section, bool& has, std::string_view what)
{
    const bool before = std::exchange(has, true);
    if (before) {
        gf_incomplete(section, format("{} {} {}", section.file.shownFolder, section.firstLine, what));
    }
    return before;
}

// --- the keys; each gives false when it ends the section

static bool lf_takeTitle(LiverySection& section, std::string_view value)
{
    if (lf_wasThere(section, section.hasTitle, "has more than one title key")) {
        return false;
    }
    const std::string_view trimmed = gf_trimmed(value);
    if (trimmed != value && section.file.ivao) {
        lf_log(section, format("removed spaces around title \"{}\" --> \"{}\"", value, trimmed));
    } else if (trimmed != value) {
        lf_log(section, format("There are spaces around title: \"{}\"", value));
        lf_log(section, format("removed spaces around: \"{}\"-> \"{}\"", value, trimmed));
    }
    section.title = trimmed;
    return true;
}

static bool lf_takeCodes(LiverySection& section, std::string_view value)
{
    constexpr size_t kWithSuffix = 4;
    if (lf_wasThere(section, section.hasCodes, "has more than one atc_parking_codes key")) {
        return false;
    }
    std::string_view code = gf_trimmed(value.substr(0, value.find(',')));
    if (code.size() == kWithSuffix && (code.ends_with('X') || code.ends_with('C'))) {
        code.remove_suffix(1);
    }
    if (code == "RFO") {
        return false;
    }
    if (isValidAirline(code)) {
        section.airline = code;
    } else if (!code.empty()) {
        section.scan.reports.airlineCodes.push_back(format("{:12} in {} ", code, section.file.place.shown));
    }
    return true;
}

static bool lf_takeTypes(LiverySection& section, std::string_view value)
{
    if (lf_wasThere(section, section.hasTypes, "has more than one atc_parking_types key")) {
        return false;
    }
    section.types = gf_upperCase(gf_trimmed(value));
    return true;
}

// What is wrong with an item of atc_id, as the log tells it; empty if nothing is.
static std::string lf_faultOf(const LiverySection& section, std::string_view item, std::string_view value)
{
    const std::string& shown = section.file.place.shown;
    const std::string_view code = gf_trimmed(item);
    if (item == " " && !section.file.ivao) {
        return format("regcode is a space char? {} {}", value, shown);
    }
    if (code.empty()) {
        return section.file.ivao ? format("empty regcode in: {}", shown)
                                 : format("empty regcode in {} {}", value, shown);
    }
    if (code.size() > kLongestRegcode) {
        return section.file.ivao
                   ? format("regcode: {}, has more than 12 chars in title: {}", code, section.title)
                   : format("regcode: {}, has more than 12 chars or contains UTF16 chars in \"{}\"?", code,
                            shown);
    }
    if (code.find('*') != std::string_view::npos) {
        return format("{} {} wild cards no longer supported, atc_id skipped ", code, shown);
    }
    return {};
}

static bool lf_takeIds(LiverySection& section, std::string_view value)
{
    if (std::exchange(section.hasIds, true)) {
        return gf_incomplete(section, format("{}, {}, has more than one atc_id key", section.file.shownFolder,
                                             section.firstLine));
    }
    const std::vector<std::string_view> items = gf_split(value.substr(0, value.find(';')), ',');
    if (items.empty()) {
        lf_log(section, format("invalid atc_id={} ==> in: {}", value, section.file.place.shown));
    }
    for (const std::string_view item : items) {
        const std::string fault = lf_faultOf(section, item, value);
        if (!fault.empty()) {
            lf_log(section, fault);
            if (!section.file.ivao) {
                return true;
            }
        } else if (section.file.ivao) {
            section.atcid = gf_trimmed(item);
            return true;
        }
    }
    if (items.size() == 1 && !section.file.ivao) {
        section.atcid = gf_trimmed(items.front());
    }
    return true;
}

static bool lf_takeFirst(std::optional<std::string>& place, std::string_view value)
{
    if (!place) {
        place = value;
    }
    return true;
}

// Without the quotation marks that enclose a whole value.
static std::string_view lf_unquoted(LiverySection& section, std::string_view value)
{
    if (value.size() < 2 || !value.starts_with('"') || !value.ends_with('"')) {
        return value;
    }
    const std::string_view inner = value.substr(1, value.size() - 2);
    lf_log(section, format("removed quotation marks around: {}-> \"{}\"", value, inner));
    return inner;
}

static bool lf_takeKey(LiverySection& section, const CfgKeyValue& line)
{
    const auto is = [&line](std::string_view key) { return gf_sameIgnoringCase(line.key, key); };
    const auto value = [&] { return lf_unquoted(section, line.value); };
    const auto name = [&] { return lf_unquoted(section, gf_withoutComment(line.value)); };
    if (is("title")) {
        return lf_takeTitle(section, value());
    }
    if (is("atc_parking_codes") && !section.file.ivao) {
        return lf_takeCodes(section, value());
    }
    if (is("atc_parking_types")) {
        return lf_takeTypes(section, value());
    }
    if (is("atc_id")) {
        return lf_takeIds(section, value());
    }
    if (is("model")) {
        return lf_takeFirst(section.model, name());
    }
    if (is("sim")) {
        return lf_takeFirst(section.sim, name());
    }
    return !is("texture") || lf_takeFirst(section.texture, name());
}

static std::string lf_firstWords(const std::vector<std::string_view>& lines)
{
    for (const std::string_view line : lines) {
        if (const std::string_view text = gf_withoutSpace(line); !text.empty()) {
            return std::string(text);
        }
    }
    return {};
}

void lf_procesFltSimSection(const std::vector<std::string_view>& lines, CfgFile& file, CfgScan& scan)
{
    LiverySection section(file, scan, lf_firstWords(lines));
    for (const std::string_view line : lines) {
        const std::optional<CfgKeyValue> keyValue = gf_cfgKeyValue(line);
        if (keyValue && !lf_takeKey(section, *keyValue)) {
            return;
        }
    }
    if (!gf_isSoundSection(section)) {
        return;
    }
    const bool cargo = !file.ivao && section.types.find("CARGO") != std::string::npos;
    std::string doubled = file.ivao ? format("{} title already exists: {}", file.place.shown, section.title)
                                    : format("{} {} title \"{}\" already exists", file.shownFolder,
                                             section.firstLine, section.title);
    scan.found.push_back({{std::move(section.airline), file.model, std::move(section.title),
                           std::move(section.atcid), file.folderNumber, cargo},
                          std::move(doubled)});
}

}  // namespace vlt
