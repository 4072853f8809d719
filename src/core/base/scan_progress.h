// What a scan tells while it runs: the display's fields at once, the message line once a second.
//
// Worker thread. State: the time of the last message.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vlt {

// A scan's progress, from its making to its end.
class ScanProgress
{
public:
    // `what` is found, "liveries" for example.
    explicit ScanProgress(std::string_view what);
    ~ScanProgress();
    ScanProgress(const ScanProgress&) = delete;
    ScanProgress& operator=(const ScanProgress&) = delete;

    void enter(std::string_view folder);
    void seen();                // one more file
    void found(int64_t count);  // so many more

private:
    void tell();

    std::string m_what;
    std::string m_folder;
    int64_t m_files = 0;
    int64_t m_found = 0;
    int64_t m_toldMs = 0;  // steady clock
};

}  // namespace vlt
