#include "core/base/talkative_log.h"

#include "core/base/log.h"
#include "core/base/parameters.h"

namespace vlt {

void logTalkative(std::string_view text)
{
    if (LOG.value) {
        logLine(text);
    }
}

}  // namespace vlt
