// Writing files so that neither a crash nor a full disk costs what was there before, and putting aside what
// can't be read.
//
// The new file is written beside its target and then renamed over it; whatever fails is logged with its
// cause, and nothing is left behind. Stateless; any thread, but two at once must not write the same target.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

namespace vlt {

// Lets `write` fill the file at the path that it is given, and puts that in the place of `path`, or of what
// `path` links to. False, and everything as before, when `write` gives false or throws a std::exception, or
// the file can't be renamed. `write` logs what it gives false for.
bool gf_replaceFile(const std::filesystem::path& path,
                    const std::function<bool(const std::filesystem::path& beside)>& write);

// The same with the text as the file's content.
bool gf_replaceFile(const std::filesystem::path& path, std::string_view text);

// Renames a file that is of no use to NAME.0.EXT, or the first number that no file has yet. Its new path;
// empty, with the cause in the log, when that fails.
std::filesystem::path gf_putAside(const std::filesystem::path& path);

}  // namespace vlt
