#include "liveries/regcode_files.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/text_files.h"
#include "liveries/dbase_reader.h"
#include "liveries/scrambling.h"

#include <pugixml.hpp>

#include <stdexcept>
#include <string_view>

namespace vlt {

constexpr size_t kShortestRegcode = 3;  // characters of one in the user's files
constexpr size_t kLongestUserRegcode = 12;
constexpr std::string_view kSpecialMark = "#";

// The fields of a line; an empty last one counts.
static std::vector<std::string_view> lf_fields(std::string_view line)
{
    std::vector<std::string_view> fields = gf_split(line, ';');
    if (line.ends_with(';')) {
        fields.emplace_back();
    }
    return fields;
}

// The registrations of a list, without those of a wrong length. False if there were such.
static bool lf_readRegcodes(std::string_view list, std::string_view line, std::vector<std::string>& regcodes)
{
    bool good = true;
    for (const std::string_view regcode : gf_split(list, ',')) {
        if (regcode.size() < kShortestRegcode || regcode.size() > kLongestUserRegcode) {
            logLine(format("wrong regcode length \"{}\" in {}", regcode, line));
            good = false;
        } else {
            regcodes.emplace_back(regcode);
        }
    }
    return good;
}

static bool lf_readLine(const std::filesystem::path& path, std::string_view line,
                        std::vector<RegcodeEntry>& entries)
{
    constexpr size_t kMostFields = 3;
    const std::vector<std::string_view> fields = lf_fields(line);
    if (fields.empty()) {
        return true;
    }
    if (fields.size() > kMostFields || fields[0].empty()) {
        logLine(format("{}: wrong format \"{}\"", gf_shown(path), line));
        return false;
    }
    RegcodeEntry entry{std::string(fields[0]), {}, fields.size() == kMostFields && fields[2] == kSpecialMark};
    bool good = true;
    if (fields.size() > 1) {
        if (fields[1].empty()) {
            logLine(format("{} ; regs empty?", line));
        }
        good = lf_readRegcodes(fields[1], line, entry.regcodes);
    }
    entries.push_back(std::move(entry));
    return good;
}

bool gf_readRegcodeText(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries)
{
    const ExtText text = readExtTextFile(path);
    if (!text.forUser.empty()) {
        showMessage(text.forUser, true);
    }
    bool good = text.whole;
    for (std::string_view line : text.lines) {
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        good = lf_readLine(path, line, entries) && good;
    }
    return good;
}

static RegcodeEntry lf_entryOf(const pugi::xml_node& livery)
{
    RegcodeEntry entry{
        livery.attribute("title").as_string(), {}, gf_isTrue(livery.attribute("special").as_string())};
    for (const std::string_view scrambled : gf_split(livery.attribute("reg").as_string(), ',')) {
        entry.regcodes.push_back(gf_descrambleRegcode(scrambled));
    }
    return entry;
}

bool gf_readRegcodeXml(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries)
{
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        logLine(format("Failed to load {}", gf_shown(path)));
        return false;
    }
    return gf_readRegcodeDocument(document, path, entries);
}

bool gf_readRegcodeDocument(const pugi::xml_document& document, const std::filesystem::path& path,
                            std::vector<RegcodeEntry>& entries)
{
    bool good = true;
    for (const pugi::xml_node& livery : document.child("AIG-regcodes").children("livery")) {
        if (!livery.attribute("title")) {
            continue;
        }
        try {
            entries.push_back(lf_entryOf(livery));
        } catch (const std::out_of_range&) {
            logLine(
                format("{}: wrong regcodes of \"{}\"", gf_shown(path), livery.attribute("title").value()));
            good = false;
        }
    }
    return good;
}

}  // namespace vlt
