#include "ScriptRun.h"

#include <fcntl.h>
#include <poll.h>
#include <string.h>

#include <algorithm>
#include <optional>

#include "CapturedStream.h"
#include "ChildProcess.h"
#include "Deadline.h"
#include "Spawn.h"
#include "SystemCall.h"
#include "TulException.h"

namespace Tul {

namespace {

constexpr std::size_t outputLimit = std::size_t{1024} * 1024;
constexpr std::size_t errorTailLimit = 4096;

/** For what is still in the pipes when the script has ended. Somebody it left behind may write for ever. */
constexpr std::chrono::milliseconds drainLimit(100);

/** The shell's codes for a command that is not executable and for one that is not there. */
constexpr int exitNotExecutable = 126;
constexpr int exitNotFound = 127;

/** The running script and the two streams that come from it. */
class ScriptRun {
public:
    explicit ScriptRun(char* const* argv) : ScriptRun(argv, Pipe(), Pipe()) {}

    /** Reads until the script has ended or the moment has come; how it ended, or nothing. */
    std::optional<ProcessEnd> await(const Deadline& deadline);

    /** Reads until both streams have ended or the moment has come. */
    void drain(const Deadline& deadline);

    bool kill() { return _child.kill(); }

    std::string output() { return std::move(_output.text()); }
    std::string errorTail();

private:
    ScriptRun(char* const* argv, Pipe output, Pipe errors);

    /** Waits for data or the end of the child, and reads what there is. True: the child has ended. */
    bool readOnce(int childDescriptor, int milliseconds);

    CapturedStream _output;
    CapturedStream _errors;
    ChildProcess _child;
};

pid_t spawnInto(char* const* argv, const Pipe& output, const Pipe& errors) {
    const Descriptor nothing = aboveStandard(Descriptor(
        succeeding("cannot be run, no /dev/null", [] { return open("/dev/null", O_RDONLY | O_CLOEXEC); })));
    return spawn(argv, nothing.number(), output.writeEnd.number(), errors.writeEnd.number());
}

ScriptRun::ScriptRun(char* const* argv, Pipe output, Pipe errors)
    : _output(std::move(output.readEnd), CapturedStream::Keep::First, outputLimit),
      _errors(std::move(errors.readEnd), CapturedStream::Keep::Last, errorTailLimit),
      _child(spawnInto(argv, output, errors)) {}

std::optional<ProcessEnd> ScriptRun::await(const Deadline& deadline) {
    for (;;) {
        const int left = deadline.milliseconds();
        if (_child.descriptor() < 0 || readOnce(_child.descriptor(), left)) {
            return _child.reap();
        }
        if (left == 0) {
            return std::nullopt;
        }
    }
}

void ScriptRun::drain(const Deadline& deadline) {
    int left = deadline.milliseconds();
    while (left > 0 && (_output.descriptor() >= 0 || _errors.descriptor() >= 0)) {
        readOnce(-1, left);
        left = deadline.milliseconds();
    }
}

bool ScriptRun::readOnce(int childDescriptor, int milliseconds) {
    pollfd watched[] = {
        {_output.descriptor(), POLLIN, 0}, {_errors.descriptor(), POLLIN, 0}, {childDescriptor, POLLIN, 0}};
    const int ready = poll(watched, std::size(watched), milliseconds);
    if (ready == -1) {
        if (errno == EINTR) {
            return false;
        }
        throw std::system_error(errno, std::generic_category(), "cannot be watched");
    }
    if (watched[0].revents != 0) {
        _output.read();
    }
    if (watched[1].revents != 0) {
        _errors.read();
    }
    return watched[2].revents != 0;
}

/** As it can end a message: without NUL, which would cut it short, and without the line's end. */
std::string ScriptRun::errorTail() {
    std::string tail = std::move(_errors.text());
    tail.erase(tail.find_last_not_of("\r\n") + 1);
    std::replace(tail.begin(), tail.end(), '\0', '?');
    return tail;
}

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
    ScriptRun script(argv);
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
