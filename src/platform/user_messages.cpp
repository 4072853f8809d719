#include "platform/user_messages.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace vlt {

static std::mutex messagesMutex;
static std::condition_variable messageArrived;
static std::deque<UserMessage> messages;  // [messagesMutex]

void gf_postUserMessage(UserMessage message)
{
    {
        const std::scoped_lock lock(messagesMutex);
        messages.push_back(message);
    }
    messageArrived.notify_one();
}

UserMessage gf_waitUserMessage()
{
    std::unique_lock lock(messagesMutex);
    messageArrived.wait(lock, [] { return !messages.empty(); });
    const UserMessage message = messages.front();
    messages.pop_front();
    return message;
}

}  // namespace vlt
