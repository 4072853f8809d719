#include "core/base/replace_file.h"

#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"

#include <fstream>
#include <string>

namespace vlt {

// The file that a link names in the end: who keeps a file elsewhere wants it written there.
static std::filesystem::path lf_behindLinks(std::filesystem::path path)
{
    constexpr int kMostLinks = 16;  // a circle of links has no end
    std::error_code error;
    for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i) {
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return path;
}

static bool lf_fill(const std::filesystem::path& beside,
                    const std::function<bool(const std::filesystem::path&)>& write)
{
    try {
        return write(beside);
    } catch (const std::exception& e) {
        logLine(format("{}: {}", gf_shown(beside), e.what()));
        return false;
    }
}

bool gf_replaceFile(const std::filesystem::path& path,
                    const std::function<bool(const std::filesystem::path&)>& write)
{
    const std::filesystem::path target = lf_behindLinks(path);
    std::filesystem::path beside = target;
    beside += ".new";
    std::error_code error;
    if (lf_fill(beside, write)) {
        std::filesystem::rename(beside, target, error);
        if (!error) {
            return true;
        }
        logLine(format("{} can't be replaced: {}", gf_shown(target), error.message()));
    }
    std::filesystem::remove(beside, error);
    return false;
}

bool gf_replaceFile(const std::filesystem::path& path, std::string_view text)
{
    return gf_replaceFile(path, [text](const std::filesystem::path& beside) {
        std::ofstream file(beside, std::ios::binary | std::ios::trunc);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        file.flush();
        if (!file) {
            logLine(format("{} can't be written", gf_shown(beside)));
        }
        return static_cast<bool>(file);
    });
}

std::filesystem::path gf_putAside(const std::filesystem::path& path)
{
    std::filesystem::path aside = path;
    std::error_code error;
    int number = 0;
    do {
        aside.replace_filename(path.stem().string() + format(".{}", number++) + path.extension().string());
    } while (std::filesystem::exists(std::filesystem::symlink_status(aside, error)));
    std::filesystem::rename(path, aside, error);
    if (error) {
        logLine(format("{} can't be put aside: {}", gf_shown(path), error.message()));
        return {};
    }
    return aside;
}

}  // namespace vlt
