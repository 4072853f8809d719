#include "platform/registry.h"

#include "platform/folders.h"
#include "platform/ini_text.h"

namespace vlt {

static std::string lf_file()
{
    return gf_readIniFile(gf_appDataFolder() / "registry.ini");
}

static std::string lf_section(std::string_view root, std::string_view key)
{
    return std::string(root).append("\\").append(key);
}

std::optional<std::string> gf_registryText(std::string_view root, std::string_view key,
                                           std::string_view value)
{
    return gf_iniValue(lf_file(), lf_section(root, key), value);
}

bool gf_registryHasKey(std::string_view root, std::string_view key)
{
    const std::string file = lf_file();
    const std::string section = lf_section(root, key);
    return gf_iniHasSection(file, section) || gf_iniHasSectionBelow(file, section + "\\");
}

}  // namespace vlt
