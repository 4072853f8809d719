// The files below a folder, in an order that is the same on every machine.
//
// Folders are listed several at once, as scanThreads tells; the rules are asked on the calling thread. No
// state. Links to folders are followed, each once and never back to where the walk has been.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// A file found: as the system calls it, and as the user knows it.
struct FoundFile {
    std::filesystem::path path;
    std::string shown;  // in the Windows form
};

struct TreeRules {
    std::function<bool(std::string_view shown)> enters;                        // a folder below the first one
    std::function<bool(std::string_view name, std::string_view shown)> wants;  // a regular file
    std::function<void(std::string_view shown, bool folder)> seen;  // each file and folder, wanted or not
};

struct FoundFiles {
    std::vector<FoundFile> files;         // by their Windows form without regard to case
    std::vector<std::string> unreadable;  // folders and why, "{folder}: {reason}"
};

// Walks all folders below `folder`. Ends early, with what it has, when the run is to stop. A folder that
// can't be read, or vanishes meanwhile, is told and passed over.
FoundFiles gf_walkTree(const std::filesystem::path& folder, const TreeRules& rules);

}  // namespace vlt
