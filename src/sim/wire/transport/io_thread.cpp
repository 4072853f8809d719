#include "sim/wire/transport/io_thread.h"

#include <asio/executor_work_guard.hpp>
#include <mutex>
#include <thread>

namespace vlt {

static std::mutex ioThreadMutex;  // the two below; never taken by the thread itself
static int holders = 0;           // [ioThreadMutex]
static std::thread ioThread;      // [ioThreadMutex]

asio::io_context& gf_ioContext()
{
    static asio::io_context& context = *new asio::io_context;
    return context;
}

// A completion that throws must not end the program, nor the other connections.
static void lf_run()
{
    asio::io_context& context = gf_ioContext();
    const auto keepRunning = asio::make_work_guard(context);
    while (!context.stopped()) {
        try {
            context.run();
        } catch (const std::exception&) {
            continue;
        }
    }
}

void gf_holdIoThread()
{
    const std::scoped_lock lock(ioThreadMutex);
    if (holders == 0) {
        gf_ioContext().restart();
        ioThread = std::thread(lf_run);
    }
    ++holders;
}

void gf_releaseIoThread()
{
    const std::scoped_lock lock(ioThreadMutex);
    --holders;
    if (holders == 0) {
        gf_ioContext().stop();
        ioThread.join();
    }
}

}  // namespace vlt
