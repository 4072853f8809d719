// The more talkative lines of the log, which the user can switch off with LOG. Any thread, as the log itself.
#pragma once

#include <string_view>

namespace vlt {

// Logs the line if LOG is on.
void logTalkative(std::string_view text);

}  // namespace vlt
