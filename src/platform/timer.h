// The resolution of the system's timers while the program runs.
//
// Where short sleeps are coarse, the constructor asks for 1 ms and the destructor gives that back;
// where they are fine anyway, as on Linux, both do nothing. Made by the thread whose cycle needs
// it.
#pragma once

namespace vlt {

class FineTimer
{
public:
    FineTimer();
    ~FineTimer();
    FineTimer(const FineTimer&) = delete;
    FineTimer& operator=(const FineTimer&) = delete;
};

}  // namespace vlt
