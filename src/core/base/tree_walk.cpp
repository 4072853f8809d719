#include "core/base/tree_walk.h"

#include "core/base/ordered_tasks.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "platform/paths_form.h"

#include <algorithm>
#include <set>
#include <utility>

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

// An entry of a folder that counts.
struct FolderEntry {
    FoundFile file;
    std::string name;
    bool folder = false;
    bool link = false;
};

struct FolderListing {
    std::vector<FolderEntry> entries;
    std::error_code error;
};

static FolderListing lf_list(const FoundFile& folder)
{
    FolderListing listing;
    fs::directory_iterator it(folder.path, listing.error);
    while (!listing.error && it != fs::directory_iterator() && !gf_stopping()) {
        std::error_code error;
        const bool isFolder = it->is_directory(error);
        if (isFolder || it->is_regular_file(error)) {
            std::string name = it->path().filename().string();
            std::string shown = folder.shown + '\\' + name;
            listing.entries.push_back(
                {{it->path(), std::move(shown)}, std::move(name), isFolder, it->is_symlink(error)});
        }
        it.increment(listing.error);
    }
    return listing;
}

static void lf_take(TreeWalk& walk, const FoundFile& folder, FolderListing& listing)
{
    for (FolderEntry& entry : listing.entries) {
        if (!entry.folder) {
            walk.rules.seen(entry.file.shown, false);
            if (walk.rules.wants(entry.name, entry.file.shown)) {
                walk.found.files.push_back(std::move(entry.file));
            }
            continue;
        }
        walk.rules.seen(entry.file.shown, true);
        if (walk.rules.enters(entry.file.shown) && (!entry.link || lf_leadsOn(walk, entry.file.path))) {
            walk.toDo.push_back(std::move(entry.file));
        }
    }
    if (listing.error) {
        walk.found.unreadable.push_back(format("{}: {}", folder.shown, listing.error.message()));
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
        const std::vector<FoundFile> level = std::exchange(walk.toDo, {});
        gf_resultsInOrder(
            level.size(), [&level](size_t i) { return lf_list(level[i]); },
            [&](size_t i, FolderListing& listing) { lf_take(walk, level[i], listing); });
    }
    lf_sort(walk.found.files);
    std::sort(walk.found.unreadable.begin(), walk.found.unreadable.end());
    return std::move(walk.found);
}

}  // namespace vlt
