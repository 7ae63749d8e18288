#ifndef TUL_WALK_TRACER_H
#define TUL_WALK_TRACER_H

#include <map>
#include <string>
#include <vector>

#include "AdapterRun.h"
#include "Call.h"

namespace TulTest {

/** Is told what a tree of processes does, one thing at a time; whoever is reported stands still meanwhile. */
class CallObserver {
public:
    virtual ~CallObserver() = default;

    /** Before a call; the error number to fail it with, or 0 to let it happen. */
    virtual int entering(const Call& call) = 0;

    /** After a call that was let happen; negative: it failed. */
    virtual void leaving(const Call& call, long result) = 0;

    virtual void executed(const std::string& commandLine) = 0;
};

/**
 * Leads a run of the adapter, and all processes that come of it, from call to call by ptrace. When the adapter has
 * ended the others are let go, wherever they are. For x86-64. std::system_error when the kernel does not allow it.
 */
class Tracer {
public:
    /** Listeners are recognised as sshd with a file in the folder. */
    Tracer(CallObserver& observer, std::string folder) : _observer(observer), _folder(std::move(folder)) {}

    /** Also follows a listener that is already there. */
    void join(pid_t listener);

    /** False: it had to be killed, since it had not ended by then. */
    bool follow(AdapterRun& run, Moment end);

    /** All but listeners and their sessions that were seen. */
    const std::vector<pid_t>& seen() const { return _seen; }

private:
    struct Tracee {
        Maker maker = Maker::Helper;
        int failure = 0;  // the call under way is skipped, and fails with this number
        Call call;
    };

    void attach(pid_t pid, Maker maker);
    Tracee& known(pid_t pid);
    Maker inherited(pid_t pid) const;
    void dispatch(AdapterRun& run, Moment& end, bool& isInTime);
    void dead(AdapterRun& run, pid_t pid, int status);
    void stopped(pid_t pid, int status);
    void inCall(pid_t pid, Tracee& tracee);
    void enter(pid_t pid, Tracee& tracee);
    void born(pid_t pid, Maker maker);
    void executed(pid_t pid, Tracee& tracee);
    void resume(pid_t pid, int signal, bool stays);
    void letGo();
    bool hasStragglers();

    CallObserver& _observer;
    const std::string _folder;
    std::map<pid_t, Tracee> _tracees;
    std::vector<pid_t> _seen;
    pid_t _adapter = 0;
    bool _isOver = false;
};

}  // namespace TulTest

#endif
