#include "Tracer.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "Processes.h"

namespace TulTest {

namespace {

constexpr long followed =
    PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_TRACESYSGOOD;

/** Failures are those of a process that was killed meanwhile: its end is reported later. */
template <class DataT>
long request(__ptrace_request what, pid_t pid, DataT data) {
    return ptrace(what, pid, nullptr, data);
}

bool isGroupStop(int signal) {
    return signal == SIGSTOP || signal == SIGTSTP || signal == SIGTTIN || signal == SIGTTOU;
}

}  // namespace

void Tracer::attach(pid_t pid, Maker maker) {
    if (request(PTRACE_SEIZE, pid, followed) == -1) {
        throw std::system_error(errno, std::generic_category(),
                                "process " + std::to_string(pid) + " cannot be traced");
    }
    _tracees[pid].maker = maker;
}

void Tracer::join(pid_t listener) {
    attach(listener, Maker::Listener);
    request(PTRACE_INTERRUPT, listener, 0);  // calls are reported only once it has stopped
}

bool Tracer::follow(AdapterRun& run, Moment end) {
    bool isInTime = true;
    _adapter = run.pid();
    attach(_adapter, Maker::Adapter);
    run.release();
    do {
        while (!_tracees.empty()) {
            dispatch(run, end, isInTime);
        }
    } while (hasStragglers());
    return isInTime;
}

void Tracer::dispatch(AdapterRun& run, Moment& end, bool& isInTime) {
    int status = 0;
    const pid_t pid = waitpid(-1, &status, __WALL | WNOHANG);
    if (pid > 0) {
        WIFSTOPPED(status) ? stopped(pid, status) : dead(run, pid, status);
    } else if (!awaitChild(end) && Clock::now() >= end) {
        if (!isInTime) {
            throw std::runtime_error("a process neither ends nor stops");
        }
        isInTime = false;
        run.kill();
        end += std::chrono::seconds(20);
    }
}

void Tracer::dead(AdapterRun& run, pid_t pid, int status) {
    _tracees.erase(pid);
    if (pid == _adapter) {
        run.ended(status);
        letGo();
    }
}

void Tracer::letGo() {
    _isOver = true;
    for (const auto& [pid, tracee] : _tracees) {
        request(PTRACE_INTERRUPT, pid, 0);
    }
}

/** A child whose parent was killed before it could tell of it is ours all the same, and waits for us. */
bool Tracer::hasStragglers() {
    for (const pid_t pid : allProcesses()) {
        if (statusNumber(pid, "TracerPid") == getpid()) {
            known(pid);
        }
    }
    return !_tracees.empty();
}

Tracer::Tracee& Tracer::known(pid_t pid) {
    const auto [place, isNew] = _tracees.try_emplace(pid);
    if (isNew) {
        place->second.maker = inherited(pid);
        if (place->second.maker != Maker::Listener) {
            _seen.push_back(pid);
        }
    }
    return place->second;
}

/** For a child that reports before its parent does. */
Maker Tracer::inherited(pid_t pid) const {
    const pid_t group = statusNumber(pid, "Tgid");
    const auto parent = _tracees.find(group == pid ? statusNumber(pid, "PPid") : group);
    return parent == _tracees.end() ? Maker::Helper : parent->second.maker;
}

void Tracer::stopped(pid_t pid, int status) {
    Tracee& tracee = known(pid);
    const int signal = WSTOPSIG(status);
    const int event = status >> 16;
    if (signal == (SIGTRAP | 0x80)) {
        inCall(pid, tracee);
    } else if (event == PTRACE_EVENT_EXEC) {
        executed(pid, tracee);
    } else if (event == PTRACE_EVENT_FORK || event == PTRACE_EVENT_VFORK || event == PTRACE_EVENT_CLONE) {
        born(pid, tracee.maker);
    }
    const bool isSignal = event == 0 && signal != (SIGTRAP | 0x80);
    resume(pid, isSignal ? signal : 0, event == PTRACE_EVENT_STOP && isGroupStop(signal));
}

/** The child may have reported before its parent does, and may have been let go by now. */
void Tracer::born(pid_t pid, Maker maker) {
    unsigned long message = 0;
    if (request(PTRACE_GETEVENTMSG, pid, &message) == 0) {
        const auto child = static_cast<pid_t>(message);
        if (statusNumber(child, "TracerPid") == getpid()) {
            known(child).maker = maker;
        }
    }
}

void Tracer::executed(pid_t pid, Tracee& tracee) {
    const std::string words = commandLine(pid);
    if (pid != _adapter && tracee.maker != Maker::Listener) {
        tracee.maker = isListenerOf(words, _folder) ? Maker::Listener : Maker::Helper;
    }
    if (tracee.maker == Maker::Listener) {
        std::erase(_seen, pid);
    }
    _observer.executed(words);
}

void Tracer::inCall(pid_t pid, Tracee& tracee) {
    __ptrace_syscall_info info{};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, pid, sizeof(info), &info) <= 0) {
        return;
    }
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
        tracee.call = {pid, tracee.maker, static_cast<long>(info.entry.nr), {}};
        std::copy(std::begin(info.entry.args), std::end(info.entry.args), tracee.call.arguments.begin());
        enter(pid, tracee);
    } else if (const int failure = std::exchange(tracee.failure, 0); failure != 0) {
        ptrace(PTRACE_POKEUSER, pid, offsetof(user_regs_struct, rax), -static_cast<long>(failure));
    } else if (tracee.call.pid != 0) {
        _observer.leaving(tracee.call, static_cast<long>(info.exit.rval));
    }
}

void Tracer::enter(pid_t pid, Tracee& tracee) {
    tracee.failure = _isOver ? 0 : _observer.entering(tracee.call);
    if (tracee.failure != 0 && tracee.call.code == SYS_brk) {
        // Of all calls this one tells of a failure by an unchanged result: it becomes a mere question.
        ptrace(PTRACE_POKEUSER, pid, offsetof(user_regs_struct, rdi), 0L);
        tracee.failure = 0;
    } else if (tracee.failure != 0) {
        ptrace(PTRACE_POKEUSER, pid, offsetof(user_regs_struct, orig_rax), -1L);  // no such call: it is skipped
    }
}

void Tracer::resume(pid_t pid, int signal, bool stays) {
    const auto place = _tracees.find(pid);
    if (_isOver && place->second.failure == 0) {
        request(PTRACE_DETACH, pid, static_cast<long>(signal));
        _tracees.erase(place);
    } else {
        request(stays ? PTRACE_LISTEN : PTRACE_SYSCALL, pid, static_cast<long>(signal));
    }
}

}  // namespace TulTest
