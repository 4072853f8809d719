#include "platform/folders.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace vlt {

// The variable as a path; empty if it isn't set.
static std::filesystem::path lf_variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

static std::filesystem::path lf_home()
{
    if (auto home = lf_variable("HOME"); !home.empty()) {
        return home;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

// The first of our variable, the XDG variable and a folder below the user's home.
static std::filesystem::path lf_folder(const char* own, const char* xdg, const char* belowHome)
{
    if (auto folder = lf_variable(own); !folder.empty()) {
        return folder;
    }
    if (auto folder = lf_variable(xdg); !folder.empty()) {
        return folder;
    }
    return lf_home() / belowHome;
}

std::filesystem::path gf_appDataFolder()
{
    return lf_folder("VELATRA_APPDATA", "XDG_CONFIG_HOME", ".config");
}

std::filesystem::path gf_dataFolder()
{
    return gf_appDataFolder() / "Velatra";
}

std::filesystem::path gf_programDataFolder()
{
    if (auto folder = lf_variable("VELATRA_PROGRAMDATA"); !folder.empty()) {
        return folder;
    }
    if (const auto drive = lf_variable("VELATRA_DRIVE_C"); !drive.empty()) {
        return drive / "ProgramData";
    }
    if (const auto data = lf_variable("XDG_DATA_HOME"); !data.empty()) {
        return data / "velatra/ProgramData";
    }
    return lf_home() / ".local/share/velatra/ProgramData";
}

std::filesystem::path gf_documentsFolder()
{
    return lf_folder("VELATRA_DOCUMENTS", "XDG_DOCUMENTS_DIR", "Documents");
}

std::filesystem::path gf_publicDocumentsFolder()
{
    return lf_folder("VELATRA_PUBLIC_DOCUMENTS", "XDG_PUBLICSHARE_DIR", "Public");
}

static std::filesystem::path lf_sharedRuntimeFolder()
{
    std::error_code error;
    std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    if (error) {
        temporary = "/tmp";
    }
    return temporary / ("velatra-" + std::to_string(::getuid()));
}

std::filesystem::path gf_runtimeFolder()
{
    if (auto folder = lf_variable("VELATRA_RUNTIME"); !folder.empty()) {
        return folder;
    }
    if (const auto folder = lf_variable("XDG_RUNTIME_DIR"); !folder.empty()) {
        return folder / "velatra";
    }
    return lf_sharedRuntimeFolder();
}

bool gf_makeRuntimeFolder()
{
    const std::filesystem::path folder = gf_runtimeFolder();
    if (folder != lf_sharedRuntimeFolder()) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        return true;  // where the user's own system put it, it is the user's affair
    }
    ::mkdir(folder.c_str(), S_IRWXU);
    struct stat found {
    };
    return ::lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == ::getuid() &&
           ::chmod(folder.c_str(), S_IRWXU) == 0;
}

std::filesystem::path gf_programFolder()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::filesystem::path gf_currentFolder()
{
    std::error_code error;
    std::filesystem::path folder = std::filesystem::current_path(error);
    return error ? "." : folder;
}

}  // namespace vlt
