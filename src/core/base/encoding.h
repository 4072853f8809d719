// Text of unknown encoding as UTF-8.
//
// Stateless; any thread.
#pragma once

#include <string>
#include <string_view>

namespace vlt {

bool gf_isUtf8(std::string_view text);

// The text as it stands when it is UTF-8, else taken as Windows-1252, in which no byte is wrong.
std::string gf_asUtf8(std::string text);

}  // namespace vlt
