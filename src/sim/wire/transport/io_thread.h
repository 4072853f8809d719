// The one thread on which reads and writes complete.
//
// It lives while anybody holds it: from the first connection's opening to the last one's end. The
// holders are the callers' threads, never the thread itself. Its context stays for ever, so that a
// name look-up that still runs keeps nobody waiting.
#pragma once

// First: Asio 1.22 chooses how it allocates by macros of the standard library, and a file in which
// they weren't known yet would free what another file allocated otherwise.
#include <cstddef>

#include <asio/io_context.hpp>

namespace vlt {

// Where every stream of the transport is made.
asio::io_context& gf_ioContext();

// Starts the thread for its first holder.
void gf_holdIoThread();

// Lets go; the last holder ends the thread and waits for it. Completions that are still due then
// stay queued for the next thread.
void gf_releaseIoThread();

}  // namespace vlt
