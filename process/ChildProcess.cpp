#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

// In the C library's 2.36 this header forgets to say so itself.
extern "C" {
#include <sys/pidfd.h>
}

#include "Deadline.h"
#include "SystemCall.h"

namespace Tul {

namespace {

/** A killed process is gone in no time, unless the kernel itself is stuck with it (a dead network disk). */
constexpr std::chrono::seconds deathLimit(5);

}  // namespace

ChildProcess::ChildProcess(pid_t pid) : _pid(pid) {
    try {
        _pidfd = aboveStandard(Descriptor(succeeding("cannot be watched", [pid] { return pidfd_open(pid, 0); })));
    } catch (const std::system_error& error) {
        if (error.code().value() != ESRCH) {
            kill();
            throw;
        }
        _done = true;
    }
}

ChildProcess::~ChildProcess() {
    if (!_done) {
        kill();
    }
}

std::optional<ProcessEnd> ChildProcess::reap() {
    siginfo_t info{};
    if (_done) {
        return ProcessEnd{};
    }
    if (wait(info, WEXITED | WNOHANG) == -1) {
        _done = true;
        return ProcessEnd{};
    }
    if (info.si_pid == 0) {
        return std::nullopt;
    }
    _done = true;
    return ProcessEnd{info.si_code == CLD_EXITED ? ProcessEnd::Exited : ProcessEnd::Signalled, info.si_status};
}

bool ChildProcess::kill() {
    siginfo_t info{};
    // The group has the child's number. While the child is ours to be reaped, dead or alive, nobody else gets it.
    const bool ours = !_done && wait(info, WEXITED | WNOHANG | WNOWAIT) == 0;
    if (ours) {
        ::kill(-_pid, SIGKILL);
        ::kill(_pid, SIGKILL);  // it may have moved to another group
        awaitDeath();
        reap();
    }
    _done = true;
    return ours;
}

int ChildProcess::wait(siginfo_t& info, int options) const {
    const idtype_t kind = _pidfd.isOpen() ? P_PIDFD : P_PID;
    const auto which = static_cast<id_t>(_pidfd.isOpen() ? _pidfd.number() : _pid);
    return uninterrupted([&] { return waitid(kind, which, &info, options); });
}

void ChildProcess::awaitDeath() const {
    if (!_pidfd.isOpen()) {
        siginfo_t info{};
        wait(info, WEXITED | WNOWAIT);
        return;
    }
    const Deadline deadline(deathLimit);
    pollfd watched{_pidfd.number(), POLLIN, 0};
    uninterrupted([&] { return poll(&watched, 1, deadline.milliseconds()); });
}

}  // namespace Tul
