#include "ScriptRun.h"

#include <string.h>

#include <optional>

#include "CapturedRun.h"
#include "TulException.h"

namespace Tul {

namespace {

constexpr CapturedRun::Limits limits{std::size_t{1024} * 1024, 4096};

/** For what is still in the pipes when the script has ended. */
constexpr std::chrono::milliseconds drainLimit(100);

/** The shell's codes for a command that is not executable and for one that is not there. */
constexpr int exitNotExecutable = 126;
constexpr int exitNotFound = 127;

std::string describe(const ProcessEnd& end) {
    if (end.kind == ProcessEnd::Unknown) {
        return "ended, status unknown";
    }
    const std::string number = std::to_string(end.number);
    if (end.kind == ProcessEnd::Signalled) {
        const char* name = sigabbrev_np(end.number);
        return "was ended by signal " + number + (name == nullptr ? "" : std::string(" (SIG") + name + ")");
    }
    const bool didNotRun = end.number == exitNotExecutable || end.number == exitNotFound;
    return (didNotRun ? "cannot be run, exit code " : "failed with exit code ") + number;
}

[[noreturn]] void fail(const char* path, const std::string& cause, const std::string& errorTail) {
    throw TulException("Script %s %s%s%s", path, cause.c_str(), errorTail.empty() ? "" : ": ", errorTail.c_str());
}

std::string run(char* const* argv, std::chrono::milliseconds timeout) {
    const Deadline deadline(timeout);
    CapturedRun script(argv, limits);
    const std::optional<ProcessEnd> end = script.await(deadline);
    if (!end) {
        const bool killed = script.kill();
        fail(argv[0],
             "was still running after " + std::to_string(timeout.count()) + " ms" +
                 (killed ? " and was killed" : ", status unknown"),
             script.errorTail());
    }
    script.drain(Deadline(drainLimit));
    if (end->kind != ProcessEnd::Exited || end->number != 0) {
        fail(argv[0], describe(*end), script.errorTail());
    }
    return script.output();
}

}  // namespace

std::string runScript(char* const* argv, std::chrono::milliseconds timeout) {
    try {
        return run(argv, timeout);
    } catch (const std::system_error& error) {
        fail(argv[0], error.what(), "");
    }
}

}  // namespace Tul
