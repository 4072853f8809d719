#include "core/base/display.h"

#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/text.h"

#include <algorithm>
#include <atomic>

namespace vlt {

static constexpr int32_t kMessageSeconds = 25;

Display display;

static std::atomic<MessageListener> messageListener{nullptr};  // [atomic] set once by the entry

static void lf_tell(std::string_view text, bool isError)
{
    if (const MessageListener listener = messageListener; listener != nullptr && !text.empty()) {
        listener(text, isError);
    }
}

void showMessage(std::string_view text, bool alsoLog)
{
    {
        const std::scoped_lock lock(displayMutex);
        if (!display.error.empty()) {
            return;
        }
        display.message = text;
        display.messageSecond = text.empty() ? 0 : std::max(display.secondsCounter.load(), 1);
        if (alsoLog) {
            logLine(text);
        }
    }
    lf_tell(text, false);
}

void clearMessage()
{
    showMessage("", false);
}

void showError(std::string_view text)
{
    {
        const std::scoped_lock lock(displayMutex);
        display.message = "";
        display.error = text;
        logLine(format("Error {}", text));
    }
    lf_tell(text, true);
}

void gf_clearError()
{
    const std::scoped_lock lock(displayMutex);
    display.error = "";
}

void gf_displaySecond()
{
    display.secondsCounter = display.secondsCounter + 1;
    const int32_t since = display.messageSecond;
    if (since > 0 && display.secondsCounter - since > kMessageSeconds) {
        clearMessage();
    }
}

void gf_resetDisplay()
{
    const std::scoped_lock lock(displayMutex);
    const int32_t liveries = display.liveriesCount;
    display = Display{};
    display.liveriesCount = liveries;
}

void gf_setMessageListener(MessageListener listener)
{
    messageListener = listener;
}

}  // namespace vlt
