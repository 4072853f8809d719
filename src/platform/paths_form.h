// The two forms of a path: the Windows form that users, their files and our rules speak, and the
// native form that every file call takes.
//
// On Linux a drive letter C: stands for the folder in VELATRA_DRIVE_C (so for the other letters),
// and C:\ProgramData for the folder of application data of all users. No state but the environment;
// any thread. All text is UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vlt {

// The native form. Takes either form: backslashes become slashes, a drive letter is mapped if its
// folder is known, dots and blanks at the end of a name fall away. Where the exact name isn't
// there, the one that differs in the case of its letters is taken (of several the first by code);
// where none is there, the name stays as it was. Looks at the disk, creates nothing, throws
// nothing.
std::filesystem::path gf_toNativeForm(std::string_view path);

// The Windows form: a drive letter where a known folder stands for one, and backslashes.
std::string gf_toWindowsForm(const std::filesystem::path& path);

// A path as it is compared: in the Windows form, without regard to the case of letters.
std::u32string gf_comparedForm(std::string_view windowsForm);

}  // namespace vlt
