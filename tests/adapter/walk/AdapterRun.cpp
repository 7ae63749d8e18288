#include "AdapterRun.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <numeric>
#include <system_error>

namespace TulTest {

namespace {

/** Descriptors 0 to 2 are as the adapter gets them; the gate opens when a byte comes. */
[[noreturn]] void becomeAdapter(char* const* arguments, int gate) {
    char path[] = "PATH=/usr/bin:/bin";
    char* environment[] = {path, nullptr};
    char byte = 0;
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (read(gate, &byte, 1) == 1) {
        execve(arguments[0], arguments, environment);
    }
    _exit(126);
}

void connectStandard(int output) {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, 0);
    dup2(output, 1);
    dup2(output, 2);
}

void makePipe(int (&ends)[2]) {
    if (pipe2(ends, O_CLOEXEC) == -1) {
        throw std::system_error(errno, std::generic_category(), "no pipe");
    }
}

}  // namespace

std::string joined(const Words& words) {
    return std::accumulate(words.begin(), words.end(), std::string(), [](std::string text, const std::string& word) {
        return std::move(text) + (text.empty() ? "" : " ") + word;
    });
}

std::string Ending::text() const {
    const std::string how = hung          ? "hung"
                            : signal != 0 ? "signal " + std::to_string(signal)
                                          : "code " + std::to_string(code);
    return how + (output.empty() ? "" : " saying '" + output.substr(0, output.find_last_not_of('\n') + 1) + "'");
}

bool awaitChild(Moment end) {
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const auto left = std::max(Clock::duration::zero(), end - Clock::now());
    const timespec time{std::chrono::duration_cast<std::chrono::seconds>(left).count(),
                        std::chrono::nanoseconds(left % std::chrono::seconds(1)).count()};
    return sigtimedwait(&child, nullptr, &time) == SIGCHLD;
}

AdapterRun::AdapterRun(const Words& command) {
    Words words = command;
    std::vector<char*> arguments;
    std::transform(words.begin(), words.end(), std::back_inserter(arguments),
                   [](std::string& word) { return word.data(); });
    arguments.push_back(nullptr);
    int gate[2];
    int output[2];
    makePipe(gate);
    makePipe(output);
    _pid = fork();
    if (_pid == 0) {
        setpgid(0, 0);
        close(gate[1]);  // or it would wait for itself when its maker is gone
        connectStandard(output[1]);
        becomeAdapter(arguments.data(), gate[0]);
    }
    setpgid(_pid, _pid);  // by both, since nobody knows who is first
    close(gate[0]);
    close(output[1]);
    _gate = gate[1];
    _output = output[0];
}

AdapterRun::~AdapterRun() {
    close(_gate);
    close(_output);
    if (!_ended) {
        kill();
        waitpid(_pid, &_status, __WALL);
    }
}

void AdapterRun::release() {
    if (write(_gate, "", 1) != 1) {
        throw std::system_error(errno, std::generic_category(), "the adapter cannot be released");
    }
}

void AdapterRun::ended(int status) {
    _ended = true;
    _status = status;
}

void AdapterRun::kill() {
    ::kill(-_pid, SIGKILL);
}

bool AdapterRun::poll() {
    int status = 0;
    if (!_ended && waitpid(_pid, &status, WNOHANG) == _pid) {
        ended(status);
    }
    return _ended;
}

Ending AdapterRun::await(Moment end) {
    while (!poll()) {
        if (!awaitChild(end) && Clock::now() >= end && !poll()) {
            _hung = true;
            kill();
            end = Moment::max();
        }
    }
    return ending();
}

Ending AdapterRun::ending() {
    Ending ending;
    ending.hung = _hung;
    ending.signal = WIFSIGNALED(_status) ? WTERMSIG(_status) : 0;
    ending.code = WIFEXITED(_status) ? WEXITSTATUS(_status) : -1;
    readOutput(ending);
    return ending;
}

void AdapterRun::readOutput(Ending& ending) const {
    char data[4096];
    pollfd output{_output, POLLIN, 0};
    for (;;) {
        if (::poll(&output, 1, 2000) != 1) {
            ending.outputHeld = true;
            return;
        }
        const ssize_t size = read(_output, data, sizeof(data));
        if (size <= 0) {
            return;
        }
        ending.output.append(data, static_cast<std::size_t>(size));
    }
}

}  // namespace TulTest
