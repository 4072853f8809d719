// Lines from standard input, for a program without a window. They end with the input, not the program with
// them.
#pragma once

#include <functional>
#include <string_view>
#include <thread>

namespace vlt {

class StandardInput
{
public:
    // Gives each line, without its end, to `onLine`, on a thread of its own. One of more than 4096 bytes is
    // given as it begins.
    explicit StandardInput(std::function<void(std::string_view line)> onLine);
    // Ends and joins the thread; a line that is being served is served to its end.
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

private:
    std::jthread m_reader;
};

}  // namespace vlt
