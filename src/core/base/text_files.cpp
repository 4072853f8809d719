#include "core/base/text_files.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace vlt {

static constexpr char16_t kByteOrderMark = 0xFEFF;

std::string_view gf_encodingName(Encoding encoding)
{
    static constexpr std::array<std::string_view, 6> kNames{
        "ANSI", "Unicode", "Unicode_big_endian", "UTF8_with_BOM", "UTF8_without_BOM", "none_found"};
    return kNames.at(static_cast<size_t>(encoding));
}

Encoding detectEncoding(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::error_code error;
    if (!file || std::filesystem::is_directory(path, error)) {
        logLine(format("cannot open file {} for character encoding, err: {}", gf_shown(path),
                       std::strerror(errno)));
        return Encoding::none_found;
    }
    std::array<unsigned char, 2> mark{};
    file.read(reinterpret_cast<char*>(mark.data()), mark.size());
    if (file.gcount() < 2) {
        return Encoding::ANSI;
    }
    switch (mark[0] << 8 | mark[1]) {
    case 0xFFFE:
        return Encoding::Unicode;
    case 0xFEFF:
        return Encoding::Unicode_big_endian;
    case 0xEFBB:
        return Encoding::UTF8_with_BOM;
    default:
        return Encoding::ANSI;
    }
}

static void lf_appendUtf8(std::string& text, char32_t c)
{
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// One line of UTF-16 as UTF-8; nothing if a surrogate stands alone.
static std::optional<std::string> lf_utf8(std::u16string_view line)
{
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
        char32_t c = line[i];
        if (c >= 0xD800 && c <= 0xDFFF) {
            const bool pair = c <= 0xDBFF && i + 1 < line.size() && (line[i + 1] & 0xFC00) == 0xDC00;
            if (!pair) {
                return std::nullopt;
            }
            c = 0x10000 + ((c & 0x3FF) << 10) + (line[++i] & 0x3FF);
        }
        lf_appendUtf8(text, c);
    }
    return text;
}

static void lf_pushLine(std::vector<std::string>& lines, std::string line)
{
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    lines.push_back(std::move(line));
}

static bool lf_read16(std::ifstream& file, bool bigEndian, std::vector<std::string>& lines)
{
    std::u16string line;
    const auto finish = [&lines, &line] {
        auto text = lf_utf8(line);
        if (!text) {
            showMessage(format("conversion from error from utf16 to utf8, code: {}", "lone surrogate"), true);
            return false;
        }
        lf_pushLine(lines, std::move(*text));
        line.clear();
        return true;
    };
    std::array<unsigned char, 2> bytes{};
    while (file.read(reinterpret_cast<char*>(bytes.data()), bytes.size())) {
        const auto unit =
            static_cast<char16_t>(bigEndian ? bytes[0] << 8 | bytes[1] : bytes[1] << 8 | bytes[0]);
        if (unit == u'\n') {
            if (!finish()) {
                return false;
            }
        } else if (unit != kByteOrderMark) {
            line += unit;
        }
    }
    return line.empty() || finish();
}

static void lf_read8(std::ifstream& file, bool hasMark, std::vector<std::string>& lines)
{
    constexpr size_t kMarkBytes = 3;
    std::string line;
    bool first = true;
    while (std::getline(file, line)) {
        if (first && hasMark) {
            line.erase(0, kMarkBytes);
        }
        first = false;
        lf_pushLine(lines, line);
    }
}

bool readExtTextFile(const std::filesystem::path& path, std::vector<std::string>& lines)
{
    try {
        const Encoding encoding = detectEncoding(path);
        std::ifstream file(path, std::ios::binary);
        switch (encoding) {
        case Encoding::none_found:
            return false;
        case Encoding::Unicode:
        case Encoding::Unicode_big_endian:
            return lf_read16(file, encoding == Encoding::Unicode_big_endian, lines);
        case Encoding::UTF8_with_BOM:
        case Encoding::ANSI:
        case Encoding::UTF8_without_BOM:
            lf_read8(file, encoding == Encoding::UTF8_with_BOM, lines);
            return true;
        }
        return false;
    } catch (const std::exception& e) {
        logLine(format("gf_readExtTextFileToStringVector {}", e.what()));
        return false;
    }
}

}  // namespace vlt
