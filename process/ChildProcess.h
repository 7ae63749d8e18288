#ifndef TUL_CHILD_PROCESS_H
#define TUL_CHILD_PROCESS_H

#include <signal.h>
#include <sys/types.h>

#include <optional>

#include "Descriptor.h"

namespace Tul {

/** How a process ended. */
struct ProcessEnd {
    enum Kind { Exited, Signalled, Unknown };

    Kind kind = Unknown; /**< Unknown: the host, or another of its threads, took the status */
    int number = 0;      /**< the exit code or the signal */
};

/**
 * A child that leads its own process group. It is watched through a pidfd: that stays the child's even when
 * somebody else reaps it and its number goes to another process.
 *
 * One that has not been reaped at destruction is killed with its group, and reaped.
 */
class ChildProcess {
public:
    /** Takes over a child that was just made; std::system_error, and it is killed, when it cannot be watched. */
    explicit ChildProcess(pid_t pid);
    ~ChildProcess();

    /** Becomes readable when the child has ended; negative when it had ended, and was reaped, before. */
    int descriptor() const { return _pidfd.number(); }

    /** Takes the status of a child that has ended; nothing while it runs. */
    std::optional<ProcessEnd> reap();

    /** Kills the whole group and reaps the child. False, and no signal, when the child is not ours any more. */
    bool kill();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

private:
    int wait(siginfo_t& info, int options) const;
    void awaitDeath() const;

    const pid_t _pid;
    Descriptor _pidfd;
    bool _done = false; /**< reaped, or nothing more can be done */
};

}  // namespace Tul

#endif
