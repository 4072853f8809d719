#include "platform/local_pipe.h"

#include "platform/folders.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <string>

namespace vlt {

constexpr std::string_view kPipeFolder = "pipe\\";

// The name behind `\\host\pipe\`.
static std::string_view lf_bareName(std::string_view name)
{
    if (!name.starts_with("\\\\")) {
        return name;
    }
    const size_t hostEnd = name.find('\\', 2);
    if (hostEnd == std::string_view::npos) {
        return name;
    }
    const std::string_view behindHost = name.substr(hostEnd + 1);
    const bool isPipe = gf_sameIgnoringCase(behindHost.substr(0, kPipeFolder.size()), kPipeFolder);
    return isPipe ? behindHost.substr(kPipeFolder.size()) : name;
}

bool gf_isPipeOfThisMachine(std::string_view pipeName)
{
    return !pipeName.starts_with("\\\\") || pipeName.starts_with("\\\\.\\");
}

std::filesystem::path gf_localPipeFile(std::string_view pipeName)
{
    std::string name(lf_bareName(pipeName));
    std::replace(name.begin(), name.end(), '\\', '/');
    // A slash at the front would lead out of the runtime folder.
    name.erase(0, name.find_first_not_of('/'));
    return gf_runtimeFolder() / "pipe" / name;
}

}  // namespace vlt
