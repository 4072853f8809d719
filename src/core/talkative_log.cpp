#include "core/talkative_log.h"

#include "core/log.h"
#include "core/parameters.h"

namespace vlt {

void logTalkative(std::string_view text)
{
    if (LOG.value) {
        logLine(text);
    }
}

}  // namespace vlt
