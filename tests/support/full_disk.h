// A disk that is full for a while.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace vlt {

// No file is longer than this meanwhile.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_room);
        const rlimit full{bytes, m_room.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_room);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_room{};
    void (*m_handler)(int);
};

}  // namespace vlt
