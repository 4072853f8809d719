// The window's fields as one line of JSON, for runs without a window.
#pragma once

#include <string>

namespace vlt {

// The line, without its line end. Any thread.
std::string gf_statusLine();

}  // namespace vlt
