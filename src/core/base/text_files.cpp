#include "core/base/text_files.h"

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

enum class Encoding { ANSI, Unicode, Unicode_big_endian, UTF8_with_BOM, UTF8_without_BOM, none_found };

// By the file's first two bytes. A file that can't be opened is logged and gives none_found.
static Encoding detectEncoding(const std::filesystem::path& path)
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

static void lf_pushLine(ExtText& text, std::string line)
{
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    text.lines.push_back(std::move(line));
}

// Moves a line of UTF-16 to the text. False if it is none, which the text then tells.
static bool lf_push16(ExtText& text, std::u16string& line)
{
    std::optional<std::string> converted = lf_utf8(line);
    line.clear();
    text.whole = converted.has_value();
    if (!text.whole) {
        text.forUser = "conversion from error from utf16 to utf8, code: lone surrogate";
        return false;
    }
    lf_pushLine(text, std::move(*converted));
    return true;
}

static void lf_read16(std::ifstream& file, bool bigEndian, ExtText& text)
{
    std::u16string line;
    std::array<unsigned char, 2> bytes{};
    while (file.read(reinterpret_cast<char*>(bytes.data()), bytes.size())) {
        const auto unit =
            static_cast<char16_t>(bigEndian ? bytes[0] << 8 | bytes[1] : bytes[1] << 8 | bytes[0]);
        if (unit == u'\n') {
            if (!lf_push16(text, line)) {
                return;
            }
        } else if (unit != kByteOrderMark) {
            line += unit;
        }
    }
    if (!line.empty()) {
        lf_push16(text, line);
    }
}

static void lf_read8(std::ifstream& file, bool hasMark, ExtText& text)
{
    constexpr size_t kMarkBytes = 3;
    std::string line;
    bool first = true;
    while (std::getline(file, line)) {
        if (first && hasMark) {
            line.erase(0, kMarkBytes);
        }
        first = false;
        lf_pushLine(text, line);
    }
}

static void lf_read(const std::filesystem::path& path, ExtText& text)
{
    const Encoding encoding = detectEncoding(path);
    std::ifstream file(path, std::ios::binary);
    switch (encoding) {
    case Encoding::none_found:
        text.whole = false;
        break;
    case Encoding::Unicode:
    case Encoding::Unicode_big_endian:
        lf_read16(file, encoding == Encoding::Unicode_big_endian, text);
        break;
    case Encoding::UTF8_with_BOM:
    case Encoding::ANSI:
    case Encoding::UTF8_without_BOM:
        lf_read8(file, encoding == Encoding::UTF8_with_BOM, text);
        break;
    }
}

ExtText readExtTextFile(const std::filesystem::path& path)
{
    ExtText text;
    try {
        lf_read(path, text);
    } catch (const std::exception& e) {
        logLine(format("gf_readExtTextFileToStringVector {}", e.what()));
        text.whole = false;
    }
    return text;
}

}  // namespace vlt
