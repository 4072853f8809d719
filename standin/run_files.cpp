#include "standin/run_files.h"

#include "core/base/text.h"

#include <stdexcept>

namespace vlt {

static void lf_mustWork(const std::ofstream& file, const std::filesystem::path& path)
{
    if (!file) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
}

std::ofstream gf_openRunFile(const std::filesystem::path& path)
{
    if (path.has_parent_path()) {
        std::filesystem::create_directories(path.parent_path());
    }
    std::ofstream file(path, std::ios::binary);
    lf_mustWork(file, path);
    return file;
}

void gf_writeRunFile(const std::filesystem::path& path, std::string_view text)
{
    std::filesystem::path beside = path;  // whoever reads meanwhile finds the old file or the new one
    beside += ".new";
    std::ofstream file = gf_openRunFile(beside);
    file << text;
    file.close();
    lf_mustWork(file, path);
    std::filesystem::rename(beside, path);
}

std::string gf_csvCell(std::string_view text)
{
    std::string cell(text);
    if (cell.find_first_of(",\"\r\n") == std::string::npos) {
        return cell;
    }
    for (size_t at = cell.find('"'); at != std::string::npos; at = cell.find('"', at + 2)) {
        cell.insert(at, 1, '"');
    }
    return '"' + cell + '"';
}

RunMotion gf_runMotion(const std::vector<ObjectLife>& lives)
{
    RunMotion motion;
    for (const ObjectLife& life : lives) {
        for (MotionBreak& found : gf_motionBreaks(life)) {
            ++motion.byKind[found.kind];
            motion.breaks.push_back(std::move(found));
        }
    }
    return motion;
}

}  // namespace vlt
