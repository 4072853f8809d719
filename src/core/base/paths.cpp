#include "core/base/paths.h"

#include "platform/folders.h"
#include "platform/paths_form.h"

namespace vlt {

std::filesystem::path gf_parametersFile()
{
    return gf_dataFolder() / "parameters.xml";
}

std::string gf_shown(const std::filesystem::path& path)
{
    return gf_toWindowsForm(path);
}

void makeFolders()
{
    const std::filesystem::path folders[] = {
        kOutputFolder,
        kInfoFolder,
        kErrorsFolder,
        kAirportsFolder,
        kLearnedFolder,
        kLearnedFolder / "stock",
        kLearnedFolder / "simaddon",
        kLearnedFolder / "thirdparty",
        kMyOrbxFolder,
        kMyThirdpartyFolder,
        kMyRegcodesFolder,
    };
    for (const auto& folder : folders) {
        std::error_code error;
        if (!std::filesystem::exists(folder, error)) {
            std::filesystem::create_directory(folder, error);
        }
        if (error) {
            throw std::filesystem::filesystem_error("create_directory", folder, error);
        }
    }
}

}  // namespace vlt
