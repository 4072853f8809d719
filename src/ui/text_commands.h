// The controls of the window by lines of text, for runs without one.
#pragma once

#include <string>
#include <string_view>

namespace vlt {

// One command: "NAME=value" or "press NAME", the name in any case of its letters. What is wrong with it; an
// empty text if it was done. Any thread, one at a time.
std::string gf_runCommand(std::string_view line);

}  // namespace vlt
