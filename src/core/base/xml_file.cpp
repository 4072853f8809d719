#include "core/base/xml_file.h"

#include "core/base/clock.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "core/base/version.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <utility>

namespace vlt {

static constexpr std::string_view kCopyright = "Copyright the Velatra developers, MIT licence";

bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path)
{
    std::ostringstream text;
    document.save(text);
    const bool saved = gf_replaceFile(path, text.view());
    logLine(saved ? format("\"{}\" saved", gf_shown(path))
                  : format("could not save to \"{}\"", gf_shown(path)));
    return saved;
}

int32_t gf_wholeNumber(const pugi::xml_attribute& attribute)
{
    using Limits = std::numeric_limits<int32_t>;
    const double number = attribute.as_double();
    return std::isnan(number)
               ? 0
               : static_cast<int32_t>(std::clamp<double>(number, Limits::min(), Limits::max()));
}

void gf_addMeta(pugi::xml_document& document)
{
    pugi::xml_node meta = document.append_child("meta");
    const std::pair<const char*, std::string> infos[] = {
        {"author", std::string(kProgramName)},
        {"version", gf_text(kProgramVersion)},
        {"date", nowString()},
        {"copyright", std::string(kCopyright)},
        {"P3D", "v5/v6"},
    };
    for (const auto& [name, value] : infos) {
        pugi::xml_node info = meta.append_child("info");
        info.append_attribute("name").set_value(name);
        info.append_attribute("value").set_value(value.c_str());
    }
}

}  // namespace vlt
