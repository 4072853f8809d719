#include "liveries/report_file.h"

#include "core/base/replace_file.h"

namespace vlt {

bool gf_writeReport(const std::filesystem::path& path, std::span<const std::string> lines)
{
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    std::string text;
    for (const std::string& line : lines) {
        text.append(line).append(1, '\n');
    }
    return !error && gf_replaceFile(path, text);
}

}  // namespace vlt
