// The program's entry: the single-instance lock, the log, and the user thread's message loop.
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/main_control.h"
#include "core/run.h"
#include "platform/close_signals.h"
#include "platform/folders.h"
#include "platform/instance_lock.h"
#include "platform/standard_input.h"
#include "platform/standard_output.h"
#include "platform/user_messages.h"
#include "ui/status.h"
#include "ui/text_commands.h"

#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <thread>

using namespace vlt;

static constexpr int kSecondInstance = -1;
static constexpr int kEarlyFailure = 0;
static constexpr int kWrongOptions = 2;
static constexpr int kNoFolder = 4;

static constexpr const char* kUsage =
    "usage: velatra --headless [--status SECONDS]\n"
    "  --headless        without a window: messages go to standard output, commands come from standard "
    "input\n"
    "  --status SECONDS  the window's fields as a line of JSON, every so many seconds\n"
    "  --help            this text\n";

struct Options {
    bool help = false;
    bool headless = false;
    int statusSeconds = 0;  // 0: no status lines
};

static bool lf_readSeconds(std::string_view number, Options& options)
{
    const char* end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, options.statusSeconds);
    return error == std::errc{} && stop == end && options.statusSeconds >= 0;
}

static bool lf_readOptions(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            options.help = true;
        } else if (argument == "--headless") {
            options.headless = true;
        } else if (argument != "--status" || i + 1 == argc || !lf_readSeconds(argv[++i], options)) {
            std::fprintf(stderr, "%s isn't understood\n%s", argv[i], kUsage);
            return false;
        }
    }
    if (!options.headless && !options.help) {
        std::fprintf(stderr, "this build runs without a window: start it with --headless\n");
    }
    return options.headless || options.help;
}

static void lf_printMessage(std::string_view text, bool isError)
{
    gf_printLine(isError ? "Error: " + std::string(text) : std::string(text));
}

static void lf_onCommand(std::string_view line)
{
    if (const std::string wrong = gf_runCommand(line); !wrong.empty()) {
        gf_printLine(wrong);
    }
}

static std::jthread lf_startStatusLines(int everySeconds)
{
    if (everySeconds < 1) {
        return {};
    }
    return std::jthread([everySeconds](const std::stop_token& token) {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::unique_lock lock(mutex);
        while (!wake.wait_for(lock, token, std::chrono::seconds(everySeconds), [] { return false; }) &&
               !token.stop_requested()) {
            gf_printLine(gf_statusLine());
        }
    });
}

static bool lf_makeDataFolder()
{
    std::error_code error;
    std::filesystem::create_directories(gf_dataFolder(), error);
    if (error) {
        const std::string text = format("Failed to create directory: {}", error.message());
        logLine(text);
        std::fprintf(stderr, "%s\n", text.c_str());
    }
    return !error;
}

static void lf_onClose()
{
    gf_requestClose();
    showMessage(format("Close window button clicked, closing {} ...", kProgramName), false);
    if (gf_runEndedInError()) {
        gf_postUserMessage(UserMessage::Finish);
    }
}

// The messages of the user thread, until the program is to finish.
static void lf_messageLoop()
{
    std::jthread worker;
    gf_postUserMessage(UserMessage::StartMain);
    while (true) {
        switch (gf_waitUserMessage()) {
        case UserMessage::StartMain:
            worker = std::jthread(mainControl);
            break;
        case UserMessage::Close:
            lf_onClose();
            break;
        case UserMessage::Finish:
            worker.join();
            gf_joinRunThreads();
            return;
        }
    }
}

int main(int argc, char** argv)
{
    const CloseSignals closeSignals;  // first of all: what starts later leaves the same signals alone
    Options options;
    if (!lf_readOptions(argc, argv, options)) {
        return kWrongOptions;
    }
    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!gf_makeRuntimeFolder()) {
        std::fprintf(stderr, "%s can't be made, or isn't this user's own\n", gf_runtimeFolder().c_str());
        return kNoFolder;
    }
    if (!gf_takeInstanceLock()) {
        return kSecondInstance;
    }
    try {
        logStart();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return kEarlyFailure;
    }
    gf_setMessageListener(lf_printMessage);
    if (!lf_makeDataFolder()) {
        return kNoFolder;
    }
    gf_readWindowPlace();
    const std::jthread statusLines = lf_startStatusLines(options.statusSeconds);
    {
        const StandardInput commands(lf_onCommand);
        lf_messageLoop();
    }
    logLine(nowString());
    gf_logEnd();
    return 0;
}
