#include "core/base/tree_walk.h"

#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <set>

namespace vlt {

namespace fs = std::filesystem;

// A walk on its way.
struct TreeWalk {
    const TreeRules& rules;
    std::set<std::string> linked;  // canonical targets of the links followed, and the first folder
    std::vector<FoundFile> toDo;   // folders
    FoundFiles found;
};

// The path lies at or below the folder; both canonical.
static bool lf_isBelow(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

// A link to a folder leads to where the walk hasn't been and won't come, nor to above where it is.
static bool lf_leadsOn(TreeWalk& walk, const fs::path& link)
{
    std::error_code error;
    const std::string target = fs::canonical(link, error).string();
    const std::string here = fs::canonical(link.parent_path(), error).string();
    if (error || lf_isBelow(here, target)) {
        return false;
    }
    for (const std::string& been : walk.linked) {
        if (lf_isBelow(target, been)) {
            return false;
        }
    }
    walk.linked.insert(target);
    return true;
}

static void lf_look(TreeWalk& walk, const fs::directory_entry& entry, const std::string& shownFolder)
{
    std::error_code error;
    const std::string native = entry.path().string();
    const auto separator = static_cast<char>(fs::path::preferred_separator);
    const std::string_view name = std::string_view(native).substr(native.rfind(separator) + 1);
    std::string shown = shownFolder + '\\';
    shown.append(name);
    if (entry.is_directory(error)) {
        if (walk.rules.enters(shown) && (!entry.is_symlink(error) || lf_leadsOn(walk, entry.path()))) {
            walk.toDo.push_back({entry.path(), std::move(shown)});
        }
    } else if (entry.is_regular_file(error)) {
        walk.rules.seen();
        if (walk.rules.wants(name, shown)) {
            walk.found.files.push_back({entry.path(), std::move(shown)});
        }
    }
}

static void lf_walkFolder(TreeWalk& walk, const FoundFile& folder)
{
    std::error_code error;
    fs::directory_iterator it(folder.path, error);
    while (!error && it != fs::directory_iterator() && !gf_stopping()) {
        lf_look(walk, *it, folder.shown);
        it.increment(error);
    }
    if (error) {
        walk.found.unreadable.push_back(format("{}: {}", folder.shown, error.message()));
    }
}

static void lf_sort(std::vector<FoundFile>& files)
{
    std::vector<std::pair<std::u32string, FoundFile>> keyed;
    keyed.reserve(files.size());
    for (FoundFile& file : files) {
        keyed.emplace_back(gf_comparedForm(file.shown), std::move(file));
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : a.second.shown < b.second.shown;
    });
    files.clear();
    for (auto& [key, file] : keyed) {
        files.push_back(std::move(file));
    }
}

FoundFiles gf_walkTree(const fs::path& folder, const TreeRules& rules)
{
    std::error_code error;
    std::string shown = gf_shown(folder);
    while (shown.ends_with('\\')) {
        shown.pop_back();
    }
    TreeWalk walk{rules, {}, {{folder, shown}}, {}};
    walk.linked.insert(fs::canonical(folder, error).string());
    while (!walk.toDo.empty() && !gf_stopping()) {
        const FoundFile next = std::move(walk.toDo.back());
        walk.toDo.pop_back();
        lf_walkFolder(walk, next);
    }
    lf_sort(walk.found.files);
    std::sort(walk.found.unreadable.begin(), walk.found.unreadable.end());
    return std::move(walk.found);
}

}  // namespace vlt
