#include "liveries/aircraft_cfg.h"

#include "core/base/text.h"
#include "liveries/cfg_text.h"
#include "liveries/database.h"
#include "liveries/livery_section.h"
#include "platform/ini_text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace vlt {

// --- the model of a file

// The value of the first atc_model line.
static std::string_view lf_modelCode(const std::vector<std::string_view>& lines)
{
    for (const std::string_view line : lines) {
        const std::optional<CfgKeyValue> keyValue = gf_cfgKeyValue(line);
        if (keyValue && gf_sameIgnoringCase(keyValue->key, "atc_model")) {
            std::string_view value = keyValue->value;
            if (value.size() > 2 && value.starts_with('"') && value.ends_with('"')) {
                value = value.substr(1, value.size() - 2);
            }
            return value;
        }
    }
    return {};
}

// The type of "…\IVAO_MTL\IVAO_<type>\aircraft.cfg" as its folder spells it; none for another path.
static std::optional<std::string> lf_ivaoFolderCode(std::string_view shown)
{
    constexpr std::string_view kPackage = "IVAO_MTL";
    constexpr std::string_view kFolder = "IVAO_";
    const std::vector<std::string_view> names = gf_split(shown, '\\');
    const size_t count = names.size();
    if (count < 4 || !gf_sameIgnoringCase(names[count - 1], "aircraft.cfg") ||
        !gf_sameIgnoringCase(names[count - 3], kPackage) ||
        !gf_sameIgnoringCase(names[count - 2].substr(0, kFolder.size()), kFolder)) {
        return std::nullopt;
    }
    const std::string_view code = names[count - 2].substr(kFolder.size());
    const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    return !code.empty() && std::all_of(code.begin(), code.end(), isWord) ? std::optional<std::string>(code)
                                                                          : std::nullopt;
}

static std::string lf_repairedIvaoCode(std::string code)
{
    struct Repair {
        std::string_view code;
        size_t tooMany;  // characters at its end
    };
    constexpr Repair kRepairs[] = {{"B744F", 1},    {"T154M", 1},    {"T154B2", 2},
                                   {"GLID_SH", 3},  {"GLID_A13", 4}, {"GLID_A25", 4},
                                   {"GLID_KA6", 4}, {"GLID_KA8", 4}, {"GLID_L13", 4}};
    if (code.ends_with('w')) {
        code.pop_back();
    }
    for (const Repair& repair : kRepairs) {
        if (code == repair.code) {
            code.resize(code.size() - repair.tooMany);
        }
    }
    return code;
}

// The model for a code: its own, or the right one of a known mistake. Empty if there is none.
static std::string lf_validModel(const std::string& code, const CfgPlace& place, CfgReports& reports)
{
    if (isValidModel(code)) {
        return code;
    }
    if (const auto fix = dbase.fixes.find(code); fix != dbase.fixes.end()) {
        reports.fixes.push_back(
            format("Model fix: {} found in {} changed into {}", code, place.shown, fix->second));
        return fix->second;
    }
    reports.modelCodes.push_back(format("{:16} in {}", code, place.shown));
    return {};
}

static std::string lf_model(const std::vector<std::string_view>& lines, const CfgPlace& place, bool ivao,
                            CfgReports& reports)
{
    constexpr const char* kNoCode = "  ";
    if (ivao) {
        const std::optional<std::string> code = lf_ivaoFolderCode(place.shown);
        if (!code) {
            reports.modelCodes.push_back(format("{:16} in {}", kNoCode, place.shown));
            return {};
        }
        return lf_validModel(lf_repairedIvaoCode(*code), place, reports);
    }
    const std::string_view code = lf_modelCode(lines);
    if (code.empty()) {
        reports.invalidFiles.push_back(
            format("Line atc_model= is missing in [General] section of {}", place.shown));
        return {};
    }
    return lf_validModel(std::string(code), place, reports);
}

// --- the file

static void lf_scanSections(const CfgSections& cut, CfgFile& file, CfgScan& scan)
{
    for (const std::vector<std::string_view>& lines : cut.sections) {
        try {
            lf_procesFltSimSection(lines, file, scan);
        } catch (const std::exception& e) {
            scan.log.push_back(
                format("exception in lf_procesFltSimSection: {}, file: {}", e.what(), file.place.shown));
        }
    }
}

CfgScan gf_scanCfgText(int32_t folderNumber, const CfgPlace& place, std::string_view text, bool ivao,
                       const PathSet& onDisk)
{
    CfgScan scan;
    const std::vector<std::string_view> lines = gf_cfgLines(text);
    const CfgSections cut = gf_cfgSections(lines);
    if (!cut.any) {
        scan.reports.withoutSections.push_back(place.shown);
    } else if (!cut.fault.empty()) {
        scan.reports.invalidFiles.push_back(format("{} contains {}", place.shown, cut.fault));
        return scan;
    }
    CfgFile file{.place = place,
                 .onDisk = onDisk,
                 .folder = place.path.parent_path(),
                 .shownFolder = place.shown.substr(0, std::min(place.shown.rfind('\\'), place.shown.size())),
                 .folderNumber = folderNumber,
                 .ivao = ivao,
                 .model = lf_model(lines, place, ivao, scan.reports),
                 .known = {}};
    if (!file.model.empty()) {
        lf_scanSections(cut, file, scan);
    }
    return scan;
}

static CfgScan lf_scanFile(int32_t folderNumber, const CfgPlace& place, bool ivao, const PathSet& onDisk)
{
    CfgScan scan;
    const CfgText text = gf_readCfgText(place.path);
    std::error_code error;
    if (!text.readable && !std::filesystem::exists(place.path, error)) {
        return scan;
    }
    if (!text.readable && ivao) {
        scan.log.push_back(format("no character set found for {}", place.shown));
    }
    if (text.tooLong) {
        scan.reports.invalidFiles.push_back(
            format("{} contains more than {} MB", place.shown, kMaxCfgBytes >> 20));
    }
    if (!text.readable || text.tooLong) {
        return scan;
    }
    scan = gf_scanCfgText(folderNumber, place, text.text, ivao, onDisk);
    if (!text.forUser.empty()) {
        scan.log.push_back(format("{}: {}", place.shown, text.forUser));
    }
    return scan;
}

static CfgScan lf_scanCaught(int32_t folderNumber, const CfgPlace& place, bool ivao, const PathSet& onDisk)
{
    try {
        return lf_scanFile(folderNumber, place, ivao, onDisk);
    } catch (const std::exception& e) {
        CfgScan scan;
        scan.log.push_back(format("exception in lf_searchLiveriesinFile {}: {}", place.shown, e.what()));
        return scan;
    }
}

CfgScan lf_searchLiveriesinFile(int32_t folderNumber, const CfgPlace& place, const PathSet& onDisk)
{
    return lf_scanCaught(folderNumber, place, false, onDisk);
}

CfgScan lf_searchLiveriesinIvaoFile(int32_t folderNumber, const CfgPlace& place, const PathSet& onDisk)
{
    return lf_scanCaught(folderNumber, place, true, onDisk);
}

bool gf_isIvaoFile(std::string_view shown)
{
    const std::u32string path = gf_comparedForm(shown);
    return path.find(gf_comparedForm("ivao_x-csl")) != std::u32string::npos ||
           path.find(gf_comparedForm("IVAO_MTL")) != std::u32string::npos;
}

}  // namespace vlt
