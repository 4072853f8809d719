#include "platform/instance_lock.h"

#include "platform/folders.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace vlt {

bool gf_takeInstanceLock()
{
    const int file =
        ::open((gf_runtimeFolder() / "Velatra.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        return true;
    }
    // The open file holds the lock, so it is closed only when the lock isn't ours.
    if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        const bool taken = errno == EWOULDBLOCK;
        ::close(file);
        return !taken;
    }
    return true;
}

}  // namespace vlt
